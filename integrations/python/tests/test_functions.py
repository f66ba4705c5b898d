"""Every function against a direct call of the library: odd sizes, strides of either sign, padding, out=."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import direct
import kor
from frames import angles, even_sizes, gaps, levels, noise, paddings, picture, same, seeds, sizes
from kor import I420, I444, _kor

OWN = [[298, -3, 7], [241, -100, -208], [333, 516, 11]]

# Python's name, the library's, bytes of a pixel, the result, options.
CAPTURES = [
    ("rgba_to_i420", "KorRGBAToI420", 4, I420, {}),
    ("bgra_to_i420", "KorBGRAToI420", 4, I420, {}),
    ("bgra_to_i420", "KorBGRAToI420UsingBT709", 4, I420, {"matrix": "bt709"}),
    ("bgra_to_i420", "KorBGRAToI420General", 4, I420, {"matrix": OWN}),
    ("argb_to_i420", "KorARGBToI420", 4, I420, {}),
    ("abgr_to_i420", "KorABGRToI420", 4, I420, {}),
    ("bgra_to_i444", "KorBGRAToI444", 4, I444, {}),
    ("bgra_to_i444", "KorBGRAToI444UsingBT709", 4, I444, {"matrix": "bt709"}),
    ("rgb_to_i420", "KorRawToI420", 3, I420, {}),
    ("bgr_to_i420", "Kor24BGToI420", 3, I420, {}),
]
PACKED_CAPTURES = [
    ("yuy2_to_i420", "KorYUY2ToI420"),
    ("uyvy_to_i420", "KorUYVYToI420"),
    ("yuv2_to_i420", "KorYuv2ToI420"),
]
RENDERERS = [
    ("i420_to_rgba", "KorI420ToRGBA", 4, I420, {}),
    ("i420_to_bgra", "KorI420ToBGRA", 4, I420, {}),
    ("i420_to_bgra", "KorI420ToBGRAUsingBT709", 4, I420, {"matrix": "bt709"}),
    ("i420_to_bgra", "KorI420ToBGRAGeneral", 4, I420, {"matrix": OWN}),
    ("i420_to_argb", "KorI420ToARGB", 4, I420, {}),
    ("i420_to_abgr", "KorI420ToABGR", 4, I420, {}),
    ("i420_to_bgr", "KorI420To24BG", 3, I420, {}),
    ("i444_to_bgra", "KorI444ToBGRA", 4, I444, {}),
    ("i444_to_bgra", "KorI444ToBGRAUsingBT709", 4, I444, {"matrix": "bt709"}),
]
PACKERS = [
    ("i420_to_yuy2", "KorI420ToYUY2"),
    ("i420_to_uyvy", "KorI420ToUYVY"),
    ("i420_to_yuv2", "KorI420toYuv2"),
]


def named(cases):
    return pytest.mark.parametrize("case", cases, ids=[case[1] for case in cases])


def with_room(kind, width, height):
    """Planes for a direct call, with the spare row and column, and the views of the picture."""
    planes = [np.zeros((rows + 1, columns + 1), np.uint8) for rows, columns in kind.shapes(width, height)]
    shapes = kind.shapes(width, height)
    return planes, [plane[:rows, :columns] for plane, (rows, columns) in zip(planes, shapes)]


def flipped(source, flip):
    """The source as the library has it: the row with the lowest address, and whether to begin with the last one."""
    upwards = source.strides[0] < 0
    return (source[::-1] if upwards else source), flip != upwards


def check_out(function, out, expected):
    """Calls with out= write the same into the picture, and nothing between its rows."""
    before = [gaps(plane) for plane in out]
    result = function(out)
    assert all(a is b for a, b in zip(result, out))
    assert same(out, expected)
    assert same([gaps(plane) for plane in out], before)


@named(CAPTURES)
@given(sizes, sizes, paddings, st.booleans(), st.booleans(), seeds)
def test_capture(case, width, height, padding, upwards, flip, seed):
    name, function, channels, kind, options = case
    rng = np.random.default_rng(seed)
    source = noise(rng, (height, width, channels), padding, upwards)
    planes, expected = with_room(kind, width, height)
    low, up = flipped(source, flip)
    matrix = [np.array(OWN, np.int32)] if "General" in function else []
    if function == "KorBGRAToI444UsingBT709" and up:
        low, up = np.ascontiguousarray(low[::-1]), False  # flipped, it reads on below the picture
    direct.call(function, *planes, low, width, height, up, *matrix)

    assert same(getattr(kor, name)(source, flip=flip, **options), expected)
    check_out(lambda out: getattr(kor, name)(source, flip=flip, out=out, **options),
              picture(kind, rng, width, height, padding), expected)


@named(PACKED_CAPTURES)
@given(even_sizes, sizes, paddings, st.booleans(), st.booleans(), angles, seeds)
def test_packed_capture(case, width, height, padding, upwards, flip, angle, seed):
    name, function = case
    rng = np.random.default_rng(seed)
    source = noise(rng, (height, width, 2), padding, upwards)
    low, up = flipped(source, flip)
    options = {}
    if function == "KorYuv2ToI420" or angle == 0:
        size = (width, height)
        planes, expected = with_room(I420, *size)
        direct.call(function, *planes, low, width, height, up)
    else:
        rows = height + height % 2
        size = (rows, width) if angle in (90, 270) else (width, rows)
        planes, expected = with_room(I420, *size)
        direct.call(function + "WithRotation", *planes, low, width, height, up, angle)
        options["rotate"] = angle

    assert same(getattr(kor, name)(source, flip=flip, **options), expected)
    check_out(lambda out: getattr(kor, name)(source, flip=flip, out=out, **options),
              picture(I420, rng, *size, padding), expected)


@given(even_sizes, sizes, paddings, st.booleans(), st.booleans(), seeds)
def test_m420(width, blocks, padding, upwards, flip, seed):
    rng = np.random.default_rng(seed)
    source = noise(rng, (blocks, 3, width), padding, upwards)
    planes, expected = with_room(I420, width, 2 * blocks)
    low, up = flipped(source, flip)
    # Read from the last block up, block by block.
    direct.call("KorM420ToI420", *planes, np.ascontiguousarray(low[::-1] if up else low), width, 2 * blocks, 0)

    assert same(kor.m420_to_i420(source, flip=flip), expected)
    check_out(lambda out: kor.m420_to_i420(source, flip=flip, out=out), picture(I420, rng, width, 2 * blocks, padding),
              expected)


def starts(seed):
    return [int(start) for start in np.random.default_rng(seed).integers(0, 2**16, size=3, dtype=np.uint16)]


def even_planes(planes):
    """The picture with its last column and row repeated where their number is odd."""
    height, width = planes.y.shape
    return I420(np.pad(planes.y, [(0, height % 2), (0, width % 2)], mode="edge"), planes.u, planes.v)


@named(RENDERERS)
@given(sizes, sizes, paddings, levels, seeds)
def test_render(case, width, height, padding, level, seed):
    name, function, channels, kind, options = case
    rng = np.random.default_rng(seed)
    source = picture(kind, rng, width, height, padding)
    matrix = [np.array(OWN, np.int32)] if "General" in function else []
    value = 0 if level is None else level + 1
    expected = np.zeros((height, width, channels), np.uint8)
    direct.library.DirectStarts(*starts(seed))
    direct.call(function, *source, expected, width, height, *matrix, value)

    result = getattr(kor, name)(source, dither=level, rng=seed, **options)
    inner = (slice(None), slice(None)) if kind is I444 else (slice(height & ~1), slice(width & ~1))
    assert np.array_equal(result[inner], expected[inner])
    if kind is I420 and level is None:
        even = even_planes(source)
        whole = np.zeros((*even.y.shape, channels), np.uint8)
        direct.call(function, *even, whole, whole.shape[1], whole.shape[0], *matrix, 0)
        assert np.array_equal(result, whole[:height, :width])
    check_out(lambda out: [getattr(kor, name)(source, dither=level, rng=seed, out=out[0], **options)],
              [noise(rng, expected.shape, padding)], [result])


@named(PACKERS)
@given(even_sizes, sizes, paddings, levels, seeds)
def test_pack(case, width, height, padding, level, seed):
    name, function = case
    rng = np.random.default_rng(seed)
    source = picture(I420, rng, width, height, padding)
    options, value = {"dither": level, "rng": seed}, [0 if level is None else level + 1]
    if function == "KorI420toYuv2":
        options, value = {}, []
    expected = np.zeros((height, width, 2), np.uint8)
    direct.library.DirectStarts(*starts(seed))
    direct.call(function, *source, expected, width, height, *value)

    result = getattr(kor, name)(source, **options)
    assert np.array_equal(result[: height & ~1], expected[: height & ~1])
    if value in ([], [0]):
        even = even_planes(source)
        whole = np.zeros((*even.y.shape, 2), np.uint8)
        direct.call(function, *even, whole, *reversed(even.y.shape), *value)
        assert np.array_equal(result, whole[:height])
    check_out(lambda out: [getattr(kor, name)(source, out=out[0], **options)], [noise(rng, expected.shape, padding)],
              [result])


@given(sizes, sizes, paddings, st.booleans(), seeds)
def test_halve_rows(width, height, padding, upwards, seed):
    rng = np.random.default_rng(seed)
    source = noise(rng, (2 * height, width), padding, upwards)
    expected = np.zeros((height, width), np.uint8)
    direct.call("KorPlanarUV422To420", source, expected, width, height)
    assert np.array_equal(kor.halve_rows(source), expected)
    check_out(lambda out: [kor.halve_rows(source, out=out[0])], [noise(rng, expected.shape, padding)], [expected])


@given(sizes, sizes, paddings, st.booleans(), angles, seeds)
def test_mirror_and_rotate(width, height, padding, upwards, angle, seed):
    rng = np.random.default_rng(seed)
    source = noise(rng, (height, width), padding, upwards)
    mirrored = np.zeros((height, width), np.uint8)
    direct.call("KorPlanarMirror", source, mirrored, width, height)
    assert np.array_equal(kor.mirror(source), mirrored)
    rotated = np.zeros((width, height) if angle in (90, 270) else (height, width), np.uint8)
    direct.call("KorPlanarRotation", source, rotated, width, height, angle)
    assert np.array_equal(kor.rotate(source, angle), rotated)
    check_out(lambda out: [kor.rotate(source, angle, out=out[0])], [noise(rng, rotated.shape, padding)], [rotated])


@given(sizes, sizes, paddings, st.booleans(), angles, st.booleans(), seeds)
def test_split(width, height, padding, upwards, angle, mirror, seed):
    rng = np.random.default_rng(seed)
    source = noise(rng, (height, width, 2), padding, upwards)
    angle = 0 if mirror else angle
    shape = (width, height) if angle in (90, 270) else (height, width)
    expected = np.zeros(shape, np.uint8), np.zeros(shape, np.uint8)
    function = "KorPlanarUVDeinterlaceMirror" if mirror else "KorPlanarUVDeinterlaceRotation"
    direct.call(function, source, *expected, width, height, *([] if mirror else [angle]))
    assert same(kor.split(source, mirror=mirror, rotate=angle), expected)
    check_out(lambda out: kor.split(source, mirror=mirror, rotate=angle, out=tuple(out)),
              [noise(rng, shape, padding), noise(rng, shape, padding)], expected)
    if not mirror and angle == 0:
        direct.call("KorPlanarUVDeinterlace", source, *expected, width, height)
        assert same(kor.split(source), expected)


@given(sizes, sizes, paddings, seeds)
def test_flip_vertical(width, height, padding, seed):
    source = picture(I420, np.random.default_rng(seed), width, height, padding)
    expected = [plane.copy() for plane in source]
    direct.call("KorI420FlipVertical", *expected, width, height)
    check_out(lambda out: kor.flip_vertical(I420(*out)), source, expected)


@given(sizes, sizes, paddings, st.integers(-1, 2), st.booleans(), seeds)
def test_dither(width, height, padding, level, fixed, seed):
    rng = np.random.default_rng(seed)
    source = picture(I420, rng, width, height, padding)
    expected = [plane.copy() for plane in source]
    direct.library.DirectStarts(*starts(seed))
    direct.call("KorI420Dither", *source, *expected, width, height, level + 1, not fixed)
    assert same(kor.dither(source, level, rng=seed, fixed=fixed), expected)
    check_out(lambda out: kor.dither(source, level, rng=seed, fixed=fixed, out=I420(*out)),
              picture(I420, rng, width, height, padding), expected)
    check_out(lambda out: kor.dither(out, level, rng=seed, fixed=fixed, out=out), source, expected)


@given(sizes, sizes, sizes, sizes, st.integers(0, 30), st.integers(0, 30), st.integers(0, 255), st.booleans(), seeds)
def test_blend(width, height, more_columns, more_rows, x, y, alpha, array, seed):
    rng = np.random.default_rng(seed)
    background = picture(I420, rng, width + x + more_columns, height + y + more_rows, 3)
    foreground = picture(I420, rng, width, height, 5)
    expected = [plane.copy() for plane in background]
    if array:
        weights = picture(I420, rng, width, height, 7)
        direct.call("KorI420AlphaArrayBlend", *expected, *foreground, width, height, x, y, *weights)
    else:
        weights = alpha
        direct.call("KorI420AlphaBlend", *expected, *foreground, width, height, x, y, alpha)
    check_out(lambda out: kor.blend(I420(*out), foreground, weights, at=(x, y)), background, expected)


def test_all_functions_are_reached(monkeypatch):
    called = set()
    run = _kor.run

    def record(function, *arguments, **options):
        called.add(function)
        return run(function, *arguments, **options)

    monkeypatch.setattr(_kor, "run", record)
    rng = np.random.default_rng(1)
    i420, i444 = picture(I420, rng, 6, 4), picture(I444, rng, 6, 4)
    for name, _, channels, _, options in CAPTURES:
        getattr(kor, name)(noise(rng, (4, 6, channels)), **options)
    for name, _, _, kind, options in RENDERERS:
        getattr(kor, name)(i420 if kind is I420 else i444, **options)
    for name, _ in PACKERS:
        getattr(kor, name)(i420)
    for name, _ in PACKED_CAPTURES:
        getattr(kor, name)(noise(rng, (4, 6, 2)))
    kor.yuy2_to_i420(noise(rng, (4, 6, 2)), rotate=90)
    kor.uyvy_to_i420(noise(rng, (4, 6, 2)), rotate=90)
    kor.m420_to_i420(noise(rng, (2, 3, 6)))
    plane, pairs = noise(rng, (4, 6)), noise(rng, (4, 6, 2))
    kor.halve_rows(plane), kor.mirror(plane), kor.rotate(plane, 90)
    kor.split(pairs), kor.split(pairs, mirror=True), kor.split(pairs, rotate=90)
    kor.flip_vertical(i420), kor.dither(i420, 1), kor.blend(i420, i420.empty(2, 2), 9)
    kor.blend(i420, i420.empty(2, 2), i420.empty(2, 2))
    assert called == set(direct.FUNCTIONS) == set(_kor.functions())
    assert len(called) == 38


def test_noise_is_new_without_a_seed_and_repeats_with_one():
    grey = I420(*(np.full(shape, 100, np.uint8) for shape in I420.shapes(64, 64)))
    once, again = kor.i420_to_bgra(grey, dither=2), kor.i420_to_bgra(grey, dither=2)
    assert not np.array_equal(once, again)  # the same by chance once in 2^37 runs
    assert np.array_equal(kor.i420_to_bgra(grey, dither=2, rng=3), kor.i420_to_bgra(grey, dither=2, rng=3))
    generator = np.random.default_rng(3)
    frames = [kor.i420_to_bgra(grey, dither=2, rng=generator) for _ in range(2)]
    assert np.array_equal(frames[0], kor.i420_to_bgra(grey, dither=2, rng=3))
    assert not np.array_equal(*frames)


def test_convert():
    bgra = noise(np.random.default_rng(5), (5, 7, 4))
    planes = kor.convert(bgra, "i420", source="bgra", matrix="bt709")
    assert same(planes, kor.bgra_to_i420(bgra, matrix="bt709"))
    assert np.array_equal(kor.convert(planes, "rgba"), kor.i420_to_rgba(planes))
    with pytest.raises(ValueError, match="no conversion from bgra to nv12; expected one of abgr_to_i420, "):
        kor.convert(bgra, "nv12", source="bgra")
    with pytest.raises(ValueError, match='source="bgra"'):
        kor.convert(bgra, "i420")


def test_buffers_other_than_arrays():
    bgra = noise(np.random.default_rng(6), (4, 6, 4))
    memory = bytearray(bgra.tobytes())
    view = memoryview(memory).cast("B", (4, 6, 4))
    assert same(kor.bgra_to_i420(view), kor.bgra_to_i420(bgra))
    frame = bytearray(kor.bgra_to_i420(bgra).tobytes())
    planes = kor.I420.from_buffer(frame, 6, 4)
    assert same(planes, kor.bgra_to_i420(bgra))
    kor.flip_vertical(planes)
    assert planes.tobytes() == bytes(frame)
    with pytest.raises(ValueError, match="expected 36 bytes for 6x4, got 35"):
        kor.I420.from_buffer(frame[1:], 6, 4)
