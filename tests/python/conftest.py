# What the tests share. VORNA_COMMAND names the command that draws the same.
import os
import subprocess

import numpy as np
import pytest


@pytest.fixture
def box():
    """Two quads that meet at a right angle, as vertices and triangles."""
    vertices = np.array([[0, 0, 0], [2, 0, 0], [2, 1, 0], [0, 1, 0], [0, 0, -1], [2, 0, -1]], np.float64)
    return vertices, np.array([[0, 1, 2], [0, 2, 3], [0, 4, 5], [0, 5, 1]])


@pytest.fixture
def box_file(tmp_path, box):
    path = tmp_path / "box.obj"
    lines = ["v %g %g %g" % tuple(v) for v in box[0]] + ["f %d %d %d" % tuple(f + 1) for f in box[1]]
    path.write_text("\n".join(lines) + "\n")
    return path


@pytest.fixture
def command():
    """Runs the command vorna; returns its output, or its error line when it fails."""

    def run(*arguments):
        done = subprocess.run([os.environ["VORNA_COMMAND"], *map(str, arguments)], capture_output=True, text=True)
        return done.stdout if done.returncode == 0 else done.stderr

    return run
