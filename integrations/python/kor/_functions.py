"""The library's functions in Python's manner.

Each function below names one of the library's, or a few that differ in a matrix or a rotation, and the shapes of its
frames. What they share is at the end: how sources are read, destinations found, and noise drawn.
"""

from __future__ import annotations

import os
from typing import Any, Dict, List, Optional, Sequence, Tuple, Type, Union

import numpy as np
import numpy.typing as npt

from . import _kor
from ._frames import I420, I444, Array, Frame, Picture, disjoint, half
from ._frames import planes as _planes
from ._frames import rows as _rows

Matrix = Union[str, Sequence[Sequence[int]], npt.NDArray[Any]]
Level = Optional[int]
Random = Union[None, int, np.random.Generator]
Coefficients = List[List[int]]

# ---- RGB to YUV ----------------------------------------------------------------------------------------------------


def rgba_to_i420(rgba: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes R, G, B, A to I420 with the matrix of BT.601, limited range. Alpha is ignored.

    rgba has the shape (height, width, 4). flip reads it bottom row first, and so does a negative row stride. out is
    written to and returned; without it a new picture is.
    """
    return _capture("KorRGBAToI420", "rgba", rgba, 4, I420, flip, out)


def bgra_to_i420(bgra: Frame, *, matrix: Matrix = "bt601", flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes B, G, R, A to I420, limited range. Alpha is ignored.

    bgra has the shape (height, width, 4). matrix is "bt601", "bt709", or three rows Y, U, V of weights for red, green
    and blue in units of 1/256; with weights of your own nothing is clamped. flip reads bgra bottom row first, and so
    does a negative row stride. out is written to and returned; without it a new picture is.
    """
    function, rows = _choose(_BGRA_TO_I420, matrix)
    return _capture(function, "bgra", bgra, 4, I420, flip, out, matrix=rows)


def argb_to_i420(argb: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes A, R, G, B to I420; see rgba_to_i420()."""
    return _capture("KorARGBToI420", "argb", argb, 4, I420, flip, out)


def abgr_to_i420(abgr: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes A, B, G, R to I420; see rgba_to_i420()."""
    return _capture("KorABGRToI420", "abgr", abgr, 4, I420, flip, out)


def bgra_to_i444(bgra: Frame, *, matrix: str = "bt601", flip: bool = False, out: Optional[I444] = None) -> I444:
    """Converts bytes B, G, R, A to I444, limited range, with the matrix "bt601" or "bt709"; see bgra_to_i420()."""
    function, _ = _choose(_BGRA_TO_I444, matrix)
    return _capture(function, "bgra", bgra, 4, I444, flip, out)


def rgb_to_i420(rgb: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes R, G, B to I420 with the matrix of BT.601, limited range.

    rgb has the shape (height, width, 3). Chroma is converted before it is averaged, so results differ slightly from
    those of the functions for four bytes a pixel. flip and out are as for rgba_to_i420().
    """
    return _capture("KorRawToI420", "rgb", rgb, 3, I420, flip, out)


def bgr_to_i420(bgr: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts bytes B, G, R to I420; see rgb_to_i420()."""
    return _capture("Kor24BGToI420", "bgr", bgr, 3, I420, flip, out)


# ---- YUV to RGB ----------------------------------------------------------------------------------------------------


def i420_to_rgba(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Renders I420 of BT.601, limited range, as bytes R, G, B, 255 of shape (height, width, 4).

    dither adds noise to the samples: None adds none, and 0, 1, 2 add ever more. rng says where the noise begins: a
    seed or a numpy.random.Generator, so that results repeat; without it noise is new each time. out is written to and
    returned; without it a new array is.
    """
    return _render("KorI420ToRGBA", planes, I420, 4, dither, rng, out)


def i420_to_bgra(
    planes: I420,
    *,
    matrix: Matrix = "bt601",
    dither: Level = None,
    rng: Random = None,
    out: Optional[Array] = None,
) -> Array:
    """Renders I420 as bytes B, G, R, 255 of shape (height, width, 4).

    matrix is "bt601", "bt709", both limited range, or three rows R, G, B of multipliers for luma, U - 128 and V - 128
    in units of 1/256. dither, rng and out are as for i420_to_rgba().
    """
    function, rows = _choose(_I420_TO_BGRA, matrix)
    return _render(function, planes, I420, 4, dither, rng, out, matrix=rows)


def i420_to_argb(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Renders I420 as bytes 255, R, G, B; see i420_to_rgba()."""
    return _render("KorI420ToARGB", planes, I420, 4, dither, rng, out)


def i420_to_abgr(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Renders I420 as bytes 255, B, G, R; see i420_to_rgba()."""
    return _render("KorI420ToABGR", planes, I420, 4, dither, rng, out)


def i420_to_bgr(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Renders I420 as bytes B, G, R of shape (height, width, 3); see i420_to_rgba()."""
    return _render("KorI420To24BG", planes, I420, 3, dither, rng, out)


def i444_to_bgra(
    planes: I444, *, matrix: str = "bt601", dither: Level = None, rng: Random = None, out: Optional[Array] = None
) -> Array:
    """Renders I444 as bytes B, G, R, 255 with the matrix "bt601" or "bt709"; see i420_to_bgra()."""
    function, _ = _choose(_I444_TO_BGRA, matrix)
    return _render(function, planes, I444, 4, dither, rng, out)


# ---- Packed and semi-planar YUV ------------------------------------------------------------------------------------


def yuy2_to_i420(yuy2: Frame, *, flip: bool = False, rotate: int = 0, out: Optional[I420] = None) -> I420:
    """Converts YUY2, bytes Y, U, Y, V for two pixels, to I420, and rotates it clockwise on the way.

    yuy2 has the shape (height, width, 2) with an even width. flip reads it bottom row first, and so does a negative row
    stride; rotate, 0, 90, 180 or 270 degrees, comes after that. A rotated picture has an even number of source rows: an
    odd last row counts twice. out is written to and returned; without it a new picture is.
    """
    return _capture_packed("KorYUY2ToI420", "yuy2", yuy2, flip, rotate, out)


def uyvy_to_i420(uyvy: Frame, *, flip: bool = False, rotate: int = 0, out: Optional[I420] = None) -> I420:
    """Converts UYVY, bytes U, Y, V, Y for two pixels, to I420; see yuy2_to_i420()."""
    return _capture_packed("KorUYVYToI420", "uyvy", uyvy, flip, rotate, out)


def yuv2_to_i420(yuv2: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts Yuv2, which is YUY2 with full-range luma and signed chroma, to I420; see yuy2_to_i420()."""
    return _capture_packed("KorYuv2ToI420", "yuv2", yuv2, flip, 0, out)


def m420_to_i420(m420: Frame, *, flip: bool = False, out: Optional[I420] = None) -> I420:
    """Converts M420 to I420.

    m420 has the shape (height / 2, 3, width) with an even width: blocks of two rows of luma and one of chroma, U and V
    by turns. flip reads the last block first, and so does a negative stride of the blocks; the two rows of luma in a
    block keep their order. out is written to and returned; without it a new picture is.
    """
    source = _rows("m420", m420, (None, 3, None), upwards=True)
    width, height = source.shape[2], 2 * source.shape[0]
    _require_even("m420", width, "(height / 2, 3, width)")
    target = _target(I420, width, height, out, (source,))
    _kor.run("KorM420ToI420", [*target, source[::-1] if flip else source], width, height)
    return target


def i420_to_yuy2(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Packs I420 of an even width as YUY2 of shape (height, width, 2); each row of chroma serves two rows.

    dither, rng and out are as for i420_to_rgba().
    """
    return _pack("KorI420ToYUY2", planes, dither, rng, out)


def i420_to_uyvy(planes: I420, *, dither: Level = None, rng: Random = None, out: Optional[Array] = None) -> Array:
    """Packs I420 as UYVY; see i420_to_yuy2()."""
    return _pack("KorI420ToUYVY", planes, dither, rng, out)


def i420_to_yuv2(planes: I420, *, out: Optional[Array] = None) -> Array:
    """Packs I420 as Yuv2, with signed chroma and luma as it is; see i420_to_yuy2()."""
    return _pack("KorI420toYuv2", planes, None, None, out)


# ---- Plane geometry ------------------------------------------------------------------------------------------------


def halve_rows(plane: Frame, *, out: Optional[Array] = None) -> Array:
    """Averages pairs of rows, rounded up: the chroma of 4:2:2 becomes that of 4:2:0.

    plane has the shape (2 * height, width), the result (height, width). A negative row stride is fine. out is written
    to and returned; without it a new array is.
    """
    source = _rows("plane", plane, (None, None), upwards=True)
    if source.shape[0] % 2 != 0:
        raise ValueError(f"plane: expected an even number of rows, got shape {source.shape}")
    return _move("KorPlanarUV422To420", source, (source.shape[0] // 2, source.shape[1]), out)


def mirror(plane: Frame, *, out: Optional[Array] = None) -> Array:
    """Mirrors a plane of shape (height, width): the leftmost sample of each row becomes the rightmost.

    A negative row stride is fine. out is written to and returned; without it a new array is.
    """
    source = _rows("plane", plane, (None, None), upwards=True)
    return _move("KorPlanarMirror", source, source.shape, out)


def rotate(plane: Frame, angle: int, *, out: Optional[Array] = None) -> Array:
    """Rotates a plane of shape (height, width) clockwise by 0, 90, 180 or 270 degrees; see mirror()."""
    source = _rows("plane", plane, (None, None), upwards=True)
    return _move("KorPlanarRotation", source, _rotated(source.shape, angle), out, angle=angle)


def split(
    pairs: Frame, *, mirror: bool = False, rotate: int = 0, out: Optional[Tuple[Array, Array]] = None
) -> Tuple[Array, Array]:
    """Splits pairs of bytes, such as the chroma of NV12, into two planes, and mirrors or rotates them on the way.

    pairs has the shape (height, width, 2); a negative row stride is fine. The first plane has the first bytes. rotate
    is clockwise, 0, 90, 180 or 270 degrees. out, two planes, is written to and returned; without it new arrays are.
    """
    source = _rows("pairs", pairs, (None, None, 2), upwards=True)
    if mirror and rotate != 0:
        raise ValueError("split: expected mirror or rotate, got both")
    shape = _rotated(source.shape[:2], rotate)
    first, second = (None, None) if out is None else out
    targets = [_array_target(plane, shape, (source,)) for plane in (first, second)]
    disjoint("out", targets)
    function = "KorPlanarUVDeinterlaceMirror" if mirror else "KorPlanarUVDeinterlace"
    if rotate != 0:
        function = "KorPlanarUVDeinterlaceRotation"
    _kor.run(function, [source, *targets], source.shape[1], source.shape[0], angle=rotate)
    return targets[0], targets[1]


def flip_vertical(planes: I420) -> I420:
    """Flips I420 upside down in place, without a second picture, and returns it.

    With an odd width the last column of chroma is left as it is, with an odd height the last row of chroma.
    """
    picture = _planes("planes", planes, I420, write=True)
    disjoint("planes", picture)
    _kor.run("KorI420FlipVertical", list(picture), picture.width, picture.height)
    return picture


# ---- Compositing and noise -----------------------------------------------------------------------------------------


def dither(planes: I420, level: int, *, rng: Random = None, fixed: bool = False, out: Optional[I420] = None) -> I420:
    """Adds noise to I420.

    level is 0, 1 or 2, ever more noise, or -1, which is half as much as 0. rng says where the noise begins: a seed or a
    numpy.random.Generator; without it noise is new each time. fixed starts at the beginning of the noise instead,
    without anything random. An odd last column and row are passed on without noise. out, which may be the same
    picture, is written to and returned; without it a new picture is.
    """
    if level not in (-1, 0, 1, 2):
        raise ValueError(f"level: expected -1, 0, 1 or 2, got {level}")
    source = _planes("planes", planes, I420)
    width, height = source.width, source.height
    target = I420.empty(width, height) if out is None else _planes("out", out, I420, (width, height), write=True)
    in_place = all(a.ctypes.data == b.ctypes.data and a.strides == b.strides for a, b in zip(source, target))
    disjoint("out", target, () if in_place else source)
    buffers = list(source) if in_place else [*source, *target]
    starts = None if fixed else _starts(rng)
    _kor.run("KorI420Dither", buffers, width, height, level=level + 1, starts=starts, randomize=not fixed,
             in_place=in_place)
    if not in_place:
        chroma = (height // 2, width // 2)
        for plane, noisy, (rows, columns) in zip(source, target, ((height & ~1, width & ~1), chroma, chroma)):
            noisy[rows:] = plane[rows:]
            noisy[:, columns:] = plane[:, columns:]
    return target


def blend(background: I420, foreground: I420, alpha: Union[int, I420], at: Tuple[int, int] = (0, 0)) -> I420:
    """Blends I420 over a background in place, and returns the background.

    alpha is the weight of the foreground, 0 to 255: one for all, or one for each sample as a picture of the
    foreground's size. at is the column and the row of the foreground's first sample; the foreground must lie inside
    the background. An odd position moves chroma up and left by half a chroma sample.
    """
    below = _planes("background", background, I420, write=True)
    above = _planes("foreground", foreground, I420)
    size = (above.width, above.height)
    weights: Sequence[Array] = ()
    function, weight = "KorI420AlphaBlend", 0
    if isinstance(alpha, (int, np.integer)):
        weight = int(alpha)
        if not 0 <= weight <= 255:
            raise ValueError(f"alpha: expected 0 to 255, got {weight}")
    else:
        function = "KorI420AlphaArrayBlend"
        weights = _planes("alpha", alpha, I420, size)
    x, y = at
    if not (0 <= x <= below.width - above.width and 0 <= y <= below.height - above.height):
        raise ValueError(
            f"at: expected a foreground inside the background of {below.width}x{below.height}, "
            f"got {above.width}x{above.height} at {at}"
        )
    disjoint("background", below, (*above, *weights))
    _kor.run(function, [*below, *above, *weights], *size, at=(x, y), alpha=weight)
    return below


# ---- Any conversion ------------------------------------------------------------------------------------------------


def convert(frame: Any, to: str, *, source: Optional[str] = None, **options: Any) -> Any:
    """Calls the function SOURCE_to_TO() with these options, for example convert(frame, "i420", source="bgra").

    kor.I420 and kor.I444 need no source.
    """
    if source is None:
        source = {I420: "i420", I444: "i444"}.get(type(frame))
        if source is None:
            raise ValueError('source: expected the format of the frame, for example source="bgra"')
    function = globals().get(f"{source}_to_{to}")
    if function is None:
        conversions = sorted(name for name in globals() if "_to_" in name and not name.startswith("_"))
        raise ValueError(f"no conversion from {source} to {to}; expected one of {', '.join(conversions)}")
    return function(frame, **options)


# ---- What the functions share --------------------------------------------------------------------------------------

# The library's functions by matrix; the last one takes the caller's.
_BGRA_TO_I420 = {"bt601": "KorBGRAToI420", "bt709": "KorBGRAToI420UsingBT709", "own": "KorBGRAToI420General"}
_BGRA_TO_I444 = {"bt601": "KorBGRAToI444", "bt709": "KorBGRAToI444UsingBT709"}
_I420_TO_BGRA = {"bt601": "KorI420ToBGRA", "bt709": "KorI420ToBGRAUsingBT709", "own": "KorI420ToBGRAGeneral"}
_I444_TO_BGRA = {"bt601": "KorI444ToBGRA", "bt709": "KorI444ToBGRAUsingBT709"}


def _choose(functions: Dict[str, str], matrix: Matrix) -> Tuple[str, Optional[Coefficients]]:
    names = " or ".join(f'"{name}"' for name in functions if name != "own")
    if isinstance(matrix, str):
        if matrix not in functions or matrix == "own":
            raise ValueError(f'matrix: expected {names}, got "{matrix}"')
        return functions[matrix], None
    if "own" not in functions:
        raise ValueError(f"matrix: expected {names}; this function takes no other")
    rows = np.asarray(matrix)
    if rows.shape != (3, 3) or rows.dtype.kind not in "iu" or np.any(rows < -(2**31)) or np.any(rows >= 2**31):
        raise ValueError(f"matrix: expected {names}, or three rows of three 32-bit integers")
    return functions["own"], [[int(weight) for weight in row] for row in rows]


def _starts(rng: Random) -> Tuple[int, int, int]:
    """Where the noise of Y, U and V begins."""
    if rng is None:
        numbers = np.frombuffer(os.urandom(6), np.uint16)
    else:
        numbers = np.random.default_rng(rng).integers(0, 2**16, size=3, dtype=np.uint16)
    return int(numbers[0]), int(numbers[1]), int(numbers[2])


def _require_even(name: str, width: int, shape: str) -> None:
    if width % 2 != 0:
        raise ValueError(f"{name}: expected shape {shape} with an even width, got a width of {width}")


def _rotated(shape: Sequence[int], angle: int) -> Tuple[int, int]:
    if angle not in (0, 90, 180, 270):
        raise ValueError(f"expected a rotation by 0, 90, 180 or 270 degrees, got {angle}")
    height, width = shape
    return (width, height) if angle in (90, 270) else (height, width)


def _target(
    kind: Type[Picture], width: int, height: int, out: Optional[Picture], sources: Sequence[Array]
) -> Picture:
    if out is None:
        return kind.empty(width, height)
    target = _planes("out", out, kind, (width, height), write=True)
    disjoint("out", target, sources)
    return target


def _capture(
    function: str,
    name: str,
    frame: Frame,
    channels: int,
    kind: Type[Picture],
    flip: bool,
    out: Optional[Picture],
    *,
    matrix: Optional[Coefficients] = None,
) -> Picture:
    source = _rows(name, frame, (None, None, channels), upwards=True)
    height, width = source.shape[:2]
    target = _target(kind, width, height, out, (source,))
    _kor.run(function, [*target, source[::-1] if flip else source], width, height, matrix=matrix)
    return target


def _capture_packed(function: str, name: str, frame: Frame, flip: bool, angle: int, out: Optional[I420]) -> I420:
    source = _rows(name, frame, (None, None, 2), upwards=True)
    height, width = source.shape[:2]
    _require_even(name, width, "(height, width, 2)")
    target_height, target_width = _rotated((height if angle == 0 else 2 * half(height), width), angle)
    target = _target(I420, target_width, target_height, out, (source,))
    rotation = "" if angle == 0 else "WithRotation"
    _kor.run(function + rotation, [*target, source[::-1] if flip else source], width, height, angle=angle)
    return target


def _array_target(out: Optional[Array], shape: Tuple[int, ...], sources: Sequence[Array]) -> Array:
    if out is None:
        return np.empty(shape, np.uint8)
    target = _rows("out", out, shape, write=True)
    disjoint("out", (target,), sources)
    return target


def _render(
    function: str,
    frame: Sequence[Frame],
    kind: Type[Picture],
    channels: int,
    level: Level,
    rng: Random,
    out: Optional[Array],
    *,
    matrix: Optional[Coefficients] = None,
) -> Array:
    if level not in (None, 0, 1, 2):
        raise ValueError(f"dither: expected None, 0, 1 or 2, got {level}")
    source = _planes("planes", frame, kind)
    height, width = source.y.shape
    target = _array_target(out, (height, width, channels), source)
    options: Dict[str, Any] = {"matrix": matrix}
    if level is not None:
        options.update(level=level + 1, starts=_starts(rng))

    def render(picture: Sequence[Array], to: Array) -> None:
        _kor.run(function, [*picture, to], to.shape[1], to.shape[0], **options)

    render(source, target)
    if isinstance(source, I420):
        _render_edges(render, source, target)
    return target


def _pack(function: str, frame: Sequence[Frame], level: Level, rng: Random, out: Optional[Array]) -> Array:
    source = _planes("planes", frame, I420)
    _require_even("planes", source.width, "(height, width)")
    return _render(function, source, I420, 2, level, rng, out)


def _render_edges(render: Any, source: I420, target: Array) -> None:
    """The library renders blocks of two by two. An odd last column or row becomes blocks by repetition."""
    height, width = source.y.shape
    bottom, right = height % 2, width % 2

    def strip(luma: Array, u: Array, v: Array, padding: Tuple[int, int]) -> Array:
        luma = np.pad(luma, [(0, padding[0]), (0, padding[1])], mode="edge")
        pixels = np.empty((*luma.shape, target.shape[2]), np.uint8)
        render((luma, *map(np.ascontiguousarray, (u, v))), pixels)
        return pixels

    if right:
        target[:, -1] = strip(source.y[:, -1:], source.u[:, -1:], source.v[:, -1:], (bottom, 1))[:height, 0]
    if bottom:
        target[-1] = strip(source.y[-1:], source.u[-1:], source.v[-1:], (1, right))[0, :width]


def _move(function: str, source: Array, shape: Tuple[int, ...], out: Optional[Array], *, angle: int = 0) -> Array:
    target = _array_target(out, shape, (source,))
    height = shape[0] if function == "KorPlanarUV422To420" else source.shape[0]
    _kor.run(function, [source, target], source.shape[1], height, angle=angle)
    return target
