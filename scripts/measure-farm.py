#!/usr/bin/python3
# Measures what parts of an image cost, and computes from that what a farm of many nodes takes.
# usage: measure-farm.py VORNA MODEL SIZE PARTS... [-- RENDER-OPTION...]
# Every part is drawn once, by one thread, one after the other; times are processor time, memory is the largest resident one. The
# farm is a computation, not a measurement: nodes take parts from one queue, the longest estimates first; a node may be slow, and
# a part's node may die halfway, which is noticed after a while; the part is then drawn again.
import heapq
import json
import os
import random
import sys
import tempfile

NODES, WORK, SETUP, SLOW_SHARE, SLOW_FACTOR, DEATH, NOTICED = 1000, 600.0, 5.0, 0.02, 4.0, 0.005, 30.0


def run(words):
    """Processor time and largest resident memory of a command, and what it printed."""
    with tempfile.TemporaryFile() as output:
        child = os.posix_spawnp(words[0], words, os.environ, file_actions=[(os.POSIX_SPAWN_DUP2, output.fileno(), 1)])
        _, status, usage = os.wait4(child, 0)
        if status != 0:
            sys.exit("failed: " + " ".join(words))
        output.seek(0)
        return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, output.read()


def farm(parts, nodes, seed=None):
    """Seconds until the last of the parts, pairs of estimate and time, is there. seed: None = no node is slow or dies."""
    chance = random.Random(seed)
    speeds = [SLOW_FACTOR if seed is not None and chance.random() < SLOW_SHARE else 1.0 for _ in range(nodes)]
    free = [(0.0, node) for node in range(nodes)]
    queue = [(0.0, -estimate, seconds) for estimate, seconds in parts]  # when it may begin
    heapq.heapify(queue)
    end = 0.0
    while queue:
        ready, order, seconds = heapq.heappop(queue)
        at, node = heapq.heappop(free)
        begin = max(at, ready)
        done = begin + seconds * speeds[node]
        if seed is not None and chance.random() < DEATH:
            heapq.heappush(queue, ((begin + done) / 2 + NOTICED, order, seconds))  # the node is gone
        else:
            heapq.heappush(free, (done, node))
            end = max(end, done)
    return end


def main():
    arguments = sys.argv[1:]
    options = arguments[arguments.index("--") + 1:] if "--" in arguments else []
    vorna, model, size, *counts = arguments[:arguments.index("--")] if "--" in arguments else arguments
    common = [model, "--size", size, "--threads", "1", *options]
    with tempfile.TemporaryDirectory() as folder:
        whole, memory, digest = run([vorna, "render", *common, "-o", folder + "/whole.png", "--hash"])
        print(f"in one piece: {whole:.2f} s, {memory:.0f} MiB")
        times = []
        for count in map(int, counts):
            planning, _, text = run([vorna, "render", *common, "-o", folder + "/poster.png", "--hash", "--plan", str(count)])
            plan = json.loads(text)
            measured = [run(part["command"])[:2] for part in plan["parts"]]
            joining, join_memory, joined = run(plan["assemble"]["command"])
            assert joined == digest, "the image is another one"
            seconds = [one for one, _ in measured]
            areas = [part["area"][2] * part["area"][3] for part in plan["parts"]]
            print(f"{count} parts: plan {planning:.2f} s, parts {sum(seconds):.2f} s in all, longest {max(seconds):.2f} s, "
                  f"{max(seconds) * count / sum(seconds):.2f} of the mean, areas up to {max(areas) / min(areas):.1f} : 1, "
                  f"memory up to {max(one for _, one in measured):.0f} MiB, joining {joining:.2f} s, {join_memory:.0f} MiB, "
                  f"set-up {plan['setup_seconds'] * count / sum(seconds):.1%}, efficiency {whole / (sum(seconds) + joining):.2f}, "
                  f"with a machine for each part {planning + max(seconds) + joining:.2f} s, "
                  f"estimate {sum(part['seconds'] for part in plan['parts']) / sum(seconds):.2f} of the measured")
            times = list(zip([part["seconds"] for part in plan["parts"]], seconds))
            for part in plan["parts"]:
                os.remove(part["file"])
    print(f"computed, {NODES} nodes, {SLOW_SHARE:.0%} of them {SLOW_FACTOR:g} times slower, {DEATH:.1%} of the parts lose their node, "
          f"which is noticed after {NOTICED:g} s; {WORK:g} s of work for each node, shared as that of the last parts was, {SETUP:g} s to "
          f"set up a part:")
    mean = sum(seconds for _, seconds in times) / len(times)
    for each in (1, 4, 16, 64):
        parts = [(SETUP + WORK * e / mean / each, SETUP + WORK * s / mean / each)
                 for e, s in (times * (NODES * each // len(times) + 1))[:NODES * each]]
        runs = sorted(farm(parts, NODES, seed) for seed in range(9))
        print(f"  {NODES * each} parts: without faults {farm(parts, NODES):.0f} s, with them {runs[4]:.0f} s (of nine runs the middle; "
              f"efficiency {WORK / runs[4]:.2f})")


if __name__ == "__main__":
    main()
