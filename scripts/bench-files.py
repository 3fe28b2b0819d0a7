#!/usr/bin/env python3
"""usage: bench-files.py VORNA MODEL PAGE [--rounds N]
Measures image files, digests and whole processes, prints a table, and writes it between its marks into PAGE when that is a name.

Figures are of one thread and of processor time; the least of the rounds counts. What a file costs is the difference to the same
image as raw samples, and what a digest costs the difference to the same run without it. Whole processes use all processors, and
their figure is the time on the clock."""
import argparse
import os
import platform
import re
import subprocess
import tempfile
import time
from pathlib import Path

parser = argparse.ArgumentParser()
parser.add_argument('vorna')
parser.add_argument('model')
parser.add_argument('page', nargs='?')
parser.add_argument('--rounds', type=int, default=9)
arguments = parser.parse_args()
folder = Path(tempfile.mkdtemp())
side, megapixels = 4000, 16


def run(command):
    """The processor time and the time on the clock."""
    start = time.perf_counter()
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    if status != 0:
        raise SystemExit(f'{command} failed')
    return usage.ru_utime + usage.ru_stime, time.perf_counter() - start


def drawn(output, *options):
    return [arguments.vorna, 'render', arguments.model, '-o', output, '--size', f'{side}x{side}', '--threads', '1', *options]


def sample(name):
    return [arguments.vorna, 'render', arguments.model, '-o', folder / name, '--size', '1280x960']


commands = {'raw': drawn('/dev/null', '--output-format', 'raw'),
            'hash': drawn('/dev/null', '--output-format', 'raw', '--hash'),
            'image': sample('image.png'),
            'version': [arguments.vorna, '--version']}
files = {}
for compress in ('fast', 'default', 'best'):
    files['PNG, --compress ' + compress] = folder / f'{compress}.png', ['--compress', compress]
for suffix, name in (('tif', 'TIFF'), ('jpg', 'JPEG'), ('webp', 'WebP')):
    files[name] = folder / f'image.{suffix}', []
for name, (file, options) in files.items():
    commands[name] = drawn(file, *options)

processor, clock = {}, {}
for _ in range(arguments.rounds):
    for name, command in commands.items():
        times = run(command)
        processor[name] = min(processor.get(name, 1e9), times[0])
        clock[name] = min(clock.get(name, 1e9), times[1])

table = ['|  | unit | figure | file, bytes |', '|---|---|---:|---:|']
for name, (file, _) in files.items():
    rate = megapixels / (processor[name] - processor['raw'])
    table.append(f'| {name}, {side} × {side} pixels | Mpix/s | {rate:.3g} | {file.stat().st_size:,} |')
digest = 4e-3 * megapixels / (processor['hash'] - processor['raw'])
table.append(f'| SHA-256 of the pixels | GB/s | {digest:.2g} | – |')
table.append(f'| draw it and write it as PNG, 1280 × 960 pixels, all processors | ms | {1000 * clock["image"]:.3g} | '
             f'{(folder / "image.png").stat().st_size:,} |')
table.append(f'| `vorna --version`, processor time | ms | {1000 * processor["version"]:.2g} | – |')
information = Path('/proc/cpuinfo').read_text()
model = re.search(r'model name\s*: (.*)', information)
table = [f'processor: {model.group(1) if model else platform.machine()}, {os.cpu_count()} threads; model: '
         f'{Path(arguments.model).name}; rounds: {arguments.rounds}.', '', *table]
print('\n'.join(table))
if arguments.page:
    page = Path(arguments.page)
    text = page.read_text()
    first, last = '<!-- files -->\n', '\n<!-- end of files -->'
    start, end = text.index(first) + len(first), text.index(last)
    page.write_text(text[:start] + '\n' + '\n'.join(table) + '\n' + text[end:])
