#!/usr/bin/python3
"""usage: count-instructions.py [REGEX]

Counts the instructions that the renderer executes for each workload of the benchmark whose name matches, with each kernel set of
x86-64 and AArch64, and writes the table into docs/performance.md; with REGEX the table is only printed. Programs run under QEMU's
user mode with a plug-in that counts (bench/instruction_counter.cpp): a figure is the difference between a run of three frames and
one of a single frame, so that set-up is left out, and depends on the compiler but not on the machine."""

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
COLUMNS = [("x86_64", "portable"), ("x86_64", "baseline"), ("x86_64", "avx2"), ("aarch64", "portable"), ("aarch64", "neon")]
# What a rate counts, and how many of them a figure is for.
UNITS = {"Mpix/s": ("pixel", 1), "Mtri/s": ("triangle", 1), "Mlines/s": ("line", 1), "thousand/s": ("circle", 1),
         "Mpoints/s": ("point", 1), "ms": ("million a frame", 1e-6)}
MARKS = "<!-- instructions -->", "<!-- end of instructions -->"


def build():
    for folder, preset, _ in SYSTEMS.values():
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


def row(workload, counter):
    figures = []
    for system, kernels in COLUMNS:
        text, one = run(system, counter, kernels, [workload, "--frames", "1"])
        three = run(system, counter, kernels, [workload, "--frames", "3"])[1]
        drawn = json.loads(text)
        unit, scale = UNITS[drawn["unit"]]
        figures.append((three - one) / 2 / drawn["amount"] * scale)
    texts = " | ".join(f"{figure:.3g}" if figure < 1000 else f"{figure:.0f}" for figure in figures)
    return f"| {drawn['group']} | {drawn['title']} | {unit} | {texts} |"


def main():
    only = re.compile(sys.argv[1] if len(sys.argv) > 1 else ".")
    build()
    with tempfile.TemporaryDirectory() as folder:
        counter = os.path.join(folder, "counter.so")
        subprocess.run(["g++", "-shared", "-fPIC", "-O1", "-o", counter, os.path.join(ROOT, "bench/instruction_counter.cpp")],
                       check=True)
        names = run("x86_64", counter, "portable", [])[0].split()
        heads = [f"{kernels}, {system.replace('_', '-')}" for system, kernels in COLUMNS]
        lines = ["| | workload | instructions a | " + " | ".join(heads) + " |", "|---|---|---|" + "---:|" * len(heads)]
        for name in filter(only.search, names):
            lines.append(row(name, counter))
            print(lines[-1], file=sys.stderr, flush=True)
    table = "\n".join(lines)
    if len(sys.argv) > 1:
        print(table)
        return
    page = os.path.join(ROOT, "docs/performance.md")
    with open(page, encoding="utf-8") as file:
        text = file.read()
    first, last = text.index(MARKS[0]) + len(MARKS[0]), text.index(MARKS[1])
    with open(page, "w", encoding="utf-8") as file:
        file.write(f"{text[:first]}\n\n{table}\n\n{text[last:]}")


main()
