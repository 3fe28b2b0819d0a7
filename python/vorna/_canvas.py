"""Canvases, and recordings of what is drawn on them."""

import contextlib
import json
import os

from . import _vorna
from ._arrays import colors_option, size_of
from ._image import Image


class Canvas(_vorna.Canvas):
    """Pixels to draw on with arrays of points.

    size: (width, height), 1 to 16384 pixels. depth: with a depth buffer of 16 bits; smaller depths are nearer. colors: 32 bits a
    pixel, or 8 with a palette, (1 to 256, 3) uint8. blending: alpha of 32-bit colours counts.

    Points are (n, 2) or (n, 3): columns from the left, rows from the lowest one UPWARDS, and depths. Contiguous (n, 3) arrays of int32,
    float32 and float64 are drawn without a copy, all others converted. Pixel (x, y) is pixels[height - 1 - y, x].
    colors of points: (n, 3 or 4) uint8 or floats from 0 to 1, red first, or without a copy (n,) uint32, 0xAARRGGBB.

    Attributes are keyword arguments of each call, of set() for all later calls, and of attributes() for a block: color, contrast,
    width (of lines, in pixels), style, cap, join, smooth, symbol, marker_size, pattern (0 to 73; 64 is solid), opaque_pattern,
    depth_test, clip (left, bottom, right, top, inclusive; None = the whole), texture.

    threads: that draw; None = as many as there are processors. The pixels do not depend on them. With more than one, calls keep copies
    of their arrays, and the threads draw when the picture ends, when pixels or depths are taken from the canvas, and for flush(). An
    array that was taken earlier does not have what was drawn since until then.

    One thread of the program at a time draws on a canvas, while other canvases may be drawn on by others at once: drawing releases the
    interpreter's lock. Raises ValueError for wrong arguments and vorna.Error outside of a picture.
    """

    def __init__(self, size, *, depth=False, colors=32, blending=False, palette=None, threads=1):
        super().__init__({"size": size_of(size, most=16384), "depth": depth, "indexed": colors_option(colors), "blending": blending,
                          "palette": palette, "threads": 0 if threads is None else threads})

    @contextlib.contextmanager
    def picture(self, background=None):
        """A picture: what is drawn is drawn in it. background: a colour that fills the canvas first, its depths with the farthest;
        None = nothing is filled."""
        self.begin(background)
        try:
            yield self
        finally:
            self.end()

    @contextlib.contextmanager
    def attributes(self, **attributes):
        """Attributes of the calls in the block."""
        saved = self._exchange(**attributes)
        try:
            yield self
        finally:
            self._restore(saved)

    @property
    def pixels(self):
        """The colour buffer itself: (height, width, 4) uint8, BLUE first as in memory, or (height, width) uint8 of indices."""
        return self._buffer(False)

    @property
    def rgb(self):
        """The colour buffer itself without alpha, red first: (height, width, 3) uint8; None of indices."""
        pixels = self.pixels
        return pixels[..., 2::-1] if pixels.ndim == 3 else None

    @property
    def depth(self):
        """The depth buffer itself, (height, width) uint16, or None."""
        return self._buffer(True)

    def to_image(self):
        """A copy of the pixels as an Image, with a copy of the depths as its depth."""
        depth = self.depth
        return Image(*self._copied(), depth=None if depth is None else depth.copy(), perspective=False, near=0.0, far=65535.0)

    @contextlib.contextmanager
    def record(self):
        """Records what is drawn in the block; the buffers are empty in its beginning, and arrays of them must be taken anew. The
        depth mode stays.

        >>> canvas = Canvas((32, 32))
        >>> with canvas.record() as recording:
        ...     with canvas.picture("white"):
        ...         canvas.polyline([[2, 3], [28, 20]], color="red")
        >>> bool(recording.replay().compare(canvas.to_image()))
        True

        Pixels that are written into the buffers by numpy are not recorded. Raises vorna.Error within a picture.
        """
        self._start_recording()
        recording = Recording()
        try:
            yield recording
        finally:
            recording._text = self._finish_recording()

    def __repr__(self):
        height, width = self.pixels.shape[:2]
        return f"<vorna.Canvas {width} x {height}>"

    def _repr_png_(self):
        return self.to_image().png()


class Recording:
    """A document of what was drawn on a canvas. text: JSON, once the block has ended."""

    def __init__(self, text=None):
        if not isinstance(text, str | None):
            raise TypeError(f"text: expected a str, found {type(text).__name__}")
        self._text = text

    @property
    def text(self):
        if self._text is None:
            raise ValueError("text: expected the end of the recorded block")
        return self._text

    def save(self, path):
        """Writes the document, compressed when the name ends in .gz. The file appears whole or not at all.

        Raises OSError for a place where the system allows no file, and vorna.Error for other failures.
        """
        _vorna.write_document(os.fsencode(path), self.text.encode())

    def replay(self, max_memory=0):
        """See vorna.replay."""
        return _replayed(_vorna.replay_text("recording", self.text.encode(), max_memory))


def replay(document, *, max_memory=0):
    """An Image of a recording: its pixels, or indices and palette, and its depths as image.depth, where it has a depth buffer.
    image.report is a dict of what happened besides drawing.

    document: a path, plain or compressed; a Recording; or the document as a dict. max_memory: bytes that reading may take.

    Raises ValueError for errors in the document, with the path of the key, FileNotFoundError for a missing file, and vorna.Error for
    calls that no replay draws.
    """
    if isinstance(document, Recording):
        return document.replay(max_memory)
    if isinstance(document, dict):
        return _replayed(_vorna.replay_text("document", json.dumps(document), max_memory))
    return _replayed(_vorna.replay_file(os.fsencode(document), max_memory))


def _replayed(result):
    pixels, palette, depth, report = result
    image = Image(pixels, palette, depth=depth, perspective=False, near=0.0, far=65535.0)
    image.report = json.loads(report)
    return image
