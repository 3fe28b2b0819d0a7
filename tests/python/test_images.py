# Images as arrays and files; comparisons; maps; recordings.
import json

import numpy as np
import pytest

import vorna


def test_images_are_arrays_without_a_copy():
    image = vorna.render((np.eye(3), [[0, 1, 2]]), size=(40, 30))
    array = np.asarray(image)
    assert array.shape == image.shape == (30, 40, 4) and array.dtype == image.dtype == np.uint8
    assert np.shares_memory(array, image.pixels) and image.size == (40, 30) and len(image) == 30
    array[0, 0] = 7
    assert image[0, 0].tolist() == [7] * 4
    kept = array[3]
    del image, array  # the memory lives as long as a part of it
    assert kept.shape == (40, 4)
    wrapped = np.arange(12, dtype=np.uint8).reshape(1, 3, 4)
    assert np.shares_memory(np.asarray(vorna.Image(wrapped)), wrapped)
    assert vorna.Image(wrapped[..., :3])[0, 1].tolist() == [4, 5, 6, 255]


@pytest.mark.parametrize("pixels, palette", [
    (np.random.default_rng(1).integers(0, 256, (5, 7, 4), np.uint8), None),
    (np.random.default_rng(2).integers(0, 3, (5, 7), np.uint8), np.array([[1, 2, 3], [255, 0, 0], [9, 9, 9]], np.uint8)),
    (np.random.default_rng(3).integers(0, 65536, (5, 7), np.uint16), None),
])
def test_images_survive_files(tmp_path, pixels, palette):
    image = vorna.Image(pixels, palette)
    image.save(tmp_path / "a.png")
    again = vorna.read(tmp_path / "a.png")
    assert image.compare(again) and image.compare(tmp_path / "a.png") and again.digest() == image.digest()
    assert image.png() == (tmp_path / "a.png").read_bytes() == image._repr_png_()
    for same in (pixels[::-1][::-1], pixels.astype(pixels.dtype.newbyteorder(">"))):
        assert vorna.Image(same, palette).digest() == image.digest()


def test_comparisons_find_what_differs(tmp_path, command):
    a = np.full((6, 8, 4), 100, np.uint8)
    b = a.copy()
    b[2, 3] = (103, 100, 98, 100)
    b[5, 7, 0] = 101
    for name, pixels in (("a", a), ("b", b)):
        vorna.Image(pixels).save(tmp_path / f"{name}.png")
    found = vorna.compare(a, b)
    assert not found and (found.differing, found.most) == (2, 3)
    line = command("compare", tmp_path / "a.png", tmp_path / "b.png") or str(found)
    assert vorna.compare(tmp_path / "a.png", tmp_path / "b.png") == found and line.strip() in (found.text, "")
    assert vorna.compare(a, b, 3) and not vorna.compare(a, b, 2)
    assert vorna.compare(a, b, (3, 2)) and not vorna.compare(a, b, (3, 1))
    assert vorna.compare(a, a.copy()).text.startswith("same: 8 x 6 pixels")
    assert "different sizes" in vorna.compare(a, a[:3]).text
    assert vorna.compare(a, b, np.int64(3)) and not vorna.compare(a, b, np.uint8(2))
    ids = np.array([[0, 1], [2, -1]], np.int32)
    assert not vorna.compare(ids, ids + 1, 1)
    assert vorna.compare(ids, ids) and vorna.compare(ids, ids + 1).differing == 4
    with pytest.raises(ValueError, match="tolerance: expected"):
        vorna.compare(a, b, "much")
    with pytest.raises(ValueError, match=r"image: expected .*found \(3,\) float64"):
        vorna.compare(np.zeros(3), b)
    with pytest.raises(FileNotFoundError):
        vorna.compare(tmp_path / "a.png", tmp_path / "c.png")
    with pytest.raises(ValueError, match="face numbers"):
        vorna.Image(None, ids=ids).save(tmp_path / "ids.png")


LAND = {"type": "Feature", "properties": {"name": "Land"},
        "geometry": {"type": "Polygon", "coordinates": [[[-20, -10], [30, -12], [25, 14], [-12, 18], [-20, -10]]]}}


def test_maps_give_the_bytes_of_the_command(tmp_path, command):
    path = tmp_path / "land.json"
    path.write_text(json.dumps(LAND))
    for arguments, options in (
        (dict(), []),
        (dict(border="dashed", water="#b4c8fa", bbox=(-10, -10, 40, 20), smooth_lines=True),
         ["--border", "dashed", "--water", "#b4c8fa", "--bbox=-10,-10,40,20", "--antialias"]),
        (dict(colors=8, fill=(200, 100, 50), graticule=10), ["--colors", "8", "--fill", "#c86432", "--graticule", "10"]),
    ):
        image = vorna.map(LAND, size=(90, 60), **arguments)
        line = command("render", path, "-o", tmp_path / "x.png", "--size", "90x60", "--hash", "--background", "white", *options)
        assert line.strip() == image.digest() == vorna.map(path, size=(90, 60), **arguments).digest()
    assert vorna.map(LAND, size=(100, 0)).shape == (60, 100, 4)
    with pytest.raises(ValueError, match="map: .*type"):
        vorna.map({"type": "Nothing"})
    with pytest.raises(ValueError, match="border: expected False, solid"):
        vorna.map(LAND, border="wavy")
    with pytest.raises(TypeError, match="colour"):
        vorna.map(LAND, colour="red")
    with pytest.raises(FileNotFoundError):
        vorna.map(tmp_path / "sea.json")


def place(kind, coordinates, /, **fields):
    return {"type": "Feature", "properties": fields, "geometry": {"type": kind, "coordinates": coordinates}}


def square(x, y, /, **fields):
    return place("Polygon", [[[x, y], [x + 10, y], [x + 10, y + 10], [x, y + 10], [x, y]]], **fields)


FIELDS = {"type": "FeatureCollection", "features": [
    square(0, 0, name="one", pop=10, kind="city"), square(10, 0, name="two", pop=200, kind="town"),
    square(20, 0, name="three", pop=3000, kind="city"), square(0, 10, name="four", pop=45, kind="isle"),
    place("LineString", [[0, -5], [30, -8]], flow=3), place("LineString", [[0, -9], [30, -12]], flow=9),
    place("Point", [15, 15], name="spot"), place("Point", [-100, 40], name="plains")]}
STYLE = {"title": "Styled", "layers": [{"filter": "pop > 20", "fill-by": "pop", "breaks": [100]}]}


def test_styles_by_data_give_the_bytes_of_the_command(tmp_path, command):
    path, style, land = tmp_path / "fields.json", tmp_path / "style.json", tmp_path / "land.json"
    for file, content in ((path, FIELDS), (style, STYLE), (land, LAND)):
        file.write_text(json.dumps(content))
    plain, seen = vorna.map(FIELDS, size=(120, 90)).digest(), set()
    for arguments, options in (
        (dict(filter="pop > 20 and kind = city"), ["--filter", "pop > 20 and kind = city"]),
        (dict(fill_by="pop", class_count=3, ramp="Reds", reverse_ramp=True, legend=True),
         ["--fill-by", "pop", "--class-count", "3", "--ramp", "Reds", "--reverse-ramp", "--legend"]),
        (dict(fill_by="pop", classes="equal"), ["--fill-by", "pop", "--classes", "equal"]),
        (dict(fill_by="pop", breaks=(40, 1000)), ["--fill-by", "pop", "--breaks", "40,1000"]),
        (dict(fill_by="kind"), ["--fill-by", "kind"]),
        (dict(width_by="flow", widths=(2, 12)), ["--width-by", "flow", "--widths", "2,12"]),
        (dict(label_by="kind", title="Places", attribution="nobody's"),
         ["--label-by", "kind", "--title", "Places", "--attribution", "nobody's"]),
        (dict(marker="star", marker_size=15), ["--marker", "star", "--marker-size", "15"]),
        (dict(projection="plane", flip_y=True), ["--projection", "plane", "--flip-y"]),
        (dict(projection="albers-usa"), ["--projection", "albers-usa"]),
        (dict(style=style), ["--style", style]),
        (dict(overlay=land, merge="and"), ["--overlay", land, "--merge", "and"]),
    ):
        image = vorna.map(FIELDS, size=(120, 90), **arguments)
        line = command("render", path, "-o", tmp_path / "x.png", "--size", "120x90", "--hash", "--background", "white", *options)
        assert line.strip() == image.digest(), (arguments, line)
        seen.add(image.digest())
    assert len(seen) == 12 and plain not in seen
    both = command("render", land, path, "-o", tmp_path / "x.png", "--size", "120x90", "--hash", "--background", "white")
    assert vorna.map([LAND, path], size=(120, 90)).digest() == both.strip() != plain
    for arguments, message in (
        (dict(fill_by="size"), "expected a field of map that has values; found 'size'"), (dict(classes="some"), "classes: expected one of quantiles.*some"),
        (dict(class_count=99), "class_count: expected 1 to 64, found 99"), (dict(breaks=[3, 2]), "breaks: .* increasing"),
        (dict(ramp="Purple"), "ramp: expected one of .*Purple"), (dict(widths=(1, 2, 3)), "widths: expected two"),
        (dict(widths=(1, 5000)), "widths: expected 0 to 1000, found 5000"), (dict(filter="pop >"), "filter: column"),
        (dict(marker="ball"), "marker: expected one of dot"), (dict(merge="or"), "merge: expected one of and"),
    ):
        with pytest.raises(ValueError, match=message):
            vorna.map(FIELDS, **arguments)
    with pytest.raises(ValueError, match="expected one or more"):
        vorna.map([])
    with pytest.raises(FileNotFoundError):
        vorna.map(FIELDS, style=tmp_path / "none.json")


def test_recordings_keep_the_depth_mode():
    canvas = vorna.Canvas((40, 30), depth=True)
    canvas.depth_mode(test="farther", write=False)

    def draw():
        with canvas.picture("white"):
            canvas.strip([[0, 0, 65535], [39, 0, 65535], [20, 29, 65535]], color="red")
            canvas.image(np.full((30, 40), 500, np.uint16), (0, 29))
            canvas.strip([[0, 0, 900], [39, 0, 900], [20, 29, 900]], color="blue")
        return canvas.to_image()

    expected = draw()
    assert expected[25, 20].tolist() == [0, 0, 255, 255] and expected.depth[25, 20] == 500
    with canvas.record() as recording:
        drawn = draw()
    for image in (drawn, recording.replay(), draw()):
        assert image.compare(expected) and np.array_equal(image.depth, expected.depth)


def test_recordings_are_drawn_again(tmp_path, command):
    canvas = vorna.Canvas((60, 40), depth=True)
    with canvas.record() as recording:
        with pytest.raises(ValueError, match="text: expected the end"):
            recording.text
        with canvas.picture("white"):
            canvas.strip([[5, 5, 100], [50, 8, 9000], [20, 35, 40000]], color="navy")
            canvas.polyline(np.array([[0, 0, 0], [59, 39, 65535]], np.int32), color=(200, 0, 0), width=3)
    drawn = canvas.to_image()
    for document in (recording, json.loads(recording.text)):
        again = vorna.replay(document)
        assert again.compare(drawn) and np.array_equal(again.depth, drawn.depth) and again.report["standard"] is not None
    for name in ("a.json", "a.json.gz"):
        recording.save(tmp_path / name)
        command("replay", tmp_path / name, "--color", tmp_path / "a.png")
        assert drawn.compare(tmp_path / "a.png") and vorna.replay(tmp_path / name).compare(drawn)
    with canvas.picture("black"):
        canvas.dots([[1, 1]], color="white")  # the canvas goes on, and is not recorded
    assert canvas.rgb[38, 1].tolist() == [255] * 3 and not vorna.replay(recording).compare(canvas.to_image())
    with pytest.raises(ValueError, match="document: .*calls"):
        vorna.replay({"calls": 3})
    part = [10, 59, 5, 39]  # the first and the last column, the lowest and the highest row
    whole = json.loads(recording.text)
    assert np.array_equal(vorna.replay({**whole, "output": part}).pixels, drawn.pixels[:35, 10:])
    for beyond in ([10, 60, 5, 39], [-1, 59, 5, 39], [10, 59, 5, 40], [10, 59, -10**6, 39]):
        with pytest.raises(ValueError, match="document: output: expected a rectangle inside the window"):
            vorna.replay({**whole, "output": beyond})
    with pytest.raises(ValueError, match="memory"):
        vorna.replay(recording, max_memory=len(recording.text))
    with pytest.raises(FileNotFoundError):
        vorna.replay(tmp_path / "b.json")
    with canvas.picture():
        with pytest.raises(vorna.Error, match="record: expected no picture"):
            with canvas.record():
                pass
