// All 2^24 triples of Y, U and V through every fixed render matrix.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace {

struct Rendering {
    const char* name;
    kit::RenderFunction render;
    std::size_t pixelBytes;
    int red, green, blue, alpha;  // byte positions; -1 for none
    std::size_t block;            // pixels in each direction that share a chroma pair
    bool bt709;
};

void PrintTo(const Rendering& rendering, std::ostream* out) {
    *out << rendering.name;
}

std::vector<Rendering> Renderings() {
    return {
        {"KorI420ToRGBA_C_", &KorI420ToRGBA_C_, 4, 0, 1, 2, 3, 2, false},
        {"KorI420ToBGRA_C_", &KorI420ToBGRA_C_, 4, 2, 1, 0, 3, 2, false},
        {"KorI420ToARGB_C_", &KorI420ToARGB_C_, 4, 1, 2, 3, 0, 2, false},
        {"KorI420ToABGR_C_", &KorI420ToABGR_C_, 4, 3, 2, 1, 0, 2, false},
        {"KorI420To24BG_C_", &KorI420To24BG_C_, 3, 2, 1, 0, -1, 2, false},
        {"KorI420ToBGRAUsingBT709_C_", &KorI420ToBGRAUsingBT709_C_, 4, 2, 1, 0, 3, 2, true},
        {"KorI444ToBGRA_C_", &KorI444ToBGRA_C_, 4, 2, 1, 0, 3, 1, false},
        {"KorI444ToBGRAUsingBT709_C_", &KorI444ToBGRAUsingBT709_C_, 4, 2, 1, 0, 3, 1, true},
    };
}

int Clip(int value) {
    return std::clamp(value, 0, 255);
}

class AllYuv : public testing::TestWithParam<Rendering> {};

// An image has all 65536 chroma pairs, U by row and V by column; each block of four pixels has four luma values.
TEST_P(AllYuv, ConvertAsTheMatrixSays) {
    const Rendering& c = GetParam();
    const std::size_t size = 256 * c.block, lumas = c.block * c.block;
    const std::size_t pitch = size * c.pixelBytes;
    std::vector<KorUint8> x(size * pitch), y(size * size), u(256 * 256), v(256 * 256);
    for (std::size_t i = 0; i < u.size(); ++i) {
        u[i] = static_cast<KorUint8>(i / 256);
        v[i] = static_cast<KorUint8>(i % 256);
    }
    for (std::size_t first = 0; first < 256; first += lumas) {
        for (std::size_t i = 0; i < y.size(); ++i) {
            y[i] = static_cast<KorUint8>(first + i / size % c.block * c.block + i % size % c.block);
        }
        c.render(y.data(), size, u.data(), 256, v.data(), 256, x.data(), pitch, size, size,
                 KOR_VIDEOFRAMEDITHERLEVEL_Off);
        for (std::size_t i = 0; i < y.size(); ++i) {
            const int luma = y[i] * 149 / 128;
            const int cb = static_cast<int>(i / size / c.block), cr = static_cast<int>(i % size / c.block);
            const int r = c.bt709 ? cr * 229 / 128 - 248 : cr * 204 / 128 - 223;
            const int g = c.bt709 ? 78 - (cb * 14 + cr * 34) / 64 : 135 - (cb * 25 + cr * 52) / 64;
            const int b = c.bt709 ? cb * 135 / 64 - 289 : cb * 129 / 64 - 277;
            const KorUint8* pixel = &x[i / size * pitch + i % size * c.pixelBytes];
            if (pixel[c.red] != Clip(luma + r) || pixel[c.green] != Clip(luma + g) || pixel[c.blue] != Clip(luma + b) ||
                (c.alpha >= 0 && pixel[c.alpha] != 255)) {
                FAIL() << int{y[i]} << ", " << cb << ", " << cr << " gives " << int{pixel[c.red]} << ", "
                       << int{pixel[c.green]} << ", " << int{pixel[c.blue]};
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, AllYuv, testing::ValuesIn(Renderings()), testing::PrintToStringParamName());

}  // namespace
