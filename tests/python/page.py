# Runs each block of Python of a page by itself, in a folder with the files that the page names. usage: page.py PAGE FOLDER
import importlib.util
import os
import pathlib
import re
import shutil
import sys

import numpy as np


def main(page, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    os.chdir(folder)
    angles = np.linspace(0, 2 * np.pi, 24, endpoint=False)
    ring = np.stack([np.cos(angles), np.sin(angles), 0 * angles], 1)
    vertices = np.vstack([ring, ring * (1, 1, 0) + (0, 0, 1)])
    sides = [(i, (i + 1) % 24, 24 + (i + 1) % 24, 24 + i) for i in range(24)]
    pathlib.Path("part.obj").write_text("".join("v %g %g %g\n" % tuple(v) for v in vertices)
                                        + "".join("f " + " ".join(str(i + 1) for i in face) + "\n" for face in sides))
    blocks = re.findall(r"^```python\n(.*?)^```$", page.read_text(), re.DOTALL | re.MULTILINE)
    assert len(blocks) > 5, "expected the page's programs"
    assert len(blocks[0].strip().splitlines()) <= 10, "expected a start of ten lines"
    for block in blocks:
        if "matplotlib" in block and importlib.util.find_spec("matplotlib") is None:
            print("left out without matplotlib:", block.splitlines()[0])
            continue
        line = page.read_text()[: page.read_text().index(block)].count("\n")
        exec(compile("\n" * line + block, str(page), "exec"), {"__name__": "__main__"})
    print(len(blocks), "programs of", page.name, "run")


main(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve())
