"""The module as a neighbour: its symbols, its services, its targets, its digests."""

import ctypes
import hashlib
import os
import subprocess
import sys

import numpy as np
import pytest

import kor
from frames import picture, targets
from kor import _kor


def symbols(option):
    listed = subprocess.run(["nm", "-D", option, os.environ["KOR_MODULE"]], check=True, capture_output=True, text=True)
    return [line.split()[-1] for line in listed.stdout.splitlines()]


def test_exports_nothing_but_its_entry_point():
    assert symbols("--defined-only") == ["PyInit__kor"]


def test_needs_nothing_of_the_library():
    assert not [name for name in symbols("--undefined-only") if name.startswith("Kor")]


PROGRAM = """
import ctypes, hashlib, sys
import numpy as np
import kor
planes = kor.I420(*(np.full(shape, 100, np.uint8) for shape in kor.I420.shapes(64, 48)))
digest = hashlib.sha256(kor.i420_to_bgra(planes, dither=2, rng=4)).hexdigest()
digest += hashlib.sha256(kor.dither(planes, 2, rng=4).tobytes()).hexdigest()
host = ctypes.CDLL(None)
print(digest, host.DirectDraws() if hasattr(host, "DirectDraws") else "none")
"""


def test_uses_its_own_services_beside_those_of_a_host():
    """A host that brings the library with services of its own, ahead of everything in the order of symbols."""
    def run(**environment):
        ran = subprocess.run([sys.executable, "-c", PROGRAM], env={**os.environ, **environment}, check=True,
                             capture_output=True, text=True)
        return ran.stdout.split()

    alone, none = run()
    beside, draws = run(LD_PRELOAD=os.environ["KOR_DIRECT"])
    assert (none, draws) == ("none", "0")
    assert beside == alone


def test_a_host_uses_its_own_services_beside_the_module():
    host = ctypes.CDLL(os.environ["KOR_DIRECT"])
    planes = picture(kor.I420, np.random.default_rng(3), 16, 16)
    host.DirectStarts(0, 0, 0)
    kor.dither(planes, 1)
    kor.i420_to_bgra(planes, dither=1)
    assert host.DirectDraws() == 0
    words = [ctypes.c_void_p(plane.ctypes.data) if part == 0 else ctypes.c_size_t(plane.strides[0])
             for plane in (*planes, *planes) for part in (0, 1)]
    host.KorI420Dither(*words, ctypes.c_size_t(16), ctypes.c_size_t(16), ctypes.c_uint32(1), ctypes.c_uint8(1))
    assert host.DirectDraws() == 3


def test_targets():
    assert kor.targets()[-1] == "portable"
    rng = np.random.default_rng(8)
    bgra = rng.integers(0, 256, (37, 91, 4), np.uint8)
    used = kor.target()
    digests = set()
    for name in targets:
        kor.select_target(name)
        assert kor.target() == name
        digests.add(hashlib.sha256(kor.bgra_to_i420(bgra, matrix="bt709").tobytes()).hexdigest())
    kor.select_target(None)
    assert kor.target() == used
    assert len(digests) == 1


def main(*arguments, **environment):
    return subprocess.run([sys.executable, "-m", "kor", *arguments], env={**os.environ, **environment},
                          capture_output=True, text=True)


def test_main():
    for name in targets:
        listed = main("targets", KOR_TARGET=name)
        assert f"* {name}\n" in listed.stdout and listed.returncode == 0
    refused = main("targets", KOR_TARGET="z80")
    assert refused.returncode == 2
    assert "KOR_TARGET: this machine cannot run 'z80'; this build has" in refused.stderr
    refused = main("verify", "--target", "z80")
    assert refused.returncode == 2
    assert "this machine cannot run 'z80'; expected one of" in refused.stderr


def test_verify_notices_one_wrong_byte():
    def call(function, planes, width, height, **options):
        try:
            _kor.run(function, planes, width, height, **options)
        except ValueError:
            return False
        if function == "KorPlanarMirror" and (width, height) == (514, 5):
            planes[1][4, 513] ^= 1
        return True

    differences, digests, calls, refused = _kor.verify(call)
    assert [line.split(":")[0] for line in differences] == [
        "KorPlanarMirror_C_ walk=down", "KorPlanarMirror_C_ walk=up"
    ]
    assert digests == 268 and calls > refused > 0


def test_verify_takes_no_refusal_for_an_answer():
    with pytest.raises(RuntimeError, match="KorPlanarUV422To420: refused "):
        _kor.verify(lambda *arguments, **options: False)
