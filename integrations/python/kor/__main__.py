"""python -m kor: the targets of this machine, and the digests of everything that the functions write."""

from __future__ import annotations

import argparse
import os
import sys
from typing import Any, Sequence

from . import __version__, _kor
from ._targets import select_target


def _call(function: str, planes: Sequence[Any], width: int, height: int, **options: Any) -> bool:
    try:
        _kor.run(function, planes, width, height, **options)
    except ValueError:
        return False
    return True


def verify() -> bool:
    """Makes the digests through this package and compares them with those of the library."""
    differences, digests, calls, refused = _kor.verify(_call)
    print(*differences, sep="\n", end="\n" if differences else "")
    if differences:
        print(f"{_kor.target()}: {len(differences)} of {digests} digests differ")
        return False
    print(
        f"{_kor.target()}: {digests} digests agree, of {calls} calls through Python; "
        f"{refused} of odd widths, which Python refuses, went to the library directly"
    )
    return True


def main() -> int:
    parser = argparse.ArgumentParser(prog="python -m kor", description=__doc__)
    parser.add_argument("--version", action="version", version=f"kor {__version__}, target {_kor.target()}")
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("targets", help="list the targets of this build; a star marks the one in use")
    check = commands.add_parser("verify", help="check that every byte is as it should be on this machine")
    check.add_argument("--target", metavar="NAME", help="check this target rather than the one in use")
    check.add_argument("--all-targets", action="store_true", help="check every target that this machine runs")
    options = parser.parse_args()

    asked = os.environ.get("KOR_TARGET")
    if asked and asked != _kor.target():
        parser.error(f"KOR_TARGET: this machine cannot run '{asked}'; this build has {', '.join(_kor.targets())}")
    if options.command == "targets":
        for name in _kor.targets():
            print("*" if name == _kor.target() else " ", name)
        return 0
    if options.target is not None:
        try:
            select_target(options.target)
        except ValueError as error:
            parser.error(f"--{error}")
    if not options.all_targets:
        return 0 if verify() else 1
    passed = True
    for name in _kor.targets():
        if _kor.select_target(name):
            passed = verify() and passed
        else:
            print(f"{name}: this machine cannot run it")
    return 0 if passed else 1


if __name__ == "__main__":
    sys.exit(main())
