"""Images, and how they differ."""

import os
from collections import namedtuple

import numpy as np

from . import _vorna


class Comparison(namedtuple("Comparison", "same text differing most")):
    """The result of a comparison; true when the images are the same, within the tolerance.

    text: one line, as the command prints it before PSNR and SSIM. differing: how many pixels do. most: the largest difference of
    a channel.
    """

    __slots__ = ()

    def __bool__(self):
        return self.same

    def __str__(self):
        return self.text


class Image:
    """An image that is an array to numpy: np.asarray(image) shares its memory.

    pixels: (height, width, 4) uint8, red first; (height, width) uint8, indices of a palette; or (height, width) uint16, depths.
    Three channels get an opaque fourth one. palette: (1 to 256, 3) uint8, for indices; greys without it.

    depth: None, or (height, width) uint16, 0 at the distance `near` from the eye, 65535 at `far` and where no face is.
    ids: None, or (height, width) int32, numbers of faces, -1 where there is none.
    warnings: lines about what could not be drawn. dpi: pixels per inch of paper, which PNG, TIFF and PDF files state; 0 = none.
    """

    def __init__(self, pixels, palette=None, *, depth=None, ids=None, near=0.0, far=0.0, perspective=True, warnings=(),
                 dpi=0.0):
        if pixels is not None:
            pixels = np.asarray(pixels)
            if pixels.ndim == 3 and pixels.shape[2] == 3 and pixels.dtype == np.uint8:
                opaque = np.empty(pixels.shape[:2] + (4,), np.uint8)
                opaque[..., :3] = pixels
                opaque[..., 3] = 255
                pixels = opaque
        self.pixels = pixels
        self.palette = palette
        self.depth = depth
        self.ids = ids
        self.near = near
        self.far = far
        self.perspective = perspective
        self.warnings = list(warnings)
        try:
            self.dpi = float(dpi)
        except (TypeError, ValueError, OverflowError):
            raise ValueError(f"dpi: expected a number, found {type(dpi).__name__}") from None
        self.report = None

    # As an array.

    def __array__(self, dtype=None, copy=None):
        pixels = self._samples()
        if dtype is not None and np.dtype(dtype) != pixels.dtype:
            return pixels.astype(dtype)
        return pixels.copy() if copy else pixels

    # Of the samples' memory, for programs that take arrays without numpy.

    @property
    def __array_interface__(self):
        samples = np.ascontiguousarray(self._samples())
        # numpy keeps what lies in "data", and with it the memory when `pixels` become another array.
        return {**samples.__array_interface__, "data": samples}

    def __buffer__(self, flags, /):
        return memoryview(self._samples())

    def __dlpack__(self, **options):
        return self._samples().__dlpack__(**options)

    def __dlpack_device__(self):
        return self._samples().__dlpack_device__()

    @property
    def shape(self):
        return self._samples().shape

    @property
    def dtype(self):
        return self._samples().dtype

    @property
    def size(self):
        """(width, height) in pixels."""
        height, width = self._samples().shape[:2]
        return width, height

    def __len__(self):
        return len(self._samples())

    def __getitem__(self, index):
        return self._samples()[index]

    def __repr__(self):
        width, height = self.size
        planes = [name for name in ("depth", "ids") if getattr(self, name) is not None]
        return f"<vorna.Image {width} x {height}, {self.dtype}{''.join(' + ' + name for name in planes)}>"

    def _samples(self):
        for plane in (self.pixels, self.depth, self.ids):
            if plane is not None:
                return plane
        raise ValueError("image: expected colours, depths or face numbers")

    # As a file.

    def png(self):
        """The bytes of a PNG file. Raises ValueError for face numbers alone."""
        return _vorna.png_of(self._samples(), self.palette, self.dpi)

    def _repr_png_(self):
        return self.png()

    def save(self, path):
        """Writes a file in the format of its suffix: png, jpeg, webp, tiff, pdf, ppm or raw. The bytes are those of the command.

        Raises ValueError for an image that the format cannot hold, OSError for a place where the system allows no file, and vorna.Error
        for other failures.
        """
        _vorna.write_image(os.fsencode(path), self._samples(), self.palette, self.dpi)

    def digest(self):
        """The SHA-256 of the samples in hexadecimal digits, which `vorna render --hash` prints."""
        return _vorna.digest_of(self._samples())

    def compare(self, other, tolerance=None):
        """A Comparison with another image, an array or a PNG file.

        tolerance: None; a largest difference of a channel; or a pair of it and how many pixels may differ.
        """
        return compare(self, other, tolerance)

    # As measurements.

    def distances(self):
        """Distances of the faces from the eye along the line of sight in the model's unit: (height, width) float32, infinite where
        there is no face. Needs an image with a depth."""
        if self.depth is None:
            raise ValueError("distances: expected an image that was rendered with depth=True")
        part = self.depth / np.float32(65535)
        if self.perspective:
            distances = np.float32(1) / (np.float32(1 / self.near) - part * np.float32(1 / self.near - 1 / self.far))
        else:
            distances = np.float32(self.near) + part * np.float32(self.far - self.near)
        distances[self.depth == 65535] = np.inf
        return distances


def _is_path(value):
    return isinstance(value, (str, os.PathLike))


def _samples_of(value):
    if isinstance(value, Image):
        return value._samples(), value.palette
    return np.asarray(value), None


def compare(a, b, tolerance=None):
    """A Comparison of two images: Images, arrays or PNG files. See Image.compare.

    Raises ValueError for a file that is not a PNG file, FileNotFoundError for a missing one.
    """
    if _is_path(a) and _is_path(b):
        return Comparison(*_vorna.compare_files(os.fsencode(a), os.fsencode(b), tolerance))
    first, second = (_samples_of(read(value) if _is_path(value) else value) for value in (a, b))
    return Comparison(*_vorna.compare_arrays(*first, *second, tolerance))


def read(path, max_memory=0):
    """An Image of a PNG, JPEG, WebP, TGA, BMP or DDS file.

    max_memory: bytes that reading may take; 0 = as the command. Raises ValueError for a file that is none of them.
    """
    return Image(*_vorna.read_image(os.fsencode(path), max_memory))
