"""What a type checker says about calls of the package; an expected error that stays away is an error as well."""

from typing import List, Tuple

import numpy as np
import numpy.typing as npt

import kor

Array = npt.NDArray[np.uint8]


def right(bgra: Array, rng: np.random.Generator) -> Array:
    planes: kor.I420 = kor.bgra_to_i420(bgra, matrix="bt709", flip=True)
    kor.bgra_to_i420(memoryview(bgra.tobytes()).cast("B", (2, 2, 4)), matrix=[[1, 2, 3]] * 3, out=planes)
    i444: kor.I444 = kor.bgra_to_i444(bgra)
    pair: Tuple[Array, Array] = kor.split(bgra[..., :2], rotate=90)
    kor.blend(planes, kor.dither(planes, 1, rng=rng), 128, at=(2, 4))
    kor.blend(planes, planes, kor.I420.empty(planes.width, planes.height))
    names: List[str] = kor.targets()
    kor.select_target(names[0] if pair else None)
    kor.i444_to_bgra(i444, dither=2)
    return kor.i420_to_bgra(planes, dither=1, rng=7, out=bgra)


def wrong(bgra: Array, planes: kor.I420) -> None:
    kor.bgra_to_i420(bgra, flip="yes")  # type: ignore[arg-type]
    kor.bgra_to_i420(bgra, True)  # type: ignore[arg-type, misc]
    kor.bgra_to_i420(bgra, out=kor.I444.empty(2, 2))  # type: ignore[arg-type]
    kor.i420_to_bgra(planes, dither="1")  # type: ignore[arg-type]
    kor.i444_to_bgra(planes)  # type: ignore[arg-type]
    kor.i420_to_bgra(planes, rng=0.5)  # type: ignore[arg-type]
    kor.blend(planes, planes, 1.0)  # type: ignore[arg-type]
    text: str = kor.target  # type: ignore[assignment]
    del text
