// Capture of 32-bit RGB to I420: values worked out by hand, edges of odd sizes, flips, degenerate sizes, bytes that are
// never read.
#include <gtest/gtest.h>

#include <initializer_list>
#include <ostream>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

struct Rgb {
    std::uint8_t r, g, b;
};

// One of the functions that capture 32-bit pixels to I420 with the fixed BT.601 matrix.
struct Order {
    const char* name;
    kit::CaptureFunction convert;
    std::size_t red, green, blue, alpha;
};

void PrintTo(const Order& order, std::ostream* out) {
    *out << order.name;
}

// A packed source with the pixels row by row; alpha is random.
Plane Source(const Order& order, std::size_t width, std::size_t height, const std::vector<Rgb>& pixels,
             std::size_t padding = 0) {
    Plane source(Shape(4 * width, height, padding));
    source.Fill(kit::Pattern::Noise, 7);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        std::uint8_t* pixel = &source.At(i / width, i % width * 4);
        pixel[order.red] = pixels[i].r;
        pixel[order.green] = pixels[i].g;
        pixel[order.blue] = pixels[i].b;
    }
    return source;
}

void Convert(const Order& order, const I420Frame& frame, const Plane& source, std::size_t width, std::size_t height,
             KorBool flip = 0) {
    order.convert(frame.y.data(), frame.y.pitch(), frame.u.data(), frame.u.pitch(), frame.v.data(), frame.v.pitch(),
                  source.data(), source.pitch(), width, height, flip);
}

class Rgb32ToI420 : public testing::TestWithParam<Order> {
  protected:
    // Converts the pixels and returns Y, U and V samples one after the other.
    Bytes Samples(std::size_t width, std::size_t height, const std::vector<Rgb>& pixels, KorBool flip = 0) const {
        const I420Frame frame(width, height);
        Convert(GetParam(), frame, Source(GetParam(), width, height, pixels), width, height, flip);
        return frame.Samples();
    }
};

INSTANTIATE_TEST_SUITE_P(, Rgb32ToI420,
                         testing::Values(Order{"RGBA", &KorRGBAToI420_C_, 0, 1, 2, 3},
                                         Order{"BGRA", &KorBGRAToI420_C_, 2, 1, 0, 3},
                                         Order{"ARGB", &KorARGBToI420_C_, 1, 2, 3, 0},
                                         Order{"ABGR", &KorABGRToI420_C_, 3, 2, 1, 0}),
                         testing::PrintToStringParamName());

// ---- Arithmetic --------------------------------------------------------------------------------------------------

TEST_P(Rgb32ToI420, WhiteBlackAndPrimariesHaveTheirValues) {
    const struct {
        Rgb colour;
        std::uint8_t y, u, v;
    } rows[] = {
        {{255, 255, 255}, 235, 128, 128}, {{0, 0, 0}, 16, 128, 128},   {{255, 0, 0}, 81, 90, 239},
        {{0, 255, 0}, 143, 54, 34},       {{0, 0, 255}, 41, 239, 110},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Samples(2, 2, std::vector<Rgb>(4, row.colour)), (Bytes{row.y, row.y, row.y, row.y, row.u, row.v}));
    }
}

TEST_P(Rgb32ToI420, ChromaReachesBothEndsWithoutWrapping) {
    // The smallest and largest sums of the chroma rows: yellow and blue for U, cyan and red for V.
    EXPECT_EQ(Samples(1, 1, {{255, 255, 0}}), (Bytes{209, 16, 145}));
    EXPECT_EQ(Samples(1, 1, {{0, 255, 255}}), (Bytes{169, 165, 16}));
    EXPECT_EQ(Samples(1, 1, {{0, 0, 255}}), (Bytes{41, 239, 110}));
    EXPECT_EQ(Samples(1, 1, {{255, 0, 0}}), (Bytes{81, 90, 239}));
}

TEST_P(Rgb32ToI420, NegativeChromaSumsRoundDown) {
    // Green 1: -37 and -47 before the shift, so both chroma samples drop to 127 instead of staying at 128.
    EXPECT_EQ(Samples(1, 1, {{0, 1, 0}}), (Bytes{16, 127, 127}));
}

TEST_P(Rgb32ToI420, ColumnsAreAveragedBeforeRows) {
    // Columns first: (3, 2) and (3, 0) give 3 and 2, then 3. Rows first would give 3 and 1, then 2, and V = 128.
    EXPECT_EQ(Samples(2, 2, {{3, 0, 0}, {3, 0, 0}, {2, 0, 0}, {0, 0, 0}}), (Bytes{16, 16, 16, 16, 127, 129}));
}

TEST_P(Rgb32ToI420, ColoursAreAveragedBeforeTheyAreConverted) {
    // Each channel's 0 and 1 average to 1 (rounded up); averaging the converted values would give another result.
    EXPECT_EQ(Samples(2, 2, {{0, 2, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}}), (Bytes{17, 16, 16, 16, 127, 127}));
    EXPECT_EQ(Samples(2, 2, {{5, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}), (Bytes{17, 16, 16, 16, 127, 128}));
}

TEST_P(Rgb32ToI420, LumaIsNotAveraged) {
    EXPECT_EQ(Samples(2, 2, {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}, {0, 0, 255}}),
              (Bytes{235, 16, 81, 41, 146, 151}));
}

// ---- Edges -------------------------------------------------------------------------------------------------------

TEST_P(Rgb32ToI420, ThreeByThreeHasTwoByTwoChroma) {
    const Rgb o{0, 0, 0}, p{64, 0, 0}, q{128, 0, 0}, r{255, 0, 0};
    const Bytes samples = Samples(3, 3, {o, o, p, o, o, q, p, r, q});
    // Red averages: block 0; right column (64 + 128 + 1) / 2 = 96; bottom row (64 + 255 + 1) / 2 = 160; corner 128.
    const Bytes expected{16, 16, 32, 16, 16, 49, 32, 81, 49, 128, 113, 104, 109, 128, 170, 198, 184};
    EXPECT_EQ(samples, expected);
}

TEST_P(Rgb32ToI420, EdgePairsRoundHalfUp) {
    // 4 and 5 average to 5 down the odd column and along the odd row: 5 * 56 = 280 gives 2, 4 * 56 = 224 only 1.
    const Rgb low{4, 0, 0}, high{5, 0, 0};
    EXPECT_EQ(Samples(1, 2, {low, high}), (Bytes{17, 17, 127, 130}));
    EXPECT_EQ(Samples(2, 1, {low, high}), (Bytes{17, 17, 127, 130}));
}

TEST_P(Rgb32ToI420, SinglePixelStandsForItself) {
    EXPECT_EQ(Samples(1, 1, {{255, 0, 0}}), (Bytes{81, 90, 239}));
    EXPECT_EQ(Samples(1, 1, {{255, 0, 0}}, 1), (Bytes{81, 90, 239}));
}

TEST_P(Rgb32ToI420, FiveByThreeFillsChromaOfThreeByTwo) {
    const I420Frame frame(5, 3);
    for (const Plane* plane : {&frame.y, &frame.u, &frame.v}) {
        plane->SetAll(0);
    }
    Convert(GetParam(), frame, Source(GetParam(), 5, 3, std::vector<Rgb>(15, Rgb{255, 255, 255})), 5, 3);
    EXPECT_EQ(frame.y.Samples(), Bytes(15, 235));
    EXPECT_EQ(frame.u.Samples(), Bytes(6, 128));
    EXPECT_EQ(frame.v.Samples(), Bytes(6, 128));
}

// ---- Flip --------------------------------------------------------------------------------------------------------

TEST_P(Rgb32ToI420, FlipReadsTheLastRowFirst) {
    EXPECT_EQ(Samples(1, 2, {{255, 0, 0}, {0, 0, 255}}, 0), (Bytes{81, 41, 165, 175}));
    EXPECT_EQ(Samples(1, 2, {{255, 0, 0}, {0, 0, 255}}, 1), (Bytes{41, 81, 165, 175}));
}

TEST_P(Rgb32ToI420, FlipOfAnOddHeightLeavesTheFirstRowInMemoryForTheEnd) {
    const Rgb red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255};
    // Green pairs with blue, and red is on its own: U of (0, 128, 128) and of red.
    EXPECT_EQ(Samples(1, 3, {red, green, blue}, 1), (Bytes{41, 143, 81, 147, 90, 72, 239}));
}

TEST_P(Rgb32ToI420, FlipOfASingleRowReadsThatRow) {
    const std::vector<Rgb> row{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    EXPECT_EQ(Samples(3, 1, row, 1), Samples(3, 1, row, 0));
}

TEST_P(Rgb32ToI420, AnyValueButZeroFlips) {
    const std::vector<Rgb> column{{255, 0, 0}, {0, 0, 255}};
    const Bytes flipped = Samples(1, 2, column, 1);
    for (const int flip : {2, 127, 128, 255}) {
        EXPECT_EQ(Samples(1, 2, column, static_cast<KorBool>(flip)), flipped);
    }
}

// ---- What is not read, not written, not present ------------------------------------------------------------------

TEST_P(Rgb32ToI420, AlphaNeverCounts) {
    for (std::size_t width = 1; width <= 19; ++width) {
        for (std::size_t height = 1; height <= 3; ++height) {
            const Plane source(Shape(4 * width, height));
            source.Fill(kit::Pattern::Noise, width);
            const I420Frame frame(width, height);
            Convert(GetParam(), frame, source, width, height);
            const Bytes expected = frame.Samples();
            for (std::size_t pixel = 0; pixel < width * height; ++pixel) {
                source.At(pixel / width, pixel % width * 4 + GetParam().alpha) ^= 0xff;
                Convert(GetParam(), frame, source, width, height);
                ASSERT_EQ(frame.Samples(), expected) << width << "x" << height << ", alpha of pixel " << pixel;
            }
        }
    }
}

TEST_P(Rgb32ToI420, AlphaAtTheEndOfTheImageIsNotEvenRead) {
    for (std::size_t width = 1; width <= 40; ++width) {
        for (std::size_t height = 1; height <= 3; ++height) {
            // The first or the last alpha byte of the image lies on the unmapped page.
            const bool alphaFirst = GetParam().alpha == 0;
            kit::PlaneShape shape = Shape(4 * width - 1, height);
            shape.pitch = 4 * width;
            const Plane source(shape, alphaFirst ? kit::Placement::Front : kit::Placement::Rear);
            const I420Frame frame(width, height);
            GetParam().convert(frame.y.data(), frame.y.pitch(), frame.u.data(), frame.u.pitch(), frame.v.data(),
                               frame.v.pitch(), source.data() - (alphaFirst ? 1 : 0), source.pitch(), width, height, 0);
        }
    }
}

TEST_P(Rgb32ToI420, ZeroSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 16, 17}) {
            GetParam().convert(nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0, size, 0, flip);
            GetParam().convert(nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0, 0, size, flip);
            GetParam().convert(nullptr, 9, nullptr, 8, nullptr, 7, nullptr, 64, size, 0, flip);
            GetParam().convert(nullptr, 9, nullptr, 8, nullptr, 7, nullptr, 64, 0, size, flip);
        }
    }
}

TEST_P(Rgb32ToI420, PaddingStaysAsItWas) {
    for (const KorBool flip : kit::kFlips) {
        const I420Frame frame(5, 3, 6);
        const Bytes y = frame.y.Snapshot(), u = frame.u.Snapshot(), v = frame.v.Snapshot();
        Convert(GetParam(), frame, Source(GetParam(), 5, 3, std::vector<Rgb>(15, Rgb{1, 2, 3}), 9), 5, 3, flip);
        EXPECT_EQ(frame.y.GapDifference("y", y.data()), "");
        EXPECT_EQ(frame.u.GapDifference("u", u.data()), "");
        EXPECT_EQ(frame.v.GapDifference("v", v.data()), "");
    }
}

}  // namespace
