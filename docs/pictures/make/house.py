"""The path of a frame through the library: from function to function, and inside one of them."""
import pathlib

from card import FAINT, INK, MONO, Card

TREE = pathlib.Path(__file__).resolve().parents[3]
BLUE, GREEN, SAND, GREY = "#ddf4ff", "#dafbe1", "#fff8c5", "#f6f8fa"


def box(card, x, y, width, height, title, lines, fill):
    card.rect(x, y, width, height, fill=fill, stroke="#afb8c1", rx=6)
    card.text(x + width / 2, y + 21, title, size=12.5, weight="bold", anchor="middle")
    for number, line in enumerate(lines):
        card.text(x + width / 2, y + 39 + 15 * number, line, size=10.5, fill="#424a53", anchor="middle")


def draw_frames(card, top):
    """A camera frame on its path to the screen."""
    card.text(20, top - 12, "A frame from camera to screen", size=12, weight="bold", fill=FAINT)
    stages = [("camera", ["UYVY, bottom-up", "and sideways"]), ("I420", ["upright", ""]),
              ("I420", ["with an overlay", ""]), ("screen", ["BGRA, dithered", ""])]
    calls = [("KorUYVYToI420", "WithRotation_C_"), ("KorI420", "AlphaBlend_C_"), ("KorI420", "ToBGRA_C_")]
    x, width, gap = 20, 122, 124
    for number, (name, lines) in enumerate(stages):
        box(card, x, top, width, 66, name, lines, GREY)
        if number < len(calls):
            card.arrow(x + width + 6, top + 33, x + width + gap - 6, top + 33, stroke=INK)
            card.text(x + width + gap / 2, top + 24, calls[number][0], size=10.5, anchor="middle", font=MONO)
            card.text(x + width + gap / 2, top + 48, calls[number][1], size=10.5, anchor="middle", font=MONO)
        x += width + gap


def draw_inside(card, top):
    """One call, from the caller's planes to the kernels."""
    card.text(20, top - 12, "Inside one function: Kor/Video/Common/C/KorYuv420_C_.cpp", size=12, weight="bold", fill=FAINT)
    columns = [("header", ["signature and", "contract, valid C", "", ""], BLUE),
               ("exported function", ["settles the sizes", "that write nothing,", "names layout", "and matrix"], BLUE),
               ("driver", ["walks rows, row pairs", "or tiles; resolves", "pitches, spells out", "odd edges"], GREEN),
               ("kernel", ["one counted loop over", "a short run; no pitch,", "no branch on data", ""], SAND)]
    x, width, gap = 20, 170, 60
    for number, (name, lines, fill) in enumerate(columns):
        box(card, x, top, width, 108, name, lines, fill)
        if number + 1 < len(columns):
            card.arrow(x + width + 6, top + 54, x + width + gap - 6, top + 54, stroke=INK)
        x += width + gap
    y = top + 108
    card.arrow(335, y + 34, 335, y + 6)
    box(card, 250, y + 36, 170, 62, "layouts, matrices", ["constexpr data, each", "with static_asserts"], GREY)
    card.arrow(565, y + 34, 565, y + 6)
    box(card, 480, y + 36, 170, 62, "services", ["random bytes, noise table;", "platform/ or the product"], GREY)
    box(card, 20, y + 36, 170, 62, "the caller's memory", ["planes: pointer, pitch;", "nothing else is touched"], GREY)
    card.arrow(105, y + 34, 105, y + 6)
    card.text(795, y + 58, "short runs of samples,", size=10.5, fill=FAINT, anchor="middle")
    card.text(795, y + 74, "on the stack between stages", size=10.5, fill=FAINT, anchor="middle")


# What surrounds the library: directory, name, purpose. Only directories that exist are drawn.
AROUND = [
    ("tests", "tests", ["reference, properties,", "unit tests, consumers"]),
    ("conformance", "conformance", ["checks any variant,", "byte for byte"]),
    ("fuzz", "fuzz", ["sizes and bytes", "nobody thought of"]),
    ("tools/korframe", "korframe", ["the command-line", "tool"]),
    ("bench", "bench", ["speed relative to", "memory copies"]),
    ("examples", "examples", ["small programs", "to copy from"]),
]


def draw_around(card, top):
    card.text(20, top - 12, "Around the library, which depends on none of it", size=12, weight="bold", fill=FAINT)
    present = [entry for entry in AROUND if (TREE / entry[0]).is_dir()]
    gap = 16
    width = (860 - gap * (len(present) - 1)) / len(present)
    for number, (_, name, lines) in enumerate(present):
        box(card, round(20 + number * (width + gap), 1), top, round(width, 1), 66, name, lines, GREY)


def draw(path):
    card = Card(path, 900, 532, "The path of a frame through the library")
    draw_frames(card, 74)
    draw_inside(card, 190)
    draw_around(card, 446)
    card.save()
