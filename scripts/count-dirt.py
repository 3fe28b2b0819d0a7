#!/usr/bin/python3
"""usage: count-dirt.py VORNA MODEL...

Counts wrong pixels in images of models against a reference: the same view at 8 times the size, without back faces. Needs
python3-numpy and python3-pil. Models that show back faces through openings are skipped: their reference would be wrong.

speckles  pixels of --shading gouraud whose colour lies outside the reference's colours within a pixel around
dots      line pixels of --shading hidden-line with no line of the reference within two pixels
gaps      line pixels of the reference with no line pixel within a pixel around, in pixels of the image

A pixel differs when a channel is off by more than 24 of 255. Options of vorna may follow in the variable VORNA_OPTIONS.
"""

import os
import subprocess
import sys
import tempfile

import numpy
from PIL import Image

Image.MAX_IMAGE_PIXELS = None
WIDTH, HEIGHT, SCALE, TOLERANCE = 480, 360, 8, 24


def drawn(vorna, model, scale, options, folder):
    name = os.path.join(folder, "image.png")
    size = f"{WIDTH * scale}x{HEIGHT * scale}"
    command = [vorna, "render", model, "-o", name, "--size", size, "--supersample", "1", *options]
    subprocess.run(command, check=True, stderr=subprocess.PIPE)
    return numpy.asarray(Image.open(name).convert("RGB"))


def extremes(image, reach, kind):
    """The least or greatest value within so many pixels around each pixel, blank beyond the borders."""
    for axis in (0, 1):
        rolled = [image]
        for shift in range(1, reach + 1):
            rolled += [numpy.roll(image, shift, axis), numpy.roll(image, -shift, axis)]
        image = kind.reduce(rolled)
    return image


def blocks(image, kind):
    """The least or greatest value of each pixel's block in the reference."""
    shape = (HEIGHT, SCALE, WIDTH, SCALE, *image.shape[2:])
    return kind.reduce(kind.reduce(image.reshape(shape), axis=3), axis=1)


def beyond(values, low, high):
    values, low, high = (a.astype(numpy.int16) for a in (values, low, high))
    return ((values < low - TOLERANCE) | (values > high + TOLERANCE)).any(axis=2)


def count(vorna, model, folder, options):
    def draw(scale, *more):
        return drawn(vorna, model, scale, [*options, *more], folder)

    faces = ("--shading", "gouraud")
    reference, whole = draw(SCALE, *faces, "--cull", "back"), draw(SCALE, *faces)
    differs = (numpy.abs(reference.astype(numpy.int16) - whole) > TOLERANCE).any(axis=2)
    if differs.mean() > 0.002:
        return None
    low, high = (extremes(blocks(reference, kind), 1, kind) for kind in (numpy.minimum, numpy.maximum))
    speckles = beyond(draw(1, *faces), low, high).sum()
    lines = ("--shading", "hidden-line")
    reference = draw(SCALE, *lines, "--cull", "back")[:, :, 1] < 128
    seen = draw(1, *lines)[:, :, 1] < 128
    near = extremes(blocks(reference, numpy.maximum), 2, numpy.maximum)
    dots = (seen & ~near).sum()
    around = extremes(seen, 1, numpy.maximum).repeat(SCALE, 0).repeat(SCALE, 1)
    gaps = (reference & ~around).sum() / SCALE
    return speckles, dots, round(gaps), (low != high).any(axis=2).sum()


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    options = os.environ.get("VORNA_OPTIONS", "").split()
    total = numpy.zeros(3, dtype=int)
    with tempfile.TemporaryDirectory() as folder:
        print("speckles  dots  gaps")
        for model in sys.argv[2:]:
            try:
                counts = count(sys.argv[1], model, folder, options)
            except subprocess.CalledProcessError as error:
                print(f"{model}: not drawn: {error.stderr.decode().strip()}")
                continue
            if counts is None:
                print(f"{model}: skipped, it is open")
                continue
            total += counts[:3]
            print("{:8} {:5} {:5}".format(*counts), model, flush=True)
        print("{:8} {:5} {:5}".format(*total), "total")


main()
