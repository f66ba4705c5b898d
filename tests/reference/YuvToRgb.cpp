/* YUV to RGB: I420 and I444 to packed 32-bit and 24-bit pixels, with or without noise. */
#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace reference {

using namespace detail;

namespace {

struct Rgb {
    KorUint8 red;
    KorUint8 green;
    KorUint8 blue;
};

// The number of bytes in a pixel, and the positions of the channels.
struct PixelFormat {
    Number size;
    Number red;
    Number green;
    Number blue;
    Number alpha;
};

constexpr Number kNone = -1;

constexpr PixelFormat kRgba = {4, 0, 1, 2, 3};
constexpr PixelFormat kBgra = {4, 2, 1, 0, 3};
constexpr PixelFormat kArgb = {4, 1, 2, 3, 0};
constexpr PixelFormat kAbgr = {4, 3, 2, 1, 0};
constexpr PixelFormat kBgr24 = {3, 2, 1, 0, kNone};

// The destination.
struct Screen {
    KorUint8* x;
    KorSizeT pitchX;
    PixelFormat format;

    void Store(Number column, Number row, Rgb pixel) const {
        const Number first = column * format.size;
        At(x, pitchX, first + format.red, row) = pixel.red;
        At(x, pitchX, first + format.green, row) = pixel.green;
        At(x, pitchX, first + format.blue, row) = pixel.blue;
        if (format.alpha != kNone) {
            At(x, pitchX, first + format.alpha, row) = 255;
        }
    }
};

// BT.601, limited range. No dividend is negative. Deliberate: white comes out as 254.
Rgb Bt601(Number y, Number u, Number v) {
    const Number yY = y * 149 / 128;
    const Number rR = v * 204 / 128 - 223;
    const Number gG = 135 - (u * 25 + v * 52) / 64;
    const Number bB = u * 129 / 64 - 277;
    return {Clamp(yY + rR), Clamp(yY + gG), Clamp(yY + bB)};
}

// BT.709, limited range. Deliberate: in greys, green is one higher than red and blue.
Rgb Bt709(Number y, Number u, Number v) {
    const Number yY = y * 149 / 128;
    const Number rR = v * 229 / 128 - 248;
    const Number gG = 78 - (u * 14 + v * 34) / 64;
    const Number bB = u * 135 / 64 - 289;
    return {Clamp(yY + rR), Clamp(yY + gG), Clamp(yY + bB)};
}

// A number wrapped modulo 2^32 to a signed 32-bit integer.
Number Wrap32(Number value) {
    const Number twoTo32 = Number{1} << 32;
    const Number low = value - twoTo32 * FloorDivide(value, twoTo32);
    return low < twoTo32 / 2 ? low : low - twoTo32;
}

// The caller's matrix, in units of 1/256.
struct CallerMatrix {
    const KorInt (*coeffs)[3];

    Rgb operator()(Number y, Number u, Number v) const {
        // Deliberate: all three channels use the luma multiplier of red, and the product is not rounded.
        const Number yY = FloorDivide(Wrap32(y * coeffs[0][0]), 256);
        return {Clamp(yY + ChannelTerm(coeffs[0], u, v)), Clamp(yY + ChannelTerm(coeffs[1], u, v)),
                Clamp(yY + ChannelTerm(coeffs[2], u, v))};
    }

  private:
    // Deliberate: the luma offset of each channel uses the channel's own row, and this term is rounded.
    static Number ChannelTerm(const KorInt (&row)[3], Number u, Number v) {
        return FloorDivide(Wrap32((u - 128) * row[1] + (v - 128) * row[2] - Number{16} * row[0] + 128), 256);
    }
};

// Renders the pixels of whole 2 by 2 blocks. Deliberate: an odd last column or row stays as it was. Luma noise is a
// raster as wide as the image rounded up to a multiple of eight; chroma noise runs on from block to block and from one
// row of blocks to the next.
template <typename Matrix>
void RenderI420(PlanesIn from, const Screen& to, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel level,
                Matrix matrix) {
    const NoiseStart start = DrawNoiseStart(level, kAnyStart);
    const KorSizeT widthC = width / 2;
    const KorSizeT heightC = height / 2;
    for (KorSizeT row = 0; row < 2 * heightC; ++row) {
        for (KorSizeT column = 0; column < 2 * widthC; ++column) {
            const Number c = Signed(column);
            const Number r = Signed(row);
            const KorSizeT positionY = row * RoundUpToEight(width) + column;
            const KorSizeT positionC = (row / 2) * widthC + column / 2;
            const KorUint8 y = Luma(At(from.y, from.pitchY, c, r), start.y + positionY, level);
            const KorUint8 u = Chroma(At(from.u, from.pitchU, c / 2, r / 2), start.u + positionC, level);
            const KorUint8 v = Chroma(At(from.v, from.pitchV, c / 2, r / 2), start.v + positionC, level);
            to.Store(c, r, matrix(y, u, v));
        }
    }
}

// Renders every pixel. The noise of all three planes is a raster of the same width.
template <typename Matrix>
void RenderI444(PlanesIn from, const Screen& to, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel level,
                Matrix matrix) {
    const NoiseStart start = DrawNoiseStart(level, kAnyStart);
    for (KorSizeT row = 0; row < height; ++row) {
        for (KorSizeT column = 0; column < width; ++column) {
            const Number c = Signed(column);
            const Number r = Signed(row);
            const KorSizeT position = row * RoundUpToEight(width) + column;
            const KorUint8 y = Luma(At(from.y, from.pitchY, c, r), start.y + position, level);
            const KorUint8 u = Chroma(At(from.u, from.pitchU, c, r), start.u + position, level);
            const KorUint8 v = Chroma(At(from.v, from.pitchV, c, r), start.v + position, level);
            to.Store(c, r, matrix(y, u, v));
        }
    }
}

}  // namespace

void KorI420ToRGBA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kRgba}, width, height, ditherLevel, Bt601);
}

void KorI420ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra}, width, height, ditherLevel, Bt601);
}

void KorI420ToARGB_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kArgb}, width, height, ditherLevel, Bt601);
}

void KorI420ToABGR_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kAbgr}, width, height, ditherLevel, Bt601);
}

void KorI444ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI444({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra}, width, height, ditherLevel, Bt601);
}

void KorI444ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width,
                                KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    RenderI444({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra}, width, height, ditherLevel, Bt709);
}

void KorI420ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width,
                                KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra}, width, height, ditherLevel, Bt709);
}

void KorI420ToBGRAGeneral_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                             KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                             const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel) {
    const CallerMatrix matrix = {coeffs};
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgra}, width, height, ditherLevel, matrix);
}

void KorI420To24BG_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    RenderI420({y, pitchY, u, pitchU, v, pitchV}, {x, pitchX, kBgr24}, width, height, ditherLevel, Bt601);
}

}  // namespace reference
