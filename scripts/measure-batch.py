#!/usr/bin/python3
# Measures time and largest resident memory of batches of small models.
# usage: measure-batch.py VORNA COUNT...
# Models are tetrahedra of 12 kinds; an image has 64 x 64 pixels. Files are named by links, so that a batch may be large.
import os
import sys
import tempfile
import time

KINDS = 12


def main():
    vorna, counts = sys.argv[1], [int(word) for word in sys.argv[2:]]
    print("files, seconds of the clock, of the processors, largest resident MiB")
    for count in counts:
        with tempfile.TemporaryDirectory() as folder:
            for kind in range(KINDS):
                with open(f"{folder}/kind{kind}", "w") as model:
                    model.write(f"v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 {kind} 1\nf 1 2 3\nf 1 3 4\nf 1 4 2\nf 2 4 3\n")
            with open(f"{folder}/list", "w") as names:
                for number in range(count):
                    os.symlink(f"kind{number % KINDS}", f"{folder}/{number}.obj")
                    names.write(f"{folder}/{number}.obj\n")
            start = time.monotonic()
            words = [vorna, "render", "--files-from", folder + "/list", "--output-folder", folder + "/images", "--size", "64x64"]
            child = os.posix_spawnp(vorna, words, os.environ)
            _, status, usage = os.wait4(child, 0)
            if status != 0 or len(os.listdir(folder + "/images")) != count:
                sys.exit(f"failed: {count} files")
            print(f"{count}, {time.monotonic() - start:.1f}, {usage.ru_utime + usage.ru_stime:.1f}, {usage.ru_maxrss / 1024:.1f}",
                  flush=True)


main()
