// All 2^24 colours through every fixed capture matrix, each as a block of two by two pixels.
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace {

// The documented matrix of a function, in units of 2^-bits.
struct Weights {
    int y[3], u[3], v[3];
    int bits;
};

struct Conversion {
    const char* name;
    kit::CaptureFunction convert;
    std::size_t pixelBytes, red, green, blue;
    std::size_t block;  // pixels in each direction that share a chroma sample
    Weights weights;
};

void PrintTo(const Conversion& conversion, std::ostream* out) {
    *out << conversion.name;
}

constexpr Weights kBt601{{33, 64, 13}, {-19, -37, 56}, {56, -47, -9}, 7};
constexpr Weights kBt601Finer{{66, 129, 25}, {-38, -74, 112}, {112, -94, -18}, 8};
constexpr Weights kBt709{{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}, 8};

std::vector<Conversion> Conversions() {
    return {
        {"KorRGBAToI420_C_", &KorRGBAToI420_C_, 4, 0, 1, 2, 2, kBt601},
        {"KorBGRAToI420_C_", &KorBGRAToI420_C_, 4, 2, 1, 0, 2, kBt601},
        {"KorARGBToI420_C_", &KorARGBToI420_C_, 4, 1, 2, 3, 2, kBt601},
        {"KorABGRToI420_C_", &KorABGRToI420_C_, 4, 3, 2, 1, 2, kBt601},
        {"KorBGRAToI444_C_", &KorBGRAToI444_C_, 4, 2, 1, 0, 1, kBt601},
        {"KorBGRAToI420UsingBT709_C_", &KorBGRAToI420UsingBT709_C_, 4, 2, 1, 0, 2, kBt709},
        {"KorBGRAToI444UsingBT709_C_", &KorBGRAToI444UsingBT709_C_, 4, 2, 1, 0, 1, kBt709},
        {"KorRawToI420_C_", &KorRawToI420_C_, 3, 0, 1, 2, 2, kBt601Finer},
        {"Kor24BGToI420_C_", &Kor24BGToI420_C_, 3, 2, 1, 0, 2, kBt601Finer},
    };
}

// Rounds toward minus infinity, whatever the sign.
int FloorDivide(int value, int divisor) {
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

class AllColours : public testing::TestWithParam<Conversion> {};

TEST_P(AllColours, ConvertAsTheMatrixSays) {
    const Conversion& c = GetParam();
    const std::size_t size = 256 * c.block;
    const std::size_t pitch = size * c.pixelBytes;
    std::vector<KorUint8> x(size * pitch, 0x5a), y(size * size), u(256 * 256), v(256 * 256);
    // Green grows from row to row, blue from column to column; red is constant and changes from image to image.
    for (std::size_t row = 0; row < size; ++row) {
        for (std::size_t column = 0; column < size; ++column) {
            KorUint8* pixel = &x[row * pitch + column * c.pixelBytes];
            pixel[c.green] = static_cast<KorUint8>(row / c.block);
            pixel[c.blue] = static_cast<KorUint8>(column / c.block);
        }
    }
    const auto weigh = [&](const int(&weights)[3], int r, std::size_t g, std::size_t b) {
        const int sum = weights[0] * r + weights[1] * static_cast<int>(g) + weights[2] * static_cast<int>(b);
        return FloorDivide(sum, 1 << c.weights.bits);
    };
    for (int r = 0; r < 256; ++r) {
        for (std::size_t i = c.red; i < x.size(); i += c.pixelBytes) {
            x[i] = static_cast<KorUint8>(r);
        }
        c.convert(y.data(), size, u.data(), 256, v.data(), 256, x.data(), pitch, size, size, 0);
        for (std::size_t row = 0; row < size; ++row) {
            for (std::size_t column = 0; column < size; ++column) {
                if (y[row * size + column] != weigh(c.weights.y, r, row / c.block, column / c.block) + 16) {
                    FAIL() << "luma of " << r << ", " << row / c.block << ", " << column / c.block << " is "
                           << int{y[row * size + column]};
                }
            }
        }
        for (std::size_t g = 0; g < 256; ++g) {
            for (std::size_t b = 0; b < 256; ++b) {
                if (u[g * 256 + b] != weigh(c.weights.u, r, g, b) + 128 ||
                    v[g * 256 + b] != weigh(c.weights.v, r, g, b) + 128) {
                    FAIL() << "chroma of " << r << ", " << g << ", " << b << " is " << int{u[g * 256 + b]} << ", "
                           << int{v[g * 256 + b]};
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, AllColours, testing::ValuesIn(Conversions()), testing::PrintToStringParamName());

}  // namespace
