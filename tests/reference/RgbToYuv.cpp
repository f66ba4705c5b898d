/* RGB to YUV: packed 32-bit and 24-bit pixels to I420 and I444. */
#include <cstring>
#include <initializer_list>

#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace reference {

using namespace detail;

namespace {

struct Rgb {
    Number red;
    Number green;
    Number blue;
};

struct Yuv {
    Number y;
    Number u;
    Number v;
};

// The number of bytes in a pixel, and the positions of the channels. Alpha is never read.
struct PixelFormat {
    Number size;
    Number red;
    Number green;
    Number blue;
};

constexpr PixelFormat kRgba = {4, 0, 1, 2};
constexpr PixelFormat kBgra = {4, 2, 1, 0};
constexpr PixelFormat kArgb = {4, 1, 2, 3};
constexpr PixelFormat kAbgr = {4, 3, 2, 1};
constexpr PixelFormat kRgb24 = {3, 0, 1, 2};
constexpr PixelFormat kBgr24 = {3, 2, 1, 0};

Rgb PixelInMemory(const KorUint8* x, KorSizeT pitchX, PixelFormat format, Number column, Number row) {
    const Number first = column * format.size;
    return {At(x, pitchX, first + format.red, row), At(x, pitchX, first + format.green, row),
            At(x, pitchX, first + format.blue, row)};
}

Rgb AverageColour(Rgb a, Rgb b) {
    return {Average(a.red, b.red), Average(a.green, b.green), Average(a.blue, b.blue)};
}

// An image in reading order: with flip set, row 0 is the last row in memory.
struct Picture {
    const KorUint8* x;
    KorSizeT pitchX;
    PixelFormat format;
    KorSizeT width;
    KorSizeT height;
    KorBool flip;

    Rgb Pixel(Number column, Number row) const {
        return PixelInMemory(x, pitchX, format, column, SourceRow(row, height, flip));
    }

    // The colour of a 2 by 2 block. The vertical pair of each column is averaged first, then the two columns. Pixels
    // outside the image take no part: an odd last column averages its vertical pair, an odd last row its horizontal
    // pair, and the corner of an image odd in both directions is a single pixel.
    Rgb Block(Number blockColumn, Number blockRow) const {
        const Number left = 2 * blockColumn;
        const Rgb leftPair = VerticalPair(left, blockRow);
        return left + 1 < Signed(width) ? AverageColour(leftPair, VerticalPair(left + 1, blockRow)) : leftPair;
    }

    Rgb VerticalPair(Number column, Number blockRow) const {
        const Number top = 2 * blockRow;
        const Rgb upper = Pixel(column, top);
        return top + 1 < Signed(height) ? AverageColour(upper, Pixel(column, top + 1)) : upper;
    }
};

// BT.601, limited range, in units of 1/128.
Yuv Bt601(Rgb p) {
    return {FloorDivide(33 * p.red + 64 * p.green + 13 * p.blue, 128) + 16,
            FloorDivide(-19 * p.red - 37 * p.green + 56 * p.blue, 128) + 128,
            FloorDivide(56 * p.red - 47 * p.green - 9 * p.blue, 128) + 128};
}

// BT.709, limited range, in units of 1/256. Deliberate: the weights of U sum to -1, so white has a U of 127.
Yuv Bt709(Rgb p) {
    return {FloorDivide(47 * p.red + 157 * p.green + 16 * p.blue, 256) + 16,
            FloorDivide(-26 * p.red - 87 * p.green + 112 * p.blue, 256) + 128,
            FloorDivide(112 * p.red - 102 * p.green - 10 * p.blue, 256) + 128};
}

// Every pixel gives its luma; every block, whole or cut off at the edge, gives U and V of its average colour.
void ToI420(PlanesOut to, const Picture& from, Yuv (*matrix)(Rgb)) {
    for (Number row = 0; row < Signed(from.height); ++row) {
        for (Number column = 0; column < Signed(from.width); ++column) {
            At(to.y, to.pitchY, column, row) = LowByte(matrix(from.Pixel(column, row)).y);
        }
    }
    for (Number row = 0; 2 * row < Signed(from.height); ++row) {
        for (Number column = 0; 2 * column < Signed(from.width); ++column) {
            const Yuv block = matrix(from.Block(column, row));
            At(to.u, to.pitchU, column, row) = LowByte(block.u);
            At(to.v, to.pitchV, column, row) = LowByte(block.v);
        }
    }
}

void StoreI444(PlanesOut to, Number column, Number row, Yuv pixel) {
    At(to.y, to.pitchY, column, row) = LowByte(pixel.y);
    At(to.u, to.pitchU, column, row) = LowByte(pixel.u);
    At(to.v, to.pitchV, column, row) = LowByte(pixel.v);
}

}  // namespace

void KorRGBAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kRgba, width, height, flip}, Bt601);
}

void KorBGRAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra, width, height, flip}, Bt601);
}

void KorARGBToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kArgb, width, height, flip}, Bt601);
}

void KorABGRToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kAbgr, width, height, flip}, Bt601);
}

void KorBGRAToI444_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            const Rgb pixel = PixelInMemory(x, pitchX, kBgra, column, SourceRow(row, height, flip));
            StoreI444({y, pitchY, u, pitchU, v, pitchV}, column, row, Bt601(pixel));
        }
    }
}

void KorBGRAToI420UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                KorBool flip) {
    const Picture from = {x, pitchX, kBgra, width, height, flip};
    ToI420({y, pitchY, u, pitchU, v, pitchV}, from, Bt709);

    // Deliberate: the luma of an odd last row is written again to the row below the image, except for the corner of an
    // image that is odd in both directions.
    if (height % 2 == 1) {
        for (Number column = 0; column < Signed(width - width % 2); ++column) {
            At(y, pitchY, column, Signed(height)) = LowByte(Bt709(from.Pixel(column, Signed(height) - 1)).y);
        }
    }
}

void KorBGRAToI444UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                KorBool flip) {
    for (Number row = 0; row < Signed(height); ++row) {
        // Deliberate: flip starts at the last row and walks down from there, past the end of the image.
        const Number sourceRow = row + (flip != 0 ? Signed(height) - 1 : 0);
        for (Number column = 0; column < Signed(width); ++column) {
            const Rgb pixel = PixelInMemory(x, pitchX, kBgra, column, sourceRow);
            StoreI444({y, pitchY, u, pitchU, v, pitchV}, column, row, Bt709(pixel));
        }
    }
}

namespace {

// The caller's matrix: rows Y, U, V of weights for red, green, blue, in units of 1/256.
class CallerMatrix {
  public:
    explicit CallerMatrix(const KorInt (*coeffs)[3])
        : bytes_(static_cast<const unsigned char*>(static_cast<const void*>(coeffs))) {}

    KorUint8 Y(Rgb p) const { return Sample(0, p, 16); }
    KorUint8 U(Rgb p) const { return Sample(1, p, 128); }
    KorUint8 V(Rgb p) const { return Sample(2, p, 128); }

  private:
    // The sum wraps modulo 2^32, and the result keeps its low byte: bits 8 to 15 of the sum, plus the offset.
    KorUint8 Sample(int row, Rgb p, KorUint offset) const {
        const KorUint sum = Weight(row, 0) * static_cast<KorUint>(p.red) +
                            Weight(row, 1) * static_cast<KorUint>(p.green) +
                            Weight(row, 2) * static_cast<KorUint>(p.blue);
        return static_cast<KorUint8>((sum / 256 + offset) % 256);
    }

    // Read again, byte by byte, for every sample: if a destination plane lies over the matrix, a sample just written is
    // part of the weights of the next.
    KorUint Weight(int row, int column) const {
        KorInt weight = 0;
        std::memcpy(&weight, bytes_ + (3 * row + column) * static_cast<int>(sizeof(weight)), sizeof(weight));
        return static_cast<KorUint>(weight);
    }

    const unsigned char* bytes_;
};

}  // namespace

// Each sample is computed and written before the next is computed, in this order.
void KorBGRAToI420General_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                             const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip,
                             const KorInt (*coeffs)[3]) {
    const Picture from = {x, pitchX, kBgra, width, height, flip};
    const CallerMatrix matrix(coeffs);
    const Number widthC = Signed(width / 2);
    const Number heightC = Signed(height / 2);
    const Number lastColumn = 2 * widthC;
    const Number lastRow = 2 * heightC;

    const auto storeChroma = [&](Number column, Number row) {
        const Rgb block = from.Block(column, row);
        At(u, pitchU, column, row) = matrix.U(block);
        At(v, pitchV, column, row) = matrix.V(block);
    };
    const auto greenBlueSwapped = [&](Number column, Number row) {
        const Rgb pixel = from.Pixel(column, row);
        return Rgb{pixel.red, pixel.blue, pixel.green};
    };

    // Whole blocks.
    for (Number row = 0; row < heightC; ++row) {
        for (Number column = 0; column < widthC; ++column) {
            At(y, pitchY, 2 * column, 2 * row) = matrix.Y(from.Pixel(2 * column, 2 * row));
            At(y, pitchY, 2 * column + 1, 2 * row) = matrix.Y(from.Pixel(2 * column + 1, 2 * row));
            At(y, pitchY, 2 * column, 2 * row + 1) = matrix.Y(from.Pixel(2 * column, 2 * row + 1));
            At(y, pitchY, 2 * column + 1, 2 * row + 1) = matrix.Y(from.Pixel(2 * column + 1, 2 * row + 1));
            storeChroma(column, row);
        }
    }

    // Deliberate: the luma of an odd last column applies its weights in the order red, blue, green, and is written a
    // second time to the column right of the image.
    if (width % 2 == 1) {
        for (Number row = 0; row < heightC; ++row) {
            for (const Number lumaRow : {2 * row, 2 * row + 1}) {
                const KorUint8 luma = matrix.Y(greenBlueSwapped(lastColumn, lumaRow));
                At(y, pitchY, lastColumn, lumaRow) = luma;
                At(y, pitchY, lastColumn + 1, lumaRow) = luma;
            }
            storeChroma(widthC, row);
        }
    }

    // Deliberate: the same for an odd last row, written a second time to the row below the image.
    if (height % 2 == 1) {
        for (Number column = 0; column < widthC; ++column) {
            for (const Number lumaColumn : {2 * column, 2 * column + 1}) {
                const KorUint8 luma = matrix.Y(greenBlueSwapped(lumaColumn, lastRow));
                At(y, pitchY, lumaColumn, lastRow) = luma;
                At(y, pitchY, lumaColumn, lastRow + 1) = luma;
            }
            storeChroma(column, heightC);
        }
    }

    // Deliberate: the corner has the normal order again, and its luma fills a block of two by two.
    if (width % 2 == 1 && height % 2 == 1) {
        const KorUint8 luma = matrix.Y(from.Pixel(lastColumn, lastRow));
        At(y, pitchY, lastColumn, lastRow) = luma;
        At(y, pitchY, lastColumn + 1, lastRow) = luma;
        At(y, pitchY, lastColumn, lastRow + 1) = luma;
        At(y, pitchY, lastColumn + 1, lastRow + 1) = luma;
        storeChroma(widthC, heightC);
    }
}

namespace {

// BT.601 in units of 1/256 for the 24-bit formats, with U and V still centred on 0.
Yuv CentredBt601(Rgb p) {
    return {FloorDivide(66 * p.red + 129 * p.green + 25 * p.blue, 256) + 16,
            FloorDivide(-38 * p.red - 74 * p.green + 112 * p.blue, 256),
            FloorDivide(112 * p.red - 94 * p.green - 18 * p.blue, 256)};
}

// Unlike in the 32-bit formats, every pixel's chroma is converted first and the results are averaged.
class Image24 {
  public:
    Image24(const KorUint8* x, KorSizeT pitch, PixelFormat format, KorSizeT width, KorSizeT height, KorBool flip)
        : x_(x), pitch_(pitch), format_(format), width_(Signed(width)), height_(Signed(height)), flip_(flip) {}

    Number Y(Number column, Number row) const { return Convert(column, row).y; }
    Number U(Number column, Number row) const { return Chroma(column, row, &Yuv::u); }
    Number V(Number column, Number row) const { return Chroma(column, row, &Yuv::v); }

  private:
    Yuv Convert(Number column, Number row) const {
        // Reading order. A flipped walk steps by the negated low half of the pitch, which limits pitches to less than
        // 2^31.
        const Number pitch = Signed(pitch_);
        const Number step = flip_ != 0 ? static_cast<KorInt>(-static_cast<KorUint>(pitch_)) : pitch;
        const Number start = flip_ != 0 ? (height_ - 1) * pitch : 0;
        return CentredBt601(PixelInMemory(x_ + static_cast<KorDistanceT>(start + row * step), 0, format_, column, 0));
    }

    // One chroma sample of the block at a block column and block row.
    Number Chroma(Number column, Number row, Number Yuv::*part) const {
        const auto n = [&](Number right, Number below) { return Convert(2 * column + right, 2 * row + below).*part; };
        const bool hasRight = 2 * column + 1 < width_;
        const bool hasBelow = 2 * row + 1 < height_;
        if (hasRight && hasBelow) {
            return FloorDivide(n(0, 0) + n(1, 0) + n(0, 1) + n(1, 1) + 514, 4);
        }
        if (hasBelow) {
            return FloorDivide(n(0, 0) + n(0, 1) + 257, 2);
        }
        if (hasRight) {
            return FloorDivide(n(0, 0) + n(1, 0) + 257, 2);
        }

        // Deliberate: the corner of an image odd in both directions is not converted; its chroma is the average of its
        // neighbours'. If one of them does not exist, it is that of the other; a single pixel is converted.
        const bool hasUpper = row > 0;
        const bool hasLeft = column > 0;
        if (hasUpper && hasLeft) {
            return Average(Chroma(column, row - 1, part), Chroma(column - 1, row, part));
        }
        if (hasUpper) {
            return Chroma(column, row - 1, part);
        }
        if (hasLeft) {
            return Chroma(column - 1, row, part);
        }
        return n(0, 0) + 128;
    }

    const KorUint8* x_;
    KorSizeT pitch_;
    PixelFormat format_;
    Number width_;
    Number height_;
    KorBool flip_;
};

void Image24ToI420(PlanesOut to, const Image24& from, Number width, Number height) {
    const Number evenWidth = width - width % 2;
    const Number evenHeight = height - height % 2;

    for (Number row = 0; row < evenHeight; ++row) {
        for (Number column = 0; column < evenWidth; ++column) {
            At(to.y, to.pitchY, column, row) = LowByte(from.Y(column, row));
        }
    }

    // Deliberate: the luma of an odd last column is written again one column to the right.
    if (width % 2 == 1) {
        for (Number row = 0; row < evenHeight; ++row) {
            At(to.y, to.pitchY, width - 1, row) = LowByte(from.Y(width - 1, row));
            At(to.y, to.pitchY, width, row) = LowByte(from.Y(width - 1, row));
        }
    }

    // Deliberate: the luma of an odd last row is written again one row down.
    if (height % 2 == 1) {
        for (Number column = 0; column < evenWidth; ++column) {
            At(to.y, to.pitchY, column, height - 1) = LowByte(from.Y(column, height - 1));
            At(to.y, to.pitchY, column, height) = LowByte(from.Y(column, height - 1));
        }
    }

    // Deliberate: the corner repeats the luma above it and fills no spare places. It is converted only if there is no
    // row above.
    if (width % 2 == 1 && height % 2 == 1) {
        const Number rowOfCorner = height > 1 ? height - 2 : 0;
        At(to.y, to.pitchY, width - 1, height - 1) = LowByte(from.Y(width - 1, rowOfCorner));
    }

    for (Number row = 0; 2 * row < height; ++row) {
        for (Number column = 0; 2 * column < width; ++column) {
            At(to.u, to.pitchU, column, row) = LowByte(from.U(column, row));
            At(to.v, to.pitchV, column, row) = LowByte(from.V(column, row));
        }
    }
}

}  // namespace

void KorRawToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                     const KorUint8* rgb, KorSizeT pitchRgb, KorSizeT width, KorSizeT height, KorBool flip) {
    Image24ToI420({y, pitchY, u, pitchU, v, pitchV}, Image24(rgb, pitchRgb, kRgb24, width, height, flip), Signed(width),
                  Signed(height));
}

void Kor24BGToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* bgr, KorSizeT pitchBgr, KorSizeT width, KorSizeT height, KorBool flip) {
    Image24ToI420({y, pitchY, u, pitchU, v, pitchV}, Image24(bgr, pitchBgr, kBgr24, width, height, flip), Signed(width),
                  Signed(height));
}

}  // namespace reference
