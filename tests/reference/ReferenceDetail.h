/* Shared by the files of the reference, and private to them: addressing, flooring division, clamping and noise. */
#ifndef KOR_TESTS_REFERENCE_REFERENCEDETAIL_H
#define KOR_TESTS_REFERENCE_REFERENCEDETAIL_H

#include <array>
#include <cstdint>

#include "Kor/Os/KorRandom.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace reference::detail {

// Columns, rows and every intermediate value: signed and wide, so that differences may be negative and no sum wraps
// unless the code says so.
using Number = std::int64_t;

inline Number Signed(KorSizeT size) {
    return static_cast<Number>(size);
}

// The sample at a column and row of a plane. The offset is summed up in signed numbers first, so that the only address
// formed is that of the sample itself, whatever the signs of the pitch and the coordinates.
template <typename Byte, typename Pitch>
Byte& At(Byte* plane, Pitch pitch, Number column, Number row) {
    const Number signedPitch = static_cast<KorDistanceT>(pitch);
    return plane[static_cast<KorDistanceT>(row * signedPitch + column)];
}

// The quotient rounded toward minus infinity, for a positive divisor, as an arithmetic right shift does.
constexpr Number FloorDivide(Number dividend, Number divisor) {
    const Number truncated = dividend / divisor;
    return dividend % divisor < 0 ? truncated - 1 : truncated;
}

static_assert(FloorDivide(7, 4) == 1 && FloorDivide(8, 4) == 2, "positive dividends truncate");
static_assert(FloorDivide(-1, 4) == -1 && FloorDivide(-4, 4) == -1 && FloorDivide(-5, 4) == -2, "negative ones floor");

// A value modulo 256.
constexpr KorUint8 LowByte(Number value) {
    return static_cast<KorUint8>(value - 256 * FloorDivide(value, 256));
}

// A value clamped to a byte.
constexpr KorUint8 Clamp(Number value) {
    if (value < 0) {
        return 0;
    }
    if (value > 255) {
        return 255;
    }
    return static_cast<KorUint8>(value);
}

// The average of two non-negative values, rounded half up.
constexpr Number Average(Number a, Number b) {
    return (a + b + 1) / 2;
}

constexpr KorSizeT RoundUpToEight(KorSizeT size) {
    return (size + 7) / 8 * 8;
}

// The row in memory of the row-th row in reading order.
inline Number SourceRow(Number row, KorSizeT height, KorBool flip) {
    return flip != 0 ? Signed(height) - 1 - row : row;
}

struct Position {
    Number column;
    Number row;
};

// The place of a sample of a width by height plane after a clockwise rotation. An angle other than the four counts as
// 270.
inline Position Rotated(Position from, Number width, Number height, KorImageRotationDegree degree) {
    switch (degree) {
        case 0:
            return from;
        case 90:
            return {height - 1 - from.row, from.column};
        case 180:
            return {width - 1 - from.column, height - 1 - from.row};
        default:
            return {from.row, width - 1 - from.column};
    }
}

// The planes of an I420 or I444 image, written (Byte = KorUint8) or read (Byte = const KorUint8).
template <typename Byte>
struct Planes {
    Byte* y;
    KorSizeT pitchY;
    Byte* u;
    KorSizeT pitchU;
    Byte* v;
    KorSizeT pitchV;
};

using PlanesOut = Planes<KorUint8>;
using PlanesIn = Planes<const KorUint8>;

/* Noise */

// How a table entry becomes noise: (entry + rounding) / divisor, floored.
struct NoiseScale {
    Number divisor;
    Number rounding;
};

// Four levels are defined; a conversion treats any other as Off.
inline bool IsDefined(KorVideoFrameDitherLevel level) {
    return level <= KOR_VIDEOFRAMEDITHERLEVEL_2;
}

inline bool AddsNoise(KorVideoFrameDitherLevel level) {
    return level != KOR_VIDEOFRAMEDITHERLEVEL_Off && IsDefined(level);
}

// By dither level. Conversions never get here with a level value of 0, but the dither filter has no Off.
inline NoiseScale LumaScale(KorVideoFrameDitherLevel level) {
    constexpr std::array<NoiseScale, 4> scales = {{{8, 4}, {4, 2}, {2, 1}, {1, 0}}};
    return scales.at(level);
}

inline NoiseScale ChromaScale(KorVideoFrameDitherLevel level) {
    constexpr std::array<NoiseScale, 4> scales = {{{16, 8}, {8, 4}, {4, 2}, {2, 1}}};
    return scales.at(level);
}

// The sample plus the noise at an index of the table, modulo its size.
inline KorUint8 AddNoise(KorUint8 sample, KorSizeT index, NoiseScale scale) {
    const Number entry = KorTblDitherStd4[index % 16384];
    return Clamp(sample + FloorDivide(entry + scale.rounding, scale.divisor));
}

// A whole index variable of random bits. The result of the service is ignored: if it fails, the variable keeps what it
// holds.
inline KorSizeT DrawIndex() {
    KorSizeT index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof(index));
    return index;
}

// Where the noise of the three planes starts in the table.
struct NoiseStart {
    KorSizeT y = 0;
    KorSizeT u = 0;
    KorSizeT v = 0;
};

constexpr KorSizeT kAnyStart = 0x3fff;
constexpr KorSizeT kAlignedStart = 0x3ff8;

// The starts of a conversion's noise: luma, then U, then V. Off draws nothing.
inline NoiseStart DrawNoiseStart(KorVideoFrameDitherLevel level, KorSizeT chromaMask) {
    NoiseStart start;
    if (AddsNoise(level)) {
        start.y = DrawIndex() & kAlignedStart;
        start.u = DrawIndex() & chromaMask;
        start.v = DrawIndex() & chromaMask;
    }
    return start;
}

// The sample that a conversion uses: unchanged at level Off, else with noise.
inline KorUint8 Luma(KorUint8 sample, KorSizeT index, KorVideoFrameDitherLevel level) {
    return AddsNoise(level) ? AddNoise(sample, index, LumaScale(level)) : sample;
}

inline KorUint8 Chroma(KorUint8 sample, KorSizeT index, KorVideoFrameDitherLevel level) {
    return AddsNoise(level) ? AddNoise(sample, index, ChromaScale(level)) : sample;
}

}  // namespace reference::detail

#endif
