"""A comparison of the dither levels: one gradient, rendered by korframe without noise and at each level."""
import subprocess
import tempfile
from pathlib import Path

import numpy as np
from PIL import Image, ImageDraw, ImageFont

WIDTH, HEIGHT = 400, 88
LEVELS = [("off", "Off"), ("0", "level 0"), ("1", "level 1"), ("2", "level 2")]
GAIN, ENLARGED, COLUMNS = 6, 4, 100
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


def gradient():
    """An I420 evening sky, dark blue to dim orange, in few steps of luma and chroma."""
    across = np.arange(WIDTH) / WIDTH
    y = np.tile(np.floor(40 + 14 * across), (HEIGHT, 1))
    half = np.arange(WIDTH // 2) / (WIDTH // 2)
    u = np.tile(np.floor(142 - 24 * half), (HEIGHT // 2, 1))
    v = np.tile(np.floor(122 + 22 * half), (HEIGHT // 2, 1))
    return b"".join(plane.astype(np.uint8).tobytes() for plane in (y, u, v))


def render(korframe, level):
    with tempfile.TemporaryDirectory() as directory:
        raw, png = Path(directory, "gradient.i420"), Path(directory, "gradient.png")
        raw.write_bytes(gradient())
        subprocess.run([korframe, "convert", "--from", "i420", "--size", f"{WIDTH}x{HEIGHT}", "--dither", level,
                        *([] if level == "off" else ["--seed", "3"]), raw, png], check=True)
        return np.asarray(Image.open(png).convert("RGB"))


def draw(korframe, path):
    title, label = ImageFont.truetype(FONT, 15), ImageFont.truetype(FONT, 13)
    left, top, gap = 76, 64, 14
    crop_height = HEIGHT // ENLARGED
    width = left + WIDTH + gap + COLUMNS * ENLARGED + 20
    card = Image.new("RGB", (width, top + len(LEVELS) * (HEIGHT + gap) + 8), "white")
    pen = ImageDraw.Draw(card)
    pen.text((20, 14), "One gradient, rendered to BGRA without and with dither", fill="#1f2328", font=title)
    pen.text((left, 42), "at normal size", fill="#6e7781", font=label)
    pen.text((left + WIDTH + gap, 42), f"part of it, {ENLARGED} times the size, {GAIN} times the contrast", fill="#6e7781", font=label)
    first = WIDTH // 2 - COLUMNS // 2
    centre = None
    for number, (level, name) in enumerate(LEVELS):
        y = top + number * (HEIGHT + gap)
        picture = render(korframe, level)
        part = picture[:crop_height, first:first + COLUMNS].astype(float)
        centre = part.mean(axis=(0, 1)) if centre is None else centre
        part = np.clip(110 + (part - centre) * GAIN, 0, 255).astype(np.uint8)
        part = part.repeat(ENLARGED, axis=0).repeat(ENLARGED, axis=1)
        pen.text((20, y + HEIGHT // 2 - 8), name, fill="#1f2328", font=label)
        card.paste(Image.fromarray(picture), (left, y))
        card.paste(Image.fromarray(part), (left + WIDTH + gap, y))
    card.save(path, optimize=True)
