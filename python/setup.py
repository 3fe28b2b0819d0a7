# The wheel: what CMake builds, with the libraries and the renderer in the package itself.
#
# VORNA_BUILD names a folder where the project is built already; without it, it is built here, in build/wheel.

import os
import pathlib
import re
import subprocess
import sys

from setuptools import setup
from setuptools.command.build_py import build_py
from setuptools.dist import Distribution

root = pathlib.Path(__file__).resolve().parent.parent
version = re.search(r"project\(vorna VERSION ([0-9.]+)", (root / "CMakeLists.txt").read_text())[1]


class Binary(Distribution):
    """Of one platform, though setuptools compiles nothing."""

    def has_ext_modules(self):
        return True


class Build(build_py):
    def run(self):
        build = pathlib.Path(os.environ.get("VORNA_BUILD") or root / "build" / "wheel")
        if "VORNA_BUILD" not in os.environ:
            subprocess.run(["cmake", "-S", root, "-B", build, "-DVORNA_BUILD_TESTS=OFF", "-DVORNA_WITH_PYTHON=ON",
                            f"-DPython_EXECUTABLE={sys.executable}"], check=True)
            subprocess.run(["cmake", "--build", build, "--target", "vorna_python", "-j", str(os.cpu_count())], check=True)
        stage = pathlib.Path(self.build_lib).resolve()
        subprocess.run(["cmake", "--install", build, "--prefix", stage, "--component", "python_wheel", "--strip"], check=True,
                       stdout=subprocess.DEVNULL)


setup(
    name="vorna",
    version=version,
    description="Models, maps and drawings as exact images: the same bytes on every machine",
    packages=["vorna"],
    package_dir={"vorna": "vorna"},
    python_requires=">=3.9",
    install_requires=["numpy"],
    distclass=Binary,
    cmdclass={"build_py": Build},
)
