"""Maps and drawings."""

import json
import os

from . import _vorna
from ._arrays import background_options, colors_option, print_options
from ._image import Image


class Map:
    """A map or drawing that is drawn several times; the arguments are those of vorna.map."""

    def __init__(self, source, *, layer=None, layout=None, filter=None, bbox=None, projection=None, center=None, flip_y=None, clip_to=None,
                 fill="auto", fill_by=None, classes=None, class_count=5, breaks=None, ramp=None, reverse_ramp=False, opacity=1.0,
                 water=None, graticule=0.0, border="solid", outline=None, border_color=None, border_width=1, width_by=None,
                 widths=(1, 8), casing=None, casing_width=2, marker=None, marker_color=None, marker_size=7, labels=False,
                 label_by=None, label_key=None, label_size=12, label_color=None, halo=1.0, halo_color=None, font=None, overlay=None,
                 overlay_color=None, merge=None, style=None, title=None, attribution=None, legend=False, map_scale=None,
                 input_format=None, outside_of_folder=False):
        options = {name: value for name, value in locals().items() if name not in ("self", "source")}
        for name in ("overlay", "font", "style"):
            options[name] = None if options[name] is None else os.fsencode(options[name])
        sources = source if isinstance(source, list) else [source]
        self._map = _vorna.Map([(f"map {i}" if len(sources) > 1 else "map", "json", json.dumps(part))
                                if isinstance(part, dict) else (os.fsencode(part), "", "")
                                for i, part in enumerate(sources)], options)

    def render(self, *, size=None, background="white", colors=32, supersample=0, smooth_lines=False, threads=None, dpi=None,
               paper=None, scale=None, unit=None, max_memory=1 << 30):
        """An Image of the map. size: a height of 0 is chosen by the map's shape; None = (1280, 0), as large as paper, or as scale
        needs."""
        size, scale_options, stated = print_options(size, (1280, 0) if scale is None else (0, 0), dpi, paper, scale, unit, 0)
        options = {"size": size, **scale_options, "supersample": supersample, "smooth_lines": smooth_lines, "threads": threads,
                   "max_memory": max_memory, "indexed": colors_option(colors), **background_options(background)}
        if "lower_background" in options:
            raise ValueError("background: expected one colour, or None")
        pixels, palette = self._map.draw(options)
        return Image(pixels, palette, warnings=self._map.warnings, dpi=stated)


def map(source, *, size=None, background="white", colors=32, supersample=0, smooth_lines=False, threads=None, dpi=None, paper=None,
        scale=None, unit=None, max_memory=1 << 30, **settings):
    """An Image of a map (GeoJSON, TopoJSON, and what GDAL reads) or a drawing (DXF).

    source: a path, a dict of GeoJSON or TopoJSON, or a list of them, which are drawn one over the other. size:
    (width, height) in pixels; a height of 0 is chosen; None = (1280, 0), as large as paper, or as scale needs.
    dpi, paper, scale, unit: as of vorna.render; unit is that of drawings, mm by default, and of coordinates of a plane.

    settings: those of the options of `vorna render` with underscores.
    What is drawn: layer, layers between commas. layout: a sheet of paper of a drawing. filter: a condition on fields, as "pop > 1e6". bbox: (west, south, east, north) in
    degrees or the drawing's unit. clip_to: a shape that clips the map. overlay: the path of a map that is drawn over this one in
    overlay_color, or with merge="and" merged bit by bit.
    Where: projection: equirectangular, mercator, albers-usa, plane, a name or string of PROJ, or an EPSG code. center: (longitude,
    latitude). flip_y: whether a plane's y grows downwards; None = as the coordinates tell.
    Faces: fill: auto, palette, own, none or a colour, with opacity. fill_by: a field that gives the colour, with classes (quantiles,
    equal, natural or categories), class_count or breaks, ramp and reverse_ramp.
    Lines: border, outline: False, solid, dashed, dotted, dash-dot, dash-dot-dot, long-dashed or lengths of dashes and gaps; outline is
    that of borders of one shape, by default as border. border_color, border_width, casing, casing_width. width_by: a field of numbers
    that gives the width, from widths[0] to widths[1]. water: a colour. graticule: degrees between its lines.
    Points: marker, a symbol, marker_color, marker_size.
    Texts: labels, label_by, a field, with label_size, label_color, font, a file or a family, and halo, 0 to 20 pixels around letters,
    in halo_color; label_key: a field of numbers, labels with greater ones are placed first; legend, of fill_by; title; attribution;
    map_scale: km or miles, the unit of a scale bar.
    style: the path of a style file, whose sources may lie outside of its folder with outside_of_folder. input_format: of files, as a
    suffix: json, dxf, csv and so on; None = as their names or contents say.

    Raises ValueError for wrong input, FileNotFoundError for a missing file and vorna.Error for other failures.
    """
    return Map(source, **settings).render(size=size, background=background, colors=colors, supersample=supersample,
                                          smooth_lines=smooth_lines, threads=threads, dpi=dpi, paper=paper, scale=scale, unit=unit,
                                          max_memory=max_memory)
