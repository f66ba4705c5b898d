#!/usr/bin/env python3
"""Analyses the table of dither noise: figures on the terminal, pictures in a directory.

    python3 platform/noise/evidence.py                      figures only
    python3 platform/noise/evidence.py docs/pictures/noise  and the pictures of docs/noise.md

Needs numpy, and for the pictures matplotlib and Pillow (Debian: python3-numpy, python3-matplotlib, python3-pil).
The library's noise rules are implemented here a second time, so that this program does not need the library.
"""
import math
import pathlib
import re
import sys

import numpy as np

SIZE = 16384
TABLE_FILE = pathlib.Path(__file__).resolve().parent.parent / "KorTblDitherStd4.cpp"
WIDTHS = [320, 352, 640, 720, 854, 960, 1024, 1280, 1366, 1600, 1920, 2048, 2560, 3840, 4096]
SHIFT_USES = ["luma at level 2", "luma at level 1, chroma at level 2", "luma at level 0, chroma at level 1",
              "chroma at level 0, filter's luma at Off", "filter's chroma at Off"]


def read_table():
    text = TABLE_FILE.read_text()
    body = text[text.rindex("{"):text.rindex("}")]
    table = np.array([int(value) for value in re.findall(r"-?\d+", body)])
    assert table.size == SIZE
    return table


# ---- How the library uses the table ----

def shifted(table, shift):
    return (table + ((1 << shift) >> 1)) >> shift


def stride(width):
    return (width + 7) // 8 * 8


def raster(table, row_stride, width, height, start=0):
    index = start + row_stride * np.arange(height)[:, None] + np.arange(width)
    return table[index % SIZE]


def render(y, u, v, table, level, starts):
    """The I420 renderers with the BT.601 matrix: planes of samples to rows of R, G, B."""
    height, width = y.shape
    if level > 0:
        chroma_index = np.arange(height // 2)[:, None] * (width // 2) + np.arange(width // 2)
        y = np.clip(y + shifted(raster(table, stride(width), width, height, starts[0]), 3 - level), 0, 255)
        u = np.clip(u + shifted(table[(chroma_index + starts[1]) % SIZE], 4 - level), 0, 255)
        v = np.clip(v + shifted(table[(chroma_index + starts[2]) % SIZE], 4 - level), 0, 255)
    u, v = (plane.repeat(2, axis=0).repeat(2, axis=1) for plane in (u, v))
    luma = (y * 149) >> 7
    red = ((v * 204) >> 7) - 223
    green = 135 - ((u * 25 + v * 52) >> 6)
    blue = ((u * 129) >> 6) - 277
    return np.clip(np.dstack([luma + red, luma + green, luma + blue]), 0, 255)


# ---- Measures ----

def spectrum(noise):
    """Power at k / SIZE cycles per pixel, relative to white noise of the same variance."""
    noise = noise - noise.mean()
    return np.abs(np.fft.fft(noise)) ** 2 / (SIZE * noise.var())


def autocorrelation(noise):
    return np.fft.ifft(spectrum(noise)).real


def decibel(power):
    return 10 * np.log10(power)


def band(power, low, high):
    k = np.arange(SIZE) / SIZE
    return decibel(power[(k > low) & (k <= high)].mean())


def nearest_repeat(row_stride, width):
    """The smallest (rows, columns) after which the noise of a picture repeats."""
    best = None
    for rows in range(0, SIZE // 8 + 1):
        columns = (-row_stride * rows) % SIZE
        for c in (columns, columns - SIZE):
            if abs(c) < width and (rows, c) != (0, 0) and (rows > 0 or c > 0):
                if best is None or math.hypot(rows, c) < math.hypot(*best):
                    best = (rows, c)
    return best


def column_power(noise, row_stride):
    """Power of the sum over a column when the noise repeats every SIZE / row_stride rows; white noise has 1."""
    rows = SIZE // row_stride
    columns = (noise - noise.mean()).reshape(rows, row_stride).sum(axis=0)
    return columns.var() / rows / noise.var()


def blur(image, sigma):
    """Gaussian blur of rows, columns and channels."""
    reach = math.ceil(3 * sigma)
    kernel = np.exp(-np.arange(-reach, reach + 1) ** 2 / (2 * sigma ** 2))
    kernel /= kernel.sum()
    padded = np.pad(image.astype(float), ((reach, reach), (reach, reach), (0, 0)), "reflect")
    for axis in (0, 1):
        padded = np.apply_along_axis(lambda line: np.convolve(line, kernel, "valid"), axis, padded)
    return padded


def blurred_deviation(plane):
    return blur(plane[:, :, None], 2).std()


def filters_target():
    """The autocorrelation that the generator prescribes: the mean over the four eight-tap filters that leave the least
    energy below 0.15 cycles per pixel (the first eigenvectors of the stop band's energy)."""
    taps, edge, kept = 8, 0.15, 4
    distance = np.subtract.outer(np.arange(taps), np.arange(taps))
    energy = 2 * edge * np.sinc(2 * edge * distance)
    _, filters = np.linalg.eigh(energy)
    return sum(np.correlate(f, f, "full")[taps - 1:] for f in filters.T[:kept]) / kept


# ---- Figures ----

def print_figures(table):
    print(f"entries {table.size}, sum {table.sum()}, standard deviation {table.std():.4f}, "
          f"range {table.min()} to {table.max()}")

    print("\nper shift (mean and deviation in code values; power in dB relative to white noise)")
    print("shift  mean    dev.   <0.05  <0.10  <0.15  0.15-0.2  >0.20   used for")
    for shift, use in enumerate(SHIFT_USES):
        noise = shifted(table, shift)
        power = spectrum(noise)
        low = [band(power, 0, edge) for edge in (.05, .1, .15)]
        print(f"{shift:3d}   {noise.mean():7.4f} {noise.std():6.3f}" + " {:7.1f} {:6.1f} {:6.1f}".format(*low) +
              f" {band(power, .15, .2):7.1f} {band(power, .2, .5):8.1f}    {use}")

    print("\nautocorrelation")
    print("target       " + " ".join(f"{r:6.3f}" for r in filters_target()[1:]) + "      0 beyond")
    print("shift  lags 1 to 7" + 39 * " " + "4096   8192   largest at any other 8 n >= 32   8 n +- 1, 2   other >= 8")
    lags = np.arange(SIZE // 2 + 1)
    prescribed = (lags < 8) | (np.abs(lags - SIZE // 4) < 8) | (np.abs(lags - SIZE // 2) < 8)
    for shift in range(5):
        r = autocorrelation(shifted(table, shift))[:SIZE // 2 + 1]
        largest = [np.abs(r[np.isin(lags % 8, rest) & ~prescribed & (lags >= first)]).max()
                   for rest, first in (((0,), 32), ((1, 2, 6, 7), 9), ((3, 4, 5), 9))]
        print(f"{shift:3d}          " + " ".join(f"{x:6.3f}" for x in [*r[1:8], r[SIZE // 4], r[SIZE // 2]]) +
              "            {:14.4f} {:15.4f} {:12.4f}".format(*largest))
    shuffled = np.random.default_rng(1).permutation(table)
    r = np.abs(autocorrelation(shuffled)[8:SIZE // 2 + 1])
    print(f"a shuffled table, for comparison: largest at any lag {r.max():.4f}")

    print("\nresidual column power at strides that repeat the noise (white noise: 1)")
    for shift in range(5):
        noise = shifted(table, shift)
        print(f"{shift:3d}   " + "   ".join(f"{s}: {column_power(noise, s):.3f}" for s in (512, 1024, 2048, 4096)))

    print("\nresidual luma noise in two dimensions after a Gaussian blur of 2 pixels (deviation in code values)")
    white = np.random.default_rng(5).normal(0, 4, (400, 400)).round().astype(int)
    for level, shift in ((2, 0), (1, 1), (0, 2)):
        left = {width: blurred_deviation(shifted(raster(table, stride(width), 400, 400), shift))
                for width in (640, 854, 1280, 1366, 1920, 2048, 3840, 4096)}
        print(f"level {level}: white noise {blurred_deviation(shifted(white, shift)):.3f}; at width " +
              ", ".join(f"{width}: {deviation:.3f}" for width, deviation in left.items()))

    print("\nnearest repeat of luma noise, as rows down and columns across")
    for width in WIDTHS:
        rows, columns = nearest_repeat(stride(width), width)
        print(f"  width {width:4d}, stride {stride(width):4d}: {rows:4d} rows, {columns:5d} columns,"
              f" {math.hypot(rows, columns):6.1f} pixels")


# ---- Pictures ----

def draw_spectrum(table, path):
    import matplotlib.pyplot as plt
    frequency = np.arange(SIZE // 2) / SIZE
    window = np.hanning(257) / np.hanning(257).sum()
    figure, axes = plt.subplots(figsize=(8, 4.2))
    for shift in range(5):
        power = spectrum(shifted(table, shift))
        smooth = np.convolve(np.concatenate([power[-128:], power[:SIZE // 2 + 128]]), window, "valid")
        axes.plot(frequency, decibel(smooth), linewidth=1, label=f"shift {shift}: {SHIFT_USES[shift]}")
    target = filters_target()
    ideal = 1 + 2 * sum(target[k] * np.cos(2 * np.pi * k * frequency) for k in range(1, 8))
    axes.plot(frequency, decibel(ideal), "k--", linewidth=1, label="target")
    axes.axhline(0, color="grey", linewidth=1, label="white noise")
    axes.set(xlabel="cycles per pixel, along a row", ylabel="dB relative to white noise", ylim=(-32, 6), xlim=(0, .5))
    axes.legend(fontsize=7)
    figure.tight_layout()
    figure.savefig(path, dpi=90)
    plt.close(figure)


def draw_spectrum_2d(table, path):
    import matplotlib.pyplot as plt
    widths = [640, 854, 1280, 1366, 1920, 3840]
    side = 128
    window = np.outer(np.hanning(side), np.hanning(side))
    random = np.random.default_rng(2)
    figure, axes = plt.subplots(2, len(widths) + 1, figsize=(13, 4))
    for row, shift in enumerate((0, 2)):
        noise = shifted(table, shift) - shifted(table, shift).mean()
        for column, width in enumerate(widths + [None]):
            power = np.zeros((side, side))
            for start in range(0, SIZE, 128):
                if width is None:
                    tile = random.permutation(noise)[:side * side].reshape(side, side)
                else:
                    tile = raster(noise, stride(width), side, side, start)
                power += np.abs(np.fft.fft2(tile * window)) ** 2
            power = np.fft.fftshift(power) / (128 * noise.var() * (window ** 2).sum())
            image = axes[row, column].imshow(decibel(power), vmin=-25, vmax=5, extent=(-.5, .5, -.5, .5), cmap="magma")
            name = f"width {width}" if width else "shuffled"
            axes[row, column].set_title(f"{name}, shift {shift}", fontsize=8)
            axes[row, column].set_axis_off()
    figure.colorbar(image, ax=axes, shrink=.8, label="dB relative to white noise")
    figure.savefig(path, dpi=64, bbox_inches="tight")
    plt.close(figure)


def draw_histogram(table, path):
    import matplotlib.pyplot as plt
    figure, axes = plt.subplots(1, 5, figsize=(12, 2.6))
    for shift in range(5):
        noise = shifted(table, shift)
        values, counts = np.unique(noise, return_counts=True)
        axes[shift].bar(values, counts, width=.8)
        if shift == 0:
            bell = [SIZE * math.comb(64, 32 + int(e)) / 2 ** 64 for e in values]
            axes[shift].plot(values, bell, "k.", markersize=3, label="64 coins")
            axes[shift].legend(fontsize=7)
        axes[shift].set_title(f"shift {shift}: mean {noise.mean():.4f}, dev. {noise.std():.3f}", fontsize=8)
        axes[shift].tick_params(labelsize=7)
    figure.tight_layout()
    figure.savefig(path, dpi=80)
    plt.close(figure)


def draw_autocorrelation(table, path):
    import matplotlib.pyplot as plt
    figure, axes = plt.subplots(2, 1, figsize=(10, 5.2))
    lags = np.arange(1, 65)
    rows = np.arange(8, SIZE // 2 + 1, 8)
    for shift, colour in ((0, "C0"), (1, "C1"), (2, "C2")):
        r = autocorrelation(shifted(table, shift))
        axes[0].bar(lags + (shift - 1) * .27, r[1:65], width=.27, color=colour, label=f"shift {shift}")
        axes[1].plot(rows, r[rows], linewidth=.7, color=colour, label=f"shift {shift}")
    shuffled = autocorrelation(np.random.default_rng(1).permutation(table))
    axes[1].plot(rows, shuffled[rows], linewidth=.5, color="lightgrey", zorder=0, label="shuffled table")
    axes[0].set(xlabel="lag", xlim=(0, 65))
    axes[1].set(xlabel="lag 8 n: the entry below, at every width", xlim=(0, SIZE // 2), ylim=(-.3, .1))
    for a in axes:
        a.axhline(0, color="black", linewidth=.5)
        a.legend(fontsize=7)
        a.set_ylabel("autocorrelation")
    figure.tight_layout()
    figure.savefig(path, dpi=80)
    plt.close(figure)


def white_table():
    """White Gaussian noise of the same deviation."""
    return np.round(np.random.default_rng(3).normal(0, 4, SIZE)).astype(int)


def gradient(width, height, low, high):
    ramp = low + (high - low) * np.arange(width) / width
    y = np.tile(np.floor(ramp).astype(int), (height, 1))
    chroma = np.full((height // 2, width // 2), 128)
    return y, chroma, chroma.copy()


def stretch(image, centre, gain):
    return np.clip(128 + (image - centre) * gain, 0, 255).astype(np.uint8)


def save(image, path):
    from PIL import Image
    Image.fromarray(image).convert("P", palette=Image.Palette.ADAPTIVE, colors=256).save(path, optimize=True)


def draw_gradients(table, directory):
    """A ramp of eight luma codes near black: from top to bottom not dithered, then levels 0, 1 and 2; on the left with
    this table, on the right with white noise. Once from a distance (blurred as the eye does), once partly enlarged."""
    width, height, gap = 960, 128, 6
    y, u, v = gradient(width, height, 24, 32)
    far, near = [], []
    for level in range(4):
        for noise in (table, white_table()):
            rgb = render(y, u, v, noise, level, (4096, 1234, 9876))
            centre = rgb.mean(axis=(0, 1), keepdims=True)
            far.append(stretch(blur(rgb, 2)[::2, ::2], centre, 14))
            crop = rgb[:48, 400:540]
            near.append(stretch(crop, centre, 7).repeat(3, axis=0).repeat(3, axis=1))
    for pictures, name in ((far, "gradient-from-afar.png"), (near, "gradient-enlarged.png")):
        h, w = pictures[0].shape[:2]
        sheet = np.full((4 * h + 3 * gap, 2 * w + gap, 3), 255, np.uint8)
        for i, picture in enumerate(pictures):
            top, left = i // 2 * (h + gap), i % 2 * (w + gap)
            sheet[top:top + h, left:left + w] = picture
        save(sheet, directory / name)


def draw_flat(table, directory):
    """Luma noise on a flat area at several widths, full size, with strongly raised contrast; on the right, white
    noise."""
    side, gap = 240, 4
    for name, shift in (("flat-level-2.png", 0), ("flat-level-0.png", 2)):
        tiles = []
        for width in (640, 1280, 1920, 4096, None):
            if width is None:
                noise = np.random.default_rng(4).normal(0, 4, (side, side)).round().astype(int)
            else:
                noise = raster(table, stride(width), side, side, 8192)
            tiles.append(stretch(shifted(noise, shift), shifted(table, shift).mean(), 8 << shift))
            tiles.append(np.full((side, gap), 255, np.uint8))
        save(np.hstack(tiles[:-1]), directory / name)


def main():
    table = read_table()
    print_figures(table)
    if len(sys.argv) > 1:
        import matplotlib
        matplotlib.use("Agg")
        directory = pathlib.Path(sys.argv[1])
        directory.mkdir(parents=True, exist_ok=True)
        draw_spectrum(table, directory / "spectrum.png")
        draw_spectrum_2d(table, directory / "spectrum-2d.png")
        draw_histogram(table, directory / "histogram.png")
        draw_autocorrelation(table, directory / "autocorrelation.png")
        draw_gradients(table, directory)
        draw_flat(table, directory)


if __name__ == "__main__":
    main()
