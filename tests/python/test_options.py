# Arguments that are options of the command: texts on maps, layouts, sections, formats, and images that are printed.
import gzip
import inspect
import json
import pathlib
import re

import numpy as np
import pytest

import vorna

PLACES = {"type": "FeatureCollection", "features": [
    {"type": "Feature", "properties": {"name": name, "rank": rank}, "geometry": {"type": "Point", "coordinates": place}}
    for name, rank, place in (("Anfang", 1, [0, 0]), ("Bogen", 3, [0.2, 0]), ("Eck", 2, [40, 30]))]}


@pytest.fixture
def files(tmp_path, box_file):
    """Files by their names."""
    def dxf(*codes):
        return "".join(f"{code}\n{value}\n" for code, value in codes)
    line = [(0, "LINE"), (8, "0"), (10, 0), (20, 0), (11, 50), (21, 30)]
    contents = {"places.json": json.dumps(PLACES),
                "plan.dxf": dxf((0, "SECTION"), (2, "ENTITIES"), *line, (0, "ENDSEC"), (0, "EOF")),
                "sea.json": '{"type": "Polygon", "coordinates": [[[0, 0], [2, 0], [2, 1], [0, 1], [0, 0]]]}',
                "plane.json": '{"type": "LineString", "coordinates": [[500, 500], [900, 700]]}'}
    for name, content in contents.items():
        (tmp_path / name).write_text(content)
    (tmp_path / "data").write_bytes(box_file.read_bytes())
    return {**{name: tmp_path / name for name in (*contents, "data")}, "box.obj": box_file,
            "plate.dxf": pathlib.Path(__file__).parents[2] / "recordings/maps/plate.dxf", "out": tmp_path / "out.png"}


def same_file(image, command, source, out, options):
    """Whether an image has the digest, and saved the bytes, that the command makes with these options."""
    line = command("render", source, "-o", out, "--hash", "--background", "white", *options)
    assert len(line.strip()) == 64, line
    image.save(out.with_name("own.png"))
    return image.digest() == line.strip() and out.with_name("own.png").read_bytes() == out.read_bytes()


MAPS = [
    ("places.json", dict(labels=True), ["--labels"]),
    ("places.json", dict(labels=True, halo=0), ["--labels", "--halo", "0"]),
    ("places.json", dict(labels=True, halo=2.5, halo_color="red"), ["--labels", "--halo", "2.5", "--halo-color", "red"]),
    ("places.json", dict(label_by="name", label_key="rank"), ["--label-by", "name", "--label-key", "rank"]),
    ("places.json", dict(labels=True, font="DejaVu Sans:bold"), ["--labels", "--font", "DejaVu Sans:bold"]),
    ("places.json", dict(map_scale="km"), ["--map-scale", "km"]),
    ("places.json", dict(map_scale="miles"), ["--map-scale", "miles"]),
    ("plate.dxf", dict(), []),
    ("plate.dxf", dict(layout="Sheet"), ["--layout", "Sheet"]),
]
PRINTED = [
    ("sea.json", dict(dpi=254, size=(80, 50)), ["--dpi", "254", "--size", "80x50"]),
    ("sea.json", dict(paper="A6-landscape", dpi=50), ["--paper", "A6-landscape", "--dpi", "50"]),
    ("sea.json", dict(paper="20x10mm"), ["--paper", "20x10mm"]),
    ("sea.json", dict(scale="1:10000000"), ["--scale", "1:10000000"]),
    ("sea.json", dict(scale="1:10000000", dpi=150, size=(200, 70)), ["--scale", "1:10000000", "--dpi", "150", "--size", "200x70"]),
    ("plan.dxf", dict(scale="2:1", dpi=50), ["--scale", "2:1", "--dpi", "50"]),
    ("plane.json", dict(scale="1:20000", unit="m", dpi=100), ["--scale", "1:20000", "--unit", "m", "--dpi", "100"]),
]


def test_maps_have_the_options_of_the_command(files, command):
    seen = set()
    for name, arguments, options in MAPS:
        image = vorna.map(files[name], size=(160, 120), **arguments)
        assert same_file(image, command, files[name], files["out"], ["--size", "160x120", *options]), arguments
        seen.add(image.digest())
    assert len(seen) == len(MAPS)
    assert vorna.map(files["places.json"], labels=True, size=(160, 120), halo=1.0).digest() in seen  # the default
    for arguments, message in ((dict(halo=21), "halo: expected 0 to 20, found 21"), (dict(map_scale="feet"), "map_scale: expected one of km"),
                               (dict(map_scale="km", projection="plane"), "map_scale: expected a projection of the globe"),
                               (dict(layout="A"), "layout: expected a drawing"), (dict(clip_to="x", font="Nothing Sans"), "x"),
                               (dict(input_format="pdf"), "input_format: expected"), (dict(reading=1), "reading")):
        with pytest.raises((ValueError, TypeError), match=message):
            vorna.map(files["places.json"], labels=True, **arguments)


# Options that are no arguments: files and machines, warnings (image.warnings), and what other calls do.
OTHERS = {"strict", "perspective", "palette", "output", "output-format", "compress", "output-folder", "dry-run", "stats", "resume",
          "files-from", "manifest", "time-limit", "record", "tile-times", "hash", "turntable", "repeat", "tile-size", "tiles-of", "plan",
          "tile", "area", "plan-lines", "module", "kernels", "stream", "parts-of", "part", "framing"}
# Arguments with other names.
RENAMED = {"allow-outside": "outside_of_folder", "ortho": "orthographic", "pass": "depth", "antialias": "smooth_lines"}


def test_every_option_is_an_argument(command):
    calls = (vorna.render, vorna.Model, vorna.Model.render, vorna.Map, vorna.Map.render, vorna.Camera)
    arguments = {name for call in calls for name in inspect.signature(call).parameters}
    options = set(re.findall(r"^ +(?:-o, )?--([a-z-]+)", command("render", "--help"), re.MULTILINE))
    assert OTHERS | set(RENAMED) <= options and len(options) > 90
    assert [name for name in sorted(options - OTHERS) if RENAMED.get(name, name.replace("-", "_")) not in arguments] == []


def test_printed_maps_have_their_size_and_scale(files, command):
    for name, arguments, options in PRINTED:
        image = vorna.map(files[name], **arguments)
        assert same_file(image, command, files[name], files["out"], options), arguments
        assert image.dpi == arguments.get("dpi", 300)
    assert vorna.map(files["sea.json"], paper="A4", dpi=25.4).size == (210, 297)
    assert vorna.map(files["sea.json"]).dpi == 0 and b"pHYs" not in vorna.map(files["sea.json"], size=(9, 9)).png()
    map = vorna.Map(files["sea.json"])
    first = map.render(scale="1:10000000").digest()
    assert map.render(size=(70, 50)).digest() != first == map.render(scale="1:10000000").digest()
    for arguments, message in ((dict(paper="A99"), "paper: expected A0, A0-landscape"), (dict(paper="A4", size=(3, 4)), "paper: expected no size"),
                               (dict(scale="1"), "scale: expected two numbers"), (dict(unit="mm"), "unit: expected scale"),
                               (dict(unit="ell", scale="1:9"), "unit: expected one of mm"), (dict(dpi=0.5), "dpi: expected 1 to 10000"),
                               (dict(scale="1:9", unit="m"), "unit: expected coordinates of a plane"), (dict(dpi="a"), "dpi: expected a number"),
                               (dict(scale="1:9", size=(0, 9)), "size: expected sides"), (dict(scale="1:9", size=(9, 0)), "size.y: expected 1"),
                               (dict(paper="900x900mm", dpi=9999), "at this dpi"), (dict(scale="1:1"), "scale: expected an image of up to")):
        with pytest.raises(ValueError, match=message):
            map.render(**arguments)


def test_printed_models_have_their_size_and_scale(files, command):
    front = vorna.Camera("front", orthographic=True)
    for arguments, options in (
        (dict(dpi=200, size=(64, 48)), ["--dpi", "200", "--size", "64x48"]),
        (dict(paper="20x10mm"), ["--paper", "20x10mm"]),
        (dict(camera=front, scale="10:1", size=(300, 200)), ["--view", "front", "--ortho", "--scale", "10:1", "--size", "300x200"]),
        (dict(camera=front, scale="1:500", unit="m", paper="40x30mm", dpi=100),
         ["--view", "front", "--ortho", "--scale", "1:500", "--unit", "m", "--paper", "40x30mm", "--dpi", "100"]),
    ):
        image = vorna.render(files["box.obj"], **arguments)
        assert same_file(image, command, files["box.obj"], files["out"], options), arguments
    # Two units of the box are 20 millimetres: at 254 pixels an inch 200 pixels.
    image = vorna.render(files["box.obj"], camera=front, scale="10:1", dpi=254, size=(300, 200), ids=True, supersample=1)
    columns = np.flatnonzero((image.ids >= 0).any(axis=0))
    assert columns[-1] - columns[0] + 1 == 200 and image.dpi == 254
    for arguments, message in ((dict(scale="1:2"), "scale: expected a camera without perspective"),
                               (dict(scale="1:2", camera=vorna.Camera("front", orthographic=True, zoom=2)), "scale: .* zoom")):
        with pytest.raises(ValueError, match=message):
            vorna.render(files["box.obj"], **arguments)


def test_models_are_cut_open(files, command, box):
    options = ["--section", "x=0.5", "--size", "90x60"]
    image = vorna.render(files["box.obj"], section=(1, 0, 0, 0.5), size=(90, 60), ids=True)
    assert same_file(image, command, files["box.obj"], files["out"], options)
    # Numbers of arrays are those of the given faces: the last one shows parts of what was cut.
    vertices, faces = box
    ids = vorna.render((vertices, faces), section=(1, 0, 0, 0.5), size=(90, 60), ids=True).ids
    assert set(np.unique(ids)) <= {-1, 0, 1, 2, 3} and np.array_equal(ids >= 0, image.ids >= 0)
    assert vorna.Model((vertices, faces), section=(-1, 0, 0, -1.9)).triangle_count < image.ids.max() + 10
    apart = vorna.render((vertices, faces[::-1]), section=(1, 0, 0, 0.5), size=(90, 60), ids=True).ids
    assert np.array_equal(np.where(ids >= 0, 3 - ids, -1), apart)
    for plane, message in (((0, 0, 0, 1), "section: expected finite"), ((1, 2), "section: expected 4 numbers"),
                           ((1, 0, 0, -5), "expected a section that leaves a part")):
        with pytest.raises(ValueError, match=message):
            vorna.Model(files["box.obj"], section=plane)
    with pytest.raises(ValueError, match="section: expected a mesh that is not read yet"):
        vorna.render(vorna.Model(box), section=(1, 0, 0, 0.5))


def test_formats_are_named(files, command):
    plain = vorna.render(files["box.obj"], size=(40, 30)).digest()
    assert vorna.render(files["data"], input_format="obj", size=(40, 30)).digest() == plain
    with pytest.raises(ValueError, match="data"):
        vorna.Model(files["data"], input_format="ply")
    sea = files["sea.json"].rename(files["sea.json"].with_name("sea.txt"))
    assert vorna.map(sea, input_format="geojson", size=(40, 0)).shape[:2] == (20, 40)


LONE = "a\ud800b"


@pytest.mark.parametrize("call", [
    *(lambda name=name: vorna.map(PLACES, **{name: LONE}) for name in (
        "layer", "layout", "filter", "fill_by", "classes", "ramp", "width_by", "label_by", "label_key", "title", "attribution",
        "projection", "clip_to", "overlay", "font", "style", "fill", "water", "border", "marker", "merge", "halo_color", "map_scale",
        "input_format", "paper", "scale", "unit")),
    lambda: vorna.map(LONE), lambda: vorna.map({"type": LONE}),
    *(lambda name=name: vorna.render((np.eye(3), [[0, 1, 2]]), **{name: LONE}) for name in (
        "camera", "shading", "background", "color", "edges", "tint", "look", "paper", "scale", "unit", "input_format")),
    lambda: vorna.render(LONE), lambda: vorna.Camera("iso", up=LONE) and vorna.render((np.eye(3), [[0, 1, 2]]), camera=vorna.Camera("iso", up=LONE)),
    lambda: vorna.Camera.from_pose(np.eye(4), convention=LONE),
    lambda: vorna.read(LONE), lambda: vorna.compare(LONE, LONE), lambda: vorna.Image(np.zeros((2, 2, 4), np.uint8)).save(LONE),
    lambda: vorna.Canvas((4, 4)).begin(LONE), lambda: vorna.Canvas((4, 4)).set(color=LONE), lambda: vorna.Canvas((4, 4)).set(style=LONE),
    lambda: vorna.Canvas((4, 4)).set(**{LONE: 1}), lambda: vorna.Canvas((4, 4), depth=True).depth_mode(test=LONE),
    lambda: vorna.Recording(LONE).replay(), lambda: vorna.Recording(LONE).save("none.json"), lambda: vorna.Recording("{}").save(LONE),
    lambda: vorna.replay({"calls": LONE}), lambda: vorna.replay(LONE), lambda: vorna.poster(LONE, "a.png", size=(9, 9), parts=2),
    lambda: vorna.poster("a.obj", LONE, size=(9, 9), parts=2)])
def test_texts_that_utf_8_cannot_hold_are_wrong_input(call):
    with pytest.raises((ValueError, TypeError)) as error:
        call()
    str(error.value).encode()  # the line can be printed


def test_recordings_appear_whole_or_not_at_all(tmp_path):
    path = tmp_path / "a.json"
    recording = vorna.Recording('{"a": 1}')
    recording.save(path)
    path.chmod(0o640)
    before = path.stat()
    vorna.Recording('{"b": 2}').save(path)
    after = path.stat()
    assert path.read_text() == '{"b": 2}' and after.st_ino != before.st_ino and after.st_mode == before.st_mode
    packed = tmp_path / "a.json.gz"
    recording.save(packed)
    assert gzip.decompress(packed.read_bytes()) == b'{"a": 1}' and packed.read_bytes()[4:8] == bytes(4)
    with pytest.raises(vorna.Error, match="No space"):
        recording.save("/dev/full")
    assert sorted(entry.name for entry in tmp_path.iterdir()) == ["a.json", "a.json.gz"]
