# Makes the wheel of what is built, installs it into a fresh environment and draws there. usage: check_wheel.py SOURCE BUILD FOLDER
import os
import pathlib
import re
import shutil
import subprocess
import sys
import venv

PROGRAM = """
import numpy as np, vorna, sys
assert vorna.__file__.startswith(sys.prefix), vorna.__file__
image = vorna.render((np.eye(3), [[0, 1, 2]]), size=(64, 48), ids=True)
assert (image.ids == 0).any()
canvas = vorna.Canvas((9, 9))
with canvas.picture("white"):
    canvas.dots([[4, 4]], color="red")
image.save("wheel.png")
with open("/proc/self/maps") as maps:
    libraries = {line.split()[-1] for line in maps if "vorna" in line or "krb" in line}
strangers = [name for name in libraries if name.startswith("/") and not name.startswith(sys.prefix)]
assert not strangers, strangers
print(len(libraries), "files of the package are loaded")
"""


def main(source, build, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    (folder / "egg").mkdir()
    subprocess.run([sys.executable, "-W", "ignore", "setup.py", "-q", "egg_info", "-e", folder / "egg", "build", "-b",
                    folder / "build", "bdist_wheel", "-d", folder / "dist"],
                   cwd=source, env={**environment, "VORNA_BUILD": str(build)}, check=True)
    (wheel,) = (folder / "dist").glob("vorna-*.whl")
    venv.create(folder / "venv", system_site_packages=True, with_pip=True)
    python = folder / "venv" / "bin" / "python"
    subprocess.run([python, "-m", "pip", "install", "-q", "--no-index", "--no-deps", "--force-reinstall", wheel], check=True, env=environment)
    elsewhere = folder / "elsewhere"
    elsewhere.mkdir()
    subprocess.run([python, "-W", "error", "-c", PROGRAM], cwd=elsewhere, env=environment, check=True)
    assert (elsewhere / "wheel.png").stat().st_size > 100
    # The page's first program.
    page = (source.parent / "docs" / "python.md").read_text()
    start = re.search(r"^```python\n(.*?)^```$", page, re.DOTALL | re.MULTILINE)[1]
    done = subprocess.run([python, "-W", "error", "-c", start], cwd=elsewhere, env=environment, check=True, capture_output=True, text=True)
    assert (elsewhere / "ball.png").stat().st_size > 1000 and done.stdout.startswith("(480, 640, 4)"), done.stdout
    print("the page's first program prints", done.stdout, end="")


main(*(pathlib.Path(argument).resolve() for argument in sys.argv[1:4]))
