"""The built library, called from Python, and experiments that find out which bytes a function reads and writes.

Everything that a drawing says about a function comes from such an experiment, so no drawing can contradict the library.
"""
import ctypes
import itertools

import numpy as np

_MARGIN = 4  # rows and columns around every plane in which reads and writes can be observed


class Plane:
    """Bytes of a plane with room around them; row 0, column 0 is the place that the function gets a pointer to."""

    def __init__(self, columns, rows, fill=0):
        self.bytes = np.full((rows + 2 * _MARGIN, columns + 2 * _MARGIN), fill, np.uint8)
        self.columns, self.rows = columns, rows

    def __getitem__(self, position):
        row, column = position
        return self.bytes[row + _MARGIN, column + _MARGIN]

    def __setitem__(self, position, value):
        row, column = position
        self.bytes[row + _MARGIN, column + _MARGIN] = value

    def positions(self):
        """All places, those around the plane included."""
        return itertools.product(range(-_MARGIN, self.rows + _MARGIN), range(-_MARGIN, self.columns + _MARGIN))

    def arguments(self):
        pitch = self.bytes.strides[0]
        return [ctypes.c_void_p(self.bytes.ctypes.data + _MARGIN * pitch + _MARGIN), ctypes.c_ssize_t(pitch)]


class BottomUp:
    """A plane that a function walks upwards: its last row and a negative pitch."""

    def __init__(self, plane):
        self.plane = plane

    def arguments(self):
        pitch = self.plane.bytes.strides[0]
        first = self.plane.bytes.ctypes.data + (_MARGIN + self.plane.rows - 1) * pitch + _MARGIN
        return [ctypes.c_void_p(first), ctypes.c_ssize_t(-pitch)]


class Library:
    def __init__(self, build):
        # The services come first, because the library resolves them among the symbols already loaded.
        ctypes.CDLL(str(build / "platform/libKorPlatform.so"), ctypes.RTLD_GLOBAL)
        self._library = ctypes.CDLL(str(build / "Kor/libKorYuv420C.so"))

    def call(self, name, *arguments):
        """Planes become a pointer and a pitch, integers become sizes; everything else is a ctypes value."""
        values = []
        for argument in arguments:
            if isinstance(argument, (Plane, BottomUp)):
                values += argument.arguments()
            elif isinstance(argument, int):
                values.append(ctypes.c_size_t(argument))
            else:
                values.append(argument)
        self._library[name](*values)


def written(call, destinations):
    """The places that call() writes in each destination: those that end up equal after two different fills."""
    results = []
    for fill in (0, 255):
        for plane in destinations:
            plane.bytes[:] = fill
        call()
        results.append([plane.bytes.copy() for plane in destinations])
    return [{place for place in plane.positions()
             if first[place[0] + _MARGIN, place[1] + _MARGIN] == second[place[0] + _MARGIN, place[1] + _MARGIN]}
            for plane, first, second in zip(destinations, *results)]


def influences(call, sources, destinations, seeds=3):
    """For each destination, which source bytes each written place depends on: {place: {(source number, place)}}."""
    places = written(call, destinations)
    found = [{place: set() for place in sorted(there)} for there in places]
    for seed in range(seeds):
        random = np.random.default_rng(seed)
        for plane in sources:
            plane.bytes[:] = random.integers(0, 256, plane.bytes.shape, np.uint8)
        for number, plane in enumerate(sources):
            for place in plane.positions():
                results = []
                before = plane[place]
                for value in (0, 64, 128, 192, 255):
                    plane[place] = value
                    call()
                    results.append([destination.bytes.copy() for destination in destinations])
                plane[place] = before
                for there, *outcomes in zip(found, *results):
                    for row, column in np.argwhere(np.ptp(outcomes, axis=0)):
                        there[row - _MARGIN, column - _MARGIN].add((number, place))
    return found
