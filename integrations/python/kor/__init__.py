"""Video pixel-format conversions, exact to the bit.

Frames are arrays of uint8: (height, width, 4) for RGB of four bytes, (height, width, 3) of three, (height, width, 2)
for packed YUV, and kor.I420 or kor.I444 for planar pictures. Rows may lie any number of bytes apart. Functions refuse
what they cannot use, and release the interpreter lock while they run.

    import kor

    planes = kor.bgra_to_i420(bgra, matrix="bt709")
    bgra = kor.i420_to_bgra(planes, matrix="bt709", dither=1, rng=7)
"""

from ._frames import I420, I444
from ._functions import (
    abgr_to_i420,
    argb_to_i420,
    bgr_to_i420,
    bgra_to_i420,
    bgra_to_i444,
    blend,
    convert,
    dither,
    flip_vertical,
    halve_rows,
    i420_to_abgr,
    i420_to_argb,
    i420_to_bgr,
    i420_to_bgra,
    i420_to_rgba,
    i420_to_uyvy,
    i420_to_yuv2,
    i420_to_yuy2,
    i444_to_bgra,
    m420_to_i420,
    mirror,
    rgb_to_i420,
    rgba_to_i420,
    rotate,
    split,
    uyvy_to_i420,
    yuv2_to_i420,
    yuy2_to_i420,
)
from ._kor import __version__
from ._targets import select_target, target, targets

__all__ = [
    "I420",
    "I444",
    "__version__",
    "abgr_to_i420",
    "argb_to_i420",
    "bgr_to_i420",
    "bgra_to_i420",
    "bgra_to_i444",
    "blend",
    "convert",
    "dither",
    "flip_vertical",
    "halve_rows",
    "i420_to_abgr",
    "i420_to_argb",
    "i420_to_bgr",
    "i420_to_bgra",
    "i420_to_rgba",
    "i420_to_uyvy",
    "i420_to_yuv2",
    "i420_to_yuy2",
    "i444_to_bgra",
    "m420_to_i420",
    "mirror",
    "rgb_to_i420",
    "rgba_to_i420",
    "rotate",
    "select_target",
    "split",
    "target",
    "targets",
    "uyvy_to_i420",
    "yuv2_to_i420",
    "yuy2_to_i420",
]
