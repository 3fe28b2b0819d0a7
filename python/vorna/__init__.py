"""Models, maps and drawings as exact images: the same bytes on every machine, without a display or a GPU.

>>> import numpy as np, vorna
>>> triangle = (np.eye(3), [[0, 1, 2]])
>>> image = vorna.render(triangle, size=(64, 48), depth=True, ids=True)
>>> image.shape, image.depth.dtype, int(image.ids.max())
((48, 64, 4), dtype('uint16'), 0)

Wrong input is a ValueError, a missing file a FileNotFoundError, and any other failure a vorna.Error, each with the line that the
command vorna prints.
"""

from ._vorna import Error, Texture, version as __version__
from ._camera import Camera
from ._canvas import Canvas, Recording, replay
from ._image import Comparison, Image, compare, read
from ._map import Map, map
from ._mesh import Model
from ._poster import poster
from ._render import render

__all__ = [
    "Camera", "Canvas", "Comparison", "Error", "Image", "Map", "Model", "Recording", "Texture", "__version__",
    "compare", "map", "poster", "read", "render", "replay",
]
