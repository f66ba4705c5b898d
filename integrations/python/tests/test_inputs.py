"""What cannot be used is refused with what would be right, and nothing is written then."""

import numpy as np
import pytest

import kor
from frames import noise, picture
from kor import I420, I444, _kor

RNG = np.random.default_rng(2)
BGRA = noise(RNG, (4, 6, 4))
PLANES = picture(I420, RNG, 6, 4)
WIDE = RNG.integers(0, 256, (4, 12, 4), np.uint8)


def read_only(array):
    array = array.copy()
    array.flags.writeable = False
    return array


REFUSED = [
    (lambda: kor.bgra_to_i420([[1, 2, 3, 4]]), TypeError,
     r"bgra: expected an array of uint8 of shape \(height, width, 4\), got list"),
    (lambda: kor.bgra_to_i420(BGRA.astype(np.uint16)), TypeError, "bgra: expected uint8, got uint16"),
    (lambda: kor.bgra_to_i420(BGRA[..., :3]), ValueError,
     r"bgra: expected shape \(height, width, 4\), got \(4, 6, 3\)"),
    (lambda: kor.bgra_to_i420(BGRA.ravel()), ValueError, r"expected shape \(height, width, 4\), got \(96,\)"),
    (lambda: kor.bgra_to_i420(BGRA[:0]), ValueError,
     r"expected at least one row and one column, got shape \(0, 6, 4\)"),
    (lambda: kor.bgra_to_i420(WIDE[:, ::2]), ValueError,
     r"a row side by side and at least 24 bytes from row to row in either direction, got strides \(48, 8, 1\)"),
    (lambda: kor.bgra_to_i420(BGRA[..., ::-1]), ValueError, "numpy.ascontiguousarray"),
    (lambda: kor.bgra_to_i420(np.broadcast_to(BGRA[:1], (4, 6, 4))), ValueError, "at least 24 bytes from row to row"),
    (lambda: kor.bgra_to_i420(BGRA, matrix="bt2020"), ValueError, 'expected "bt601" or "bt709", got "bt2020"'),
    (lambda: kor.bgra_to_i420(BGRA, matrix="own"), ValueError, 'expected "bt601" or "bt709", got "own"'),
    (lambda: kor.bgra_to_i420(BGRA, matrix=[[1, 2], [3, 4]]), ValueError, "three rows of three 32-bit integers"),
    (lambda: kor.bgra_to_i420(BGRA, matrix=[[2**31, 0, 0]] * 3), ValueError, "three rows of three 32-bit integers"),
    (lambda: kor.bgra_to_i420(BGRA, matrix=[[0.5, 0, 0]] * 3), ValueError, "three rows of three 32-bit integers"),
    (lambda: kor.bgra_to_i444(BGRA, matrix=[[1, 2, 3]] * 3), ValueError, "this function takes no other"),
    (lambda: kor.bgra_to_i420(BGRA, out=I420.empty(6, 5)), ValueError,
     r"out.y: expected shape \(4, 6\), got \(5, 6\)"),
    (lambda: kor.bgra_to_i420(BGRA, out=I444.empty(6, 4)), ValueError,
     r"out.u: expected shape \(2, 3\), got \(4, 6\)"),
    (lambda: kor.bgra_to_i420(BGRA, out=BGRA[..., :2]), TypeError, r"out: expected kor.I420 or three planes y, u, v"),
    (lambda: kor.bgra_to_i420(BGRA, out=I420(*map(read_only, PLANES))), ValueError,
     "out.y: expected an array that can be written to, got a read-only one"),
    (lambda: kor.bgra_to_i420(BGRA, out=I420(PLANES.y[::-1], *PLANES[1:])), ValueError,
     r"out.y: .* at least 6 bytes from row to row, got strides \(-6, 1\)"),
    (lambda: kor.bgra_to_i420(BGRA, out=I420(PLANES.y, PLANES.u, PLANES.u)), ValueError,
     "out: expected memory of its own"),
    (lambda: kor.bgra_to_i420(BGRA, out=I420(BGRA.reshape(-1)[:24].reshape(4, 6), *PLANES[1:])), ValueError,
     "out: expected memory of its own"),
    (lambda: kor.i420_to_bgra(PLANES.y), TypeError, "planes: expected kor.I420 or three planes y, u, v"),
    (lambda: kor.i420_to_bgra(I420(PLANES.y[::-1], *PLANES[1:])), ValueError, "planes.y: "),
    (lambda: kor.i420_to_bgra(PLANES, dither=3), ValueError, "dither: expected None, 0, 1 or 2, got 3"),
    (lambda: kor.i420_to_bgra(PLANES, out=np.empty((4, 6, 3), np.uint8)), ValueError,
     r"out: expected shape \(4, 6, 4\), got \(4, 6, 3\)"),
    (lambda: kor.rgb_to_i420(np.lib.stride_tricks.as_strided(BGRA, (2, 2, 3), (2**31, 3, 1))), ValueError,
     r"a row stride below 2\^31"),
    (lambda: kor.yuy2_to_i420(BGRA[:, :5, :2].copy()), ValueError,
     r"yuy2: expected shape \(height, width, 2\) with an even width, got a width of 5"),
    (lambda: kor.yuy2_to_i420(BGRA[..., :2].copy(), rotate=45), ValueError, "0, 90, 180 or 270 degrees, got 45"),
    (lambda: kor.m420_to_i420(BGRA), ValueError, r"m420: expected shape \(height, 3, width\), got \(4, 6, 4\)"),
    (lambda: kor.i420_to_yuy2(picture(I420, RNG, 5, 4)), ValueError, "planes: .* with an even width, got a width of 5"),
    (lambda: kor.halve_rows(PLANES.y[:3]), ValueError, r"an even number of rows, got shape \(3, 6\)"),
    (lambda: kor.split(BGRA[..., :2].copy(), mirror=True, rotate=90), ValueError, "mirror or rotate, got both"),
    (lambda: kor.dither(PLANES, 3), ValueError, "level: expected -1, 0, 1 or 2, got 3"),
    (lambda: kor.dither(PLANES, 1, out=I420(PLANES.y, *I420.empty(6, 4)[1:])), ValueError, "memory of its own"),
    (lambda: kor.blend(PLANES, I420.empty(2, 2), 256), ValueError, "alpha: expected 0 to 255, got 256"),
    (lambda: kor.blend(PLANES, I420.empty(2, 2), 1, at=(5, 0)), ValueError,
     r"inside the background of 6x4, got 2x2 at \(5, 0\)"),
    (lambda: kor.blend(PLANES, I420.empty(2, 2), 1, at=(0, 3)), ValueError, r"got 2x2 at \(0, 3\)"),
    (lambda: kor.blend(PLANES, I420.empty(2, 2), 1, at=(-1, 0)), ValueError, "inside the background"),
    (lambda: kor.blend(PLANES, I420.empty(2, 2), I420.empty(2, 4)), ValueError,
     r"alpha.y: expected shape \(2, 2\), got \(4, 2\)"),
    (lambda: kor.blend(PLANES, PLANES, 1), ValueError, "background: expected memory of its own"),
    (lambda: kor.select_target("z80"), ValueError, r"this machine cannot run 'z80'; expected one of .*portable"),
]


@pytest.mark.parametrize("call, error, message", REFUSED, ids=[message for _, _, message in REFUSED])
def test_refused(call, error, message):
    before = PLANES.tobytes(), BGRA.tobytes()
    with pytest.raises(error, match=message):
        call()
    assert before == (PLANES.tobytes(), BGRA.tobytes())


def test_read_only_sources_are_fine():
    assert np.array_equal(kor.mirror(read_only(PLANES.y)), PLANES.y[:, ::-1])
    kor.i420_to_bgra(I420(*map(read_only, PLANES)))
    kor.bgra_to_i420(read_only(BGRA))


def test_planes_may_lie_side_by_side():
    """U and V in one row of memory overlap in their extent, but share no byte."""
    chroma = np.zeros((2, 6), np.uint8)
    out = I420(np.zeros((4, 6), np.uint8), chroma[:, :3], chroma[:, 3:])
    kor.bgra_to_i420(BGRA, out=out)
    expected = kor.bgra_to_i420(BGRA)
    assert np.array_equal(chroma, np.hstack([expected.u, expected.v]))


# The module checks everything again that decides whether memory is left, whatever the package does.
MODULE = [
    (lambda: _kor.run("KorNothing", [], 1, 1), "unknown function 'KorNothing'"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y], 6, 4), "expected 2 planes, got 1"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y, PLANES.u], 6, 4),
     "dst: expected 4 rows of 6 bytes, got 2 rows of 3"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.u, PLANES.y], 6, 4),
     "src: expected 4 rows of 6 bytes, got 2 rows of 3"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y[:, ::2], PLANES.u], 3, 2), "must lie side by side"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y, PLANES.y[::-1]], 6, 4), "dst: expected a positive row stride"),
    (lambda: _kor.run("KorPlanarMirror", [np.broadcast_to(PLANES.y[:1], (4, 6)), PLANES.y], 6, 4),
     "row stride of at least 6"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y.astype(np.int8), PLANES.y], 6, 4), "expected rows of uint8"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y.ravel(), PLANES.y], 6, 4), "expected rows of uint8"),
    (lambda: _kor.run("KorPlanarMirror", [PLANES.y, PLANES.y], 2**62, 4), "sizes and positions: expected at most"),
    (lambda: _kor.run("KorI420ToBGRA", [*PLANES, BGRA], 6, 6), "y: expected 6 rows of 6 bytes, got 4 rows"),
    (lambda: _kor.run("KorI420ToBGRA", [PLANES.y, PLANES.u[::-1], PLANES.v, BGRA], 6, 4),
     "u: expected a positive row stride"),
    (lambda: _kor.run("KorI420AlphaBlend", [*PLANES, *I420.empty(2, 2)], 2, 2, at=(5, 3)),
     "yBackground: expected 5 rows of 7"),
    (lambda: _kor.run("KorYuv2ToI420", [*PLANES, BGRA], 5, 4), "expected an even width, got 5"),
]


@pytest.mark.parametrize("call, message", MODULE, ids=[message for _, message in MODULE])
def test_refused_by_the_module(call, message):
    before = PLANES.tobytes(), BGRA.tobytes()
    with pytest.raises(ValueError, match=message):
        call()
    assert before == (PLANES.tobytes(), BGRA.tobytes())


def test_read_only_destination_is_refused_by_the_module():
    with pytest.raises((ValueError, BufferError), match="read-only|writable"):
        _kor.run("KorPlanarMirror", [PLANES.y, read_only(PLANES.y)], 6, 4)
