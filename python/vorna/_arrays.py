"""What several parts of the package ask of their arguments."""

from . import _vorna


def size_of(size, least_height=1, most=262144):
    """(width, height) as whole numbers."""
    try:
        width, height = (side.__index__() for side in size)
    except (TypeError, ValueError, AttributeError):
        raise ValueError(f"size: expected a width and a height in pixels, found {size!r}") from None
    if not (1 <= width <= most and least_height <= height <= most):
        raise ValueError(f"size: expected sides from 1 to {most}, found {width}x{height}")
    return width, height


def print_options(size, usual, dpi, paper, scale, unit, least_height=1):
    """The size of an image, the options of its scale, and the pixels per inch that its files state, 0 for none. usual: its size where
    neither size nor paper is given."""
    if size is not None:
        size = size_of(size, least_height)
        if paper is not None:
            raise ValueError(f"paper: expected no size beside it, found {size[0]}x{size[1]}")
    if dpi is None and paper is None and scale is None and unit is None:
        return size or usual, {}, 0.0
    options = {"dpi": dpi, "scale": scale, "unit": unit}
    width, height, stated = _vorna.print_of({**options, "paper": paper, "size": size or usual})
    return (width, height), options, stated


def background_options(background):
    """None is transparent, a pair of colours a gradient from the top down, anything else a colour."""
    if background is None:
        return {"transparent": True}
    if isinstance(background, (tuple, list)) and len(background) == 2:
        return {"background": background[0], "lower_background": background[1]}
    return {"background": background}


def colors_option(colors):
    if colors not in (8, 32):
        raise ValueError(f"colors: expected 8 or 32 bits a pixel, found {colors!r}")
    return colors == 8
