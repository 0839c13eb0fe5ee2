"""Line integral convolution (LIC) of 2-D vector fields on NumPy arrays.

A field is two 2-D float arrays ``u`` (x component, along axis 1) and ``v``
(y component, along axis 0) of shape ``(ny, nx)`` on a regular grid. Images are
``uint8`` arrays of shape ``(H, W)`` (grey) or ``(H, W, 3)`` (RGB).

Row 0 of every array is y = 0, the *bottom* of the picture, as in velk's C++
library: show results with ``matplotlib.pyplot.imshow(img, origin="lower")``,
as for ``streamplot``.

Every computation runs without the GIL. The library's informational messages go
to ``logging.getLogger("velk")``; failures are exceptions, never output.
"""

from __future__ import annotations

import math
import os
from typing import Any, Optional, Sequence, Tuple, Union

import numpy as np

from . import _velk

__all__ = [
    "Engine", "lic", "noise", "adjust", "brighten", "equalize", "blur", "zoom", "emboss", "color",
    "color_direction", "colormap", "read_vector_field", "read_ucd", "read_scalar_field",
    "read_scalar_ucd", "read_pnm", "write_pnm", "circle", "saddle", "linear", "brusselator",
]

KERNELS = ("box", "triangle", "cubic")
LOOKUPS = ("nearest", "bilinear")
INTEGRATORS = ("rk43", "midpoint")
SEEDINGS = ("scan", "offset", "sobol")
BOUNDARIES = ("closed", "periodic")
COLORMAPS = ("hue", "hot", "bwr", "grey")
MAX_GRID = 10000  # nodes per field axis, as in velk's field files
_MAX_PIXELS = 2**31 - 1  # the engine counts pixels in an int


def _choice(name: str, value: Any, options: Sequence[str]) -> str:
    if value not in options:
        raise ValueError(f"{name} must be one of {', '.join(options)}; got {value!r}")
    return str(value)


def _number(name: str, value: Any, low: float = -math.inf, low_ok: bool = True) -> float:
    try:
        x = float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name} must be a number, got {type(value).__name__}") from None
    if not math.isfinite(x) or x < low or (x == low and not low_ok):
        bound = f"{'>=' if low_ok else '>'} {low:g}" if low > -math.inf else "finite"
        raise ValueError(f"{name} must be {bound}, got {value!r}")
    return x


def _integer(name: str, value: Any, low: int, high: int = 2**31 - 1) -> int:
    if isinstance(value, bool) or not isinstance(value, (int, np.integer)):
        raise TypeError(f"{name} must be an int, got {type(value).__name__}")
    if not low <= value <= high:
        raise ValueError(f"{name} must be in {low} .. {high}, got {value}")
    return int(value)


def _flag(name: str, value: Any) -> bool:
    if not isinstance(value, (bool, np.bool_)):
        raise TypeError(f"{name} must be a bool, got {type(value).__name__}")
    return bool(value)


def _iterations(name: str, value: Any) -> Optional[int]:
    return None if value is None else _integer(name, value, 1, 100)


def _fill(name: str, value: Any) -> Optional[int]:
    return None if value is None else _integer(name, value, 0, 255)


def _boundary(name: str, value: Any) -> Union[str, Tuple[str, str]]:
    if isinstance(value, str):
        return _choice(name, value, BOUNDARIES)
    try:
        y, x = value
    except (TypeError, ValueError):
        raise ValueError(f"{name} must be one of {', '.join(BOUNDARIES)} or a pair of them "
                         f"(axis 0, axis 1); got {value!r}") from None
    return (_choice(f"{name}[0]", y, BOUNDARIES), _choice(f"{name}[1]", x, BOUNDARIES))


def _periodic(boundary: Union[str, Tuple[str, str]]) -> Tuple[bool, bool]:
    """(y, x) periodic, from a checked boundary."""
    y, x = (boundary, boundary) if isinstance(boundary, str) else boundary
    return y == "periodic", x == "periodic"


def _nodata(u: Any, v: Any, mask: Any) -> Optional[np.ndarray]:
    """The no-data nodes (True) of mask= and of masked arrays u, v; None without either."""
    masks = [np.ma.getmaskarray(a) for a in (u, v) if isinstance(a, np.ma.MaskedArray)]
    if mask is not None:
        m = np.asarray(mask)
        if m.dtype != np.bool_:
            raise TypeError(f"mask must be a bool array, got dtype {m.dtype}")
        if m.shape != np.shape(u):
            raise ValueError(f"mask must have u's shape {np.shape(u)}, got {m.shape}")
        masks.append(m)
    return np.logical_or.reduce(masks) if masks else None


def _floats(name: str, a: Any) -> np.ndarray:
    a = np.asarray(a)
    if a.dtype != np.float32 and a.dtype != np.float64:
        raise TypeError(f"{name} must be a float32 or float64 array, got dtype {a.dtype}")
    if a.ndim != 2:
        raise ValueError(f"{name} must be 2-D (ny, nx), got {a.ndim}-D")
    if not (2 <= a.shape[0] <= MAX_GRID and 2 <= a.shape[1] <= MAX_GRID):
        raise ValueError(f"{name} needs 2 to {MAX_GRID} nodes per axis, got shape {a.shape}")
    return a


def _field(u: Any, v: Any) -> Tuple[np.ndarray, np.ndarray]:
    u, v = _floats("u", u), _floats("v", v)
    if u.shape != v.shape:
        raise ValueError(f"u and v must have the same shape, got {u.shape} and {v.shape}")
    return u, v


def _shape(name: str, shape: Any, channels: int = 1) -> Tuple[int, int]:
    try:
        h, w = shape
    except (TypeError, ValueError):
        raise TypeError(f"{name} must be a pair (H, W), got {shape!r}") from None
    h, w = _integer(f"{name}[0]", h, 1), _integer(f"{name}[1]", w, 1)
    if h * w * channels > _MAX_PIXELS:
        raise ValueError(f"{name} {(h, w)} has more pixels than the engine can hold")
    return h, w


def _image(name: str, img: Any, least: int = 1) -> np.ndarray:
    a = np.asarray(img)
    if a.dtype != np.uint8:
        raise TypeError(f"{name} must be a uint8 array, got dtype {a.dtype}")
    if a.ndim not in (2, 3) or (a.ndim == 3 and a.shape[2] != 3):
        raise ValueError(f"{name} must have shape (H, W) or (H, W, 3), got {a.shape}")
    if a.shape[0] < least or a.shape[1] < least:
        raise ValueError(f"{name} must be at least {least}x{least} pixels, got {a.shape}")
    _shape(f"{name}.shape", a.shape[:2], 1 if a.ndim == 2 else 3)
    return a


class _Setting:
    """An Engine attribute whose assignments are checked."""

    def __init__(self, check: Any) -> None:
        self.check = check

    def __set_name__(self, owner: type, name: str) -> None:
        self.name, self.slot = name, "_" + name

    def __get__(self, obj: Any, owner: Optional[type] = None) -> Any:
        return self if obj is None else getattr(obj, self.slot)

    def __set__(self, obj: Any, value: Any) -> None:
        setattr(obj, self.slot, self.check(self.name, value))


def _rk43(name: str, value: Any) -> Tuple[float, float, float, float]:
    try:
        h0, hmin, hmax, tol = value
    except (TypeError, ValueError):
        raise ValueError(f"{name} must be (initial step, min step, max step, tolerance), "
                         f"got {value!r}") from None
    return (_number(f"{name}[0]", h0, 0.0, False), _number(f"{name}[1]", hmin, 0.0, False),
            _number(f"{name}[2]", hmax, 0.0, False), _number(f"{name}[3]", tol, 0.0, False))


class Engine:
    """A reusable LIC engine: every setting of velk's ``VelkCompute``.

    Settings are keyword arguments and attributes, checked when set; they
    persist between frames. After each :meth:`compute`, ``lines`` holds the
    number of field lines traced and ``hits`` the number of convolution
    samples that reached the output.

    Parameters
    ----------
    length : float, default 20.0
        Half-length of the filter kernel, in texture pixels.
    kernel : {"box", "triangle", "cubic"}, default "triangle"
        Filter kernel along each field line.
    subpixels : int, default 1
        Each output pixel is split into ``subpixels**2`` sub-pixels, each
        reached by at least one line (more lines, smoother result).
    lookup : {"bilinear", "nearest"}, default "bilinear"
        Texture lookup along the lines.
    integrator : {"rk43", "midpoint"}, default "rk43"
        Adaptive Runge-Kutta 4(3), or the fixed-step midpoint rule.
    seeding : {"offset", "scan", "sobol"}, default "offset"
        Order in which lines are seeded.
    normalization : float, default 0.0
        Speed normalisation handed to the integrators.
    extension : float, default 80.0
        How far each line is followed beyond the kernel, in texture pixels.
    step : float, default 1.0
        Integration step, in texture pixels.
    rk43 : tuple of 4 floats, default (4.0, 0.5, 15.0, 0.001)
        Initial step, minimum step, maximum step and tolerance of "rk43".
    threads : int, default 0
        0: the sequential algorithm; n >= 1: the tiled algorithm on n threads
        (its output is the same for every n >= 1); -1: one thread per core.
    iterations : int, optional
        LIC passes, 1 to 100: each pass after the first convolves the image
        of the one before, which makes the streaks longer and smoother.
        Default 1, or 2 with ``enhance``.
    enhance : bool, default False
        High-pass filter the image before every pass after the first, so the
        streaks stay sharp and apart (LIC, high-pass, LIC); needs 2 or more
        iterations.
    orientation : bool, default False
        The field is an orientation field: (u, v) and (-u, -v) mean the same
        direction (directors, principal stress axes), and lines go on
        without turning back where the sign flips.
    boundary : "closed", "periodic" or a pair of them, default "closed"
        One setting for both axes, or one per array axis in the order
        numpy.pad takes them: ``(axis 0 = y, axis 1 = x)``, so
        ``("closed", "periodic")`` is periodic in x. A periodic axis of n
        nodes is one period (node n is node 0 again, as ``numpy.roll`` has
        it) and the picture spans exactly that period, so tiles join
        seamlessly.
    fill : int, optional
        0 .. 255 (default 0): the value of pixels no line reaches, with
        no-data handling (see :meth:`compute`); giving it turns that on.

    Examples
    --------
    >>> import numpy as np, velk
    >>> u, v = velk.circle((33, 33))
    >>> engine = velk.Engine(length=10, kernel="box")
    >>> frames = [engine.compute(u, v, seed=s, shape=(64, 64)) for s in (1, 2)]
    >>> frames[0].shape, frames[0].dtype, engine.lines > 0
    ((64, 64), dtype('uint8'), True)
    """

    length = _Setting(lambda n, x: _number(n, x, 0.0))
    kernel = _Setting(lambda n, x: _choice(n, x, KERNELS))
    subpixels = _Setting(lambda n, x: _integer(n, x, 1, 64))
    lookup = _Setting(lambda n, x: _choice(n, x, LOOKUPS))
    integrator = _Setting(lambda n, x: _choice(n, x, INTEGRATORS))
    seeding = _Setting(lambda n, x: _choice(n, x, SEEDINGS))
    normalization = _Setting(_number)
    extension = _Setting(lambda n, x: _number(n, x, 0.0))
    step = _Setting(lambda n, x: _number(n, x, 0.0, False))
    rk43 = _Setting(_rk43)
    threads = _Setting(lambda n, x: _integer(n, x, -1, 1024))
    iterations = _Setting(_iterations)
    enhance = _Setting(_flag)
    orientation = _Setting(_flag)
    boundary = _Setting(_boundary)
    fill = _Setting(_fill)

    def __init__(self, *, length: float = 20.0, kernel: str = "triangle", subpixels: int = 1,
                 lookup: str = "bilinear", integrator: str = "rk43", seeding: str = "offset",
                 normalization: float = 0.0, extension: float = 80.0, step: float = 1.0,
                 rk43: Tuple[float, float, float, float] = (4.0, 0.5, 15.0, 0.001),
                 threads: int = 0, iterations: Optional[int] = None,
                 enhance: bool = False, orientation: bool = False,
                 boundary: Union[str, Tuple[str, str]] = "closed",
                 fill: Optional[int] = None) -> None:
        self.length, self.kernel, self.subpixels = length, kernel, subpixels
        self.lookup, self.integrator, self.seeding = lookup, integrator, seeding
        self.normalization, self.extension, self.step = normalization, extension, step
        self.rk43, self.threads = rk43, threads
        self.iterations, self.enhance = iterations, enhance
        self.orientation, self.boundary, self.fill = orientation, boundary, fill
        self.lines = 0
        self.hits = 0
        self._core = _velk.Core()

    def _settings(self) -> Any:
        if (self.length + self.extension) / self.step > 2**24:
            raise ValueError("length and extension need more than 2**24 steps; raise step")
        s = _velk.Settings()
        s.kernel, s.length, s.extension, s.step = (
            KERNELS.index(self.kernel), self.length, self.extension, self.step)
        s.subpixels, s.lookup, s.seeding = (
            self.subpixels, LOOKUPS.index(self.lookup), SEEDINGS.index(self.seeding))
        s.midpoint, s.rk43 = self.integrator == "midpoint", self.rk43
        s.normalization, s.threads = self.normalization, self.threads
        s.iterations = self.iterations or (2 if self.enhance else 1)
        if self.enhance and s.iterations < 2:
            raise ValueError("enhance needs iterations >= 2, got 1")
        s.enhance, s.orientation = self.enhance, self.orientation
        s.periodic_y, s.periodic_x = _periodic(self.boundary)
        s.fill = self.fill or 0
        return s

    def compute(self, u: Any, v: Any, texture: Any = None, *, seed: int = 1,
                shape: Optional[Tuple[int, int]] = None, mask: Any = None,
                return_weight: bool = False) -> Any:
        """Computes the LIC image of the field (u, v) over a texture.

        No-data handling is on when ``mask`` is given, u or v is a masked
        array, u or v has a NaN or infinite value, ``fill`` is set or
        ``return_weight`` is true. Then the nodes without data (non-finite or
        masked) end the lines, as do stagnation points and closed edges;
        every pixel is divided by the kernel weight it received, so the
        picture does not darken towards edges and holes; pixels that no line
        reaches get ``fill``. Otherwise lines end where the field is zero or
        not finite and run on straight past the edges.

        Parameters
        ----------
        u, v : array_like or numpy.ma.MaskedArray, shape (ny, nx), float32 or float64
            Field components on a regular grid (any strides or order): node
            (i, j) is ``(u[j, i], v[j, i])``; row 0 is y = 0. The masks of
            masked arrays mark nodes without data.
        texture : uint8 array, shape (H, W) or (H, W, 3), optional
            Input texture, filtered along the lines. Default: grey white noise
            from :func:`noise` with ``seed`` and ``shape``.
        seed : int, default 1
            Seed of the default noise (ignored with a texture).
        shape : (H, W), optional
            Size of the default noise; default the field's shape.
        mask : bool array, shape (ny, nx), optional
            True where the field has no data, as in ``numpy.ma``; indexed as
            u and v are.
        return_weight : bool, default False
            Also return the weight: per pixel the share of the full kernel
            weight its values received.

        Returns
        -------
        numpy.ndarray, or (numpy.ndarray, numpy.ndarray) with return_weight
            uint8 image of the texture's shape; row 0 at the bottom
            (``imshow(img, origin="lower")``). The weight is float32 of shape
            (H, W) in [0, 1], 0 where no line came.

        Raises
        ------
        TypeError, ValueError
            Bad dtype, dimensions or shapes (the message names the argument),
            or sizes beyond what the engine can hold.

        Examples
        --------
        >>> import numpy as np, velk
        >>> y, x = np.mgrid[-1:1:64j, -1:1:64j]
        >>> img = velk.Engine(length=15).compute(-y, x)
        >>> img.shape
        (64, 64)
        """
        holes = _nodata(u, v, mask)
        u, v = _field(np.ma.getdata(u), np.ma.getdata(v))
        want = _flag("return_weight", return_weight)
        settings = self._settings()
        settings.nodata = (holes is not None or self.fill is not None or want
                           or not (np.isfinite(u).all() and np.isfinite(v).all()))
        if texture is None:
            size = _shape("shape", u.shape if shape is None else shape)
            self._check_counters(size, 1)
            texture = noise(size, seed=seed)
        texture = _image("texture", texture)
        self._check_counters(texture.shape, 1 if texture.ndim == 2 else 3)
        holes = None if holes is None else holes.astype(np.uint8)
        img, weight, self.lines, self.hits = self._core.run(u, v, texture, settings, holes, want)
        return (img, weight.astype(np.float32) / np.float32(255)) if want else img

    def _check_counters(self, shape: Tuple[int, ...], channels: int) -> None:
        if shape[0] * shape[1] * (self.subpixels**2 + channels) > _MAX_PIXELS:
            raise ValueError(f"a {shape[0]}x{shape[1]} picture with {self.subpixels}x"
                             f"{self.subpixels} sub-pixels needs more counters than the engine "
                             "can hold")

    def __repr__(self) -> str:
        names = ("length", "kernel", "subpixels", "lookup", "integrator", "seeding",
                 "normalization", "extension", "step", "rk43", "threads", "iterations", "enhance",
                 "orientation", "boundary", "fill")
        return "velk.Engine(" + ", ".join(f"{n}={getattr(self, n)!r}" for n in names) + ")"


def lic(u: Any, v: Any, texture: Any = None, *, length: float = 20.0, kernel: str = "triangle",
        subpixels: int = 1, lookup: str = "bilinear", integrator: str = "rk43",
        seeding: str = "offset", seed: int = 1, shape: Optional[Tuple[int, int]] = None,
        threads: int = 0, iterations: Optional[int] = None, enhance: bool = False,
        orientation: bool = False, boundary: Union[str, Tuple[str, str]] = "closed",
        mask: Any = None, fill: Optional[int] = None, return_weight: bool = False) -> Any:
    """Line integral convolution of the field (u, v): a uint8 image.

    The same field, texture and settings give, byte for byte, what velk's C++
    engine and ``velk-lic --no-adjust`` compute.

    Parameters
    ----------
    u, v : array_like, shape (ny, nx), float32 or float64
        Field on a regular grid, any strides or order: ``u`` is the x component
        (along axis 1), ``v`` the y component (along axis 0). Row 0 is y = 0,
        the bottom of the picture. Lines end where the field is zero or not
        finite. NaN or infinite values and the masks of masked arrays mark
        nodes without data.
    texture : uint8 array, shape (H, W) or (H, W, 3), optional
        Texture filtered along the lines; the result has its shape (a 64x64
        field can give a 2048x2048 picture). Default: grey white noise from
        ``seed`` (see :func:`noise`) with shape ``shape``.
    length : float, default 20.0
        Half-length of the filter kernel, in texture pixels.
    kernel : {"triangle", "box", "cubic"}
    subpixels : int, default 1
    lookup : {"bilinear", "nearest"}
    integrator : {"rk43", "midpoint"}
    seeding : {"offset", "scan", "sobol"}
        See :class:`Engine`.
    seed : int, default 1
        Seed of the default noise.
    shape : (H, W), optional
        Shape of the default noise; default the field's shape.
    threads : int, default 0
        0 sequential; n >= 1 the tiled algorithm on n threads; -1 one per core.
    iterations : int, optional
    enhance : bool, default False
        Repeated LIC, and the high-pass between passes; see :class:`Engine`.
    orientation : bool, default False
        (u, v) and (-u, -v) mean the same direction; see :class:`Engine`.
    boundary : "closed", "periodic" or a pair, default "closed"
        Per array axis, in numpy.pad's order ``(axis 0 = y, axis 1 = x)``:
        ``("closed", "periodic")`` is periodic in x. A periodic axis of n
        nodes is one period (as ``numpy.roll`` has it); see :class:`Engine`.
    mask : bool array, shape (ny, nx), optional
        True where the field has no data (as in ``numpy.ma``).
    fill : int, optional
        0 .. 255, default 0: pixels that no line reaches.
    return_weight : bool, default False
        Return ``(image, weight)``: the weight is float32 (H, W) in [0, 1],
        each pixel's share of the full kernel weight, 0 where no line came.

    No-data handling is on when ``mask`` is given, u or v is a masked array
    or has a NaN or infinite value, ``fill`` is given or ``return_weight`` is
    true: lines end at nodes without data, stagnation points and closed
    edges, each pixel is divided by the kernel weight it received (no
    darkening at edges and holes), and pixels no line reaches get ``fill``.

    Returns
    -------
    numpy.ndarray, or (numpy.ndarray, numpy.ndarray) with return_weight
        uint8, the texture's shape. Row 0 is the bottom row: show it with
        ``imshow(img, origin="lower")``.

    Raises
    ------
    TypeError, ValueError
        Bad dtype, dimensions, shapes or settings, naming the argument.

    Examples
    --------
    >>> import numpy as np, velk
    >>> y, x = np.mgrid[-1:1:100j, -1:1:200j]
    >>> img = velk.lic(-y, x, length=10)
    >>> img.shape, img.dtype
    ((100, 200), dtype('uint8'))
    >>> img, weight = velk.lic(-y, x, mask=np.hypot(x, y) < 0.3, fill=255, return_weight=True)
    >>> bool((img[weight == 0] == 255).all()), weight.dtype
    (True, dtype('float32'))
    """
    engine = Engine(length=length, kernel=kernel, subpixels=subpixels, lookup=lookup,
                    integrator=integrator, seeding=seeding, threads=threads,
                    iterations=iterations, enhance=enhance, orientation=orientation,
                    boundary=boundary, fill=fill)
    return engine.compute(u, v, texture, seed=seed, shape=shape, mask=mask,
                          return_weight=return_weight)


def noise(shape: Tuple[int, ...], *, seed: int = 1, binary: bool = False) -> np.ndarray:
    """White noise texture, as velk's ``VelkImage::createRandom``.

    Parameters
    ----------
    shape : (H, W) or (H, W, 3)
    seed : int, default 1
        Positive: reproducible noise; 0 continues the generator.
    binary : bool, default False
        Only 0 and 255 instead of every grey level.

    Returns
    -------
    numpy.ndarray
        uint8 array of ``shape``.

    Examples
    --------
    >>> import velk
    >>> velk.noise((4, 5), seed=3).shape
    (4, 5)
    """
    shape = tuple(shape)
    channels = 3 if len(shape) == 3 and shape[2] == 3 else 1
    if len(shape) not in (2, 3) or (len(shape) == 3 and shape[2] != 3):
        raise ValueError(f"shape must be (H, W) or (H, W, 3), got {shape}")
    h, w = _shape("shape", shape[:2], channels)
    return _velk.noise(h, w, channels, bool(binary), _integer("seed", seed, 0))


def adjust(img: Any, mean: float = 128.0, sigma: float = 48.0) -> np.ndarray:
    """Contrast stretch: the non-zero bytes get the given mean and deviation.

    Zero bytes are background and stay 0.

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3)
    mean, sigma : float

    Returns
    -------
    numpy.ndarray
        A new image of the same shape.

    Examples
    --------
    >>> import velk
    >>> out = velk.adjust(velk.noise((8, 8)), mean=100, sigma=20)
    """
    return _velk.adjust(_image("img", img), _number("mean", mean), _number("sigma", sigma, 0.0))


def brighten(img: Any, lo: int, hi: int) -> np.ndarray:
    """Maps the grey levels lo .. hi linearly onto 0 .. 255 (clamped).

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3)
    lo, hi : int
        Window; must differ.

    Returns
    -------
    numpy.ndarray

    Examples
    --------
    >>> import numpy as np, velk
    >>> velk.brighten(np.array([[50, 75, 100]], np.uint8), 50, 100).tolist()
    [[0, 127, 255]]
    """
    lo, hi = _integer("lo", lo, -2**23, 2**23), _integer("hi", hi, -2**23, 2**23)
    if lo == hi:
        raise ValueError(f"lo and hi must differ, got {lo} and {hi}")
    return _velk.brighten(_image("img", img), lo, hi)


def equalize(img: Any, adaptive: bool = False, tiles: Tuple[int, int] = (8, 8),
             clip: float = 3.0) -> np.ndarray:
    """Histogram equalisation, each channel on its own.

    Global: one mapping spreads the image's values evenly over 0 .. 255.
    Adaptive: every tile gets its own mapping, blended between tile centres,
    which brings out local contrast; a histogram bin is capped at ``clip``
    times the mean bin, which keeps flat regions from turning into noise.
    The lowest value present becomes 0; an image of one value stays as it is.

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3)
    adaptive : bool, default False
    tiles : (rows, columns), default (8, 8)
        Tiles of the adaptive mapping; more than the pixels count as one per
        pixel.
    clip : float, default 3.0
        Cap of a bin of the adaptive mapping, >= 1; 256 caps nothing.

    Returns
    -------
    numpy.ndarray
        A new image of the same shape.

    Examples
    --------
    >>> import numpy as np, velk
    >>> velk.equalize(np.array([[10, 10, 20, 30]], np.uint8)).tolist()
    [[0, 0, 128, 255]]
    """
    a = _image("img", img)
    try:
        rows, columns = tiles
    except (TypeError, ValueError):
        raise TypeError(f"tiles must be a pair of ints, got {tiles!r}") from None
    rows, columns = _integer("tiles[0]", rows, 1), _integer("tiles[1]", columns, 1)
    c = _number("clip", clip, 1.0)
    if not _flag("adaptive", adaptive):
        return _velk.equalize(a)
    return _velk.equalize_adaptive(a, rows, columns, c)


def blur(img: Any, radius: int = 2) -> np.ndarray:
    """Gaussian blur of deviation ``radius`` pixels (each channel alone).

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3)
    radius : int, 1 .. 9

    Returns
    -------
    numpy.ndarray

    Examples
    --------
    >>> import velk
    >>> out = velk.blur(velk.noise((32, 32)), 3)
    """
    return _velk.blur(_image("img", img), _integer("radius", radius, 1, 9))


def zoom(img: Any, shape: Tuple[int, int]) -> np.ndarray:
    """Resamples the image to ``shape`` = (H, W) with a tent filter.

    Examples
    --------
    >>> import velk
    >>> velk.zoom(velk.noise((16, 16)), (40, 30)).shape
    (40, 30)
    """
    a = _image("img", img)
    h, w = _shape("shape", shape, 1 if a.ndim == 2 else 3)
    return _velk.zoom(a, h, w)


def emboss(img: Any, u: Any = None, v: Any = None, *, azimuth: float = 45.0,
           elevation: float = 45.0, relief: int = 3) -> np.ndarray:
    """Relief shading: along the flow (u, v given) or from one light.

    Along the flow, each pixel is lit from its field direction, which brings
    out the streaks of a LIC image; the field is resampled to the image.

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3), at least 2x2
    u, v : array_like, shape (ny, nx), optional
        Field to light along; without it one light at ``azimuth``.
    azimuth, elevation : float
        Direction of the light, in degrees (without a field).
    relief : int, default 3
        Smaller is steeper (without a field).

    Returns
    -------
    numpy.ndarray

    Examples
    --------
    >>> import velk
    >>> u, v = velk.circle((16, 16))
    >>> out = velk.emboss(velk.lic(u, v, shape=(64, 64)), u, v)
    """
    a = _image("img", img, 2)
    if u is None and v is None:
        rad = math.pi / 180.0
        return _velk.emboss_light(a, _number("azimuth", azimuth) * rad,
                                  _number("elevation", elevation) * rad,
                                  _integer("relief", relief, 1, 1530))
    return _velk.emboss_flow(a, *_field(u, v))


def colormap(name: str) -> np.ndarray:
    """One of velk's colour maps as a (256, 3) float32 table in [0, 1].

    Parameters
    ----------
    name : {"hue", "hot", "bwr", "grey"}

    Examples
    --------
    >>> import velk
    >>> velk.colormap("hot").shape
    (256, 3)
    """
    return _velk.colormap(_choice("name", name, COLORMAPS))


def _table(cmap: Any) -> np.ndarray:
    if isinstance(cmap, str):
        return colormap(cmap)
    t = np.asarray(cmap)
    if t.dtype != np.uint8:
        raise TypeError(f"cmap must be a colour map name or a uint8 table, got dtype {t.dtype}")
    if t.ndim != 2 or t.shape[1] != 3 or t.shape[0] < 2:
        raise ValueError(f"cmap table must have shape (N, 3) with N >= 2, got {t.shape}")
    at = np.linspace(0.0, t.shape[0] - 1.0, 256)
    rows = [np.interp(at, np.arange(t.shape[0]), t[:, c] / 255.0) for c in range(3)]
    return np.ascontiguousarray(np.stack(rows, axis=1), dtype=np.float32)


def color(img: Any, values: Any, cmap: Union[str, Any] = "hue",
           range: Optional[Tuple[float, float]] = None) -> np.ndarray:
    """Colours an image by a scalar field: hue from the values, lightness from img.

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3), at least 2x2
        Usually a LIC image; colour images are taken as grey.
    values : array_like, shape (ny, nx), float32 or float64
        Scalar field on any grid of at least 2x2, sampled bilinearly onto the
        image; e.g. ``np.hypot(u, v)`` for the magnitude.
    cmap : str or (N, 3) uint8 array, default "hue"
        velk's "hue", "hot", "bwr" or "grey", or any table; a matplotlib
        colour map converts with
        ``(cm(np.linspace(0, 1, 256))[:, :3] * 255).astype(np.uint8)``.
    range : (lo, hi), optional
        Values mapped to the ends of the table; default the finite values'
        minimum and maximum.

    Returns
    -------
    numpy.ndarray
        uint8, (H, W, 3).

    Examples
    --------
    >>> import numpy as np, velk
    >>> u, v = velk.circle((33, 33))
    >>> rgb = velk.color(velk.lic(u, v), np.hypot(u, v), "hot")
    >>> rgb.shape
    (33, 33, 3)
    """
    a, s = _image("img", img, 2), _floats("values", values)
    if range is None:
        finite = s[np.isfinite(s)]
        range = (float(finite.min()), float(finite.max())) if finite.size else (0.0, 1.0)
    lo, hi = _number("range[0]", range[0]), _number("range[1]", range[1])
    if not hi > lo:
        hi = lo + 1.0  # a constant field still needs a usable scale
    return _velk.color_scalars(a, s, _table(cmap), lo, hi)


def color_direction(img: Any, u: Any, v: Any) -> np.ndarray:
    """Colours an image by the field's direction: hue from the angle, lightness from img.

    Parameters
    ----------
    img : uint8 array, (H, W) or (H, W, 3), at least 2x2
    u, v : array_like, shape (ny, nx), float32 or float64

    Returns
    -------
    numpy.ndarray
        uint8, (H, W, 3).

    Examples
    --------
    >>> import velk
    >>> u, v = velk.circle((33, 33))
    >>> velk.color_direction(velk.lic(u, v), u, v).shape
    (33, 33, 3)
    """
    return _velk.color_direction(_image("img", img, 2), *_field(u, v))


def _path(path: Any) -> str:
    return os.fsdecode(os.fspath(path))


def read_vector_field(path: Union[str, "os.PathLike[str]"]) -> Tuple[np.ndarray, np.ndarray]:
    """Reads a "VELK VECTOR" file (ASCII or binary).

    Returns
    -------
    (u, v) : float32 arrays, shape (ny, nx)

    Raises
    ------
    OSError
        With the library's message; FileNotFoundError for a missing file.

    Examples
    --------
    >>> import velk
    >>> u, v = velk.read_vector_field("field.vec")  # doctest: +SKIP
    """
    return _velk.read_vector_field(_path(path))


def read_ucd(path: Union[str, "os.PathLike[str]"], grid: Tuple[int, int],
             bbox: Optional[Tuple[float, float, float, float]] = None
             ) -> Tuple[np.ndarray, np.ndarray]:
    """Reads a UCD triangle mesh with a vector per node onto a regular grid.

    Parameters
    ----------
    path : str or path-like
    grid : (nx, ny)
        Grid size, 2 .. 10000 each; the mesh is fitted keeping its aspect.
    bbox : (xmin, xmax, ymin, ymax), optional
        Region of the mesh to fit; default the nodes' bounding box.

    Returns
    -------
    (u, v) : float32 arrays, shape (ny, nx); (0, 0) outside the mesh.

    Raises
    ------
    OSError
        With the library's message; FileNotFoundError for a missing file.

    Examples
    --------
    >>> import velk
    >>> u, v = velk.read_ucd("mesh.inp", grid=(200, 100))  # doctest: +SKIP
    """
    nx, ny = _grid("grid", grid)
    box = None if bbox is None else tuple(_number(f"bbox[{i}]", b) for i, b in enumerate(bbox))
    if box is not None and len(box) != 4:
        raise ValueError(f"bbox must be (xmin, xmax, ymin, ymax), got {bbox!r}")
    return _velk.read_ucd(_path(path), nx, ny, box)


def _grid(name: str, pair: Any) -> Tuple[int, int]:
    try:
        a, b = pair
    except (TypeError, ValueError):
        raise TypeError(f"{name} must be a pair of ints, got {pair!r}") from None
    return _integer(f"{name}[0]", a, 2, MAX_GRID), _integer(f"{name}[1]", b, 2, MAX_GRID)


def read_scalar_field(path: Union[str, "os.PathLike[str]"]) -> np.ndarray:
    """Reads a "VELK SCALAR" file: a float32 array of shape (ny, nx).

    Raises
    ------
    OSError
        With the library's message; FileNotFoundError for a missing file.

    Examples
    --------
    >>> import velk
    >>> s = velk.read_scalar_field("pressure.sca")  # doctest: +SKIP
    """
    return _velk.read_scalar_field(_path(path))


def read_scalar_ucd(path: Union[str, "os.PathLike[str]"], grid: Tuple[int, int]) -> np.ndarray:
    """Reads a UCD triangle mesh with a scalar per node onto a (ny, nx) grid.

    Raises
    ------
    OSError
        With the library's message; FileNotFoundError for a missing file.

    Examples
    --------
    >>> import velk
    >>> s = velk.read_scalar_ucd("mesh.inp", grid=(200, 100))  # doctest: +SKIP
    """
    nx, ny = _grid("grid", grid)
    return _velk.read_scalar_ucd(_path(path), nx, ny)


def read_pnm(path: Union[str, "os.PathLike[str]"]) -> np.ndarray:
    """Reads a PNM image (P2, P3, P5, P6); file row 0 becomes array row 0.

    Examples
    --------
    >>> import velk
    >>> img = velk.read_pnm("lic.pgm")  # doctest: +SKIP
    """
    return _velk.read_pnm(_path(path))


def write_pnm(path: Union[str, "os.PathLike[str]"], img: Any, *, ascii: bool = False) -> None:
    """Writes a PGM (grey) or PPM (RGB) image; array row 0 is written first.

    Examples
    --------
    >>> import velk
    >>> velk.write_pnm("noise.pgm", velk.noise((8, 8)))  # doctest: +SKIP
    """
    _velk.write_pnm(_path(path), _image("img", img), bool(ascii))


def circle(shape: Tuple[int, int] = (33, 33), angle: float = 0.0
           ) -> Tuple[np.ndarray, np.ndarray]:
    """Rotating field on [-0.5, 0.5]^2: angle 0 circulates anticlockwise,
    pi/2 is a source, pi clockwise, -pi/2 a sink, others spirals.

    Parameters
    ----------
    shape : (ny, nx), default (33, 33)
    angle : float, radians

    Returns
    -------
    (u, v) : float32 arrays of ``shape``

    Examples
    --------
    >>> import velk
    >>> u, v = velk.circle((3, 3))
    >>> float(u[0, 0]), float(v[0, 0])
    (0.5, -0.5)
    """
    ny, nx = _grid("shape", shape)
    return _velk.circle(nx, ny, _number("angle", angle))


def saddle() -> Tuple[np.ndarray, np.ndarray]:
    """The 2x2 saddle field (x, -y) on [-1, 1]^2.

    Examples
    --------
    >>> import velk
    >>> velk.saddle()[0].tolist()
    [[-1.0, 1.0], [-1.0, 1.0]]
    """
    return _velk.saddle()


def linear(shape: Tuple[int, int], matrix: Any, offset: Sequence[float] = (0.0, 0.0)
           ) -> Tuple[np.ndarray, np.ndarray]:
    """Linear field matrix @ p + offset over [-2, 2]^2.

    Parameters
    ----------
    shape : (ny, nx)
    matrix : 2x2 array_like
    offset : pair of floats

    Examples
    --------
    >>> import velk
    >>> u, v = velk.linear((5, 5), [[1, 0], [0, 1]])
    >>> float(u[4, 4]), float(v[4, 4])
    (2.0, 2.0)
    """
    ny, nx = _grid("shape", shape)
    m = np.asarray(matrix, dtype=np.float64)
    if m.shape != (2, 2) or not np.all(np.isfinite(m)):
        raise ValueError(f"matrix must be a finite 2x2 array, got {matrix!r}")
    b = [_number(f"offset[{i}]", x) for i, x in enumerate(offset)]
    if len(b) != 2:
        raise ValueError(f"offset must be a pair, got {offset!r}")
    return _velk.linear(nx, ny, [float(x) for x in m.ravel()], b)


def brusselator(shape: Tuple[int, int] = (64, 64), x_range: float = 4.0, y_range: float = 4.0,
                a: float = 1.0, b: float = 3.0) -> Tuple[np.ndarray, np.ndarray]:
    """The Brusselator oscillator on [0, x_range] x [0, y_range], scaled to the unit square.

    Examples
    --------
    >>> import velk
    >>> u, v = velk.brusselator((64, 64))
    >>> u.shape
    (64, 64)
    """
    ny, nx = _grid("shape", shape)
    xr, yr = _number("x_range", x_range, 0.0, False), _number("y_range", y_range, 0.0, False)
    return _velk.brusselator(nx, ny, xr, yr, _number("a", a), _number("b", b))
