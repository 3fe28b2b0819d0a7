# The types of the package.
from collections.abc import Sequence
from contextlib import AbstractContextManager
from os import PathLike
from typing import Any, Literal, NamedTuple, Protocol, Union

import numpy as np
import numpy.typing as npt

_Path = Union[str, PathLike[str]]
_Color = Union[str, Sequence[int]]
_Tolerance = Union[None, int, tuple[int, int]]
_Size = Sequence[int]
_View = Literal["iso", "front", "back", "left", "right", "top", "bottom"]
_Axis = Literal["y", "z", "x", "-y", "-z", "-x"]
_Shading = Literal["auto", "flat", "gouraud", "textured", "wireframe", "hidden-line"]
_Edges = Union[bool, Literal["all", "feature"]]
_Background = Union[None, _Color, tuple[_Color, _Color]]
_Unit = Literal["mm", "cm", "m", "km", "in", "ft"]
_Dashes = Union[bool, str, Sequence[float]]

class _Mesh_Object(Protocol):
    @property
    def vertices(self) -> Any: ...
    @property
    def faces(self) -> Any: ...

_Part = Union[_Path, _Mesh_Object, dict[str, Any], tuple[Any, ...]]
_Mesh = Union[_Part, list[Any]]

__version__: str

class Error(RuntimeError): ...

class Texture:
    def __init__(self, image: npt.NDArray[np.uint8]) -> None: ...

class Comparison(NamedTuple):
    same: bool
    text: str
    differing: int
    most: int
    def __bool__(self) -> bool: ...

class Image:
    pixels: npt.NDArray[Any] | None
    palette: npt.NDArray[np.uint8] | None
    depth: npt.NDArray[np.uint16] | None
    ids: npt.NDArray[np.int32] | None
    near: float
    far: float
    perspective: bool
    warnings: list[str]
    dpi: float
    report: dict[str, Any] | None
    def __init__(
        self,
        pixels: npt.ArrayLike | None,
        palette: npt.ArrayLike | None = ...,
        *,
        depth: npt.NDArray[np.uint16] | None = ...,
        ids: npt.NDArray[np.int32] | None = ...,
        near: float = ...,
        far: float = ...,
        perspective: bool = ...,
        warnings: Sequence[str] = ...,
        dpi: float = ...,
    ) -> None: ...
    def __array__(self, dtype: Any = ..., copy: bool | None = ...) -> npt.NDArray[Any]: ...
    @property
    def __array_interface__(self) -> dict[str, Any]: ...
    def __buffer__(self, flags: int, /) -> memoryview: ...
    def __dlpack__(self, **options: Any) -> Any: ...
    def __dlpack_device__(self) -> tuple[int, int]: ...
    @property
    def shape(self) -> tuple[int, ...]: ...
    @property
    def dtype(self) -> np.dtype[Any]: ...
    @property
    def size(self) -> tuple[int, int]: ...
    def __len__(self) -> int: ...
    def __getitem__(self, index: Any) -> Any: ...
    def png(self) -> bytes: ...
    def _repr_png_(self) -> bytes: ...
    def save(self, path: _Path) -> None: ...
    def digest(self) -> str: ...
    def compare(self, other: Image | npt.ArrayLike | _Path, tolerance: _Tolerance = ...) -> Comparison: ...
    def distances(self) -> npt.NDArray[np.float32]: ...

class Camera:
    def __init__(
        self, view: _View = ..., *, up: _Axis | None = ..., fov: float | None = ..., zoom: float = ..., orthographic: bool = ...
    ) -> None: ...
    @classmethod
    def look_at(
        cls,
        eye: npt.ArrayLike,
        target: npt.ArrayLike,
        up: npt.ArrayLike | None = ...,
        *,
        fov: float | None = ...,
        zoom: float = ...,
        orthographic: bool = ...,
    ) -> Camera: ...
    @classmethod
    def from_pose(
        cls,
        pose: npt.ArrayLike,
        K: npt.ArrayLike | None = ...,
        *,
        fov: float | None = ...,
        convention: Literal["opengl", "opencv"] = ...,
        orthographic: bool = ...,
    ) -> Camera: ...

class Model:
    first_faces: npt.NDArray[np.int64]
    def __init__(
        self,
        mesh: _Mesh,
        *,
        crease: float | None = ...,
        section: Sequence[float] | None = ...,
        input_format: str | None = ...,
        threads: int | None = ...,
        max_memory: int = ...,
        outside_of_folder: bool = ...,
        allow_empty: bool = ...,
    ) -> None: ...
    @property
    def triangle_count(self) -> int: ...
    @property
    def line_count(self) -> int: ...
    @property
    def point_count(self) -> int: ...
    @property
    def warnings(self) -> list[str]: ...
    def render(
        self,
        *,
        size: _Size | None = ...,
        camera: Camera | _View | None = ...,
        shading: _Shading = ...,
        threads: int | None = ...,
        pixels: bool = ...,
        depth: bool = ...,
        ids: bool = ...,
        background: _Background = ...,
        colors: Literal[8, 32] = ...,
        color: _Color | None = ...,
        edges: _Edges = ...,
        edge_color: _Color | None = ...,
        line_width: int = ...,
        point_size: int = ...,
        cull: bool = ...,
        tint: Literal["lit", "own", "normals"] = ...,
        light: Sequence[float] = ...,
        specular: float = ...,
        look: Literal["plain", "studio"] = ...,
        supersample: int = ...,
        smooth_lines: bool = ...,
        axes: bool = ...,
        scale_bar: bool = ...,
        dpi: float | None = ...,
        paper: str | None = ...,
        scale: str | None = ...,
        unit: _Unit | None = ...,
        max_memory: int = ...,
    ) -> Image: ...

def render(
    mesh: Model | _Mesh,
    *,
    size: _Size | None = ...,
    camera: Camera | _View | None = ...,
    shading: _Shading = ...,
    threads: int | None = ...,
    pixels: bool = ...,
    depth: bool = ...,
    ids: bool = ...,
    background: _Background = ...,
    colors: Literal[8, 32] = ...,
    color: _Color | None = ...,
    edges: _Edges = ...,
    edge_color: _Color | None = ...,
    line_width: int = ...,
    point_size: int = ...,
    cull: bool = ...,
    tint: Literal["lit", "own", "normals"] = ...,
    light: Sequence[float] = ...,
    specular: float = ...,
    look: Literal["plain", "studio"] = ...,
    supersample: int = ...,
    smooth_lines: bool = ...,
    axes: bool = ...,
    scale_bar: bool = ...,
    dpi: float | None = ...,
    paper: str | None = ...,
    scale: str | None = ...,
    unit: _Unit | None = ...,
    max_memory: int = ...,
    crease: float | None = ...,
    section: Sequence[float] | None = ...,
    input_format: str | None = ...,
) -> Image: ...

class Map:
    def __init__(
        self,
        source: _Path | dict[str, Any] | list[Any],
        *,
        layer: str | None = ...,
        layout: str | None = ...,
        filter: str | None = ...,
        bbox: Sequence[float] | None = ...,
        projection: str | None = ...,
        center: Sequence[float] | None = ...,
        flip_y: bool | None = ...,
        clip_to: str | None = ...,
        fill: _Color = ...,
        fill_by: str | None = ...,
        classes: Literal["quantiles", "equal", "natural", "categories"] | None = ...,
        class_count: int = ...,
        breaks: Sequence[float] | None = ...,
        ramp: str | None = ...,
        reverse_ramp: bool = ...,
        opacity: float = ...,
        water: _Color | None = ...,
        graticule: float = ...,
        border: _Dashes = ...,
        outline: _Dashes | None = ...,
        border_color: _Color | None = ...,
        border_width: int = ...,
        width_by: str | None = ...,
        widths: tuple[int, int] = ...,
        casing: _Color | None = ...,
        casing_width: int = ...,
        marker: str | None = ...,
        marker_color: _Color | None = ...,
        marker_size: int = ...,
        labels: bool = ...,
        label_by: str | None = ...,
        label_key: str | None = ...,
        label_size: int = ...,
        label_color: _Color | None = ...,
        halo: float = ...,
        halo_color: _Color | None = ...,
        font: _Path | None = ...,
        overlay: _Path | None = ...,
        overlay_color: _Color | None = ...,
        merge: Literal["and"] | None = ...,
        style: _Path | None = ...,
        title: str | None = ...,
        attribution: str | None = ...,
        legend: bool = ...,
        map_scale: Literal["km", "miles"] | None = ...,
        input_format: str | None = ...,
        outside_of_folder: bool = ...,
    ) -> None: ...
    def render(
        self,
        *,
        size: _Size | None = ...,
        background: _Color | None = ...,
        colors: Literal[8, 32] = ...,
        supersample: int = ...,
        smooth_lines: bool = ...,
        threads: int | None = ...,
        dpi: float | None = ...,
        paper: str | None = ...,
        scale: str | None = ...,
        unit: _Unit | None = ...,
        max_memory: int = ...,
    ) -> Image: ...

def map(
    source: _Path | dict[str, Any] | list[Any],
    *,
    size: _Size | None = ...,
    background: _Color | None = ...,
    colors: Literal[8, 32] = ...,
    supersample: int = ...,
    smooth_lines: bool = ...,
    threads: int | None = ...,
    dpi: float | None = ...,
    paper: str | None = ...,
    scale: str | None = ...,
    unit: _Unit | None = ...,
    max_memory: int = ...,
    **settings: Any,
) -> Image: ...

class Recording:
    def __init__(self, text: str | None = ...) -> None: ...
    @property
    def text(self) -> str: ...
    def save(self, path: _Path) -> None: ...
    def replay(self, max_memory: int = ...) -> Image: ...

class Canvas:
    def __init__(
        self,
        size: _Size,
        *,
        depth: bool = ...,
        colors: Literal[8, 32] = ...,
        blending: bool = ...,
        palette: npt.ArrayLike | None = ...,
        threads: int | None = ...,
    ) -> None: ...
    def flush(self) -> None: ...
    def begin(self, background: _Color | None = ...) -> None: ...
    def end(self) -> None: ...
    def picture(self, background: _Color | None = ...) -> AbstractContextManager[Canvas]: ...
    def set(self, **attributes: Any) -> None: ...
    def attributes(self, **attributes: Any) -> AbstractContextManager[Canvas]: ...
    def depth_mode(
        self, test: Literal["nearer", "nearer-or-equal", "farther"] | None = ..., write: bool | None = ...
    ) -> None: ...
    def polyline(self, points: npt.ArrayLike, colors: npt.ArrayLike | None = ..., **attributes: Any) -> None: ...
    def strip(
        self, points: npt.ArrayLike, colors: npt.ArrayLike | None = ..., uv: npt.ArrayLike | None = ..., **attributes: Any
    ) -> None: ...
    def polygon(self, points: npt.ArrayLike, **attributes: Any) -> None: ...
    def markers(self, points: npt.ArrayLike, colors: npt.ArrayLike | None = ..., **attributes: Any) -> None: ...
    def dots(self, points: npt.ArrayLike, colors: npt.ArrayLike | None = ..., **attributes: Any) -> None: ...
    def ellipse(
        self,
        center: npt.ArrayLike,
        radii: npt.ArrayLike,
        start: float = ...,
        end: float = ...,
        rotation: float = ...,
        **attributes: Any,
    ) -> None: ...
    def arc(
        self,
        center: npt.ArrayLike,
        radii: npt.ArrayLike,
        start: float = ...,
        end: float = ...,
        rotation: float = ...,
        **attributes: Any,
    ) -> None: ...
    def image(self, pixels: npt.NDArray[Any], at: npt.ArrayLike, **attributes: Any) -> None: ...
    @property
    def pixels(self) -> npt.NDArray[np.uint8]: ...
    @property
    def rgb(self) -> npt.NDArray[np.uint8] | None: ...
    @property
    def depth(self) -> npt.NDArray[np.uint16] | None: ...
    @property
    def palette(self) -> npt.NDArray[np.uint8] | None: ...
    def to_image(self) -> Image: ...
    def record(self) -> AbstractContextManager[Recording]: ...
    def _repr_png_(self) -> bytes: ...

def replay(document: _Path | Recording | dict[str, Any], *, max_memory: int = ...) -> Image: ...
def compare(a: Image | npt.ArrayLike | _Path, b: Image | npt.ArrayLike | _Path, tolerance: _Tolerance = ...) -> Comparison: ...
def read(path: _Path, max_memory: int = ...) -> Image: ...
def poster(
    source: _Path | Sequence[_Path],
    path: _Path,
    *,
    size: _Size,
    parts: int,
    options: Sequence[str] = ...,
    client: Any = ...,
    workers: int | None = ...,
    threads: int = ...,
    command: _Path = ...,
) -> str: ...
