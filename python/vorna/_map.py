"""Maps and drawings."""

import json
import os

from . import _vorna
from ._arrays import background_options, colors_option, size_of
from ._image import Image


class Map:
    """A map or drawing that is drawn several times; the arguments are those of vorna.map."""

    def __init__(self, source, *, layer=None, bbox=None, projection=None, center=None, clip_to=None, fill="auto", opacity=1.0,
                 water=None, graticule=0.0, border="solid", outline=None, border_color=None, border_width=1, casing=None,
                 casing_width=2, marker_color=None, marker_size=7, labels=False, label_size=12, label_color=None, font=None,
                 overlay=None, overlay_color=None):
        options = {name: value for name, value in locals().items() if name not in ("self", "source")}
        options["overlay"] = None if overlay is None else os.fsencode(overlay)
        options["font"] = None if font is None else os.fsencode(font)
        if isinstance(source, dict):
            self._map = _vorna.Map.of_text("map", "json", json.dumps(source), options)
        else:
            self._map = _vorna.Map.of_file(os.fsencode(source), options)

    def render(self, *, size=(1280, 0), background="white", colors=32, supersample=0, smooth_lines=False, threads=None,
               max_memory=1 << 30):
        """An Image of the map. size: a height of 0 is chosen by the map's shape."""
        options = {"size": size_of(size, 0), "supersample": supersample, "smooth_lines": smooth_lines, "threads": threads,
                   "max_memory": max_memory, "indexed": colors_option(colors), **background_options(background)}
        if "lower_background" in options:
            raise ValueError("background: expected one colour, or None")
        pixels, palette = self._map.draw(options)
        return Image(pixels, palette, warnings=self._map.warnings)


def map(source, *, size=(1280, 0), background="white", colors=32, supersample=0, smooth_lines=False, threads=None,
        max_memory=1 << 30, **settings):
    """An Image of a map (GeoJSON, TopoJSON, and what GDAL reads) or a drawing (DXF).

    source: a path, or a dict of GeoJSON or TopoJSON. size: (width, height) in pixels; a height of 0 is chosen.

    settings: layer, of TopoJSON. bbox: (west, south, east, north) in degrees or the drawing's unit. projection: equirectangular,
    mercator, or a name of PROJ. center: (longitude, latitude). clip_to: a shape that clips the map. fill: auto, palette, own, none or
    a colour, with opacity. water: a colour. graticule: degrees between its lines. border, outline: False, solid, dashed, dotted,
    dash-dot, dash-dot-dot, long-dashed or lengths of dashes and gaps; outline is that of borders of one shape, by default as border.
    border_color, border_width, casing, casing_width, marker_color, marker_size. labels, with label_size, label_color and font.
    overlay: the path of a map that is drawn over this one in overlay_color.

    Raises ValueError for wrong input, FileNotFoundError for a missing file and vorna.Error for other failures.
    """
    return Map(source, **settings).render(size=size, background=background, colors=colors, supersample=supersample,
                                          smooth_lines=smooth_lines, threads=threads, max_memory=max_memory)
