#!/usr/bin/env python3
"""usage: bench-web.py SITE [PYTHON-PACKAGE]

Times of frames of a lit knot whose camera goes around it, in milliseconds, the median of 21: the module of SITE (build/wasm/web/site)
and three.js with SwiftShader, both in headless Chromium, and the same model natively through the Python package on one thread where
its folder (build/gcc-release/python) is given. npm fetches three.js into a temporary folder."""
import functools
import http.server
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/app/commands"))
from browser import Browser  # noqa: E402

THREE = "three@0.160.1"
SCENES = [(250, 8), (1250, 8), (5000, 20)]
SIZES = [(640, 480), (1920, 1080)]


class Handler(http.server.SimpleHTTPRequestHandler):
    extensions_map = {**http.server.SimpleHTTPRequestHandler.extensions_map, ".wasm": "application/wasm", ".mjs": "text/javascript"}

    def log_message(self, *_):
        pass


def knot(segments, sides):
    import numpy as np
    angle = 2 * np.pi * np.arange(segments) / segments
    middle = lambda at: np.stack([(2 + np.cos(3 * at)) * np.cos(2 * at), (2 + np.cos(3 * at)) * np.sin(2 * at), np.sin(3 * at)], 1)
    along = middle(angle + 0.01) - middle(angle)
    first = np.stack([-along[:, 1], along[:, 0], 0 * angle], 1)
    first /= np.linalg.norm(first, axis=1, keepdims=True)
    second = np.cross(along, first)
    second /= np.linalg.norm(second, axis=1, keepdims=True)
    turn = 2 * np.pi * np.arange(sides) / sides
    points = (middle(angle)[:, None] + 0.4 * np.cos(turn)[None, :, None] * first[:, None]
              + 0.4 * np.sin(turn)[None, :, None] * second[:, None]).reshape(-1, 3).astype(np.float32)
    a = np.arange(segments * sides)
    b = a - a % sides + (a + 1) % sides
    c, d = (a + sides) % len(a), (b + sides) % len(a)
    return points, np.stack([a, b, c, b, d, c], 1).reshape(-1, 3).astype(np.uint32)


def native_time(vorna, mesh, size):
    import math
    model, times = vorna.Model(mesh), []
    for frame in range(25):
        eye = (11 * math.sin(frame / 20), 4, 11 * math.cos(frame / 20))
        camera = vorna.Camera.look_at(eye, (0, 0, 0), (0, 1, 0), fov=45)
        start = time.perf_counter()
        model.render(size=size, camera=camera, shading="gouraud", supersample=1, threads=1)
        times.append(1000 * (time.perf_counter() - start))
    return statistics.median(times[4:])


def main():
    site = Path(sys.argv[1]).resolve()
    vorna = None
    if len(sys.argv) > 2:
        sys.path.insert(0, sys.argv[2])
        import vorna
    with tempfile.TemporaryDirectory() as folder:
        served = Path(folder)
        shutil.copytree(site / "vorna", served / "vorna")
        shutil.copytree(ROOT / "bench/web", served, dirs_exist_ok=True)
        subprocess.run(["npm", "pack", "--silent", THREE], cwd=folder, check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["tar", "xzf", next(served.glob("three-*.tgz"))], cwd=folder, check=True)
        shutil.move(served / "package/build", served / "three")
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=folder))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        page = Browser("chromium", f"http://127.0.0.1:{server.server_port}/frames.html", ["--enable-unsafe-swiftshader"])
        print("| triangles | size | here | three.js | native, one thread |\n|---:|---|---:|---:|---:|")
        for segments, sides in SCENES:
            for size in SIZES:
                found = page.value(f"times({segments}, {sides}, {list(size)})")
                assert found["theirs"]["painted"]
                native = f"{native_time(vorna, knot(segments, sides), size):.1f}" if vorna else "–"
                print(f"| {2 * segments * sides} | {size[0]} × {size[1]} | {found['ours']:.1f} ms | {found['theirs']['time']:.1f} ms | "
                      f"{native} ms |", flush=True)
        print(found["theirs"]["name"])
        page.close()


if __name__ == "__main__":
    main()
