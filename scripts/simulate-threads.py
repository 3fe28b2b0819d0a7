#!/usr/bin/env python3
"""usage: simulate-threads.py VORNA MODEL [--size WxH] [--rounds N] [--threads N,N,...]
Records what the tiles of a frame take on one thread and computes how long the frame takes on more threads than the machine has.

A computed frame is the part of preparing that no second thread shortens, the rest of preparing divided by the threads, the start
of each thread, and the tiles in order, each taken by the thread that is first without one. Memory that threads share is not in
it, nor is a processor that runs slower when all its cores work."""
import argparse
import heapq
import math
import os
import re
import subprocess
import tempfile
from pathlib import Path

parser = argparse.ArgumentParser()
parser.add_argument('vorna')
parser.add_argument('model')
parser.add_argument('--size', default='1920x1080')
parser.add_argument('--rounds', type=int, default=15)
parser.add_argument('--threads', default='1,2,4,8,16,64')
parser.add_argument('--start', type=float, default=0.02, help='milliseconds to start a thread')
arguments = parser.parse_args()
folder = Path(tempfile.mkdtemp())


def render(*options):
    command = [arguments.vorna, 'render', arguments.model, '-o', '/dev/null', '--output-format', 'raw', '--size', arguments.size,
               '--supersample', '1', *map(str, options)]
    return subprocess.run(command, check=True, capture_output=True, text=True)


def drawn(threads):
    """Milliseconds of a whole frame, on the clock."""
    return float(re.search(r'draw ([0-9.]+) ms', render('--threads', threads, '--repeat', arguments.rounds, '--stats').stderr)[1])


def recorded(side, threads):
    """Milliseconds of preparing, and of each tile."""
    file = folder / 'times'
    render('--threads', threads, '--repeat', arguments.rounds, '--tile-size', side, '--tile-times', file)
    first, *tiles = map(float, file.read_text().split())
    return first, tiles


def schedule(tiles, threads):
    """The end of the last tile, and the share of the threads' time that they wait."""
    free = [0.0] * threads
    for tile in tiles:
        heapq.heappush(free, heapq.heappop(free) + tile)
    return max(free), 1 - sum(tiles) / (threads * max(free))


def side_for(threads):
    """Of a square as large as the tiles that the command plans for so many threads; 0: a single tile."""
    text = render('--threads', threads, '--dry-run').stdout
    count, width, height = map(int, re.search(r'tiles: (\d+) of (\d+)x(\d+)', text).groups())
    return 0 if count == 1 else max(int(math.sqrt(width * height) / 8 + 0.5) * 8, 8)


counts = [int(text) for text in arguments.threads.split(',')]
sides = {count: side_for(count) for count in counts}
measured = {count: drawn(count) for count in counts if count <= os.cpu_count()}
one = drawn(1)
print(f'{Path(arguments.model).name}, {arguments.size}: one thread {one:.2f} ms')
print('| threads | tiles of | prepare, not shared | prepare, shared | tiles, all | waits | frame, computed | times one thread | measured |')
print('|---:|---:|---:|---:|---:|---:|---:|---:|---:|')
for count in counts:
    if count == 1 or sides[count] == 0:
        continue
    prepare, tiles = recorded(sides[count], 1)
    prepare_by_two, _ = recorded(sides[count], 2)
    alone = min(max(2 * prepare_by_two - prepare, 0), prepare)
    end, waits = schedule(tiles, count)
    frame = alone + (prepare - alone) / count + 3 * (count - 1) * arguments.start / 2 + end
    clock = f'{measured[count]:.2f}' if count in measured else '–'
    print(f'| {count} | {sides[count]} | {alone:.2f} | {prepare - alone:.2f} | {sum(tiles):.2f} | {100 * waits:.0f} % | '
          f'{frame:.2f} | {one / frame:.2f} | {clock} |')
