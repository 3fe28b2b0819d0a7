"""What several parts of the package ask of their arguments."""


def size_of(size, least_height=1, most=262144):
    """(width, height) as whole numbers."""
    try:
        width, height = (side.__index__() for side in size)
    except (TypeError, ValueError, AttributeError):
        raise ValueError(f"size: expected a width and a height in pixels, found {size!r}") from None
    if not (1 <= width <= most and least_height <= height <= most):
        raise ValueError(f"size: expected sides from 1 to {most}, found {width}x{height}")
    return width, height


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
