#!/usr/bin/python3
# Writes a binary STL or PLY of very many small triangles: waves on a sphere, in the order of its rows.
# usage: make-triangles.py COUNT FILE.stl|FILE.ply
# The same count gives the same bytes on every machine but for the last bits of sines. Memory stays small.
import sys

import numpy

STRETCH = 1 << 18  # triangles that are made at a time


def places(columns, rows, column, row):
    """Vertices of a grid around a sphere, by column and row."""
    turn = column * (2 * numpy.pi / columns)
    height = row * (numpy.pi / rows)
    radius = 1 + 0.05 * numpy.sin(17 * turn) * numpy.sin(13 * height)
    xyz = (radius * numpy.sin(height) * numpy.cos(turn), radius * numpy.cos(height), radius * numpy.sin(height) * numpy.sin(turn))
    return numpy.stack(xyz, axis=-1).astype("<f4")


def corners(columns, first, end):
    """Columns and rows of the corners of triangles: two for each cell of the grid, outwards by their winding."""
    number = numpy.arange(first, end, dtype=numpy.int64)
    cell, half = number // 2, (number % 2)[:, None]
    column, row = (cell % columns)[:, None], (cell // columns)[:, None]
    return column + numpy.where(half == 0, [[0, 1, 0]], [[1, 1, 0]]), row + numpy.where(half == 0, [[0, 0, 1]], [[0, 1, 1]])


def main():
    count, name = int(sys.argv[1]), sys.argv[2]
    columns = max(3, int((count / 2) ** 0.5))
    rows = (count + 2 * columns - 1) // (2 * columns)
    with open(name, "wb") as file:
        if name.endswith(".ply"):
            file.write(b"ply\nformat binary_little_endian 1.0\nelement vertex %d\nproperty float x\nproperty float y\n"
                       b"property float z\nelement face %d\nproperty list uchar uint vertex_indices\nend_header\n"
                       % ((columns + 1) * (rows + 1), count))
            for row in range(rows + 1):
                file.write(places(columns, rows, numpy.arange(columns + 1), row).tobytes())
            record = numpy.dtype([("length", "u1"), ("corners", "<u4", 3)])
        else:
            file.write(b"triangles".ljust(80) + count.to_bytes(4, "little"))
            record = numpy.dtype([("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("attributes", "<u2")])
        for first in range(0, count, STRETCH):
            end = min(first + STRETCH, count)
            column, row = corners(columns, first, end)
            records = numpy.zeros(end - first, record)
            if name.endswith(".ply"):
                records["length"] = 3
                records["corners"] = column + row * (columns + 1)
            else:
                records["corners"] = places(columns, rows, column, row)
            file.write(records.tobytes())


main()
