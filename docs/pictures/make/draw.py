#!/usr/bin/env python3
"""Draws the pictures of the documents; scripts/pictures calls it with the build directory and the output directory."""
import pathlib
import sys

sys.dont_write_bytecode = True

import dither  # noqa: E402
import edges  # noqa: E402
import house  # noqa: E402
import layouts  # noqa: E402
from library import Library  # noqa: E402


def main():
    build, pictures = (pathlib.Path(argument) for argument in sys.argv[1:3])
    library = Library(build)
    for name, module in (("layouts", layouts), ("edges", edges)):
        (pictures / name).mkdir(parents=True, exist_ok=True)
        module.draw(library, pictures / name)
    house.draw(pictures / "house.svg")
    dither.draw(build / "tools/korframe/korframe", pictures / "dither.png")


if __name__ == "__main__":
    main()
