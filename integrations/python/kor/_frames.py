"""Frames as arrays: planar pictures, and the checks of what comes in."""

from __future__ import annotations

from typing import Any, NamedTuple, Optional, Sequence, Tuple, Type, TypeVar, Union

import numpy as np
import numpy.typing as npt

Array = npt.NDArray[np.uint8]
# Whatever exports a buffer of the right shape.
Frame = Union[Array, memoryview]
# None stands for any size.
Shape = Tuple[Optional[int], ...]

Picture = TypeVar("Picture", bound="_Picture")


def half(size: int) -> int:
    """Samples of chroma beside so many of luma."""
    return (size + 1) // 2


class _YUV(NamedTuple):
    y: Array
    u: Array
    v: Array


class _Picture(_YUV):
    __slots__ = ()

    @property
    def width(self) -> int:
        """Columns of luma."""
        return int(self.y.shape[1])

    @property
    def height(self) -> int:
        """Rows of luma."""
        return int(self.y.shape[0])

    @staticmethod
    def shapes(width: int, height: int) -> Sequence[Tuple[int, int]]:
        """The shapes of the three planes."""
        raise NotImplementedError

    @classmethod
    def empty(cls: Type[Picture], width: int, height: int) -> Picture:
        """A picture for out=; its samples are not initialised."""
        return cls(*(np.empty(shape, np.uint8) for shape in cls.shapes(width, height)))

    @classmethod
    def from_buffer(cls: Type[Picture], buffer: Any, width: int, height: int) -> Picture:
        """The planes of a frame that lies in one piece, Y, U, V, without a copy."""
        samples = np.frombuffer(buffer, np.uint8)
        shapes = cls.shapes(width, height)
        sizes = [rows * columns for rows, columns in shapes]
        if samples.size != sum(sizes):
            raise ValueError(f"buffer: expected {sum(sizes)} bytes for {width}x{height}, got {samples.size}")
        planes = np.split(samples, np.cumsum(sizes)[:-1])
        return cls(*(plane.reshape(shape) for plane, shape in zip(planes, shapes)))

    def tobytes(self) -> bytes:
        """The three planes in one piece, without what lies between their rows."""
        return b"".join(plane.tobytes() for plane in self)


class I420(_Picture):
    """A planar picture with one chroma sample for each block of two by two pixels: planes y, u, v.

    y has the shape (height, width); u and v have ((height + 1) // 2, (width + 1) // 2).
    """

    __slots__ = ()

    @staticmethod
    def shapes(width: int, height: int) -> Sequence[Tuple[int, int]]:
        """The shapes of the three planes."""
        chroma = (half(height), half(width))
        return ((height, width), chroma, chroma)


class I444(_Picture):
    """A planar picture with chroma for every pixel: planes y, u, v, all of the shape (height, width)."""

    __slots__ = ()

    @staticmethod
    def shapes(width: int, height: int) -> Sequence[Tuple[int, int]]:
        """The shapes of the three planes."""
        return ((height, width),) * 3


def _text(shape: Shape, free: Sequence[str]) -> str:
    names = iter(free)
    sizes = [next(names) if size is None else str(size) for size in shape]
    return "(" + ", ".join(sizes) + ")"


def rows(name: str, frame: Frame, shape: Shape, *, upwards: bool = False, write: bool = False) -> Array:
    """The frame as an array without a copy; refuses what the library cannot use.

    Sizes that the shape leaves open are the height and the width, in this order. With upwards, rows may be stored from
    the bottom up.
    """
    free = ("height", "width") if shape[0] is None else ("width",)
    wanted = _text(shape, free)
    if isinstance(frame, np.ndarray):
        array: npt.NDArray[Any] = frame
    else:
        try:
            array = np.asarray(memoryview(frame))
        except TypeError:
            kind = type(frame).__name__
            raise TypeError(f"{name}: expected an array of uint8 of shape {wanted}, got {kind}") from None
    if array.dtype != np.uint8:
        raise TypeError(f"{name}: expected uint8, got {array.dtype}")
    if len(array.shape) != len(shape) or any(s is not None and s != a for s, a in zip(shape, array.shape)):
        raise ValueError(f"{name}: expected shape {wanted}, got {array.shape}")
    if array.size == 0:
        raise ValueError(f"{name}: expected at least one row and one column, got shape {array.shape}")
    row = int(np.prod(array.shape[1:]))
    side_by_side = row == 1 or array[0].flags.c_contiguous
    stride = array.strides[0] if array.shape[0] > 1 else row
    if not side_by_side or abs(stride) < row or (stride < 0 and not upwards):
        least = f"at least {row} bytes from row to row" + (" in either direction" if upwards else "")
        raise ValueError(
            f"{name}: expected the samples of a row side by side and {least}, got strides {array.strides}; "
            "numpy.ascontiguousarray() makes a copy like that"
        )
    if write and not array.flags.writeable:
        raise ValueError(f"{name}: expected an array that can be written to, got a read-only one")
    return array


def planes(
    name: str,
    frame: Sequence[Frame],
    kind: Type[Picture],
    size: Optional[Tuple[int, int]] = None,
    *,
    write: bool = False,
) -> Picture:
    """The three planes of a picture, of (width, height) if that is given."""
    try:
        y, u, v = frame
    except (TypeError, ValueError):
        raise TypeError(f"{name}: expected kor.{kind.__name__} or three planes y, u, v") from None
    if size is None:
        luma = rows(f"{name}.y", y, (None, None), write=write)
        size = (luma.shape[1], luma.shape[0])
    names = (f"{name}.y", f"{name}.u", f"{name}.v")
    shapes = kind.shapes(*size)
    checked = [rows(part, plane, shape, write=write) for part, plane, shape in zip(names, (y, u, v), shapes)]
    return kind(*checked)


def disjoint(name: str, written: Sequence[Array], others: Sequence[Array] = ()) -> None:
    """Refuses destinations that share bytes with each other or with the sources."""
    for i, plane in enumerate(written):
        for other in (*written[i + 1 :], *others):
            if np.may_share_memory(plane, other) and np.shares_memory(plane, other):
                raise ValueError(f"{name}: expected memory of its own, got some of another plane or of the source")
