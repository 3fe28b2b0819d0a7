"""Images of models."""

from ._mesh import Model


def render(mesh, *, size=None, camera=None, shading="auto", threads=None, pixels=True, depth=False, ids=False,
           background="white", colors=32, color=None, edges=False, edge_color=None, line_width=1, point_size=0, cull=False,
           tint="lit", light=(-0.5, 0.65, 0.7), specular=1.0, look="plain", supersample=0, smooth_lines=False, axes=False,
           scale_bar=False, dpi=None, paper=None, scale=None, unit=None, max_memory=0, crease=None, section=None,
           input_format=None):
    """An Image of a model, from a file or from arrays. A Model is faster for several images of the same one.

    mesh: a Model, or what Model takes, with its crease, section and input_format. size: (width, height) in pixels; None =
    (1280, 960), or as large as paper. camera: a Camera, or the name of a view. threads: None = as
    many as there are processors; the bytes do not depend on them. max_memory: bytes that reading and the image may take, each; 0 =
    as the command, 1 GiB for the image.

    What is made: pixels, the colours; depth, image.depth; ids, image.ids, the numbers of faces through all meshes of a list. Depths
    and numbers are of faces alone, neither supersampled nor smoothed.

    shading: auto, flat, gouraud, textured, wireframe or hidden-line. look: plain or studio. background: a colour, a pair of them for a
    gradient from the top down, or None for a transparent image. colors: bits a pixel; with 8 the image has indices and a palette.
    color: of the model instead of its own. edges: True or all, or feature, over the faces. cull: leaves out faces seen from behind.
    tint: lit; own, colours without light; or normals. light: direction towards the light, in view space. supersample: 1 to 8 drawn
    pixels each way for one; 0 = 2 where that is possible. Colours are names, #rrggbb or (red, green, blue) from 0 to 255.

    For print: dpi: pixels per inch of paper, which files state; None = 300 with paper or scale, else not stated. paper: the size of
    the image, A0 to A6, letter, legal or tabloid, with -landscape on its side, or as 200x100mm. scale: as 1:50, of a camera without
    perspective and zoom. unit: of the model's coordinates, mm, cm, m, km, in or ft; None = mm.

    Raises ValueError for wrong input, FileNotFoundError for a missing file and vorna.Error for other failures.
    """
    options = {name: value for name, value in locals().items() if name not in ("mesh", "crease", "section", "input_format")}
    reading = {"crease": crease, "section": section, "input_format": input_format}
    if isinstance(mesh, Model):
        for name, value in reading.items():
            if value is not None:
                raise ValueError(f"{name}: expected a mesh that is not read yet, found a Model")
        model = mesh
    else:
        model = Model(mesh, threads=threads, max_memory=max_memory, **reading)
    return model.render(**{**options, "max_memory": max_memory or 1 << 30})
