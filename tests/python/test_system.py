# The package and the rest of the program: the interpreter's lock, signals, files that cannot be had, other libraries.
import copy
import os
import pickle
import signal
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import vorna

FACE = (np.eye(3), [[0, 1, 2]])
LAND = {"type": "Polygon", "coordinates": [[[-20, -10], [30, -12], [25, 14], [-12, 18], [-20, -10]]]}


def canvas_calls():
    canvas = vorna.Canvas((64, 64), threads=2)
    with canvas.record() as recording, canvas.picture("white"):
        canvas.polyline([[0, 0], [60, 50]])
    canvas.begin()
    noise = vorna.Image(np.random.default_rng(1).integers(0, 256, (64, 64, 4), np.uint8))
    return {
        "polyline": lambda: canvas.polyline([[0, 0], [60, 50]]),
        "image": lambda: canvas.image(noise.pixels, (0, 63)),
        "flush": canvas.flush,
        "pixels": lambda: canvas.pixels,
        "to_image": canvas.to_image,
        "replay": recording.replay,
        "png": noise.png,
        "digest": noise.digest,
        "compare": lambda: noise.compare(noise),
        "Model": lambda: vorna.Model(FACE),
        "render": lambda: vorna.render(FACE, size=(32, 32)),
        "map": lambda: vorna.map(LAND, size=(32, 32)),
    }


@pytest.mark.parametrize("name", list(canvas_calls()))
def test_calls_let_other_threads_run(name):
    # No thread is made to give up the lock: another one runs only if the call releases it.
    assert runs_beside(canvas_calls()[name])


def test_a_call_that_keeps_the_lock_is_found():
    assert not runs_beside(lambda: None)


def runs_beside(call):
    """Whether another thread runs while this one makes calls and does nothing else that releases the interpreter's lock."""
    interval = sys.getswitchinterval()
    ready, ran = [], []

    def run():
        ready.append(True)
        while not going:
            time.sleep(0)
        ran.append(True)

    going = []
    thread = threading.Thread(target=run)
    thread.start()
    while not ready:
        time.sleep(0.001)
    sys.setswitchinterval(1e6)
    try:
        going.append(True)
        for _ in range(200_000):  # of a few microseconds or more each
            call()
            if ran:
                break
        has_run = bool(ran)
    finally:
        sys.setswitchinterval(interval)
        thread.join()
    return has_run


def test_reading_waits_without_the_lock(tmp_path):
    # Neither end of a pipe goes on without the other one: with the lock kept, none would.
    os.mkfifo(tmp_path / "pipe")
    text = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"
    writer = threading.Thread(target=lambda: (tmp_path / "pipe").write_text(text))
    writer.start()
    (tmp_path / "face.obj").write_text(text)
    (tmp_path / "pipe.obj").symlink_to("pipe")
    assert vorna.Model(tmp_path / "pipe.obj").triangle_count == vorna.Model(tmp_path / "face.obj").triangle_count == 1
    writer.join()


def test_an_interrupt_ends_a_long_render():
    # Without an interrupt the image takes minutes of processor time.
    main, model = threading.main_thread().ident, vorna.Model(FACE)
    timer = threading.Timer(0.3, lambda: signal.pthread_kill(main, signal.SIGINT))
    start = time.process_time()
    with pytest.raises(KeyboardInterrupt):
        timer.start()
        model.render(size=(8000, 8000), look="studio", supersample=8, max_memory=4 << 30, threads=2)
    assert time.process_time() - start < 30
    timer.join()
    # Both the model and the program go on.
    assert model.render(size=(32, 32)).compare(vorna.render(FACE, size=(32, 32)))


def geojson(path):
    features = ",".join(f'{{"type": "Feature", "properties": {{"a": {i}}}, "geometry": {{"type": "Point", "coordinates": '
                        f'[{i % 360 - 180}, {i % 179 - 89.5}]}}}}' for i in range(150_000))
    path.write_text('{"type": "FeatureCollection", "features": [' + features + "]}")


def dxf(path):
    points = "".join(f"0\nPOINT\n8\n0\n10\n{i % 1000}\n20\n{i // 1000}\n" for i in range(200_000))
    path.write_text("0\nSECTION\n2\nENTITIES\n" + points + "0\nENDSEC\n0\nEOF\n")


def gpx(path):
    points = "".join(f'<wpt lat="{i % 170 - 85}" lon="{i % 350 - 175}"/>' for i in range(150_000))
    path.write_text('<gpx version="1.1" creator="t" xmlns="http://www.topografix.com/GPX/1/1">' + points + "</gpx>")


@pytest.mark.parametrize("kind, timer, clock", [
    ("json", signal.ITIMER_PROF, time.process_time), ("dxf", signal.ITIMER_PROF, time.process_time),
    ("gpx", signal.ITIMER_REAL, time.perf_counter),  # read by a process of its own
    ("png", signal.ITIMER_PROF, time.process_time)])
def test_an_interrupt_ends_reading_and_packing(kind, timer, clock, tmp_path):
    if kind == "png":
        call = vorna.Image(np.random.default_rng(1).integers(0, 256, (2500, 2500, 4), np.uint8)).png
    else:
        path = tmp_path / ("map." + kind)
        {"json": geojson, "dxf": dxf, "gpx": gpx}[kind](path)
        call = lambda: vorna.Map(path)  # noqa: E731
    start = clock()
    call()
    whole = clock() - start

    def stop(*_):
        raise TimeoutError

    number = signal.SIGPROF if timer == signal.ITIMER_PROF else signal.SIGALRM
    before = signal.signal(number, stop)
    try:
        start = clock()
        signal.setitimer(timer, whole / 5)
        with pytest.raises(TimeoutError):
            call()
        taken = clock() - start
    finally:
        signal.setitimer(timer, 0)
        signal.signal(number, before)
    assert taken < 0.75 * whole, (taken, whole)


def test_signal_handlers_run_within_a_call():
    seen, model = [], vorna.Model(FACE)
    long = {"size": (8000, 8000), "look": "studio", "supersample": 8, "max_memory": 4 << 30, "threads": 2}

    def note(*_):
        seen.append(vorna.render(FACE, size=(8, 8)).shape)  # calls of the library, but not of the same object
        with pytest.raises(vorna.Error, match="the call that the signal has interrupted"):
            model.render(**long)
        raise ValueError("enough")

    before = signal.signal(signal.SIGUSR1, note)
    try:
        timer = threading.Timer(0.3, lambda: signal.pthread_kill(threading.main_thread().ident, signal.SIGUSR1))
        with pytest.raises(ValueError, match="enough"):
            timer.start()
            model.render(**long)
        timer.join()
    finally:
        signal.signal(signal.SIGUSR1, before)
    assert seen == [(8, 8, 4)]


READERS = {
    "render": vorna.render, "Model": vorna.Model, "map": vorna.map, "read": vorna.read, "replay": vorna.replay,
    "compare": lambda path: vorna.compare(path, path),
    "overlay": lambda path: vorna.Map(LAND, overlay=path), "style": lambda path: vorna.map(LAND, style=path),
    "font": lambda path: vorna.map(LAND, labels=True, font=path), "second": lambda path: vorna.map([LAND, path]),
}


@pytest.mark.parametrize("name", READERS)
def test_files_that_cannot_be_read(name, tmp_path):
    call = READERS[name]
    suffix = {"render": "obj", "Model": "obj", "map": "json", "overlay": "json", "style": "json",
              "second": "json", "font": "ttf", "replay": "json"}.get(name, "png")
    with pytest.raises(FileNotFoundError, match="missing"):
        call(tmp_path / f"missing.{suffix}")
    (tmp_path / f"folder.{suffix}").mkdir()
    with pytest.raises(IsADirectoryError, match="folder"):
        call(tmp_path / f"folder.{suffix}")
    with pytest.raises(NotADirectoryError, match="inside"):
        (tmp_path / "plain").write_text("")
        call(tmp_path / "plain" / f"inside.{suffix}")
    (tmp_path / f"wrong.{suffix}").write_text("{")
    with pytest.raises(ValueError, match="wrong"):
        call(tmp_path / f"wrong.{suffix}")


def test_files_that_cannot_be_written(tmp_path):
    image = vorna.Image(np.zeros((2, 2, 4), np.uint8))
    recording = vorna.Recording("{}")
    for save in (image.save, recording.save):
        with pytest.raises(FileNotFoundError):
            save(tmp_path / "no" / "file.png")
        with pytest.raises(IsADirectoryError):
            save(tmp_path)
    with pytest.raises(NotADirectoryError):
        image.save("/dev/null/x.png")
    with pytest.raises(vorna.Error, match="cannot be written: No space"):
        image.save("/dev/full")
    with pytest.raises(ValueError, match="face numbers"):
        vorna.Image(None, ids=np.zeros((2, 2), np.int32)).save(tmp_path / "a.png")


def test_files_of_others(tmp_path):
    # The superuser may read everything.
    program = """
import os, sys, numpy as np, vorna
if os.geteuid() == 0:
    os.setgroups([]), os.setgid(65534), os.setuid(65534)
land, image = {"type": "Point", "coordinates": [1, 2]}, vorna.Image(np.zeros((2, 2, 4), np.uint8))
for call in (lambda: vorna.read("secret.png"), lambda: vorna.Model("secret.obj"), lambda: vorna.map("secret.json"),
             lambda: vorna.map(land, style="secret.json"), lambda: vorna.map(land, overlay="secret.json"),
             lambda: vorna.replay("secret.json"), lambda: vorna.compare("secret.png", "secret.png"), lambda: image.save("a.png"),
             lambda: vorna.Recording("{}").save("a.json"), lambda: image.save("open/protected.png"),
             lambda: image.save("closed/a.png"), lambda: vorna.read("closed/a.png")):
    try:
        call()
    except PermissionError as error:
        print(error.filename or error)
"""
    folder = tmp_path / "theirs"
    folder.mkdir()
    for name in ("secret.png", "secret.obj", "secret.json"):
        (folder / name).write_text("v 0 0 0")
        (folder / name).chmod(0)
    (folder / "open").mkdir()
    (folder / "open").chmod(0o777)
    (folder / "open" / "protected.png").write_text("")
    (folder / "open" / "protected.png").chmod(0o444)
    (folder / "closed").mkdir(mode=0)
    folder.chmod(0o555)
    for above in (tmp_path, *tmp_path.parents):
        if above.stat().st_uid == os.geteuid() and above != above.parent:
            above.chmod(above.stat().st_mode | 0o055)
    done = subprocess.run([sys.executable, "-c", program], cwd=folder, capture_output=True, text=True)
    assert [line.split(":")[0] for line in done.stdout.splitlines()] == [
        "secret.png", "secret.obj", "secret.json", "secret.json", "secret.json", "secret.json", "secret.png", "a.png", "a.json",
        "open/protected.png", "closed/a.png", "closed/a.png"], done.stderr


def test_file_names_are_bytes(tmp_path, command):
    name = os.fsencode(tmp_path) + b"/\xff\xfe \xc3\xa9"
    path = os.fsdecode(name)
    with open(path + ".obj", "w") as file:
        file.write("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nmtllib none.mtl\n")
    model = vorna.Model(path + ".obj")
    image = model.render(size=(20, 10))
    image.save(path + ".png")
    assert os.path.exists(name + b".png") and vorna.read(path + ".png").compare(image) and image.compare(path + ".png")
    assert all(isinstance(line, str) for line in image.warnings)
    with pytest.raises(FileNotFoundError) as error:
        vorna.read(path + ".none")
    assert os.fsencode(str(error.value)).count(b"none") == 1
    with open(path + ".json", "w") as file:
        file.write("{")
    for call in (vorna.map, vorna.replay):
        with pytest.raises(ValueError):
            call(path + ".json")


def test_memory_that_there_is_not():
    with pytest.raises((MemoryError, ValueError)):
        vorna.render(FACE, size=(262144, 262144), max_memory=1 << 62)


def test_images_can_be_copied_and_pickled():
    image = vorna.render(FACE, size=(12, 8), depth=True, ids=True, colors=8)
    for again in (copy.copy(image), copy.deepcopy(image), *(pickle.loads(pickle.dumps(image, p)) for p in (2, 5))):
        assert again.compare(image) and np.array_equal(again.depth, image.depth) and np.array_equal(again.ids, image.ids)
        assert np.array_equal(again.distances(), image.distances()) and again.palette.tolist() == image.palette.tolist()
    assert np.shares_memory(copy.copy(image).pixels, image.pixels)
    assert not np.shares_memory(copy.deepcopy(image).pixels, image.pixels)
    camera = pickle.loads(pickle.dumps(vorna.Camera.look_at((3, 2, 5), (0, 0, 0))))
    assert vorna.render(FACE, size=(12, 8), camera=camera).compare(
        vorna.render(FACE, size=(12, 8), camera=vorna.Camera.look_at((3, 2, 5), (0, 0, 0))))
    comparison = image.compare(image)
    assert pickle.loads(pickle.dumps(comparison)) == comparison
    for kept in (vorna.Canvas((4, 4)), vorna.Model(FACE)):
        with pytest.raises(TypeError, match="pickle"):
            pickle.dumps(kept)


def test_other_libraries_take_images_without_a_copy():
    image = vorna.render(FACE, size=(12, 8))
    for taken in (np.from_dlpack(image), np.asarray(image), np.array(image, copy=False)):
        assert np.shares_memory(taken, image.pixels) and taken.shape == (8, 12, 4)
    kept = np.array(image, copy=False)
    pixels = image.pixels.copy()
    image.pixels = np.zeros_like(pixels)
    assert np.array_equal(kept, pixels)
    image.pixels = pixels
    assert image.__array_interface__["data"] is image.pixels
    assert image.__buffer__(0).obj is image.pixels
    if sys.version_info >= (3, 12):
        assert memoryview(image).shape == (8, 12, 4)


def test_zero_bytes_end_no_names(tmp_path):
    image = vorna.Image(np.zeros((4, 4, 4), np.uint8))
    (tmp_path / "a").write_text("mine")
    for write in (image.save, vorna.Recording("{}").save):
        with pytest.raises((OSError, ValueError, vorna.Error), match="cannot be written"):
            write(f"{tmp_path}/a\0b.png")
    with pytest.raises((OSError, ValueError), match="cannot be read"):
        vorna.replay(f"{tmp_path}/a\0")
    assert [entry.name for entry in tmp_path.iterdir()] == ["a"] and (tmp_path / "a").read_text() == "mine"
    with pytest.raises(TypeError, match="text: expected a str, found bytes"):
        vorna.Recording(b"{}")
    with pytest.raises(ValueError, match="dpi: expected a number, found str"):
        vorna.Image(image.pixels, dpi="x")
