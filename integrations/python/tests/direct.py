"""The library's functions, called directly through ctypes, without anything of the package kor."""

import ctypes
import os
import pathlib
import re

import numpy as np

library = ctypes.CDLL(os.environ["KOR_DIRECT"])
library.DirectStarts.argtypes = [ctypes.c_uint16] * 3

_tree = pathlib.Path(__file__).resolve().parents[3]
_list = (_tree / "Kor/Video/Common/KorYuv420Functions_.inc").read_text()
_shapes = (_tree / "Kor/Video/Common/KorYuv420Shapes_.h").read_text().replace("\\\n", " ")
FUNCTIONS = dict(re.findall(r"^KOR_FUNCTION\((\w+), (\w+),", _list, re.MULTILINE))

_TYPES = {
    "KorSizeT": ctypes.c_size_t,
    "KorDistanceT": ctypes.c_ssize_t,
    "KorBool": ctypes.c_uint8,
    "KorUint8": ctypes.c_uint8,
    "KorImageRotationDegree": ctypes.c_uint32,
    "KorVideoFrameDitherLevel": ctypes.c_uint32,
}


def _parameters(shape):
    text = re.search(rf"KOR_PARAMETERS_{shape}\s+\((.*?)\)\s*$", _shapes, re.MULTILINE).group(1)
    return [ctypes.c_void_p if "*" in one else _TYPES[one.split()[0]] for one in text.split(",")]


for _name, _shape in FUNCTIONS.items():
    getattr(library, _name).argtypes = _parameters(_shape)
    getattr(library, _name).restype = None


def call(function, *arguments):
    """Arrays are passed as a pointer to their first sample and a pitch, everything else as it is."""
    words = []
    for argument in arguments:
        if isinstance(argument, np.ndarray) and argument.dtype == np.int32:
            words.append(argument.ctypes.data)
        elif isinstance(argument, np.ndarray):
            words += [argument.ctypes.data, argument.strides[0]]
        else:
            words.append(argument)
    getattr(library, function)(*words)
