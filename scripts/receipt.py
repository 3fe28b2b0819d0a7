#!/usr/bin/env python3
"""usage: receipt.py [--check] [--module FILE] [BUILD...]

Draws the golden recordings and the models and drawings of docs/gallery.md with each kernel set of builds, folders of build/
(default: gcc-release), and compares the SHA-256 of their pixels. Programs for other systems run under the emulator of their
build. Writes docs/receipt.json, and its table into docs/exactness.md: gcc-release sets the digests, the other builds are
compared with them. A row names the commit that is checked out: builds are brought up to date, and sources with changes that are
not committed are refused. With --check nothing is built or written, gcc-release is compared too, and --module draws with
another renderer. Status 1 when an image differs."""

import argparse
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
RECEIPT, PAGE = ROOT / "docs/receipt.json", ROOT / "docs/exactness.md"
MARKS = "<!-- receipt -->", "<!-- end of receipt -->"
REFERENCE = "gcc-release"
KERNELS = {"x86_64": ["portable", "baseline", "avx2", "avx512"], "aarch64": ["portable", "neon"], "wasm32": ["portable", "wasm"]}
# What changes the recording of the gallery for golden images of its own.
GALLERY_CASES = {"gallery-no-depth": {"buffer_depth": 0}, "gallery-palette": {"color_system": 0},
                 "gallery-palette-no-depth": {"color_system": 0, "buffer_depth": 0}}
# What a build is made of.
SOURCES = ["CMakeLists.txt", "CMakePresets.json", "app", "cmake", "drawing", "host", "renderer", "vorna", "web"]
# Besides the commands of docs/gallery.md, images that need no library for models.
MORE_IMAGES = {
    "still-life-edges": "recordings/models/still-life.obj --edges --antialias --background white",
    "still-life-hidden-line": "recordings/models/still-life.obj --shading hidden-line",
    "still-life-palette": "recordings/models/still-life.obj --colors 8 --background '#202830'",
    "bunny-tiles": "/usr/share/glmark2/models/bunny.obj --size 1500x750 --edges --antialias --tile-size 200 --threads 3",
}
READ_WITHOUT_LIBRARIES = (".obj", ".ply", ".stl", ".dxf")


class Failure(Exception):
    """A command that does not draw."""


def setting(folder, file, pattern):
    for path in sorted((ROOT / "build" / folder).glob(file)):
        found = re.search(pattern, path.read_text(encoding="utf-8"), re.M)
        if found:
            return found[1]
    return ""


class Build:
    """How the command of a build runs, and what made it."""

    def __init__(self, name, module):
        self.name, self.draws_models = name, True
        cached = lambda key: setting(name, "CMakeCache.txt", f"^{key}:[A-Z]+=(.*)$")
        compiler = lambda key: setting(name, "CMakeFiles/*/CMakeCXXCompiler.cmake", f'^set\\({key} "(.*)"\\)$')
        system = lambda key: setting(name, "CMakeFiles/*/CMakeSystem.cmake", f'^set\\({key} "(.*)"\\)$')
        self.processor = system("CMAKE_SYSTEM_PROCESSOR").replace("AMD64", "x86_64")
        self.has_libraries = cached("VORNA_WITH_MODEL_LIBRARIES") != "OFF"
        self.system = system("CMAKE_SYSTEM_NAME")
        self.compiler = f"{compiler('CMAKE_CXX_COMPILER_ID')} {compiler('CMAKE_CXX_COMPILER_VERSION')}"
        build_type = cached("CMAKE_BUILD_TYPE")
        flags = cached(f"CMAKE_CXX_FLAGS_{build_type.upper()}")
        self.options = " ".join(re.findall(r"-O\w+", flags)) or build_type
        if cached("CMAKE_INTERPROCEDURAL_OPTIMIZATION") == "ON":
            self.options += " LTO"
        self.targets = ["krb", "vorna15"] if cached("VORNA_BUILD_COMMAND") == "OFF" else ["vorna"]
        if cached("EMSCRIPTEN"):
            # A package for Node.js that draws recordings, and a script that draws with it.
            self.draws_models, self.processor = False, "wasm32"  # CMake's platform file says x86
            package = ROOT / "build" / name / "web/package"
            if not (package / "vorna_replayer.wasm").exists():
                raise Failure(f"build/{name}: expected a built package")
            self.targets, self.emulator = ["vorna_site"], ["node"]
            self.command = ["node", str(ROOT / "scripts/web-command.mjs"), str(package)]
            return
        suffix, self.emulator = "", []
        if self.system == "Windows":
            suffix, self.emulator = ".exe", [cached("WINE")]
        elif cached("VORNA_TARGET"):
            self.emulator = [cached("QEMU_FOR_TARGET"), "-L", f"/usr/{cached('VORNA_TARGET')}"]
        program = ROOT / "build" / name / "bin" / f"vorna{suffix}"
        if not program.exists() or not all(self.emulator):
            raise Failure(f"build/{name}: expected a built vorna{suffix}, with an emulator where it is another system's")
        self.command = [*self.emulator, str(program), *(["--module", module] if module else [])]

    def run(self, arguments, document=None):
        done = subprocess.run([*self.command, *arguments], input=document, capture_output=True, cwd=ROOT, check=False,
                              env={**os.environ, "WINEDEBUG": "-all"})
        if done.returncode:
            raise Failure(f"{self.name}: {shlex.join(arguments)}: status {done.returncode}, {done.stderr.decode().strip()}")
        return done.stdout.decode()

    @functools.cached_property
    def kernels(self):
        """The sets that run; only a processor that is not emulated may lack one."""
        sets = []
        for name in KERNELS.get(self.processor, ["portable"]):
            try:
                self.run(["--kernels", name, "replay", "recordings/boat.json"])
                sets.append(name)
            except Failure as failure:
                if self.emulator or "cannot run the kernel set" not in str(failure):
                    raise
        return sets

    def make(self):
        """Builds what has changed since, so that the programs are of the sources that a row names."""
        subprocess.run(["cmake", "--build", str(ROOT / "build" / self.name), "--target", *self.targets], check=True)

    def emulated_by(self):
        if not self.emulator:
            return ""
        if self.emulator == ["node"]:
            version = subprocess.run(["node", "--version"], capture_output=True, text=True, check=True).stdout
            return f"Node.js {version.strip().lstrip('v')}"
        text = subprocess.run([self.emulator[0], "--version"], capture_output=True, text=True, check=True).stdout
        return re.sub(r"qemu-\S+ version", "QEMU", text.splitlines()[0]).split("(")[0].strip()


def draw_recording(name, document, build, kernels):
    has_depth = (ROOT / f"tests/golden/{name}.depth.png").exists()
    with tempfile.TemporaryDirectory() as folder:
        arguments = ["--kernels", kernels, "replay", "-", "--color-raw", f"{folder}/color"]
        build.run(arguments + (["--depth-raw", f"{folder}/depth"] if has_depth else []), document.encode())
        buffers = ["color", "depth"] if has_depth else ["color"]
        return {f"{name}.{each}": hashlib.sha256(pathlib.Path(folder, each).read_bytes()).hexdigest() for each in buffers}


def draw_model(name, words, build, kernels):
    if not build.draws_models or not build.has_libraries and not words[0].endswith(READ_WITHOUT_LIBRARIES):
        return {}
    with tempfile.TemporaryDirectory() as folder:
        arguments = ["--kernels", kernels, "render", *words, "-o", f"{folder}/out.png", "--hash"]
        return {name: build.run(arguments).strip()}


def drawings():
    """Functions of a build and a kernel set, each of which draws one or two images and returns their digests by name."""
    every = []
    paths = sorted((ROOT / "recordings").glob("*.json")) + sorted((ROOT / "tests/golden/answers").glob("*.json"))
    for path in paths:
        name = path.stem if path.parent.name == "recordings" else f"answers/{path.stem}"
        every.append(functools.partial(draw_recording, name, path.read_text(encoding="utf-8")))
    gallery = json.loads((ROOT / "recordings/gallery.json").read_text(encoding="utf-8"))
    for name, changes in GALLERY_CASES.items():
        every.append(functools.partial(draw_recording, name, json.dumps({**gallery, **changes})))
    models = {name: shlex.split(words) for name, words in MORE_IMAGES.items()}
    for block in re.findall(r"^```sh\n(.*?)^```$", (ROOT / "docs/gallery.md").read_text(encoding="utf-8"), re.M | re.S):
        words = shlex.split(block.replace("\\\n", " "), comments=True)
        if words[:2] == ["vorna", "render"] and words.count("vorna") == 1:
            at = words.index("-o")
            models[words[at + 1].removesuffix(".png")] = words[2:at] + words[at + 2:]
    for name, words in models.items():
        if (ROOT / words[0]).exists():
            every.append(functools.partial(draw_model, name, words))
        else:
            print(f"{name}: left out, there is no {words[0]}")
    return every


def draw_all(every, build, kernels):
    digests = {}
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as threads:
        for drawn in threads.map(lambda draw: draw(build, kernels), every):
            digests.update(drawn)
    return digests


def differences(digests, expected, source):
    """One line for each image without the expected digest; images that were not there when the receipt was written differ too."""
    return [f"{source}: {name}: expected {expected.get(name, 'no such image')}, found {digest}"
            for name, digest in digests.items() if digest != expected.get(name)]


def table(targets):
    lines = ["| build | processor | system | compiler | kernel sets | images | differ | commit |",
             "|---|---|---|---|---|---:|---:|---|"]
    for name, each in targets.items():
        processor = each["processor"] + (f", {each['emulated_by']}" if each["emulated_by"] else "")
        lines.append(f"| `{name}` | {processor} | {each['system']} | {each['compiler']} {each['options']} | "
                     f"{', '.join(f'`{kernels}`' for kernels in each['kernels'])} | {each['images']} | {len(each['differing'])} | "
                     f"{each['commit']} |")
    return "\n".join(lines)


def write(receipt):
    RECEIPT.write_text(json.dumps(receipt, indent=1) + "\n", encoding="utf-8")
    text = PAGE.read_text(encoding="utf-8")
    first, last = text.index(MARKS[0]) + len(MARKS[0]), text.index(MARKS[1])
    PAGE.write_text(f"{text[:first]}\n\n{table(receipt['targets'])}\n\n{text[last:]}", encoding="utf-8")


def expect_committed_sources():
    changed = subprocess.run(["git", "status", "--porcelain", "--", *SOURCES], cwd=ROOT, capture_output=True, text=True, check=True)
    if changed.stdout:
        raise Failure(f"expected sources of the commit that rows name, found changes:\n{changed.stdout.rstrip()}")


def main():
    parser = argparse.ArgumentParser(usage="receipt.py [--check] [--module FILE] [BUILD...]", add_help=False)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--module")
    parser.add_argument("builds", nargs="*", default=[REFERENCE])
    arguments = parser.parse_args()
    if arguments.module and not arguments.check:
        parser.error("--module needs --check")
    receipt = json.loads(RECEIPT.read_text(encoding="utf-8")) if RECEIPT.exists() else {"targets": {}, "images": {}}
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], cwd=ROOT, capture_output=True, text=True, check=False)
    builds = [Build(name, arguments.module) for name in arguments.builds]
    if not arguments.check:
        expect_committed_sources()
        for build in builds:
            build.make()
    every, failures = drawings(), []
    for build in builds:
        name = build.name
        differing, count = [], 0
        for kernels in build.kernels:
            digests = draw_all(every, build, kernels)
            if not arguments.check and name == REFERENCE and kernels == build.kernels[0] and digests != receipt["images"]:
                receipt = {"targets": {}, "images": digests} # others have to be compared anew
            found = differences(digests, receipt["images"], f"{name} {kernels}")
            differing, count = differing + found, len(digests)
            print(f"{name} {kernels}: {len(digests)} images, {len(found)} differ", *found, sep="\n", flush=True)
        failures += differing
        receipt["targets"][name] = {
            "processor": build.processor, "system": build.system, "emulated_by": build.emulated_by(), "compiler": build.compiler,
            "options": build.options, "kernels": build.kernels, "images": count, "differing": differing,
            "commit": commit.stdout.strip()}
    if not arguments.check:
        write(receipt)
    return 1 if failures else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Failure as failure:
        sys.exit(f"receipt.py: {failure}")
