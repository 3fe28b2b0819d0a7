# Checks that the types of the package are those of its objects, and that mypy finds wrong use. usage: types.py FOLDER
import os
import pathlib
import subprocess
import sys

RIGHT = """
import numpy as np
import vorna

image = vorna.render((np.eye(3), [[0, 1, 2]]), size=(64, 48), camera="front", ids=True)
if image.ids is not None:
    nearest: int = int(image.ids.max())
canvas = vorna.Canvas((64, 48), depth=True)
with canvas.picture("white"), canvas.attributes(width=3):
    canvas.polyline([[0, 0], [5, 5]], color="red")
same: bool = bool(canvas.to_image().compare(image, tolerance=(1, 5)))
"""
WRONG = {
    'vorna.render("a.obj", shading="shiny")': "arg-type",
    "vorna.Canvas((1, 2), colors=16)": "arg-type",
    'vorna.render("a.obj").ids.max()': "union-attr",
    "vorna.Image(None).nothing": "attr-defined",
}


def mypy(folder, *arguments):
    environment = {**os.environ, "MYPYPATH": os.environ["PYTHONPATH"]}
    return subprocess.run([sys.executable, "-m", *arguments], capture_output=True, text=True, cwd=folder, env=environment)


def main(folder):
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "right.py").write_text(RIGHT)
    (folder / "wrong.py").write_text("import vorna\n" + "".join(line + "\n" for line in WRONG))
    right = mypy(folder, "mypy", "--strict", "right.py")
    assert right.returncode == 0, right.stdout + right.stderr
    wrong = mypy(folder, "mypy", "wrong.py").stdout.splitlines()
    for number, (line, error) in enumerate(WRONG.items(), 2):
        assert any(text.startswith(f"wrong.py:{number}:") and f"[{error}]" in text for text in wrong), (line, wrong)
    stubs = mypy(folder, "mypy.stubtest", "vorna", "--ignore-missing-stub")
    assert stubs.returncode == 0, stubs.stdout + stubs.stderr


main(pathlib.Path(sys.argv[1]).resolve())
