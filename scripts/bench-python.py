#!/usr/bin/python3
# Measures the Python package: calls, images of arrays, and the bunny beside other packages that are installed, each in a process of its
# own. usage: PYTHONPATH=build/gcc-release/python scripts/bench-python.py [--large] [COMMAND]; COMMAND: the command vorna, to compare with
import hashlib
import resource
import subprocess
import sys
import time

import numpy as np

BUNNY = "/usr/share/glmark2/models/bunny.obj"
PEERS = ("vorna", "matplotlib", "vtk")


def best(work, rounds):
    """Milliseconds of the fastest of several rounds, and of the first."""
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        work()
        times.append(1000 * (time.perf_counter() - start))
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
    start = time.perf_counter()
    draw = drawer(peer, vertices, faces)
    loaded = 1000 * (time.perf_counter() - start)
    digests = set()
    fastest, first = best(lambda: digests.add(hashlib.sha256(draw().tobytes()).hexdigest()), 3 if peer == "matplotlib" else 9)
    memory = (resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before) // 1024
    print(f"{peer:11} import {loaded:6.0f} ms, first image {first:7.1f} ms, best {fastest:7.1f} ms, {memory:4} MiB more, "
          f"{len(digests)} digest{'s' if len(digests) > 1 else ''}")


def measure_calls():
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
        print(f"polyline of 100,000 segments: {best(lambda: canvas.polyline(path), 20)[0]:.3f} ms")


def measure_models(large):
    import vorna
    both = {"pixels": False, "depth": True, "ids": True, "size": (640, 480)}
    mesh = ball(50, 20)
    model = vorna.Model(mesh, threads=1)
    print(f"2,000 faces, depths and numbers: {best(lambda: model.render(threads=1, **both), 200)[0]:.2f} ms, "
          f"from arrays {best(lambda: vorna.render(mesh, threads=1, **both), 200)[0]:.2f} ms")
    if large:
        mesh = ball(2500, 2000)
        seconds = best(lambda: vorna.Model(mesh, threads=2), 1)[0]
        model = vorna.Model(mesh, threads=2)
        fastest, first = best(lambda: model.render(threads=2, **both), 5)
        print(f"10,000,000 faces: model of arrays {seconds:.0f} ms, first image {first:.0f} ms, then {fastest:.0f} ms")


def main(arguments):
    if arguments[:1] == ["--peer"]:
        return measure_peer(arguments[1])
    large = "--large" in arguments
    commands = [argument for argument in arguments if argument != "--large"]
    imports = [subprocess.run([sys.executable, "-c", "import numpy, time; t = time.perf_counter(); import vorna; print(time.perf_counter() - t)"],
                              capture_output=True, text=True, check=True).stdout for _ in range(7)]
    print(f"import vorna, beside numpy: {1000 * min(map(float, imports)):.1f} ms")
    measure_calls()
    measure_models(large)
    for command in commands:
        subprocess.run([command, "render", BUNNY, "-o", "/dev/null", "--output-format", "png", "--size", "640x480", "--supersample", "1",
                        "--threads", "1", "--stats", "--repeat", "9"], check=True)
    for peer in PEERS:
        done = subprocess.run([sys.executable, __file__, "--peer", peer], text=True, stderr=subprocess.PIPE)
        if done.returncode != 0:
            print(f"{peer:11} {done.stderr.strip().splitlines()[-1]}")


main(sys.argv[1:])
