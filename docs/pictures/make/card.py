"""The background that all drawings share: a light card, which looks the same on light and dark pages."""
import svgwrite

INK = "#1f2328"
FAINT = "#6e7781"
LINE = "#d0d7de"
PAPER = "#ffffff"
SPARE = "#bc4c00"
FONT = "DejaVu Sans, Verdana, Helvetica, Arial, sans-serif"
MONO = "DejaVu Sans Mono, Menlo, Consolas, monospace"

# Fill and text colour of each component.
COMPONENTS = {
    "R": ("#e5484d", "#ffffff"),
    "G": ("#2f9e62", "#ffffff"),
    "B": ("#3e63dd", "#ffffff"),
    "A": ("#9aa0a8", "#ffffff"),
    "Y": ("#ffe08a", INK),
    "U": ("#7da2f0", INK),
    "V": ("#ee9bb8", INK),
}


class Card:
    def __init__(self, path, width, height, title, subtitle=""):
        self.drawing = svgwrite.Drawing(str(path), size=(width, height), viewBox=f"0 0 {width} {height}", debug=False)
        self.drawing.set_desc(title=title, desc=subtitle)
        self.drawing.add(self.drawing.rect((.5, .5), (width - 1, height - 1), rx=8, fill=PAPER, stroke=LINE))
        self._hatches = {}
        self.text(20, 30, title, size=16, weight="bold")
        if subtitle:
            self.text(20, 50, subtitle, size=12, fill=FAINT)

    def text(self, x, y, text, size=12, fill=INK, anchor="start", weight="normal", font=FONT):
        self.drawing.add(self.drawing.text(text, (x, y), fill=fill, text_anchor=anchor,
                                           style=f"font:{weight} {size}px {font}"))

    def rect(self, x, y, width, height, fill=PAPER, stroke=PAPER, stroke_width=1, rx=3, dash=None):
        extra = {"stroke_dasharray": dash} if dash else {}
        self.drawing.add(self.drawing.rect((x, y), (width, height), rx=rx, fill=fill, stroke=stroke,
                                           stroke_width=stroke_width, **extra))

    def line(self, x1, y1, x2, y2, stroke=FAINT, stroke_width=1, dash=None):
        extra = {"stroke_dasharray": dash} if dash else {}
        self.drawing.add(self.drawing.line((x1, y1), (x2, y2), stroke=stroke, stroke_width=stroke_width, **extra))

    def arrow(self, x1, y1, x2, y2, stroke=FAINT, stroke_width=1.2, size=5):
        """A straight arrow with a drawn head, because markers differ from viewer to viewer."""
        length = ((x2 - x1) ** 2 + (y2 - y1) ** 2) ** .5
        dx, dy = (x2 - x1) / length, (y2 - y1) / length
        base_x, base_y = x2 - dx * size * 1.6, y2 - dy * size * 1.6
        self.line(x1, y1, round(base_x, 1), round(base_y, 1), stroke, stroke_width)
        head = [(x2, y2), (base_x - dy * size * .7, base_y + dx * size * .7), (base_x + dy * size * .7, base_y - dx * size * .7)]
        self.drawing.add(self.drawing.polygon([(round(x, 1), round(y, 1)) for x, y in head], fill=stroke))

    def span(self, x1, x2, y, text, size=11):
        """A bracket over a run of cells."""
        self.line(x1 + 2, y, x2 - 2, y, stroke=FAINT)
        self.line(x1 + 2, y, x1 + 2, y + 4, stroke=FAINT)
        self.line(x2 - 2, y, x2 - 2, y + 4, stroke=FAINT)
        self.text((x1 + x2) / 2, y - 4, text, size=size, fill=FAINT, anchor="middle")

    def cell(self, x, y, width, height, text, fill, ink=INK, size=12, stroke=PAPER, stroke_width=1, dash=None):
        self.rect(x, y, width, height, fill=fill, stroke=stroke, stroke_width=stroke_width, dash=dash)
        if text:
            self.text(x + width / 2, y + height / 2 + size * .36, text, size=size, fill=ink, anchor="middle")

    def hatched(self, x, y, width, height, colour=LINE):
        """Bytes that are neither read nor written."""
        if colour not in self._hatches:
            pattern = self.drawing.pattern(size=(6, 6), patternUnits="userSpaceOnUse", patternTransform="rotate(45)")
            pattern.add(self.drawing.line((0, 0), (0, 6), stroke=colour, stroke_width=2))
            self.drawing.defs.add(pattern)
            self._hatches[colour] = pattern.get_paint_server()
        self.rect(x, y, width, height, fill=self._hatches[colour], stroke=LINE)

    def save(self):
        self.drawing.save(pretty=True, indent=1)
