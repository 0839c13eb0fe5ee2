import os
from typing import Literal, Optional, Sequence, Tuple, Union, overload

import numpy as np
import numpy.typing as npt

_Path = Union[str, os.PathLike[str]]
_Floats = npt.ArrayLike
_Bytes = npt.NDArray[np.uint8]
_Field = Tuple[npt.NDArray[np.float32], npt.NDArray[np.float32]]
_Kernel = Literal["box", "triangle", "cubic"]
_Lookup = Literal["nearest", "bilinear"]
_Integrator = Literal["rk43", "midpoint"]
_Seeding = Literal["scan", "offset", "sobol"]
_Colormap = Literal["hue", "hot", "bwr", "grey"]
_Side = Literal["closed", "periodic"]
_Boundary = Union[_Side, Tuple[_Side, _Side]]
_Weighted = Tuple[_Bytes, npt.NDArray[np.float32]]

KERNELS: Tuple[str, ...]
LOOKUPS: Tuple[str, ...]
INTEGRATORS: Tuple[str, ...]
SEEDINGS: Tuple[str, ...]
BOUNDARIES: Tuple[str, ...]
COLORMAPS: Tuple[str, ...]
MAX_GRID: int

class Engine:
    length: float
    kernel: _Kernel
    subpixels: int
    lookup: _Lookup
    integrator: _Integrator
    seeding: _Seeding
    normalization: float
    extension: float
    step: float
    rk43: Tuple[float, float, float, float]
    threads: int
    iterations: Optional[int]
    enhance: bool
    orientation: bool
    boundary: _Boundary
    fill: Optional[int]
    lines: int
    hits: int
    def __init__(
        self,
        *,
        length: float = 20.0,
        kernel: _Kernel = "triangle",
        subpixels: int = 1,
        lookup: _Lookup = "bilinear",
        integrator: _Integrator = "rk43",
        seeding: _Seeding = "offset",
        normalization: float = 0.0,
        extension: float = 80.0,
        step: float = 1.0,
        rk43: Tuple[float, float, float, float] = (4.0, 0.5, 15.0, 0.001),
        threads: int = 0,
        iterations: Optional[int] = None,
        enhance: bool = False,
        orientation: bool = False,
        boundary: _Boundary = "closed",
        fill: Optional[int] = None,
    ) -> None: ...
    @overload
    def compute(
        self,
        u: _Floats,
        v: _Floats,
        texture: Optional[npt.ArrayLike] = None,
        *,
        seed: int = 1,
        shape: Optional[Tuple[int, int]] = None,
        mask: Optional[npt.ArrayLike] = None,
        return_weight: Literal[False] = False,
    ) -> _Bytes: ...
    @overload
    def compute(
        self,
        u: _Floats,
        v: _Floats,
        texture: Optional[npt.ArrayLike] = None,
        *,
        seed: int = 1,
        shape: Optional[Tuple[int, int]] = None,
        mask: Optional[npt.ArrayLike] = None,
        return_weight: Literal[True],
    ) -> _Weighted: ...

@overload
def lic(
    u: _Floats,
    v: _Floats,
    texture: Optional[npt.ArrayLike] = None,
    *,
    length: float = 20.0,
    kernel: _Kernel = "triangle",
    subpixels: int = 1,
    lookup: _Lookup = "bilinear",
    integrator: _Integrator = "rk43",
    seeding: _Seeding = "offset",
    seed: int = 1,
    shape: Optional[Tuple[int, int]] = None,
    threads: int = 0,
    iterations: Optional[int] = None,
    enhance: bool = False,
    orientation: bool = False,
    boundary: _Boundary = "closed",
    mask: Optional[npt.ArrayLike] = None,
    fill: Optional[int] = None,
    return_weight: Literal[False] = False,
) -> _Bytes: ...
@overload
def lic(
    u: _Floats,
    v: _Floats,
    texture: Optional[npt.ArrayLike] = None,
    *,
    length: float = 20.0,
    kernel: _Kernel = "triangle",
    subpixels: int = 1,
    lookup: _Lookup = "bilinear",
    integrator: _Integrator = "rk43",
    seeding: _Seeding = "offset",
    seed: int = 1,
    shape: Optional[Tuple[int, int]] = None,
    threads: int = 0,
    iterations: Optional[int] = None,
    enhance: bool = False,
    orientation: bool = False,
    boundary: _Boundary = "closed",
    mask: Optional[npt.ArrayLike] = None,
    fill: Optional[int] = None,
    return_weight: Literal[True],
) -> _Weighted: ...
def noise(shape: Tuple[int, ...], *, seed: int = 1, binary: bool = False) -> _Bytes: ...
def adjust(img: npt.ArrayLike, mean: float = 128.0, sigma: float = 48.0) -> _Bytes: ...
def brighten(img: npt.ArrayLike, lo: int, hi: int) -> _Bytes: ...
def equalize(
    img: npt.ArrayLike, adaptive: bool = False, tiles: Tuple[int, int] = (8, 8), clip: float = 3.0
) -> _Bytes: ...
def blur(img: npt.ArrayLike, radius: int = 2) -> _Bytes: ...
def zoom(img: npt.ArrayLike, shape: Tuple[int, int]) -> _Bytes: ...
def emboss(
    img: npt.ArrayLike,
    u: Optional[_Floats] = None,
    v: Optional[_Floats] = None,
    *,
    azimuth: float = 45.0,
    elevation: float = 45.0,
    relief: int = 3,
) -> _Bytes: ...
def colormap(name: _Colormap) -> npt.NDArray[np.float32]: ...
def color(
    img: npt.ArrayLike,
    values: _Floats,
    cmap: Union[_Colormap, npt.ArrayLike] = "hue",
    range: Optional[Tuple[float, float]] = None,
) -> _Bytes: ...
def color_direction(img: npt.ArrayLike, u: _Floats, v: _Floats) -> _Bytes: ...
def read_vector_field(path: _Path) -> _Field: ...
def read_ucd(
    path: _Path, grid: Tuple[int, int], bbox: Optional[Tuple[float, float, float, float]] = None
) -> _Field: ...
def read_scalar_field(path: _Path) -> npt.NDArray[np.float32]: ...
def read_scalar_ucd(path: _Path, grid: Tuple[int, int]) -> npt.NDArray[np.float32]: ...
def read_pnm(path: _Path) -> _Bytes: ...
def write_pnm(path: _Path, img: npt.ArrayLike, *, ascii: bool = False) -> None: ...
def circle(shape: Tuple[int, int] = (33, 33), angle: float = 0.0) -> _Field: ...
def saddle() -> _Field: ...
def linear(
    shape: Tuple[int, int], matrix: npt.ArrayLike, offset: Sequence[float] = (0.0, 0.0)
) -> _Field: ...
def brusselator(
    shape: Tuple[int, int] = (64, 64),
    x_range: float = 4.0,
    y_range: float = 4.0,
    a: float = 1.0,
    b: float = 3.0,
) -> _Field: ...
