"""png_kinds.py VORNA FOLDER: PNG files of all kinds, interlaced or not, against what Pillow reads of them."""
import random
import struct
import subprocess
import sys
import zlib
from pathlib import Path

from PIL import Image

vorna, folder = sys.argv[1], Path(sys.argv[2])
width, height = 11, 9
grey, rgb, palette, grey_alpha, rgba = 0, 2, 3, 4, 6
channels = {grey: 1, rgb: 3, palette: 1, grey_alpha: 2, rgba: 4}
passes = [(0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2)]
failures = []


def chunk(kind, content):
    return struct.pack('>I', len(content)) + kind + content + struct.pack('>I', zlib.crc32(kind + content))


def packed(pixels, bits):
    if bits == 16:
        return b''.join(struct.pack('>H', s) for pixel in pixels for s in pixel)
    text = ''.join(f'{s:0{bits}b}' for pixel in pixels for s in pixel)
    text += '0' * (-len(text) % 8)
    return bytes(int(text[i:i + 8], 2) for i in range(0, len(text), 8))


def png(path, kind, bits, rows, colors=b'', transparency=b'', interlaced=False):
    pieces = passes if interlaced else [(0, 0, 1, 1)]
    data = b''.join(b'\0' + packed(row[x::dx], bits) for x, y, dx, dy in pieces for row in rows[y::dy] if row[x::dx])
    path.write_bytes(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', width, height, bits, kind, 0, 0, interlaced)) +
                     (chunk(b'PLTE', colors) if colors else b'') + (chunk(b'tRNS', transparency) if transparency else b'') +
                     chunk(b'IDAT', zlib.compress(data)) + chunk(b'IEND', b''))
    return path


def expect(status, what, *arguments):
    done = subprocess.run([vorna, 'compare', *map(str, arguments)], capture_output=True, text=True)
    if done.returncode != status:
        failures.append(what)
        print(f'{what}: expected status {status}, found {done.returncode}: {done.stdout}{done.stderr}')


random.seed(1)
for kind, all_bits in {grey: [1, 2, 4, 8, 16], rgb: [8, 16], palette: [1, 2, 4, 8], grey_alpha: [8, 16], rgba: [8, 16]}.items():
    for bits in all_bits:
        most = (1 << bits) - 1
        levels = [0, 1, most // 2, most - 1, most]
        rows = [[tuple(random.choice(levels) for _ in range(channels[kind])) for _ in range(width)] for _ in range(height)]
        rows[4][5] = key = rows[0][0]
        colors = bytes(random.randrange(256) for _ in range(3 << bits)) if kind == palette else b''
        for has_key in [False, True] if kind in (grey, rgb, palette) else [False]:
            for interlaced in (False, True):
                what = f'kind {kind} of {bits} bits' + ', transparent' * has_key + ', interlaced' * interlaced
                transparency = b''
                if has_key:
                    transparency = b'\0\x80' if kind == palette else struct.pack(f'>{len(key)}H', *key)
                file = png(folder / 'image.png', kind, bits, rows, colors, transparency, interlaced)
                plain = png(folder / 'plain.png', kind, bits, rows, colors, transparency)
                expect(0, what + ', and not', file, plain)
                # Pillow reduces samples of 16 bits, and takes the transparent grey of 1, 2 and 4 bits for one of 8.
                if bits == 16:
                    colored = [[p if kind in (rgb, rgba) else (p[0],) * 3 + p[1:] for p in row] for row in rows]
                    if kind in (grey, rgb):
                        colored = [[c + ((0 if has_key and p == key else 65535),) for c, p in zip(*both)]
                                   for both in zip(colored, rows)]
                else:
                    colored = [list(row) for row in zip(*[iter(Image.open(file).convert('RGBA').getdata())] * width)]
                    if kind == grey and has_key and bits < 8:
                        colored = [[c[:3] + ((0 if p == key else 255),) for c, p in zip(*both)] for both in zip(colored, rows)]
                depth = max(bits, 8)
                same = png(folder / 'same.png', rgba, depth, colored)
                expect(0, what + ', as colours', file, same)
                expect(0, what + ', as colours within a difference', file, same, '--fuzz', '0,0')
                for channel in range(4):
                    changed = [list(row) for row in colored]
                    pixel = list(changed[4][5])
                    pixel[channel] += 5 if pixel[channel] < 1 << depth - 1 else -5
                    changed[4][5] = tuple(pixel)
                    other = png(folder / 'other.png', rgba, depth, changed)
                    expect(1, what + f', channel {channel} differs', file, other)
                    expect(1, what + f', channel {channel} differs too much', file, other, '--fuzz', '4,1')
                    expect(0, what + f', channel {channel} differs little', file, other, '--fuzz', '5,1')
        if kind in (grey, rgb):
            opaque = png(folder / 'opaque.png', kind, bits, rows)
            expect(1, f'kind {kind} of {bits} bits, opaque or not', file, opaque, '--fuzz', f'{(1 << max(bits, 8)) - 2},99')
            if kind == grey and bits < 8:
                step = 255 // most
                near = png(folder / 'near.png', kind, bits, [[(p[0] ^ 1,) for p in row] for row in rows])
                expect(1, f'greys of {bits} bits, a step apart', opaque, near, '--fuzz', f'{step - 1},99')
                expect(0, f'greys of {bits} bits, a step apart', opaque, near, '--fuzz', f'{step},99')
print(len(failures), 'failures')
sys.exit(1 if failures else 0)
