"""A drawing for each layout: its bytes in the order of their addresses.

The tables below are all that the drawings know about the layouts. Before drawing, they are checked against the library:
one byte of a small source after another is changed, and what changes in the result shows what that byte means.
"""
import ctypes
from dataclasses import dataclass

from card import COMPONENTS, FAINT, INK, MONO, Card
from library import Plane, influences


@dataclass
class Packed:
    name: str
    file: str
    about: str
    group: list  # the bytes of one pixel, or of two pixels that share chroma
    pixels: int  # pixels in a group
    capture: str  # the function that reads this layout
    argument: str = "x"


NO_FLIP = ctypes.c_uint8(0)

PACKED = [
    Packed("RGBA", "rgba", "32-bit RGB, four bytes per pixel", ["R", "G", "B", "A"], 1, "KorRGBAToI420_C_"),
    Packed("BGRA", "bgra", "32-bit RGB, four bytes per pixel", ["B", "G", "R", "A"], 1, "KorBGRAToI420_C_"),
    Packed("ARGB", "argb", "32-bit RGB, four bytes per pixel", ["A", "R", "G", "B"], 1, "KorARGBToI420_C_"),
    Packed("ABGR", "abgr", "32-bit RGB, four bytes per pixel", ["A", "B", "G", "R"], 1, "KorABGRToI420_C_"),
    Packed("Raw", "raw", "24-bit RGB, three bytes per pixel", ["R", "G", "B"], 1, "KorRawToI420_C_", "rgb"),
    Packed("24BG", "24bg", "24-bit RGB, three bytes per pixel", ["B", "G", "R"], 1, "Kor24BGToI420_C_", "bgr"),
    Packed("YUY2", "yuy2", "packed 4:2:2, four bytes for two pixels", ["Y0", "U", "Y1", "V"], 2, "KorYUY2ToI420_C_"),
    Packed("UYVY", "uyvy", "packed 4:2:2, four bytes for two pixels", ["U", "Y0", "V", "Y1"], 2, "KorUYVYToI420_C_"),
    Packed("Yuv2", "yuv2", "like YUY2, but luma is full range and chroma is signed", ["Y0", "U", "Y1", "V"], 2,
           "KorYuv2ToI420_C_", "yuv2"),
]


@dataclass
class Planar:
    name: str
    file: str
    about: str
    planes: list  # (pointer, components of a row, columns, rows); for a picture of 6 by 4 pixels
    notes: list


WIDTH, HEIGHT = 6, 4
PLANAR = [
    Planar("I420", "i420", "planar 4:2:0: three planes, chroma for each block of two by two pixels",
           [("y", "Y", 6, 4), ("u", "U", 3, 2), ("v", "V", 3, 2)],
           ["width x height", "(width + 1) / 2 x (height + 1) / 2", "(width + 1) / 2 x (height + 1) / 2"]),
    Planar("I444", "i444", "planar 4:4:4: three planes, chroma for each pixel",
           [("y", "Y", 6, 4), ("u", "U", 6, 4), ("v", "V", 6, 4)], 3 * ["width x height"]),
    Planar("Interleaved chroma", "interleaved-chroma",
           "semi-planar 4:2:0: a luma plane and a plane of pairs U, V",
           [("y", "Y", 6, 4), ("src", "UV", 3, 2)], ["width x height", "(width + 1) / 2 pairs x (height + 1) / 2"]),
]
M420 = Planar("M420", "m420", "blocks of two luma rows and the row of chroma pairs that they share",
              [("m420", "Y", 6, 2), ("", "UV", 3, 1)], [])


# ---- Checks of the tables against the library ----

def weights_of(component):
    """What a byte of 255 adds to the luma of black in the RGB captures: 7-bit and 8-bit matrix."""
    return {"R": (65, 65), "G": (127, 128), "B": (25, 24), "A": (0, 0)}[component]


def check_packed(library, layout):
    size = len(layout.group)
    x = Plane(size, 2)
    y, u, v = Plane(layout.pixels, 2), Plane(1, 1), Plane(1, 1)

    def capture():
        library.call(layout.capture, y, u, v, x, layout.pixels, 2, NO_FLIP)

    if layout.pixels == 1:
        for byte, component in enumerate(layout.group):
            x.bytes[:] = 0
            x[0, byte] = 255
            capture()
            expected = 16 + weights_of(component)[0 if size == 4 else 1]
            assert y[0, 0] == expected, f"{layout.name}: byte {byte} is not {component}"
        return
    luma, (u_from,), (v_from,) = (list(found.values()) for found in influences(capture, [x], [y, u, v]))
    meaning = {}
    for pixel in range(2):
        meaning.update({place[1]: f"Y{pixel}" for _, place in luma[pixel]})
    meaning.update({place[1]: "U" for _, place in u_from})
    meaning.update({place[1]: "V" for _, place in v_from})
    assert [meaning[byte] for byte in range(4)] == layout.group, f"{layout.name}: {meaning}"


def check_interleaved(library):
    src, uv1, uv2 = Plane(6, 2), Plane(3, 2), Plane(3, 2)
    first, second = influences(lambda: library.call("KorPlanarUVDeinterlace_C_", src, uv1, uv2, 3, 2), [src], [uv1, uv2])
    for row in range(2):
        for column in range(3):
            assert first[row, column] == {(0, (row, 2 * column))} and second[row, column] == {(0, (row, 2 * column + 1))}


def check_m420(library):
    m420, y, u, v = Plane(WIDTH * 3, 2), Plane(WIDTH, HEIGHT), Plane(3, 2), Plane(3, 2)
    found_y, found_u, found_v = influences(
        lambda: library.call("KorM420ToI420_C_", y, u, v, m420, WIDTH, HEIGHT, NO_FLIP), [m420], [y, u, v])
    assert all(source == {(0, (row // 2, WIDTH * (row % 2) + column))} for (row, column), source in found_y.items())
    assert all(source == {(0, (row, 2 * WIDTH + 2 * column))} for (row, column), source in found_u.items())
    assert all(source == {(0, (row, 2 * WIDTH + 2 * column + 1))} for (row, column), source in found_v.items())


def check_planar(library):
    """The sizes of the planes of I420 and I444, odd ones included."""
    for width, height in ((WIDTH, HEIGHT), (5, 3)):
        x = Plane(4 * width, height)
        for capture, (chroma_width, chroma_height) in (("KorBGRAToI420_C_", ((width + 1) // 2, (height + 1) // 2)),
                                                       ("KorBGRAToI444_C_", (width, height))):
            planes = [Plane(width, height), Plane(chroma_width, chroma_height), Plane(chroma_width, chroma_height)]
            found = influences(lambda: library.call(capture, *planes, x, width, height, NO_FLIP), [x], planes, 1)
            assert [len(places) for places in found] == [plane.columns * plane.rows for plane in planes], capture


def check(library):
    for layout in PACKED:
        check_packed(library, layout)
    check_interleaved(library)
    check_m420(library)
    check_planar(library)


# ---- Drawings ----

CELL, LEFT = 46, 118


def draw_bytes(card, top, layout, bytes_shown, row):
    """One row of memory: labelled cells, followed by the bytes up to the pitch."""
    size = len(layout.group)
    for byte in range(bytes_shown):
        component = layout.group[byte % size]
        group = byte // size
        if layout.pixels == 2 and component[0] == "Y":
            label = f"Y{2 * group + int(component[1])}"
        else:
            label = f"{component}{group}"
        fill, ink = COMPONENTS[component[0]]
        card.cell(LEFT + byte * CELL, top, CELL, 34, label, fill, ink, size=13)
    card.hatched(LEFT + bytes_shown * CELL + 2, top, 50, 34)
    name = layout.argument if row == 0 else f"{layout.argument} + pitch"
    card.text(LEFT - 12, top + 22, name, size=12, anchor="end", font=MONO)


def draw_packed(layout, path):
    size, shown = len(layout.group), 12
    card = Card(path, LEFT + shown * CELL + 82, 204, layout.name, layout.about)
    for group in range(shown // size):
        left = LEFT + group * size * CELL
        name = f"pixel {group}" if layout.pixels == 1 else f"pixels {2 * group} and {2 * group + 1}"
        card.span(left, left + size * CELL, 80, name)
    draw_bytes(card, 90, layout, shown, 0)
    for byte in range(shown):
        card.text(LEFT + byte * CELL + CELL / 2, 137, f"+{byte}", size=10, fill=FAINT, anchor="middle", font=MONO)
    draw_bytes(card, 152, layout, shown, 1)
    card.text(LEFT + shown * CELL + 27, 137, "to the pitch", size=9, fill=FAINT, anchor="middle")
    card.save()


def draw_overview(path):
    """All packed layouts under one scale of addresses."""
    size, step = 40, 44
    card = Card(path, 620, 106 + step * len(PACKED), "Bytes in memory, in the order of their addresses",
                "Names give the order of the bytes, on every machine.")
    for byte in range(8):
        card.text(240 + byte * size + size / 2, 84, f"+{byte}", size=11, fill=FAINT, anchor="middle", font=MONO)
    for number, layout in enumerate(PACKED):
        top = 94 + number * step
        card.text(36, top + 22, layout.name, size=14, weight="bold")
        card.text(104, top + 22, f"{8 * len(layout.group) // layout.pixels} bits per pixel", size=11, fill=FAINT)
        for byte in range(8):
            component = layout.group[byte % len(layout.group)]
            group = byte // len(layout.group)
            label = component if layout.pixels == 1 else \
                f"Y{2 * group + int(component[1])}" if component[0] == "Y" else component
            fill, ink = COMPONENTS[component[0]]
            card.cell(240 + byte * size, top, size, 34, label, fill, ink, size=13)
        card.text(240 + 8 * size + 10, top + 22, "...", size=14, fill=FAINT)
    card.save()


def draw_plane(card, left, top, pointer, components, columns, rows, note, cell=34):
    """A plane with its pitch; a pair takes two cells."""
    count = columns * len(components)
    for row in range(rows):
        for column in range(count):
            component = components[column % len(components)]
            fill, ink = COMPONENTS[component]
            label = f"{component}{row * columns + column // len(components)}"
            card.cell(left + column * cell, top + row * cell, cell, cell, label, fill, ink, size=11)
        card.hatched(left + count * cell + 2, top + row * cell + 1, cell * .8, cell - 2)
    card.text(left, top - 30, pointer, size=13, weight="bold", font=MONO)
    right = left + count * cell + 2 + cell * .8
    card.arrow(left + 1, top - 12, right, top - 12)
    card.arrow(right - 10, top - 12, left + 1, top - 12)
    card.text((left + right) / 2, top - 17, "pitch", size=10, fill=FAINT, anchor="middle")
    card.text(left, top + rows * cell + 18, note, size=11, fill=FAINT)
    return right


def draw_planar(layout, path):
    cell, gap, top = 34, 34, 104
    places, left = [], 24
    for (pointer, components, columns, rows), note in zip(layout.planes, layout.notes):
        places.append(left)
        drawn = columns * len(components) * cell + 2 + .8 * cell
        left += max(drawn, 6.1 * len(note)) + gap
    tallest = max(rows for _, _, _, rows in layout.planes)
    card = Card(path, round(left - gap + 24), top + tallest * cell + 40, layout.name, layout.about)
    for (pointer, components, columns, rows), note, left in zip(layout.planes, layout.notes, places):
        draw_plane(card, left, top, pointer, components, columns, rows, note, cell)
    card.save()


def draw_m420(path):
    cell, left, top = 34, 150, 96
    card = Card(path, left + 18 * cell + 84, 236, M420.name, M420.about)
    for block in range(2):
        y = top + 68 * block
        for byte in range(18):
            if byte < 12:
                component, label = "Y", f"Y{12 * block + byte}"
            else:
                component = "UV"[byte % 2]
                label = f"{component}{3 * block + (byte - 12) // 2}"
            fill, ink = COMPONENTS[component]
            card.cell(left + byte * cell, y, cell, cell, label, fill, ink, size=11)
        card.hatched(left + 18 * cell + 2, y + 1, 48, cell - 2)
        card.text(left - 12, y + 22, "m420" if block == 0 else "m420 + pitch", size=12, anchor="end", font=MONO)
    card.span(left, left + 6 * cell, top - 10, "luma row 0: width bytes")
    card.span(left + 6 * cell, left + 12 * cell, top - 10, "luma row 1: width bytes")
    card.span(left + 12 * cell, left + 18 * cell, top - 10, "chroma row 0: width / 2 pairs")
    card.text(left, top + 52, "A pitch leads from block to block, past three rows. Inside a block, rows are contiguous.",
              size=11, fill=FAINT)
    card.text(left, top + 122, "block 1 holds luma rows 2 and 3 and chroma row 1", size=11, fill=FAINT)
    card.save()


def draw(library, directory):
    check(library)
    for layout in PACKED:
        draw_packed(layout, directory / f"{layout.file}.svg")
    for layout in PLANAR:
        draw_planar(layout, directory / f"{layout.file}.svg")
    draw_m420(directory / f"{M420.file}.svg")
    draw_overview(directory / "packed.svg")
