"""Which form of the functions is used."""

from __future__ import annotations

from typing import List, Optional

from . import _kor


def target() -> str:
    """The name of the target in use, for example "avx2". Chooses one if nothing was converted yet."""
    return _kor.target()


def targets() -> List[str]:
    """The names of all targets in this build, best first; whether this machine runs them is not asked."""
    return _kor.targets()


def select_target(name: Optional[str]) -> None:
    """Selects a target for all calls from now on; None returns to the automatic choice. Results are the same."""
    if not _kor.select_target(name):
        raise ValueError(f"target: this machine cannot run '{name}'; expected one of {', '.join(_runnable())}")


def _runnable() -> List[str]:
    # Asking means selecting, so what was in use comes back.
    used = _kor.target()
    names = [name for name in _kor.targets() if _kor.select_target(name)]
    _kor.select_target(used)
    return names
