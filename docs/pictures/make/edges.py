"""Drawings of what happens at the edges: odd sizes, angles, positions.

Source samples are labelled with letters, destination samples with the letters of the source samples that they depend
on, found by changing one source byte after another. Places that are not written are hatched; places that are written
outside the picture are outlined. Only the calls are given by hand.
"""
import ctypes
import string

from card import COMPONENTS, FAINT, INK, LINE, MONO, PAPER, SPARE, Card
from library import BottomUp, Plane, influences

LETTERS = string.ascii_lowercase
CELL = 38
FLIP, NO_FLIP = ctypes.c_uint8(1), ctypes.c_uint8(0)
DITHER_OFF = ctypes.c_uint32(0)
GREY = ("#e6eaef", INK)


def degrees(angle):
    return ctypes.c_uint32(angle)


class Grid:
    """A plane to draw: its size, a label for each place, and its colours."""

    def __init__(self, name, columns, rows, labels, colours):
        self.name, self.columns, self.rows = name, columns, rows
        self.labels, self.colours = labels, colours

    def bounds(self):
        places = list(self.labels) + [(0, 0), (self.rows - 1, self.columns - 1)]
        rows, columns = [place[0] for place in places], [place[1] for place in places]
        return min(rows), max(rows), min(columns), max(columns)

    def width(self):
        _, _, first, last = self.bounds()
        return (last - first + 1) * CELL

    def height(self):
        first, last, _, _ = self.bounds()
        return (last - first + 1) * CELL

    def draw(self, card, left, top):
        first_row, _, first_column, _ = self.bounds()
        card.text(left, top - 10, self.name, size=12, weight="bold")
        for row in range(self.rows):
            for column in range(self.columns):
                if (row, column) not in self.labels:
                    card.hatched(left + (column - first_column) * CELL + 1, top + (row - first_row) * CELL + 1,
                                 CELL - 2, CELL - 2)
        for (row, column), label in sorted(self.labels.items()):
            x, y = left + (column - first_column) * CELL, top + (row - first_row) * CELL
            inside = 0 <= row < self.rows and 0 <= column < self.columns
            fill, ink = self.colours(row, column) if callable(self.colours) else self.colours
            if inside:
                card.rect(x, y, CELL, CELL, fill=fill)
            else:
                card.rect(x + 2, y + 2, CELL - 4, CELL - 4, fill=PAPER, stroke=SPARE, stroke_width=2, dash="4 2")
                ink = SPARE
            write_label(card, x, y, label, ink)


def write_label(card, x, y, label, ink):
    """Up to two letters a line and four a cell; more are drawn smaller."""
    half = 1 if len(label) <= 1 else 2 if len(label) <= 4 else 3
    lines = [label[i:i + half] for i in range(0, len(label), half)]
    size = 13 if len(label) <= 2 else 12 if len(label) <= 4 else 10
    for number, line in enumerate(lines):
        offset = (number - (len(lines) - 1) / 2) * (size + 1)
        card.text(x + CELL / 2, y + CELL / 2 + offset + size * .36, line, size=size, fill=ink, anchor="middle", font=MONO)


def letters(sources):
    return "".join(LETTERS[n] for n in sorted(sources))


WRITTEN_OUTSIDE = "written outside the picture: the caller must provide room"


def legend(card, left, top, outside, untouched):
    if outside:
        card.rect(left + 2, top - 11, 14, 14, fill=PAPER, stroke=SPARE, stroke_width=2, dash="4 2")
        card.text(left + 24, top, outside, size=11, fill=SPARE)
        left += 40 + 6.2 * len(outside)
    if untouched:
        card.hatched(left + 2, top - 11, 14, 14)
        card.text(left + 24, top, "not written, or not read", size=11, fill=FAINT)


def lay_out(path, title, subtitle, grids, notes=(), arrows=(0,), outside=WRITTEN_OUTSIDE):
    """A row of grids, with arrows after those whose numbers are given."""
    gap = 44
    top = 92
    lead = max(-grid.bounds()[0] for grid in grids) * CELL
    depth = max(grid.bounds()[1] + 1 for grid in grids) * CELL
    width = 24 + sum(max(grid.width(), 8 * len(grid.name)) + gap for grid in grids) - gap + 24
    spare = any(not (0 <= row < grid.rows and 0 <= column < grid.columns) for grid in grids for row, column in grid.labels)
    missing = any(sum(0 <= r < g.rows and 0 <= c < g.columns for r, c in g.labels) < g.rows * g.columns for g in grids)
    height = top + lead + depth + 24 + 20 * (spare or missing) + 18 * len(notes)
    least = max([620 if spare and missing else 420] + [30 + 6.6 * len(line) for line in [subtitle, *notes]])
    card = Card(path, round(max(width, least)), height, title, subtitle)
    left = 24
    for number, grid in enumerate(grids):
        grid.draw(card, left, top + lead + grid.bounds()[0] * CELL)
        left += max(grid.width(), 8 * len(grid.name)) + gap
        if number in arrows:
            middle = top + lead + depth / 2
            card.arrow(left - gap + 10, middle, left - 12, middle, stroke=INK)
    y = top + lead + depth + 22
    if spare or missing:
        legend(card, 24, y, outside if spare else None, missing)
        y += 20
    for note in notes:
        card.text(24, y, note, size=11, fill=FAINT)
        y += 18
    card.save()


# ---- Captures from RGB ----

def block_colour(row, column):
    """Neighbouring blocks of two by two in two tints."""
    return GREY if (row // 2 + column // 2) % 2 == 0 else ("#cfd6de", INK)


def draw_rgb_capture(library, path, name, title, subtitle, bytes_a_pixel=4, extra=(), notes=(), width=5, height=3):
    x = Plane(bytes_a_pixel * width, height)
    y, u, v = Plane(width, height), Plane((width + 1) // 2, (height + 1) // 2), Plane((width + 1) // 2, (height + 1) // 2)

    def pixel(place):
        row, column = place
        assert 0 <= row < height and 0 <= column < bytes_a_pixel * width, f"{name} reads outside its source"
        return row * width + column // bytes_a_pixel

    found = influences(lambda: library.call(name, y, u, v, x, width, height, NO_FLIP, *extra), [x], [y, u, v])
    labels = [{place: letters({pixel(source) for _, source in sources}) for place, sources in there.items()}
              for there in found]
    assert labels[1] == labels[2]
    source = Grid("source: pixels", width, height, {(r, c): LETTERS[r * width + c] for r in range(height) for c in range(width)},
                  block_colour)
    lay_out(path, title, subtitle,
            [source, Grid("Y", width, height, labels[0], COMPONENTS["Y"]), Grid("U, and V alike", u.columns, u.rows, labels[1], COMPONENTS["U"])],
            notes)


def draw_i444_flip(library, path, width=3, height=3):
    x, planes = Plane(4 * width, height), [Plane(width, height) for _ in range(3)]
    found = influences(lambda: library.call("KorBGRAToI444UsingBT709_C_", *planes, x, width, height, FLIP), [x], planes)[0]
    sources = {place: {(row, column // 4) for _, (row, column) in there} for place, there in found.items()}
    read = sorted(set().union(*sources.values(), {(row, column) for row in range(height) for column in range(width)}))
    names = dict(zip(read, LETTERS))
    labels = {place: "".join(names[pixel] for pixel in there) for place, there in sources.items()}
    lay_out(path, "BGRA to I444 with BT.709, flip set", "KorBGRAToI444UsingBT709_C_ reads from the last row downwards",
            [Grid("source: pixels", width, height, names, GREY), Grid("Y, and U and V alike", width, height, labels, COMPONENTS["Y"])],
            outside="read outside the picture: the source must extend there")


# ---- Packed YUV ----

def draw_packed_capture(library, path, name, title, subtitle, width, height, source=None, notes=(), outside=WRITTEN_OUTSIDE):
    """Source bytes are lettered row by row, in the colours of the components that they prove to be."""
    x = source or Plane(2 * width, height)
    y, u, v = Plane(width, height), Plane((width + 1) // 2, (height + 1) // 2), Plane((width + 1) // 2, (height + 1) // 2)
    found = influences(lambda: library.call(name, y, u, v, x, width, height, NO_FLIP), [x], [y, u, v])
    read = {source for there in found for sources in there.values() for _, source in sources}
    names = {}
    for place in sorted(read):
        names[place] = LETTERS[len(names)] if len(names) < 26 else LETTERS[len(names) - 26].upper()
    kinds = {}
    for there, kind in zip(found, "YUV"):
        for sources in there.values():
            kinds.update({source: kind for _, source in sources})
    source_grid = Grid("source: bytes", x.columns, x.rows, names, lambda row, column: COMPONENTS[kinds[row, column]])
    grids = [source_grid]
    for there, kind, plane in zip(found, "YUV", (y, u, v)):
        labels = {place: "".join(names[source] for _, source in sorted(sources)) for place, sources in there.items()}
        grids.append(Grid(kind, plane.columns, plane.rows, labels, COMPONENTS[kind]))
    lay_out(path, title, subtitle, grids, notes, outside=outside)


# ---- Renderers and packers ----

def draw_renderer(library, path, title, subtitle, width=5, height=3):
    y, u, v = Plane(width, height), Plane(3, 2), Plane(3, 2)
    x = Plane(4 * width, height)
    found, = influences(lambda: library.call("KorI420ToBGRA_C_", y, u, v, x, width, height, DITHER_OFF), [y, u, v], [x], 8)
    read = [{source for sources in found.values() for number, source in sources if number == n} for n in range(3)]
    label_y = {place: LETTERS[place[0] * width + place[1]] for place in read[0]}
    label_c = {place: LETTERS[place[0] * 3 + place[1]].upper() for place in read[1]}
    pixels = {}
    for (row, column), sources in found.items():
        pixels.setdefault((row, column // 4), set()).update(
            label_y[place] if number == 0 else label_c[place] for number, place in sources)
    labels = {place: "".join(sorted(names, key=lambda n: (n.isupper(), n))) for place, names in pixels.items()}
    assert read[1] == read[2]
    lay_out(path, title, subtitle,
            [Grid("source: Y", width, height, label_y, COMPONENTS["Y"]), Grid("U, and V alike", 3, 2, label_c, COMPONENTS["U"]),
             Grid("destination: pixels", width, height, labels, GREY)], arrows=(1,))


# ---- Angles ----

def shade(number, count):
    """From light to dark along the source, so that a rotation shows at a glance."""
    light, dark = (0xff, 0xf3, 0xc4), (0xf2, 0xa9, 0x3b)
    return "#" + "".join(f"{round(a + (b - a) * number / (count - 1)):02x}" for a, b in zip(light, dark))


def draw_angles(library, path):
    width, height = 4, 3
    source = Plane(width, height)
    for row in range(height):
        for column in range(width):
            source[row, column] = row * width + column
    size, gap, top = 34, 40, 96
    card = Card(path, 24 + 5 * 4 * size + 3 * gap + 60, 430, "The four angles, clockwise",
                "A source of 4 by 3 samples; below, the same source read bottom-up: the flip comes before the rotation")
    for line, (walk, name) in enumerate(((source, "top-down"), (BottomUp(source), "bottom-up"))):
        left = 24
        base = top + line * (4 * size + 44)
        plain = {(row, column): source[row, column] for row in range(height) for column in range(width)}
        for angle in (None, 0, 90, 180, 270):
            if angle is None:
                if line == 0:
                    card.text(left, base - 10, "source", size=12, weight="bold")
                    draw_samples(card, left, base, plain, size, width * height)
                else:
                    card.text(left, base + 1.6 * size, "with flip, or with a", size=12, fill=FAINT)
                    card.text(left, base + 1.6 * size + 17, "negative pitch:", size=12, fill=FAINT)
            else:
                rotated = Plane(height if angle in (90, 270) else width, width if angle in (90, 270) else height, 255)
                library.call("KorPlanarRotation_C_", walk, rotated, width, height, degrees(angle))
                labels = {place: rotated[place] for place in rotated.positions() if rotated[place] != 255}
                assert len(labels) == width * height
                card.text(left, base - 10, f"{angle}" + (", flip" if line else ""), size=12, weight="bold")
                draw_samples(card, left, base, labels, size, width * height)
            left += 4 * size + (gap if angle not in (90,) else gap - size)
    card.save()


def draw_samples(card, left, top, samples, size, count):
    for (row, column), value in samples.items():
        card.cell(left + column * size, top + row * size, size, size, LETTERS[value], shade(int(value), count), size=13)


def draw_rotated_capture(library, path):
    """A packed picture of odd height at the four angles: repeating the last row read makes the height even."""
    width, height, size, gap, top = 4, 3, 34, 40, 104
    source = Plane(2 * width, height)
    for row in range(height):
        for column in range(width):
            source[row, 2 * column] = row * width + column
    card = Card(path, 24 + 5 * 4 * size + 4 * gap + 24, 312, "YUY2 of odd height, rotated in the same pass",
                "Luma of a source of 4 by 3 pixels; the last row read is repeated at every angle, as part of the destination")
    left = 24
    card.text(left, top - 10, "source: luma", size=12, weight="bold")
    draw_samples(card, left, top, {(r, c): source[r, 2 * c] for r in range(height) for c in range(width)}, size, 12)
    left += 4 * size + gap
    for angle in (0, 90, 180, 270):
        y, u, v = Plane(4, 4, 255), Plane(2, 2), Plane(2, 2)
        library.call("KorYUY2ToI420WithRotation_C_", y, u, v, source, width, height, NO_FLIP, degrees(angle))
        labels = {place: y[place] for place in y.positions() if y[place] != 255}
        assert len(labels) == 16
        card.text(left, top - 10, f"Y at {angle}", size=12, weight="bold")
        for (row, column), value in labels.items():
            card.cell(left + column * size, top + row * size, size, size, LETTERS[value], shade(int(value), 12), size=13)
        left += 4 * size + gap
    card.text(24, top + 4 * size + 34, "Each destination is 4 by 4 luma samples: width by the height rounded up to even, or "
              "that rotated. Chroma is 2 by 2.", size=11, fill=FAINT)
    card.text(24, top + 4 * size + 52, "The plain conversion writes the same fourth row; there it is the spare row below the "
              "picture.", size=11, fill=FAINT)
    card.save()


# ---- In place ----

def draw_flip_vertical(library, path):
    width, height = 5, 5
    planes = [Plane(width, height), Plane(3, 3), Plane(3, 3)]

    def named(plane):
        return {(row, column): LETTERS[plane[row, column]] for row in range(plane.rows) for column in range(plane.columns)}

    for plane in planes:
        for row in range(plane.rows):
            for column in range(plane.columns):
                plane[row, column] = row * plane.columns + column
    before = [named(plane) for plane in planes]
    library.call("KorI420FlipVertical_C_", *planes, width, height)
    after = [named(plane) for plane in planes]
    assert after[1] == after[2]
    lay_out(path, "Upside down in place, odd sizes",
            "KorI420FlipVertical_C_: chroma counts as width / 2 by height / 2, so its odd last column and row stay in place",
            [Grid("Y before", 5, 5, before[0], COMPONENTS["Y"]), Grid("Y after", 5, 5, after[0], COMPONENTS["Y"]),
             Grid("U before", 3, 3, before[1], COMPONENTS["U"]), Grid("U, and V alike, after", 3, 3, after[1], COMPONENTS["U"])],
            arrows=(0, 2))


def draw_blend_positions(library, path):
    """Which background samples a foreground of 3 by 2 covers, at an even and at an odd position."""
    size = 30
    card = Card(path, 760, 300, "Chroma under a blended picture",
                "A foreground of 3 by 2 over a background of 8 by 6: which samples change")
    left = 24
    for x_position, y_position in ((2, 2), (3, 1)):
        background = [Plane(8, 6), Plane(4, 3), Plane(4, 3)]
        foreground = [Plane(3, 2, 255), Plane(2, 1, 255), Plane(2, 1, 255)]
        library.call("KorI420AlphaBlend_C_", *background, *foreground, 3, 2, x_position, y_position, ctypes.c_uint8(255))
        card.text(left, 86, f"at column {x_position}, row {y_position}", size=12, weight="bold")
        for row in range(6):
            for column in range(8):
                fill = COMPONENTS["Y"][0] if background[0][row, column] else "#f3f5f8"
                card.rect(left + column * size, 98 + row * size, size, size, fill=fill, stroke=LINE, rx=0)
        for row in range(3):
            for column in range(4):
                covered = background[1][row, column] != 0
                card.rect(left + 2 * column * size, 98 + 2 * row * size, 2 * size, 2 * size, fill="none", stroke="#8c959f", rx=0)
                fill, stroke = (COMPONENTS["U"][0], "#27509b") if covered else (PAPER, "#8c959f")
                card.drawing.add(card.drawing.circle((left + (2 * column + 1) * size, 98 + (2 * row + 1) * size), 7,
                                                     fill=fill, stroke=stroke))
        left += 8 * size + 40
    x = left - 10
    card.rect(x, 120, 18, 18, fill=COMPONENTS["Y"][0], stroke=LINE)
    card.text(x + 26, 134, "luma that changes", size=11)
    card.drawing.add(card.drawing.circle((x + 9, 160), 7, fill=COMPONENTS["U"][0], stroke="#27509b"))
    card.text(x + 26, 164, "chroma that changes", size=11)
    card.text(x, 196, "Chroma starts at half the", size=11, fill=FAINT)
    card.text(x, 212, "position, rounded down.", size=11, fill=FAINT)
    card.save()


def draw(library, directory):
    matrix = (ctypes.c_int32 * 9)(47, 157, 16, -26, -87, 112, 112, -102, -10)
    coefficients = ctypes.cast(matrix, ctypes.c_void_p)
    draw_rgb_capture(library, directory / "rgb32-to-i420.svg", "KorBGRAToI420_C_", "32-bit RGB to I420, odd sizes",
                     "KorRGBAToI420_C_, KorBGRAToI420_C_, KorARGBToI420_C_, KorABGRToI420_C_. Letters: the pixels that a sample depends on")
    draw_rgb_capture(library, directory / "bgra-to-i420-bt709.svg", "KorBGRAToI420UsingBT709_C_", "BGRA to I420 with BT.709, odd sizes",
                     "KorBGRAToI420UsingBT709_C_ repeats the last row's luma below the picture, without an odd last column")
    draw_rgb_capture(library, directory / "bgra-to-i420-general.svg", "KorBGRAToI420General_C_", "BGRA to I420 with the caller's matrix, odd sizes",
                     "KorBGRAToI420General_C_ writes a column to the right and a row below the picture", extra=[coefficients])
    draw_rgb_capture(library, directory / "rgb24-to-i420.svg", "KorRawToI420_C_", "24-bit RGB to I420, odd sizes",
                     "KorRawToI420_C_, Kor24BGToI420_C_: the corner is computed from its neighbours; its own pixel is not used", bytes_a_pixel=3)
    draw_i444_flip(library, directory / "bgra-to-i444-bt709-flip.svg")
    draw_packed_capture(library, directory / "packed-to-i420.svg", "KorYUY2ToI420_C_", "YUY2 to I420, odd sizes",
                        "KorYUY2ToI420_C_, KorUYVYToI420_C_: no odd last column, a spare luma row", 5, 3)
    draw_packed_capture(library, directory / "yuv2-to-i420.svg", "KorYuv2ToI420_C_", "Yuv2 to I420, odd sizes",
                        "KorYuv2ToI420_C_: with an odd width every row pair starts a sample earlier than the one before", 5, 3,
                        outside="outside the rows: read in the source, written in Y",
                        notes=["The byte to the left of a row is the last byte of the row above, padding included."])
    draw_packed_capture(library, directory / "m420-to-i420.svg", "KorM420ToI420_C_", "M420 to I420, odd sizes",
                        "KorM420ToI420_C_, 5 by 3: only the one whole block is converted", 5, 3, Plane(14, 1))
    draw_renderer(library, directory / "i420-to-rgb.svg", "I420 to RGB, odd sizes",
                  "All renderers and packers of I420: whole blocks of two by two, nothing else")
    draw_angles(library, directory / "angles.svg")
    draw_rotated_capture(library, directory / "packed-rotated.svg")
    draw_flip_vertical(library, directory / "flip-vertical.svg")
    draw_blend_positions(library, directory / "blend-positions.svg")
