#!/usr/bin/python3
"""usage: count-instructions.py [--x86-64] [REGEX]

Counts the instructions that the renderer executes on AArch64 for workloads of the benchmark, with each kernel set, and writes
the table into docs/performance.md. With REGEX the workloads are those whose whole name it matches, with --x86-64 the kernel
sets of x86-64 are counted too, and the table is only printed. Programs run under QEMU's user mode with a plug-in that counts
(bench/instruction_counter.cpp): a figure is the difference between a run of three frames and one of a single frame, so that
set-up is left out, and depends on the compiler but not on the machine."""

import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MODEL = "/usr/share/glmark2/models/bunny.obj"
# Build, preset, and how its programs run, with a processor that has all kernel sets that QEMU knows.
SYSTEMS = {
    "x86_64": ("build/bench-x86_64", "gcc-release", ["qemu-x86_64", "-cpu", "max"]),
    "aarch64": ("build/bench-aarch64", "linux-aarch64", ["qemu-aarch64", "-L", "/usr/aarch64-linux-gnu"]),
}
KERNELS = {"aarch64": ["portable", "neon"], "x86_64": ["portable", "baseline", "avx2"]} # QEMU does not know AVX-512
# The workloads of the table: of each kind one size, without its siblings of 8 bits, with a mask or with blocks of depths.
WORKLOADS = r"(fill|flat|gouraud|blended|textured)_512|flat_8|gouraud_3|(smooth_)?lines_50|image_(copied|blended)|(circles|outlines)_50"
# What a rate counts, and how many of them a figure is for.
UNITS = {"Mpix/s": ("pixel", 1), "Mtri/s": ("triangle", 1), "Mlines/s": ("line", 1), "thousand/s": ("circle", 1),
         "Mpoints/s": ("point", 1), "ms": ("million a frame", 1e-6)}
MARKS = "<!-- instructions -->", "<!-- end of instructions -->"


def build(systems):
    for system in systems:
        folder, preset, _ = SYSTEMS[system]
        subprocess.run(["cmake", "--preset", preset, "-B", folder, "-D", "VORNA_BUILD_TESTS=OFF", "-D",
                        "VORNA_BUILD_BENCHMARKS=ON"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["cmake", "--build", folder, "--target", "bench_frames"], cwd=ROOT, check=True)


def run(system, counter, kernels, arguments):
    """-> standard output and the number of instructions"""
    folder, _, emulator = SYSTEMS[system]
    programs = os.path.join(ROOT, folder, "bin")
    command = [*emulator, "-plugin", counter, os.path.join(programs, "bench_frames"), os.path.join(programs, "krb.vrd"), MODEL]
    done = subprocess.run(command + arguments, env={**os.environ, "KRB_KERNELS": kernels}, capture_output=True, text=True)
    counted = re.search(r"^instructions: (\d+)$", done.stderr, re.M)
    if done.returncode or not counted:
        raise SystemExit(f"{' '.join(command + arguments)}: status {done.returncode}, {done.stderr.strip()}")
    return done.stdout, int(counted[1])


def row(workload, columns, counter):
    figures = []
    for system, kernels in columns:
        text, one = run(system, counter, kernels, [workload, "--frames", "1"])
        three = run(system, counter, kernels, [workload, "--frames", "3"])[1]
        drawn = json.loads(text)
        unit, scale = UNITS[drawn["unit"]]
        figures.append((three - one) / 2 / drawn["amount"] * scale)
    texts = " | ".join(f"{figure:.3g}" if figure < 1000 else f"{figure:.0f}" for figure in figures)
    return f"| {drawn['group']} | {drawn['title']} | {unit} | {texts} |"


def table(columns, expression):
    heads = [f"{kernels}, {system.replace('_', '-')}" for system, kernels in columns]
    lines = ["| | workload | instructions a | " + " | ".join(heads) + " |", "|---|---|---|" + "---:|" * len(heads)]
    with tempfile.TemporaryDirectory() as folder:
        counter = os.path.join(folder, "counter.so")
        subprocess.run(["g++", "-shared", "-fPIC", "-O1", "-o", counter, os.path.join(ROOT, "bench/instruction_counter.cpp")],
                       check=True)
        names = [name for name in run(columns[0][0], counter, "portable", [])[0].split() if re.fullmatch(expression, name)]
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as threads:
            for line in threads.map(lambda name: row(name, columns, counter), names):
                lines.append(line)
                print(line, file=sys.stderr, flush=True)
    return "\n".join(lines)


def write(text):
    page = os.path.join(ROOT, "docs/performance.md")
    with open(page, encoding="utf-8") as file:
        old = file.read()
    first, last = old.index(MARKS[0]) + len(MARKS[0]), old.index(MARKS[1])
    with open(page, "w", encoding="utf-8") as file:
        file.write(f"{old[:first]}\n\n{text}\n\n{old[last:]}")


def main():
    parser = argparse.ArgumentParser(usage="count-instructions.py [--x86-64] [REGEX]", add_help=False)
    parser.add_argument("--x86-64", action="store_true", dest="x86_64")
    parser.add_argument("expression", nargs="?")
    arguments = parser.parse_args()
    systems = ["aarch64", "x86_64"] if arguments.x86_64 else ["aarch64"]
    build(systems)
    text = table([(system, kernels) for system in systems for kernels in KERNELS[system]], arguments.expression or WORKLOADS)
    if arguments.expression or arguments.x86_64:
        print(text)
    else:
        write(text)


main()
