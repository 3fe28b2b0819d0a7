#!/usr/bin/python3
# Measures the Python package in processor time, the least of several rounds: calls, images of arrays, and the bunny beside other packages
# that are installed, each in a process of its own. VTK needs an X server: xvfb-run.
# usage: PYTHONPATH=BUILD/python scripts/bench-python.py [--large] [--growth] [BUILD]
# BUILD: a build folder, for comparison with its command and its C library. --large: 10,000,000 faces. --growth: 200,000 images.
import ctypes
import hashlib
import pathlib
import re
import resource
import subprocess
import sys
import tempfile
import time

import numpy as np

BUNNY = "/usr/share/glmark2/models/bunny.obj"
PEERS = ("vorna", "matplotlib", "vtk")


def best(work, rounds):
    """Milliseconds of processor time, of all threads, of the fastest of several rounds, and of the first."""
    times = []
    for _ in range(rounds):
        start = time.process_time()
        work()
        times.append(1000 * (time.process_time() - start))
    return min(times), times[0]


def ball(columns, rows):
    """A sphere of 2 * columns * rows triangles."""
    u, v = np.meshgrid(np.linspace(0, 2 * np.pi, columns + 1), np.linspace(0, np.pi, rows + 1))
    vertices = np.stack([np.cos(u) * np.sin(v), np.cos(v), np.sin(u) * np.sin(v)], 2).reshape(-1, 3).astype(np.float32)
    first = (np.arange(rows)[:, None] * (columns + 1) + np.arange(columns)).reshape(-1, 1)
    return vertices, np.concatenate([first + [0, 1, columns + 2], first + [0, columns + 2, columns + 1]]).astype(np.uint32)


def read_bunny():
    vertices, faces = [], []
    with open(BUNNY) as lines:
        for words in map(str.split, lines):
            if words and words[0] == "v":
                vertices.append([float(word) for word in words[1:4]])
            elif words and words[0] == "f":
                faces.append([int(word.split("/")[0]) - 1 for word in words[1:4]])
    return np.array(vertices, np.float32), np.array(faces, np.uint32)


def drawer(peer, vertices, faces):
    """A function that draws the mesh from its arrays, 640 x 480 pixels, and returns them."""
    if peer == "vorna":
        import vorna
        return lambda: np.asarray(vorna.render((vertices, faces), size=(640, 480), supersample=1, threads=1))
    if peer == "matplotlib":
        import matplotlib
        matplotlib.use("agg")
        import matplotlib.pyplot as plt

        def draw():
            figure = plt.figure(figsize=(6.4, 4.8), dpi=100)
            axes = figure.add_subplot(projection="3d")
            axes.plot_trisurf(vertices[:, 0], vertices[:, 2], vertices[:, 1], triangles=faces, linewidth=0, antialiased=False)
            figure.canvas.draw()
            pixels = np.asarray(figure.canvas.buffer_rgba()).copy()
            plt.close(figure)
            return pixels

        return draw
    import vtkmodules.vtkRenderingOpenGL2  # noqa: F401, it makes the windows
    from vtkmodules import vtkCommonCore, vtkCommonDataModel, vtkRenderingCore
    from vtkmodules.util import numpy_support

    def draw():
        points, cells, data = vtkCommonCore.vtkPoints(), vtkCommonDataModel.vtkCellArray(), vtkCommonDataModel.vtkPolyData()
        points.SetData(numpy_support.numpy_to_vtk(vertices, deep=True))
        rows = np.hstack([np.full((len(faces), 1), 3), faces]).astype(np.int64).ravel()
        cells.SetCells(len(faces), numpy_support.numpy_to_vtkIdTypeArray(rows, deep=True))
        data.SetPoints(points)
        data.SetPolys(cells)
        mapper, actor, renderer = vtkRenderingCore.vtkPolyDataMapper(), vtkRenderingCore.vtkActor(), vtkRenderingCore.vtkRenderer()
        mapper.SetInputData(data)
        actor.SetMapper(mapper)
        renderer.AddActor(actor)
        window = vtkRenderingCore.vtkRenderWindow()
        window.SetOffScreenRendering(1)
        window.SetMultiSamples(0)
        window.SetSize(640, 480)
        window.AddRenderer(renderer)
        window.Render()
        shot = vtkRenderingCore.vtkWindowToImageFilter()
        shot.SetInput(window)
        shot.ReadFrontBufferOff()
        shot.Update()
        return numpy_support.vtk_to_numpy(shot.GetOutput().GetPointData().GetScalars()).copy()

    return draw


def measure_peer(peer):
    vertices, faces = read_bunny()
    before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    start = time.process_time()
    draw = drawer(peer, vertices, faces)
    loaded = 1000 * (time.process_time() - start)
    digests = set()
    fastest, first = best(lambda: digests.add(hashlib.sha256(draw().tobytes()).hexdigest()), 3 if peer == "matplotlib" else 9)
    memory = (resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) // 1024
    print(f"{peer:11} import {loaded:6.0f} ms, first image {first:7.1f} ms, best {fastest:7.1f} ms, {memory:4} MiB more, "
          f"{len(digests)} digest{'s' if len(digests) > 1 else ''}")


def measure_calls(build):
    import vorna
    canvas, line = vorna.Canvas((640, 480)), np.array([[0, 0, 0], [5, 5, 0]], np.int32)
    steps = np.random.default_rng(1).integers(-9, 10, (100001, 3))
    path = (np.cumsum(steps, 0) % 480).astype(np.int32)

    def calls(count, **attributes):
        for _ in range(count):
            canvas.polyline(line, **attributes)

    with canvas.picture("white"):
        print(f"polyline of 2 points: {best(lambda: calls(1000), 50)[0]:.2f} us, "
              f"with two attributes {best(lambda: calls(1000, color='red', width=1), 50)[0]:.2f} us")
        ways = [lambda: canvas.polyline(path)]
        if build:
            ways.append(polyline_in_c(build, path))
        # One after the other in each round, so that what else the machine does meets both.
        times = [[best(way, 3)[0] for way in ways] for _ in range(15)]
        for name, least in zip(("", ", in C"), map(min, zip(*times))):
            print(f"polyline of 100,000 segments{name}: {least:.3f} ms")


def polyline_in_c(build, path):
    """A function that draws the path through the C library, on a canvas like that of the package."""
    library = ctypes.CDLL(str(build / "bin" / "libvorna-c.so"))
    settings, canvas = (ctypes.c_uint64 * 64)(), ctypes.c_void_p()
    assert library.vorna_canvas_settings_init(settings, ctypes.c_size_t(8 * 64)) == 0
    sides = ctypes.cast(settings, ctypes.POINTER(ctypes.c_int32))
    sides[4], sides[5] = 640, 480  # behind the size of the struct and the module
    assert library.vorna_canvas_create(settings, ctypes.byref(canvas)) == 0
    white = (ctypes.c_uint8 * 4)(255, 255, 255, 255)
    assert library.vorna_begin_picture(canvas, white) == 0
    points, count = path.ctypes.data_as(ctypes.c_void_p), ctypes.c_size_t(len(path))
    return lambda: library.vorna_draw_2di_polyline(canvas, count, points)


def measure_models(large):
    import vorna
    both = {"pixels": False, "depth": True, "ids": True, "size": (640, 480)}
    mesh = ball(50, 20)
    model = vorna.Model(mesh, threads=1)
    print(f"2,000 faces, depths and numbers: {best(lambda: model.render(threads=1, **both), 200)[0]:.2f} ms, "
          f"from arrays {best(lambda: vorna.render(mesh, threads=1, **both), 200)[0]:.2f} ms")
    if large:
        mesh = ball(2500, 2000)
        clock = {}

        def note(name, work):
            start = time.perf_counter(), time.process_time()
            result = work()
            clock.setdefault(name, []).append((time.perf_counter() - start[0], time.process_time() - start[1]))
            return result

        for _ in range(3):
            model = note("model of arrays", lambda: vorna.Model(mesh, threads=2))
            for name in ("first image", "later image", "later image"):
                note(name, lambda: model.render(threads=2, **both))
        for name, times in clock.items():
            elapsed, used = (1000 * min(each) for each in zip(*times))
            print(f"10,000,000 faces, two threads: {name} {elapsed:.0f} ms of the clock, {used:.0f} ms of the processors")


def measure_growth(count=200_000, samples=8):
    """The memory of the process after so many images of one model, at several times."""
    import vorna
    model = vorna.Model(ball(8, 6))
    resident = []
    for i in range(count + 1):
        if i % (count // samples) == 0:
            pages = int(pathlib.Path("/proc/self/statm").read_text().split()[1])
            resident.append(pages * resource.getpagesize() // 1024)
        model.render(size=(32, 24), depth=True, ids=True, threads=1, supersample=1)
    print(f"{count:,} images: resident KiB " + ", ".join(map(str, resident)))


def write_ply(path, vertices, faces):
    head = (f"ply\nformat binary_little_endian 1.0\nelement vertex {len(vertices)}\nproperty float x\nproperty float y\n"
            f"property float z\nelement face {len(faces)}\nproperty list uchar uint vertex_indices\nend_header\n")
    rows = np.zeros(len(faces), [("count", "u1"), ("corners", "<u4", 3)])
    rows["count"], rows["corners"] = 3, faces
    path.write_bytes(head.encode() + vertices.astype("<f4").tobytes() + rows.tobytes())


def measure_command(command):
    """The bunny's arrays as a file of bytes: loading finishes them for drawing, normals included, as a Model of arrays is made."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "bunny.ply"
        write_ply(file, *read_bunny())
        times = []
        for _ in range(15):
            line = subprocess.run([command, "render", file, "-o", folder + "/bunny.png", "--size", "640x480", "--supersample", "1",
                                   "--threads", "1", "--stats", "--repeat", "9"], capture_output=True, text=True, check=True)
            found = re.search(r"load ([\d.]+) ms, setup ([\d.]+) ms, draw ([\d.]+) ms", line.stdout + line.stderr)
            times.append([float(part) for part in found.groups()])
    load, setup, draw = map(min, zip(*times))
    print(f"command     load {load:.1f} ms, set-up {setup:.1f} ms, draw {draw:.1f} ms, of the clock: {load + setup + draw:.1f} ms")


def measure_parts():
    """What an image of the bunny's arrays consists of."""
    import vorna
    mesh, settings = read_bunny(), {"size": (640, 480), "supersample": 1, "threads": 1}
    times = {"Model": [], "first image": [], "later image": []}
    for _ in range(15):
        start = time.process_time()
        model = vorna.Model(mesh, threads=1)
        for name in times:
            times[name].append(1000 * (time.process_time() - start))
            start = time.process_time()
            model.render(**settings)
    print("vorna       " + ", ".join(f"{name} {min(each):.1f} ms" for name, each in times.items()) + ", of the processor")


def main(arguments):
    if arguments[:1] == ["--peer"]:
        return measure_peer(arguments[1])
    large, growth = "--large" in arguments, "--growth" in arguments
    builds = [pathlib.Path(argument) for argument in arguments if not argument.startswith("--")]
    build = builds[0] if builds else None
    imports = [subprocess.run([sys.executable, "-c", "import numpy, time; t = time.process_time(); import vorna; print(time.process_time() - t)"],
                              capture_output=True, text=True, check=True).stdout for _ in range(7)]
    print(f"import vorna, beside numpy: {1000 * min(map(float, imports)):.1f} ms")
    measure_calls(build)
    measure_models(large)
    if growth:
        measure_growth()
    measure_parts()
    if build:
        measure_command(build / "bin" / "vorna")
    for peer in PEERS:
        done = subprocess.run([sys.executable, __file__, "--peer", peer], text=True, stderr=subprocess.PIPE)
        if done.returncode != 0:
            print(f"{peer:11} {done.stderr.strip().splitlines()[-1]}")


main(sys.argv[1:])
