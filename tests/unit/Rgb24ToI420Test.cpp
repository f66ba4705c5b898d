// Capture of 24-bit RGB to I420: chroma is averaged after conversion; odd sizes write spare samples and copy a corner.
#include <gtest/gtest.h>

#include <ostream>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

struct Order {
    const char* name;
    kit::CaptureFunction convert;
    std::size_t red, blue;
};

void PrintTo(const Order& order, std::ostream* out) {
    *out << order.name;
}

constexpr unsigned kBlack = 0x000000, kWhite = 0xffffff, kRed = 0xff0000, kGreen = 0x00ff00, kBlue = 0x0000ff;

class Rgb24ToI420 : public testing::TestWithParam<Order> {
  protected:
    // Pixels as numbers 0xRRGGBB; the result has its spare column and row, which are 0xee where nothing is written.
    I420Frame Converted(std::size_t width, std::size_t height, const std::vector<unsigned>& pixels,
                        KorBool flip = 0) const {
        const Plane x(Shape(3 * width, height, 2));
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            std::uint8_t* pixel = &x.At(i / width, i % width * 3);
            pixel[GetParam().red] = static_cast<std::uint8_t>(pixels[i] >> 16);
            pixel[1] = static_cast<std::uint8_t>((pixels[i] >> 8) & 0xff);
            pixel[GetParam().blue] = static_cast<std::uint8_t>(pixels[i] & 0xff);
        }
        I420Frame to(width, height, kit::ShapeWithSpares(width, height, width % 2, height % 2));
        for (std::size_t row = 0; row < height + height % 2; ++row) {
            for (std::size_t column = 0; column < width + width % 2; ++column) {
                to.y.At(row, column) = 0xee;
            }
        }
        GetParam().convert(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(),
                           x.pitch(), width, height, flip);
        return to;
    }

    // A row of luma with its spare column.
    static Bytes Luma(const I420Frame& frame, std::size_t row) {
        const std::uint8_t* first = &frame.y.At(row, 0);
        return Bytes(first, first + frame.y.shape().rowBytes + frame.y.shape().spareColumns);
    }
};

INSTANTIATE_TEST_SUITE_P(, Rgb24ToI420,
                         testing::Values(Order{"RGB", &KorRawToI420_C_, 0, 2}, Order{"BGR", &Kor24BGToI420_C_, 2, 0}),
                         testing::PrintToStringParamName());

TEST_P(Rgb24ToI420, WhiteBlackAndPrimariesHaveTheirValues) {
    const struct {
        unsigned colour;
        std::uint8_t y, u, v;
    } rows[] = {{kWhite, 235, 128, 128},
                {kBlack, 16, 128, 128},
                {kRed, 81, 90, 239},
                {kGreen, 144, 54, 34},
                {kBlue, 40, 239, 110}};
    for (const auto& row : rows) {
        EXPECT_EQ(Converted(2, 2, std::vector<unsigned>(4, row.colour)).Samples(),
                  (Bytes{row.y, row.y, row.y, row.y, row.u, row.v}))
            << row.colour;
    }
}

TEST_P(Rgb24ToI420, ChromaIsConvertedBeforeItIsAveraged) {
    // One pixel of blue 3 and three of black: 112 * 3 = 336 gives 1, and (1 + 2) >> 2 = 0. Averaging colours first
    // would give blue 1 and chroma 0 as well, but V -54 floors to -1 here: (-1 + 2) >> 2 = 0.
    EXPECT_EQ(Converted(2, 2, {0x000003, kBlack, kBlack, kBlack}).Samples(), (Bytes{16, 16, 16, 16, 128, 128}));
    // Two such pixels: U (2 + 2) >> 2 = 1, V (-2 + 2) >> 2 = 0. Colours first: blue 2 would give U 0 and V -1.
    EXPECT_EQ(Converted(2, 2, {0x000003, 0x000003, kBlack, kBlack}).Samples(), (Bytes{16, 16, 16, 16, 129, 128}));
    // Three: U (3 + 2) >> 2 = 1, V (-3 + 2) >> 2 = -1.
    EXPECT_EQ(Converted(2, 2, {0x000003, 0x000003, 0x000003, kBlack}).Samples(), (Bytes{16, 16, 16, 16, 129, 127}));
}

TEST_P(Rgb24ToI420, OddLastColumnSpillsToTheRightAndAveragesItsPair) {
    const I420Frame to = Converted(3, 2, {kBlack, kBlack, kRed, kBlack, kBlack, kBlue});
    EXPECT_EQ(Luma(to, 0), (Bytes{16, 16, 81, 81}));
    EXPECT_EQ(Luma(to, 1), (Bytes{16, 16, 40, 40}));
    // nU -38 and 111, nV 111 and -18.
    EXPECT_EQ(to.u.Samples(), (Bytes{128, 128 + 37}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128, 128 + 47}));
}

TEST_P(Rgb24ToI420, OddLastRowSpillsBelowAndAveragesItsPair) {
    const I420Frame to = Converted(2, 3, {kBlack, kBlack, kBlack, kBlack, kRed, kBlue});
    EXPECT_EQ(Luma(to, 2), (Bytes{81, 40}));
    EXPECT_EQ(Luma(to, 3), (Bytes{81, 40}));
    EXPECT_EQ(to.u.Samples(), (Bytes{128, 128 + 37}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128, 128 + 47}));
}

TEST_P(Rgb24ToI420, PairsRoundHalfUp) {
    // nV of blue 3 is -1 and averages with 0 to -0.5, rounded up to 0; nU is 1 and averages to 0.5, rounded up to 1.
    EXPECT_EQ(Converted(1, 2, {0x000003, kBlack}).u.Samples(), (Bytes{129}));
    EXPECT_EQ(Converted(1, 2, {0x000003, kBlack}).v.Samples(), (Bytes{128}));
    EXPECT_EQ(Converted(2, 1, {0x000003, kBlack}).u.Samples(), (Bytes{129}));
    EXPECT_EQ(Converted(2, 1, {0x000003, kBlack}).v.Samples(), (Bytes{128}));
}

TEST_P(Rgb24ToI420, CornerIsNotConvertedButCopiedAndBlended) {
    // Right column red over blue, bottom row green and white, and a corner whose own colour must not matter.
    for (const unsigned corner : {kBlack, kWhite, kBlue, kRed}) {
        const I420Frame to = Converted(3, 3, {kBlack, kBlack, kRed, kBlack, kBlack, kBlue, kGreen, kWhite, corner});
        EXPECT_EQ(Luma(to, 2), (Bytes{144, 235, 40, 0xee}));
        EXPECT_EQ(Luma(to, 3), (Bytes{144, 235, 0xee, 0xee}));
        // Above (165, 175); left: nU -74 and 0 give -37, nV -94 and 0 give -47.
        EXPECT_EQ(to.u.Samples(), (Bytes{128, 165, 91, 128}));
        EXPECT_EQ(to.v.Samples(), (Bytes{128, 175, 81, 128}));
    }
}

TEST_P(Rgb24ToI420, CornerOfASingleRowHasOnlyALeftNeighbour) {
    const I420Frame to = Converted(3, 1, {kRed, kRed, kBlue});
    EXPECT_EQ(Luma(to, 0), (Bytes{81, 81, 40, 0xee}));
    EXPECT_EQ(Luma(to, 1), (Bytes{81, 81, 0xee, 0xee}));
    EXPECT_EQ(to.u.Samples(), (Bytes{90, 90}));
    EXPECT_EQ(to.v.Samples(), (Bytes{239, 239}));
}

TEST_P(Rgb24ToI420, CornerOfASingleColumnHasOnlyAnUpperNeighbour) {
    const I420Frame to = Converted(1, 3, {kRed, kRed, kBlue});
    EXPECT_EQ(Luma(to, 0), (Bytes{81, 81}));
    EXPECT_EQ(Luma(to, 1), (Bytes{81, 81}));
    EXPECT_EQ(Luma(to, 2), (Bytes{81, 0xee}));
    EXPECT_EQ(Luma(to, 3), (Bytes{0xee, 0xee}));
    EXPECT_EQ(to.u.Samples(), (Bytes{90, 90}));
    EXPECT_EQ(to.v.Samples(), (Bytes{239, 239}));
}

TEST_P(Rgb24ToI420, SinglePixelStandsForItself) {
    for (const KorBool flip : kit::kFlips) {
        const I420Frame to = Converted(1, 1, {kRed}, flip);
        EXPECT_EQ(to.Samples(), (Bytes{81, 90, 239}));
        EXPECT_EQ(Luma(to, 0), (Bytes{81, 0xee}));
        EXPECT_EQ(Luma(to, 1), (Bytes{0xee, 0xee}));
    }
}

TEST_P(Rgb24ToI420, FlipReadsTheLastRowFirst) {
    const I420Frame to = Converted(2, 3, {kRed, kRed, kGreen, kGreen, kBlue, kBlue}, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{40, 40, 144, 144, 81, 81}));
    EXPECT_EQ(Luma(to, 3), (Bytes{81, 81}));
    EXPECT_EQ(to.u.At(1, 0), 90);
    EXPECT_EQ(to.v.At(1, 0), 239);
}

TEST_P(Rgb24ToI420, ZeroSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, size, 0, flip);
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, 0, size, flip);
        }
    }
}

TEST_P(Rgb24ToI420, LumaDiffersFromThe32BitCapture) {
    // 8-bit weights here, 7-bit weights there: green gives 144, not 143.
    EXPECT_EQ(Converted(1, 1, {kGreen}).y.At(0, 0), 144);
}

}  // namespace
