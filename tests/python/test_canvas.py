# Canvases: what is drawn where, arrays of all kinds, attributes, threads.
import json
import subprocess
import sys
import threading

import numpy as np
import pytest

import vorna

WHITE, BLACK = [255, 255, 255], [0, 0, 0]


def drawn(draw, size=(32, 24), **settings):
    """The pixels of a picture on white."""
    canvas = vorna.Canvas(size, **settings)
    with canvas.picture("white"):
        draw(canvas)
    return np.asarray(canvas.to_image()).copy()


def test_pixels_are_where_the_points_say():
    canvas = vorna.Canvas((8, 6))
    with canvas.picture("white"):
        canvas.dots([[2, 1]], color="black")
    rows, columns = np.nonzero((canvas.rgb != 255).any(2))
    assert (rows.tolist(), columns.tolist()) == ([6 - 1 - 1], [2])
    assert canvas.pixels.shape == (6, 8, 4) and canvas.depth is None and canvas.palette is None
    canvas.pixels[0, 0] = (1, 2, 3, 255)  # the buffer itself, blue first
    assert canvas.to_image()[0, 0].tolist() == [3, 2, 1, 255] and canvas.rgb[0, 0].tolist() == [3, 2, 1]


def test_arrays_of_all_kinds_draw_the_same():
    line = np.array([[1, 2, 0], [20, 17, 0], [25, 3, 0]], np.int32)
    expected = drawn(lambda c: c.polyline(line, color="black"))
    assert (expected != 255).any()
    padded = np.zeros((6, 5), np.int32)
    padded[::2, 1:4] = line
    for points in (line.tolist(), line[:, :2], line.astype(np.float32), line.astype(float), line.astype(np.int64),
                   line.astype(np.uint8), line.astype(">i4"), line.astype(np.float16), padded[::2, 1:4], np.asfortranarray(line),
                   line[::-1][::-1]):
        assert np.array_equal(drawn(lambda c: c.polyline(points, color="black")), expected)
    colors = np.array([[255, 0, 0], [0, 0, 255]], np.uint8)
    expected = drawn(lambda c: c.polyline(line, colors))
    words = np.array([0xFFFF0000, 0xFF0000FF], np.uint32)
    for same in (colors / 255.0, words, np.hstack([colors, np.full((2, 1), 255, np.uint8)]), colors[:, ::-1][:, ::-1]):
        assert np.array_equal(drawn(lambda c: c.polyline(line, same)), expected)


def test_every_call_draws_what_its_name_says():
    strip = [[2, 2], [20, 3], [4, 20]]
    red, ramp = np.array([[255, 0, 0]], np.uint8), np.array([[255, 0, 0], [0, 255, 0], [0, 0, 255]], np.uint8)
    flat = drawn(lambda c: c.strip(strip, color="red"))
    assert np.array_equal(flat, drawn(lambda c: c.strip(strip, red)))
    smooth = drawn(lambda c: c.strip(strip, ramp))
    assert np.array_equal((flat != 255).any(2), (smooth != 255).any(2)) and len(np.unique(smooth.reshape(-1, 4), axis=0)) > 20
    assert np.array_equal(drawn(lambda c: c.polygon(strip, color="red"))[10, 6], [255, 0, 0, 255])
    marks = drawn(lambda c: c.markers([[5, 5], [15, 12]], ramp[:2], symbol="block", marker_size=3))
    assert marks[24 - 1 - 5, 5].tolist() == [255, 0, 0, 255] and marks[24 - 1 - 12, 15].tolist() == [0, 255, 0, 255]
    disc, ring = (drawn(lambda c: getattr(c, name)((15, 11), (6, 6), color="red")) for name in ("ellipse", "arc"))
    assert disc[12, 15].tolist() == [255, 0, 0, 255] and ring[12, 15].tolist() == [255] * 4 and (ring[..., 1] == 0).any()
    picture = np.random.default_rng(5).integers(0, 256, (4, 5, 4), np.uint8)
    picture[..., 3] = 255
    words = picture[..., 2].astype(np.uint32) | picture[..., 1].astype(np.uint32) << 8 | picture[..., 0].astype(np.uint32) << 16
    for pixels in (picture, picture[..., :3], words | 0xFF000000):
        image = drawn(lambda c: c.image(pixels, (3, 20)))
        assert np.array_equal(image[3:7, 3:8], picture) and (image[7:] == 255).all()
    texture = vorna.Texture(np.tile(picture[:1, :1], (2, 2, 1)))
    uv = [[0, 0], [1, 0], [0, 1]]
    # Texels times white: a product of levels is cut off, which takes a level of channels below 255.
    texels = drawn(lambda c: c.strip(strip, uv=uv, texture=texture))[15, 6].astype(int)
    assert np.abs(texels - picture[0, 0]).max() <= 1


def test_depth_buffers_hide_and_can_be_read_and_written():
    canvas = vorna.Canvas((20, 20), depth=True)
    with canvas.picture("white"):
        canvas.strip([[0, 0, 500], [19, 0, 500], [0, 19, 500]], color="red")
        canvas.strip([[0, 0, 900], [19, 0, 900], [0, 19, 900]], color="blue")
        canvas.strip([[0, 0, 900], [5, 0, 900], [0, 5, 900]], color="#00ff00", depth_test=False)
    assert canvas.rgb[10, 3].tolist() == [255, 0, 0] and canvas.rgb[18, 1].tolist() == [0, 255, 0]
    assert canvas.depth[10, 3] == 500 and canvas.depth[0, 19] == 65535 and canvas.to_image().depth[10, 3] == 500
    with canvas.picture():
        canvas.image(np.full((20, 20), 1000, np.uint16), (0, 19))
        canvas.depth_mode(test="farther", write=False)
        canvas.dots([[3, 9, 2000], [4, 9, 10]], color="black")
    assert canvas.rgb[10, 3].tolist() == BLACK and canvas.rgb[10, 4].tolist() == [255, 0, 0] and canvas.depth[10, 3] == 1000


def test_attributes_hold_for_a_call_a_block_or_from_now_on():
    line = [[2, 5], [30, 5]]
    thick = drawn(lambda c: c.polyline(line, width=5, color="red"))
    assert (thick[..., 1] == 0).sum() > 4 * 27

    def in_block(c):
        with c.attributes(width=5):
            c.set(color="red")
            c.set(color="blue")
        c.set(color=(255, 0, 0))
        with c.attributes(width=5, color="blue"), c.attributes(color="red"):
            c.polyline(line)

    assert np.array_equal(drawn(in_block), thick)
    dashed = drawn(lambda c: c.polyline(line, color="red", style="dashed"))[24 - 1 - 5, 2:30, 1]
    assert 0 in dashed and 255 in dashed
    clipped = drawn(lambda c: c.polyline(line, color="red", clip=(10, 0, 15, 23)))
    assert np.unique(np.nonzero(clipped[..., 1] == 0)[1]).tolist() == list(range(10, 16))
    half = drawn(lambda c: c.polygon([[0, 0], [31, 0], [31, 23], [0, 23]], color=(0, 0, 0, 128)), blending=True)
    assert 120 < half[10, 10, 0] < 135


def test_palettes():
    palette = np.array([[255, 255, 255], [255, 0, 0], [0, 0, 0]], np.uint8)
    canvas = vorna.Canvas((10, 8), colors=8, palette=palette)
    with canvas.picture("white"):
        canvas.polyline([[0, 0], [9, 0]], color="red")
        canvas.image(np.full((2, 2), 2, np.uint8), (0, 7))
    assert canvas.pixels.dtype == np.uint8 and canvas.pixels.shape == (8, 10)
    assert canvas.pixels[7].tolist()[:9] == [1] * 9 and canvas.pixels[0, :3].tolist() == [2, 2, 0]
    image = canvas.to_image()
    assert image.palette.tolist() == palette.tolist() == canvas.palette.tolist() and vorna.Canvas((2, 2), colors=8).palette.shape == (256, 3)


def test_wrong_arguments_are_told_and_draw_nothing():
    canvas = vorna.Canvas((10, 10))
    with pytest.raises(vorna.Error, match="polyline: expected a picture that has begun"):
        canvas.polyline([[0, 0], [9, 9]])
    with canvas.picture("white"):
        for call, message in (
            (lambda: canvas.polyline([0, 1, 2]), r"points: expected \(n, 2 or 3\) numbers, found \(3,\) int64"),
            (lambda: canvas.polyline(np.zeros((2, 4))), r"found \(2, 4\) float64"),
            (lambda: canvas.polyline(np.zeros((2, 2, 2))), "points: expected an array of one or two dimensions"),
            (lambda: canvas.polyline([["a", "b"]]), "points: expected an array of numbers"),
            (lambda: canvas.polyline([[0, 0], [2**40, 1]]), "points: expected numbers that fit 32 bits, found 1099511627776 in row 1"),
            (lambda: canvas.polyline([[0, 0], [9, 9]], np.zeros((5, 3), np.uint8)), "colors: expected 1 or 2 of them, found 5"),
            (lambda: canvas.polyline([[0, 0], [9, 9]], np.zeros((2, 2), np.uint8)), "colors: expected"),
            (lambda: canvas.strip([[0, 0], [9, 9], [3, 4]], uv=[[0, 0]]), r"uv: expected \(3, 2\) numbers"),
            (lambda: canvas.polyline([[0, 0], [9, 9]], color="no"), "color: expected"),
            (lambda: canvas.polyline([[0, 0], [9, 9]], width=0), "width: expected 1 to 16384, found 0"),
            (lambda: canvas.polyline([[0, 0], [9, 9]], style="wavy"), "style: expected one of solid"),
            (lambda: canvas.image(np.zeros((3, 3, 4)), (0, 0)), "image: expected"),
            (lambda: canvas.image(np.zeros((3, 3, 4), np.uint8), 5), "at: expected"),
        ):
            with pytest.raises(ValueError, match=message):
                call()
        with pytest.raises(TypeError, match="no attribute has the name 'colour'"):
            canvas.polyline([[0, 0], [9, 9]], colour="red")
        with pytest.raises(vorna.Error, match="begin: expected no picture"):
            canvas.begin()
        # Nothing is drawn of nothing, and points may lie anywhere.
        canvas.polyline(np.zeros((0, 2)))
        canvas.polyline([])
        for value in (np.nan, np.inf, -np.inf, 1e38, 2.0**31):
            far = np.array([[value, value], [-value, 3], [value, -value]])
            for points in (far, far.astype(np.float32)):
                for name in ("polyline", "strip", "polygon", "markers", "dots"):
                    getattr(canvas, name)(points, clip=(4, 4, 3, 3))
    assert (canvas.rgb == 255).all()
    for size in ((0, 5), (5,), (16385, 5), "ab", (10.7, 5)):
        with pytest.raises(ValueError, match="size: expected"):
            vorna.Canvas(size)


class Neither_True_Nor_False:
    def __bool__(self):
        raise RuntimeError("neither")


def test_errors_of_arguments_arrive():
    canvas = vorna.Canvas((10, 10), depth=True)
    for call in (lambda v: canvas.set(smooth=v), lambda v: canvas.set(opaque_pattern=v), lambda v: canvas.depth_mode(write=v)):
        with pytest.raises(RuntimeError, match="neither"):
            call(Neither_True_Nor_False())
    with pytest.raises(ValueError, match="clip: expected left, bottom, right and top, found"):
        canvas.set(clip=(np.nan, 0, 5, 5))
    with pytest.raises(ValueError, match=r"texture: .*sides of up to 16384, found \(1, 16385, 3\) uint8"):
        vorna.Texture(np.zeros((1, 16385, 3), np.uint8))


@pytest.mark.parametrize("dy", [3, -3])
def test_images_of_the_canvas_itself_are_copied_first(dy):
    random = np.random.default_rng(4)
    for colors in (8, 32):
        canvas = vorna.Canvas((64, 64), depth=True, colors=colors)
        with canvas.picture("white"):
            for name in ("pixels", "depth"):
                buffer = getattr(canvas, name)
                buffer[:] = random.integers(0, 256, buffer.shape)
                if name == "pixels" and colors == 32:
                    buffer[..., 3] = 255
                    buffer = buffer.view(np.uint32)[..., 0]
                expected, before = buffer.copy(), buffer.copy()
                if dy > 0:
                    expected[:-dy] = before[dy:]
                else:
                    expected[-dy:] = before[:dy]
                canvas.image(buffer, (0, 63 + dy))
                assert np.array_equal(buffer, expected), (colors, name)


def test_words_may_have_the_other_byte_order():
    words = np.array([[0xFF102030, 0xFFFF0000]], np.uint32)
    expected = drawn(lambda c: c.image(words, (3, 9)))
    assert np.array_equal(drawn(lambda c: c.image(words.astype(">u4"), (3, 9))), expected)


def test_images_may_be_taken_while_a_recording_begins():
    canvas = vorna.Canvas((700, 700))
    with canvas.picture("red"):
        pass
    found, done = [], threading.Event()

    def take():
        while not done.is_set():
            found.append({tuple(pixel) for pixel in np.asarray(canvas.to_image())[::333, ::333].reshape(-1, 4).tolist()})

    threads = [threading.Thread(target=take) for _ in range(3)]
    for thread in threads:
        thread.start()
    for _ in range(60):
        with canvas.record():
            with canvas.picture("red"):
                pass
    done.set()
    for thread in threads:
        thread.join()
    assert set().union(*found) <= {(255, 0, 0, 255), (0, 0, 0, 0)}


def test_far_points_do_no_harm():
    canvas = vorna.Canvas((10, 10), depth=True)
    with canvas.picture("white"):
        for value in (np.nan, np.inf, 1e38, 2.0**31, -5e9):
            far = np.array([[value, value, value], [-value, 3, 0], [value, -value, 7], [3, value, -value]])
            for points in (far, far.astype(np.float32), np.nan_to_num(far.clip(-2**31, 2**31 - 1)).astype(np.int32)):
                for name in ("polyline", "strip", "polygon", "markers", "dots"):
                    getattr(canvas, name)(points)


def test_threads_draw_at_once_on_canvases_of_their_own_and_wait_on_shared_ones():
    points = np.random.default_rng(7).integers(0, 500, (3000, 3), np.int32)

    def on(canvas, times=3):
        with canvas.picture("white"):
            for _ in range(times):
                canvas.polyline(points, color="red", width=1)

    expected = vorna.Canvas((500, 500))
    on(expected)
    canvases = [vorna.Canvas((500, 500)) for _ in range(4)]
    threads = [threading.Thread(target=on, args=(canvas,)) for canvas in canvases]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(np.array_equal(canvas.pixels, expected.pixels) for canvas in canvases)
    shared = vorna.Canvas((500, 500))
    with shared.picture("white"):
        threads = [threading.Thread(target=lambda: shared.polyline(points, color="red")) for _ in range(6)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert np.array_equal(shared.pixels, expected.pixels)


def test_threads_of_a_canvas_draw_the_same_pixels():
    random = np.random.default_rng(3)
    strip = random.integers(0, 300, (400, 3), np.int32)
    colors = random.integers(0, 256, (400, 3), np.uint8)
    noise = random.integers(0, 256, (40, 50, 4), np.uint8)
    found = []
    for threads in (1, 3, None):
        canvas = vorna.Canvas((300, 200), depth=True, blending=True, threads=threads)
        with canvas.record() as recording, canvas.picture("white"):
            points = strip.copy()
            canvas.strip(points, colors)
            points[:] = 0  # the canvas has a copy
            canvas.polyline(strip[:90], color=(255, 0, 0, 100), width=5, style="dashed")
            canvas.depth_mode(test="farther")
            canvas.image(noise, (30, 120))
            within = canvas.pixels.copy()  # what was drawn so far
            pixels = canvas.pixels
            canvas.ellipse((150, 100), (60, 40), color="navy", depth_test=False)
            canvas.flush()
            assert not np.array_equal(pixels, within)
            canvas.image(canvas.pixels[50:90, 20:80], (200, 90))
        found.append((canvas.pixels.copy(), canvas.depth.copy(), within, np.asarray(canvas.to_image()),
                      json.loads(recording.text)["calls"]))
        assert recording.replay().compare(canvas.to_image())
    for others in found[1:]:
        for mine, other in zip(found[0], others):
            assert np.array_equal(mine, other) if isinstance(mine, np.ndarray) else mine == other
    for threads in (-1, 1025, "many"):
        with pytest.raises(ValueError, match="threads: expected"):
            vorna.Canvas((5, 5), threads=threads)


def test_the_package_needs_numpy_alone():
    code = "import sys, numpy; before = set(sys.modules); import vorna; print(*sorted(set(sys.modules) - before))"
    loaded = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout.split()
    allowed = {"vorna", "json", "gzip", "zlib", "_json", "_compression", "contextlib"}
    assert {name.split(".")[0] for name in loaded} <= allowed, loaded
