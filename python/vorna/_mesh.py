"""Models of files and arrays."""

import os

import numpy as np

from . import _vorna
from ._image import Image, read
from ._arrays import background_options, colors_option, print_options
from ._camera import options_of

_PARTS = ("vertices", "faces", "normals", "colors", "uv", "texture", "lines", "points")


class Model:
    """A model that is drawn several times: everything that does not depend on the camera is done once.

    mesh: a path; an object with `vertices` and `faces`, as trimesh's; a tuple (vertices, faces[, normals, colors, uv, texture]); a
    dict of these and `lines` and `points`; or a list of paths or of the others, which are drawn together.

    vertices: (n, 3) numbers, kept as float32. faces: (m, 3 or 4) numbers of vertices. normals: (n, 3). colors: (n, 3 or 4) uint8 or
    floats from 0 to 1, or one for each face. uv: (n, 2) places in the texture, v upwards. texture: (height, width, 3 or 4) uint8,
    an Image or a path. lines: (k, 2), points: (k,) numbers of vertices. Arrays are copied.

    crease: degrees between faces that are shaded as one surface where there are no normals; None = 30, or the file's groups.
    section: (x, y, z, offset), a plane that cuts the model open: what lies where x*X + y*Y + z*Z > offset is removed, and numbers of
    faces stay those of arrays. input_format: of files, as a suffix: obj, ply, gltf and so on; None = as their names or contents say.
    threads: None = as many as there are processors. max_memory: bytes that reading may take; 0 = as the command.

    Raises ValueError for wrong input and FileNotFoundError for a missing file.
    """

    def __init__(self, mesh, *, crease=None, section=None, input_format=None, threads=None, max_memory=0, outside_of_folder=False,
                 allow_empty=False):
        options = {"crease": crease, "section": section, "input_format": input_format, "threads": threads,
                   "max_memory": max_memory, "outside_of_folder": outside_of_folder, "allow_empty": allow_empty}
        meshes = mesh if isinstance(mesh, list) else [mesh]
        files = [os.fsencode(part) for part in meshes if isinstance(part, (str, os.PathLike))]
        if files and len(files) != len(meshes):
            raise ValueError("mesh: expected files or arrays, found both")
        if files:
            self._model = _vorna.Model.of_files(files, options)
            self.first_faces = np.zeros(1, np.int64)
        else:
            parts = [_parts_of(part) for part in meshes]
            self._model = _vorna.Model.of_arrays(parts, options)
            counts = [len(part["faces"]) if part.get("faces") is not None else 0 for part in parts]
            self.first_faces = np.cumsum([0] + counts[:-1])
        self._quads = None if files else _triangles_to_faces(parts)
        self._painted = (None, None)  # the last style and its painter, replaced together: other threads may draw

    triangle_count = property(lambda self: self._model.triangle_count, doc="Triangles that are drawn.")
    line_count = property(lambda self: self._model.line_count, doc="Lines of the model's own.")
    point_count = property(lambda self: self._model.point_count, doc="Points.")
    warnings = property(lambda self: self._model.warnings, doc="What could not be read, a line each.")

    def render(self, *, size=None, camera=None, shading="auto", threads=None, pixels=True, depth=False, ids=False,
               background="white", colors=32, color=None, edges=False, edge_color=None, line_width=1, point_size=0, cull=False,
               tint="lit", light=(-0.5, 0.65, 0.7), specular=1.0, look="plain", supersample=0, smooth_lines=False, axes=False,
               scale_bar=False, dpi=None, paper=None, scale=None, unit=None, max_memory=1 << 30):
        """An Image of the model; the arguments are those of vorna.render."""
        size, scale_options, stated = print_options(size, (1280, 960), dpi, paper, scale, unit)
        style = {"shading": shading, "threads": threads, "color": color, "edges": edges, "edge_color": edge_color,
                 "line_width": line_width, "point_size": point_size, "cull": cull, "tint": tint, "light": _numbers_of(light),
                 "specular": specular, "look": look, "supersample": supersample, "smooth_lines": smooth_lines, "axes": axes,
                 "scale_bar": scale_bar, "max_memory": max_memory, "indexed": colors_option(colors),
                 **background_options(background), **scale_options}
        key = repr(style)
        last, painter = self._painted
        if key != last:
            painter = _vorna.Model_Painter(self._model, style)
            self._painted = (key, painter)
        view = options_of(camera, self._model.up_axis)
        drawn, palette, depths, faces, near, far = painter.draw(view, size, pixels, depth, ids)
        if faces is not None and self._quads is not None:
            faces = self._quads[faces]
        return Image(drawn, palette, depth=depths, ids=faces, near=near, far=far, perspective=not view.get("orthographic"),
                     warnings=self.warnings + painter.warnings, dpi=stated)


def _numbers_of(values):
    """Plain numbers, whose text tells them apart; what are none is refused later."""
    try:
        return tuple(float(value) for value in values)
    except (TypeError, ValueError):
        return values


def _parts_of(mesh):
    """The arrays of a mesh by their names."""
    colors_are_of = None
    if isinstance(mesh, dict):
        unknown = set(mesh) - set(_PARTS)
        if unknown:
            raise ValueError(f"mesh: expected {', '.join(_PARTS)}, found {sorted(unknown)[0]}")
        parts = dict(mesh)
    elif isinstance(mesh, tuple):
        if not 2 <= len(mesh) <= 6:
            raise ValueError(f"mesh: expected (vertices, faces[, normals, colors, uv, texture]), found {len(mesh)} parts")
        parts = dict(zip(_PARTS, mesh))
    elif hasattr(mesh, "vertices") and hasattr(mesh, "faces"):
        parts = {"vertices": mesh.vertices, "faces": mesh.faces, **_visual_of(mesh)}
        colors_are_of = getattr(getattr(mesh, "visual", None), "kind", None)
    else:
        raise ValueError("mesh: expected a path, arrays, or an object with vertices and faces, found " + type(mesh).__name__)
    texture = parts.get("texture")
    if isinstance(texture, (str, os.PathLike)):
        parts["texture"] = np.asarray(read(texture))
    elif texture is not None:
        parts["texture"] = np.asarray(texture)
    if parts.get("faces") is not None:
        faces = np.asarray(parts["faces"])
        if faces.size and faces.dtype.kind not in "iu":
            raise ValueError(f"faces: expected whole numbers, found {faces.dtype}")
        parts["faces"] = faces if faces.size else faces.astype(np.int64)
    if parts.get("colors") is not None:
        parts["colors"] = np.asarray(parts["colors"])
        _split_vertices(parts, colors_are_of)
    return parts


def _visual_of(mesh):
    """Colours and texture, where trimesh's objects have them."""
    visual = getattr(mesh, "visual", None)
    kind = getattr(visual, "kind", None)
    if kind == "vertex":
        return {"colors": visual.vertex_colors}
    if kind == "face":
        return {"colors": visual.face_colors}
    material = getattr(visual, "material", None)
    image = getattr(material, "baseColorTexture", None) or getattr(material, "image", None)
    uv = getattr(visual, "uv", None)
    if image is None or uv is None:
        return {}
    return {"uv": uv, "texture": np.asarray(image.convert("RGBA") if hasattr(image, "convert") else image)}


def _split_vertices(parts, colors_are_of):
    """Gives each face vertices of its own where colours are by face: after those that lines and points have.

    colors_are_of: vertex or face; None = vertex where there are as many of both.
    """
    colors, faces, vertices = parts["colors"], parts.get("faces"), np.asarray(parts["vertices"])
    if faces is None or faces.ndim != 2 or colors.ndim != 2 or len(colors) != len(faces):
        return
    if colors_are_of == "vertex" or (colors_are_of != "face" and len(colors) == len(vertices)):
        return
    if faces.size and (faces.min() < 0 or faces.max() >= len(vertices)):
        raise ValueError(f"faces: expected numbers of vertices from 0 to {len(vertices) - 1}")
    corners = faces.reshape(-1)
    kept = len(vertices) if parts.get("lines") is not None or parts.get("points") is not None else 0
    for name in ("vertices", "normals", "uv"):
        if parts.get(name) is not None:
            values = np.asarray(parts[name])
            if len(values) != len(vertices):
                raise ValueError(f"{name}: expected one for each of {len(vertices)} vertices, found {len(values)}")
            parts[name] = np.concatenate([values[:kept], values[corners]])
    if kept and colors.shape[1] == 3:
        opaque = 255 if colors.dtype == np.uint8 else 1
        colors = np.hstack([colors, np.full((len(colors), 1), opaque, colors.dtype)])
    # Without alpha a vertex has no colour of its own.
    parts["colors"] = np.concatenate([np.zeros((kept, colors.shape[1]), colors.dtype), np.repeat(colors, faces.shape[1], axis=0)])
    parts["faces"] = np.arange(kept, kept + len(corners)).reshape(faces.shape)


def _triangles_to_faces(parts):
    """By number of a triangle that of its face, -1 in the end for none; None where each face is a triangle."""
    counts = [(len(part["faces"]), part["faces"].ndim == 2 and part["faces"].shape[1] == 4)
              for part in parts if part.get("faces") is not None]
    if not any(is_quads for _, is_quads in counts):
        return None
    per_face = np.concatenate([np.full(count, 2 if is_quads else 1) for count, is_quads in counts])
    return np.append(np.repeat(np.arange(len(per_face)), per_face), -1).astype(np.int32)
