/* Packed and semi-planar YUV: YUY2, UYVY, Yuv2 and M420 to I420, I420 to YUY2, UYVY and Yuv2, and rotation. */
#include <initializer_list>

#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace reference {

using namespace detail;

namespace {

// The bytes of a group of four. A group is two adjacent pixels that share their chroma.
struct GroupFormat {
    Number left;
    Number right;
    Number u;
    Number v;
};

constexpr GroupFormat kYuy2 = {0, 2, 1, 3};
constexpr GroupFormat kUyvy = {1, 3, 0, 2};

void ToI420(PlanesOut to, const KorUint8* x, KorSizeT pitchX, GroupFormat format, KorSizeT width, KorSizeT height,
            KorBool flip) {
    const auto packed = [&](Number group, Number byte, Number row) -> Number {
        return At(x, pitchX, 4 * group + byte, SourceRow(row, height, flip));
    };
    const Number widthC = Signed(width / 2);
    const Number lumaRows = Signed(height);
    const Number chromaRows = Signed((height + 1) / 2);

    for (Number row = 0; row < lumaRows; ++row) {
        for (Number group = 0; group < widthC; ++group) {
            At(to.y, to.pitchY, 2 * group, row) = LowByte(packed(group, format.left, row));
            At(to.y, to.pitchY, 2 * group + 1, row) = LowByte(packed(group, format.right, row));
        }
    }

    // Deliberate: the luma of an odd last row is written again to the row below the image.
    if (height % 2 == 1) {
        for (Number group = 0; group < widthC; ++group) {
            At(to.y, to.pitchY, 2 * group, lumaRows) = LowByte(packed(group, format.left, lumaRows - 1));
            At(to.y, to.pitchY, 2 * group + 1, lumaRows) = LowByte(packed(group, format.right, lumaRows - 1));
        }
    }

    for (Number row = 0; row < chromaRows; ++row) {
        // A last row without a partner keeps its chroma.
        const Number upper = 2 * row;
        const Number lower = upper + 1 < lumaRows ? upper + 1 : upper;
        for (Number group = 0; group < widthC; ++group) {
            At(to.u, to.pitchU, group, row) =
                LowByte(Average(packed(group, format.u, upper), packed(group, format.u, lower)));
            At(to.v, to.pitchV, group, row) =
                LowByte(Average(packed(group, format.v, upper), packed(group, format.v, lower)));
        }
    }
}

// Deliberate: an odd last column or row is not packed.
void FromI420(PlanesIn from, KorUint8* x, KorSizeT pitchX, GroupFormat format, KorSizeT width, KorSizeT height,
              KorVideoFrameDitherLevel level) {
    const NoiseStart start = DrawNoiseStart(level, kAlignedStart);
    if (width < 2 || height < 2) {
        return;
    }
    const KorSizeT widthC = width / 2;
    for (KorSizeT row = 0; row < height - height % 2; ++row) {
        for (KorSizeT group = 0; group < widthC; ++group) {
            const Number g = Signed(group);
            const Number r = Signed(row);
            const KorSizeT positionY = row * RoundUpToEight(width) + 2 * group;
            const KorSizeT positionC = (row / 2) * RoundUpToEight(widthC) + group;
            At(x, pitchX, 4 * g + format.left, r) = Luma(At(from.y, from.pitchY, 2 * g, r), start.y + positionY, level);
            At(x, pitchX, 4 * g + format.right, r) =
                Luma(At(from.y, from.pitchY, 2 * g + 1, r), start.y + positionY + 1, level);
            At(x, pitchX, 4 * g + format.u, r) = Chroma(At(from.u, from.pitchU, g, r / 2), start.u + positionC, level);
            At(x, pitchX, 4 * g + format.v, r) = Chroma(At(from.v, from.pitchV, g, r / 2), start.v + positionC, level);
        }
    }
}

}  // namespace

void KorYUY2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kYuy2, width, height, flip);
}

void KorUYVYToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    ToI420({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kUyvy, width, height, flip);
}

void KorI420ToYUY2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    FromI420({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kYuy2, width, height, ditherLevel);
}

void KorI420ToUYVY_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel) {
    FromI420({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kUyvy, width, height, ditherLevel);
}

namespace {

Number SignedByte(Number byte) {
    return byte < 128 ? byte : byte - 256;
}

// Full-range luma to 16..235, and signed chroma to -113..112.
Number LimitedLuma(Number byte) {
    return FloorDivide(byte * 220, 256) + 16;
}
Number ScaledChroma(Number byte) {
    return FloorDivide(SignedByte(byte) * 113, 128);
}

// Unsigned chroma to the low byte of signed chroma. Deliberate: it wraps instead of clamping.
KorUint8 FullRangeChroma(Number sample) {
    return LowByte(FloorDivide(sample * 145 + 14208, 128));
}

}  // namespace

// Deliberate: at odd widths, luma drifts by one byte and the packed source by two bytes to the left with every row
// pair. Offsets count from the first byte of the plane, so that a drift may leave its row.
void KorYuv2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* yuv2, KorSizeT pitchYuv2, KorSizeT width, KorSizeT height, KorBool flip) {
    const Number drift = Signed(width % 2);
    const auto packed = [&](Number group, Number byte, Number row) -> Number {
        return At(yuv2, pitchYuv2, 4 * group + byte - 2 * drift * (row / 2), SourceRow(row, height, flip));
    };
    const auto storeLuma = [&](Number column, Number row, Number pair, Number value) {
        At(y, pitchY, column - drift * pair, row) = LowByte(LimitedLuma(value));
    };

    for (Number pair = 0; 2 * pair < Signed(height); ++pair) {
        // Deliberate: a last row on its own goes to the last luma row and to the row below the image.
        const Number upper = 2 * pair;
        const Number lower = upper + 1 < Signed(height) ? upper + 1 : upper;
        for (Number group = 0; group < Signed(width / 2); ++group) {
            storeLuma(2 * group, upper, pair, packed(group, 0, upper));
            storeLuma(2 * group + 1, upper, pair, packed(group, 2, upper));
            storeLuma(2 * group, upper + 1, pair, packed(group, 0, lower));
            storeLuma(2 * group + 1, upper + 1, pair, packed(group, 2, lower));
            const Number uPair = ScaledChroma(packed(group, 1, upper)) + ScaledChroma(packed(group, 1, lower));
            const Number vPair = ScaledChroma(packed(group, 3, upper)) + ScaledChroma(packed(group, 3, lower));
            At(u, pitchU, group, pair) = LowByte(FloorDivide(uPair + 257, 2));
            At(v, pitchV, group, pair) = LowByte(FloorDivide(vPair + 257, 2));
        }
    }
}

// Deliberate: the same drift at odd widths, and luma is copied unchanged.
void KorI420toYuv2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* yuy2, KorSizeT pitchYuy2, KorSizeT width, KorSizeT height) {
    const Number drift = Signed(width % 2);
    for (Number pair = 0; pair < Signed(height / 2); ++pair) {
        for (Number group = 0; group < Signed(width / 2); ++group) {
            for (const Number row : {2 * pair, 2 * pair + 1}) {
                const Number lumaColumn = 2 * group - drift * pair;
                const Number first = 4 * group - 2 * drift * pair;
                At(yuy2, pitchYuy2, first, row) = At(y, pitchY, lumaColumn, row);
                At(yuy2, pitchYuy2, first + 1, row) = FullRangeChroma(At(u, pitchU, group, pair));
                At(yuy2, pitchYuy2, first + 2, row) = At(y, pitchY, lumaColumn + 1, row);
                At(yuy2, pitchYuy2, first + 3, row) = FullRangeChroma(At(v, pitchV, group, pair));
            }
        }
    }
}

void KorM420ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* m420, KorSizeT pitchM420, KorSizeT width, KorSizeT height, KorBool flip) {
    for (Number pair = 0; pair < Signed(height / 2); ++pair) {
        // One pitch spans a block of three rows. Deliberate: a flipped walk starts at the block whose number is that of
        // the last luma row, not of the last row pair.
        const Number block = SourceRow(pair, height, flip);
        for (Number column = 0; column < Signed(width); ++column) {
            At(y, pitchY, column, 2 * pair) = At(m420, pitchM420, column, block);
            At(y, pitchY, column, 2 * pair + 1) = At(m420, pitchM420, Signed(width) + column, block);
        }
        for (Number column = 0; column < Signed(width / 2); ++column) {
            At(u, pitchU, column, pair) = At(m420, pitchM420, 2 * Signed(width) + 2 * column, block);
            At(v, pitchV, column, pair) = At(m420, pitchM420, 2 * Signed(width) + 2 * column + 1, block);
        }
    }
}

namespace {

// The image is padded to an even height with a copy of its last row. Deliberate: odd widths, which are outside the
// contract, drift; with every row pair the source lies two bytes and the luma one sample further left, chroma stays.
// Deliberate: any other angle rotates by 270.
void ToI420Rotated(PlanesOut to, const KorUint8* x, KorSizeT pitchX, GroupFormat format, KorSizeT width,
                   KorSizeT height, KorBool flip, KorImageRotationDegree degree) {
    const Number drift = Signed(width % 2);
    const Number widthC = Signed(width / 2);
    const Number pairs = Signed((height + 1) / 2);
    const auto packed = [&](Number group, Number byte, Number row) -> Number {
        return At(x, pitchX, 4 * group + byte - 2 * drift * (row / 2), SourceRow(row, height, flip));
    };
    const auto storeLuma = [&](Number column, Number row, Number value) {
        const Position place = Rotated({column - drift * (row / 2), row}, Signed(width), 2 * pairs, degree);
        At(to.y, to.pitchY, place.column, place.row) = LowByte(value);
    };

    for (Number pair = 0; pair < pairs; ++pair) {
        const Number upper = 2 * pair;
        const Number lower = upper + 1 < Signed(height) ? upper + 1 : upper;
        for (Number group = 0; group < widthC; ++group) {
            storeLuma(2 * group, upper, packed(group, format.left, upper));
            storeLuma(2 * group + 1, upper, packed(group, format.right, upper));
            storeLuma(2 * group, upper + 1, packed(group, format.left, lower));
            storeLuma(2 * group + 1, upper + 1, packed(group, format.right, lower));
            const Position place = Rotated({group, pair}, widthC, pairs, degree);
            At(to.u, to.pitchU, place.column, place.row) =
                LowByte(Average(packed(group, format.u, upper), packed(group, format.u, lower)));
            At(to.v, to.pitchV, place.column, place.row) =
                LowByte(Average(packed(group, format.v, upper), packed(group, format.v, lower)));
        }
    }
}

}  // namespace

void KorYUY2ToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                  KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT widthSrc,
                                  KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree) {
    ToI420Rotated({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kYuy2, widthSrc, heightSrc, flip, rotationDegree);
}

void KorUYVYToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                  KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                  KorBool flip, KorImageRotationDegree rotationDegree) {
    ToI420Rotated({y, pitchY, u, pitchU, v, pitchV}, x, pitchX, kUyvy, width, height, flip, rotationDegree);
}

}  // namespace reference
