"""Frames for tests: noise in memory of any layout."""

import numpy as np
from hypothesis import strategies as st

import kor


def noise(rng, shape, padding=0, upwards=False):
    """An array of the shape whose rows have padding between them and may be stored from the bottom up."""
    row = int(np.prod(shape[1:]))
    memory = rng.integers(0, 256, (shape[0], row + padding), np.uint8)
    inner = np.empty(shape[1:], np.uint8).strides
    array = np.lib.stride_tricks.as_strided(memory, shape, (row + padding, *inner))
    return array[::-1] if upwards else array


def picture(kind, rng, width, height, padding=0):
    return kind(*(noise(rng, shape, padding) for shape in kind.shapes(width, height)))


def same(result, expected):
    return all(np.array_equal(a, b) for a, b in zip(result, expected))


def gaps(array):
    """What lies between the rows of an array of noise(), as a copy."""
    memory = array if array.base is None else array.base
    while memory.base is not None and isinstance(memory.base, np.ndarray):
        memory = memory.base
    row = int(np.prod(array.shape[1:]))
    return memory[:, row:].copy()


seeds = st.integers(0, 2**32 - 1)
paddings = st.integers(0, 40)
sizes = st.one_of(st.integers(1, 20), st.integers(1, 140))
even_sizes = sizes.map(lambda size: 2 * size)
levels = st.sampled_from([None, 0, 1, 2])
angles = st.sampled_from([0, 90, 180, 270])
targets = [name for name in kor.targets() if kor._targets._kor.select_target(name)]
kor.select_target(None)
