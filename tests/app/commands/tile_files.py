"""tile_files.py VORNA FOLDER: the tiles of a map in all files that hold them, read as their formats say and compared with the one
image of each level that `vorna render` draws."""
import gzip
import json
import math
import shutil
import sqlite3
import subprocess
import sys
from io import BytesIO
from pathlib import Path

from PIL import Image

vorna, folder = sys.argv[1], Path(sys.argv[2])
failures = []


def expect(is_right, what):
    if not is_right:
        failures.append(what)
        print(what)


def run(*arguments, status=0):
    done = subprocess.run([vorna, *map(str, arguments)], capture_output=True, text=True, cwd=folder)
    expect(done.returncode == status, f'{arguments}: {done.returncode} {done.stderr}')
    return done.stderr


def tiles_in_folder(path):
    tiles = {}
    for file in path.glob('*/*/*.*'):
        zoom, x, y = file.relative_to(path).with_suffix('').parts
        tiles[int(zoom), int(x), int(y)] = file.read_bytes()
    return tiles


def tiles_in_database(path):
    with sqlite3.connect(path) as database:
        expect(database.execute('PRAGMA integrity_check').fetchone() == ('ok',), f'{path}: damaged')
        rows = database.execute('SELECT zoom_level, tile_column, tile_row, tile_data FROM tiles')
        facts = dict(database.execute('SELECT name, value FROM metadata'))
        return {(z, x, (1 << z) - 1 - y): data for z, x, y, data in rows}, facts


def place_of(number):
    """The place of a tile on the Hilbert curves of all levels, found from the finest scale to the coarsest."""
    zoom = 0
    while number >= 4 ** zoom:
        number -= 4 ** zoom
        zoom += 1
    x = y = 0
    for level in range(zoom):
        side = 1 << level
        right, low = number >> 1 & 1, (number ^ number >> 1) & 1
        if not low:
            if right:
                x, y = side - 1 - x, side - 1 - y
            x, y = y, x
        x, y = x + side * right, y + side * low
        number >>= 2
    return zoom, x, y


def tiles_in_archive(path):
    file = path.read_bytes()
    expect(file[:8] == b'PMTiles\x03', f'{path}: another format')
    number = lambda place, size: int.from_bytes(file[place:place + size], 'little')
    section = lambda place: file[number(place, 8):number(place, 8) + number(place + 8, 8)]
    expect(number(8, 8) + number(16, 8) <= 16384, f'{path}: the root directory is too large')
    data = section(56)
    tiles, entries_found = {}, 0

    def read(directory):
        nonlocal entries_found
        stream = BytesIO(gzip.decompress(directory))

        def variable():
            value = shift = 0
            while (byte := stream.read(1)[0]) & 128:
                value |= (byte & 127) << shift
                shift += 7
            return value | byte << shift
        count = variable()
        numbers, runs, sizes, offsets = ([variable() for _ in range(count)] for _ in range(4))
        tile = before = 0
        for i in range(count):
            tile += numbers[i]
            offset = before + sizes[i - 1] if offsets[i] == 0 else offsets[i] - 1
            before = offset
            if runs[i] == 0:
                read(section(40)[offset:offset + sizes[i]])
                continue
            entries_found += 1
            for number_in_run in range(tile, tile + runs[i]):
                tiles[place_of(number_in_run)] = data[offset:offset + sizes[i]]
    read(section(8))
    expect((number(72, 8), number(80, 8)) == (len(tiles), entries_found), f'{path}: wrong counts')
    expect(number(88, 8) == len(set(tiles.values())), f'{path}: images more than once')
    return tiles, json.loads(gzip.decompress(section(24))), (file[100], file[101])


# Crooked shapes over the borders of tiles, dashes, points, and names that are longer than a tile at the lowest level.
features = []
for i in range(40):
    x, y = (i * 37) % 320 - 160, (i * 53) % 150 - 75
    corners = [[x + 30 * math.cos(a) * (1 + i % 3) / 2, max(-85, min(85, y + 12 * math.sin(a)))] for a in (0, 1, 2.5, 4, 5.5)]
    corners = [[max(-179, min(179, a)), b] for a, b in corners]
    features.append({'type': 'Feature', 'properties': {'name': f'The large region number {i}'},
                     'geometry': {'type': 'Polygon', 'coordinates': [corners + corners[:1]]}})
    features.append({'type': 'Feature', 'properties': {'name': f'Town {i}'}, 'geometry': {'type': 'Point', 'coordinates': [y * 2, x / 2]}})
shutil.rmtree(folder, ignore_errors=True)
folder.mkdir()
(folder / 'map.json').write_text(json.dumps({'type': 'FeatureCollection', 'features': features}))

looks = [
    (256, 3, 'png', ['--labels', '--border', 'dashed', '--outline', '8,3', '--border-width', '2', '--water', '#d8e8f0']),
    (256, 3, 'png', ['--labels', '--antialias', '--graticule', '20', '--casing', 'white', '--opacity', '0.5']),
    (512, 2, 'png', ['--labels', '--supersample', '2', '--background', 'none']),
    (256, 2, 'webp', ['--fill', 'none', '--label-by', 'name', '--label-size', '20']),
]
for number, (side, last, suffix, options) in enumerate(looks):
    names = [f'tiles{number}', f'{number}.mbtiles', f'{number}.pmtiles']
    for name, more in zip(names, ([], ['--threads', '1', '--max-memory', '48M'], ['--title', 'A world', '--attribution', 'by us'])):
        run('tiles', 'map.json', '-o', name, '--zoom', f'0-{last}', '--tile-size', side, '--tile-format', suffix, *options, *more)
    tiles = tiles_in_folder(folder / names[0])
    description = json.loads((folder / names[0] / 'tiles.json').read_text())
    expect((description['maxzoom'], description['tileSize'], description['name']) == (last, side, 'map'), f'{names[0]}: {description}')
    expect(len(tiles) == sum(4 ** zoom for zoom in range(last + 1)), f'{names[0]}: {len(tiles)} tiles')
    others, facts = tiles_in_database(folder / names[1])
    expect(others == tiles, f'{names[1]}: other tiles')
    expect(facts['format'] == suffix and facts['name'] == 'map', f'{names[1]}: {facts}')
    others, facts, zooms = tiles_in_archive(folder / names[2])
    expect(others == tiles, f'{names[2]}: other tiles')
    expect((facts['name'], facts['attribution'], zooms) == ('A world', 'by us', (0, last)), f'{names[2]}: {facts} {zooms}')
    for zoom in range(last + 1):
        run('render', 'map.json', '-o', 'level.png', '--size', f'{side << zoom}x{side << zoom}', '--projection', 'mercator',
            '--bbox=-180,-90,180,90', *options)
        level = Image.open(folder / 'level.png').convert('RGBA')
        for (z, x, y), data in tiles.items():
            if z == zoom:
                cut = level.crop((x * side, y * side, (x + 1) * side, (y + 1) * side))
                expect(Image.open(BytesIO(data)).convert('RGBA').tobytes() == cut.tobytes(), f'{names[0]}: {z}/{x}/{y} differs')

# Many levels, so that the archive has leaf directories, and only a part of the world.
part_options = ['--bbox=-150,-70,150,75', '--fill-by', 'name', '--graticule', '0.7']
run('tiles', 'map.json', '-o', 'part.pmtiles', '--zoom', '2-7', *part_options)
part = tiles_in_archive(folder / 'part.pmtiles')[0]
run('tiles', 'map.json', '-o', 'part.mbtiles', '--zoom', '2-7', *part_options)
expect(tiles_in_database(folder / 'part.mbtiles')[0] == part, 'part.mbtiles: other tiles')
expect(int.from_bytes((folder / 'part.pmtiles').read_bytes()[48:56], 'little') > 0, 'part.pmtiles: expected leaf directories')
expect({x for z, x, y in part if z == 2} == {0, 1, 2, 3} and {y for z, x, y in part if z == 2} == {0, 1, 2, 3}, 'part: level 2')
expect(min(x for z, x, y in part if z == 7) == int(30 / 360 * 128), 'part: level 7')

expect(not [name for name in folder.iterdir() if 'vorna' in name.name], 'files are left behind')
sys.exit(1 if failures else 0)
