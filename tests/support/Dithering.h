// Dither noise as documented, computed a sample at a time, and the functions that add it.
#ifndef KOR_TESTS_SUPPORT_DITHERING_H
#define KOR_TESTS_SUPPORT_DITHERING_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "conformance/core/Functions.h"
#include "conformance/kit/NoiseTable.h"
#include "Kor/Video/Common/KorVideoFrame.h"
#include "tests/support/Frames.h"

namespace kit {

constexpr KorVideoFrameDitherLevel kNoisyLevels[] = {KOR_VIDEOFRAMEDITHERLEVEL_0, KOR_VIDEOFRAMEDITHERLEVEL_1,
                                                     KOR_VIDEOFRAMEDITHERLEVEL_2};

// A quotient rounded toward minus infinity.
constexpr int FloorQuotient(int value, int divisor) {
    return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

// The noise at an index of the table: the entry divided by 8, 4, 2, 1 for luma at level values 0 to 3 and by twice that
// for chroma, after adding half the divisor (nothing if it is 1).
constexpr int NoiseAt(std::size_t index, KorVideoFrameDitherLevel level, bool chroma) {
    const int divisor = (chroma ? 16 : 8) >> static_cast<int>(level);
    return FloorQuotient(NoiseEntry(index % kNoiseEntries) + divisor / 2, divisor);
}

constexpr std::uint8_t WithNoise(std::uint8_t sample, std::size_t index, KorVideoFrameDitherLevel level, bool chroma) {
    return static_cast<std::uint8_t>(std::clamp(sample + NoiseAt(index, level, chroma), 0, 255));
}

// How the noise of a plane walks through the table.
enum class NoiseWalk {
    Raster,   // a row starts one row length, rounded up to a multiple of eight, after the one above
    Running,  // a row continues where the one above ended
};

// How a function that takes a dither level uses its start indices.
struct Ditherer {
    const char* name;
    RenderFunction convert;
    std::size_t pixelBytes;  // of the output; two for packed YUV
    bool fullChroma;         // I444
    NoiseWalk chromaWalk;
    std::size_t chromaStartMask;
};

inline void PrintTo(const Ditherer& ditherer, std::ostream* out) {
    *out << ditherer.name;
}

// The planes of either kind of source.
struct YuvPlanes {
    Plane y, u, v;

    YuvPlanes(const Ditherer& d, std::size_t width, std::size_t height)
        : y(Shape(width, height)),
          u(Shape(d.fullChroma ? width : (width + 1) / 2, d.fullChroma ? height : (height + 1) / 2)),
          v(u.shape()) {}
};

// Adds noise to the plane's first width by height samples, which are the ones converted.
inline void AddNoise(const Plane& plane, std::size_t width, std::size_t height, std::size_t start, std::size_t stride,
                     KorVideoFrameDitherLevel level, bool chroma) {
    for (std::size_t row = 0; row < height; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            std::uint8_t& sample = plane.At(row, column);
            sample = WithNoise(sample, start + row * stride + column, level, chroma);
        }
    }
}

inline std::size_t UpToEight(std::size_t size) {
    return (size + 7) / 8 * 8;
}

// Adds to the planes the noise that a dithering call with these draws would add.
inline void AddNoise(const Ditherer& d, const YuvPlanes& planes, std::size_t width, std::size_t height,
                     const std::size_t (&drawn)[3], KorVideoFrameDitherLevel level) {
    const std::size_t step = d.fullChroma ? 1 : 2;
    const std::size_t chromaWidth = width / step, chromaHeight = height / step;
    const std::size_t chromaStride = d.chromaWalk == NoiseWalk::Raster ? UpToEight(chromaWidth) : chromaWidth;
    AddNoise(planes.y, chromaWidth * step, chromaHeight * step, drawn[0] & 0x3ff8, UpToEight(width), level, false);
    AddNoise(planes.u, chromaWidth, chromaHeight, drawn[1] & d.chromaStartMask, chromaStride, level, true);
    AddNoise(planes.v, chromaWidth, chromaHeight, drawn[2] & d.chromaStartMask, chromaStride, level, true);
}

inline void Convert(const Ditherer& d, const YuvPlanes& from, const Plane& x, std::size_t width, std::size_t height,
                    KorVideoFrameDitherLevel level) {
    d.convert(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(), x.data(),
              x.pitch(), width, height, level);
}

// The caller-matrix renderer with a fixed matrix that keeps channels apart, so that its signature fits the others'.
inline void RenderWithSomeMatrix(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU,
                                 const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width,
                                 KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    static const KorInt rows[3][3] = {{298, 11, 409}, {300, -100, -208}, {290, 516, -7}};
    KorI420ToBGRAGeneral_C_(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, rows, ditherLevel);
}

// All conversions that take a dither level.
inline std::vector<Ditherer> Ditherers() {
    return {
        {"KorI420ToRGBA_C_", &KorI420ToRGBA_C_, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI420ToBGRA_C_", &KorI420ToBGRA_C_, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI420ToARGB_C_", &KorI420ToARGB_C_, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI420ToABGR_C_", &KorI420ToABGR_C_, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI444ToBGRA_C_", &KorI444ToBGRA_C_, 4, true, NoiseWalk::Raster, 0x3fff},
        {"KorI444ToBGRAUsingBT709_C_", &KorI444ToBGRAUsingBT709_C_, 4, true, NoiseWalk::Raster, 0x3fff},
        {"KorI420ToBGRAUsingBT709_C_", &KorI420ToBGRAUsingBT709_C_, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI420ToBGRAGeneral_C_", &RenderWithSomeMatrix, 4, false, NoiseWalk::Running, 0x3fff},
        {"KorI420To24BG_C_", &KorI420To24BG_C_, 3, false, NoiseWalk::Running, 0x3fff},
        {"KorI420ToYUY2_C_", &KorI420ToYUY2_C_, 2, false, NoiseWalk::Raster, 0x3ff8},
        {"KorI420ToUYVY_C_", &KorI420ToUYVY_C_, 2, false, NoiseWalk::Raster, 0x3ff8},
    };
}

}  // namespace kit

#endif
