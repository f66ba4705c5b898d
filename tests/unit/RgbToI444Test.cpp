// Capture of BGRA to I444, with either matrix.
#include <gtest/gtest.h>

#include <ostream>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I444Frame;
using kit::Plane;
using kit::Shape;

constexpr std::uint8_t kBlack[4] = {0, 0, 0, 9}, kWhite[4] = {255, 255, 255, 9}, kRed[4] = {0, 0, 255, 9},
                       kGreen[4] = {0, 255, 0, 9}, kBlue[4] = {255, 0, 0, 9};

struct Capture {
    const char* name;
    kit::CaptureFunction convert;
    Bytes black, white, red, green, blue;  // Y, U, V
};

void PrintTo(const Capture& capture, std::ostream* out) {
    *out << capture.name;
}

void Convert(kit::CaptureFunction convert, const I444Frame& to, const Plane& x, std::size_t width, std::size_t height,
             KorBool flip) {
    convert(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(), x.pitch(), width,
            height, flip);
}

class BgraToI444 : public testing::TestWithParam<Capture> {
  protected:
    Bytes Pixel(const std::uint8_t (&pixel)[4], KorBool flip = 0) const {
        const Plane x(Shape(4, 1));
        x.SetSamples(Bytes(pixel, pixel + 4));
        const I444Frame to(1, 1);
        Convert(GetParam().convert, to, x, 1, 1, flip);
        return {to.y.At(0, 0), to.u.At(0, 0), to.v.At(0, 0)};
    }
};

std::vector<Capture> Captures() {
    return {
        {"BT601", &KorBGRAToI444_C_, {16, 128, 128}, {235, 128, 128}, {81, 90, 239}, {143, 54, 34}, {41, 239, 110}},
        {"BT709",
         &KorBGRAToI444UsingBT709_C_,
         {16, 128, 128},
         {235, 127, 128},
         {62, 102, 239},
         {172, 41, 26},
         {31, 239, 118}},
    };
}

INSTANTIATE_TEST_SUITE_P(, BgraToI444, testing::ValuesIn(Captures()), testing::PrintToStringParamName());

TEST_P(BgraToI444, WhiteBlackAndPrimariesHaveTheirValues) {
    for (const KorBool flip : kit::kFlips) {
        EXPECT_EQ(Pixel(kBlack, flip), GetParam().black);
        EXPECT_EQ(Pixel(kWhite, flip), GetParam().white);
        EXPECT_EQ(Pixel(kRed, flip), GetParam().red);
        EXPECT_EQ(Pixel(kGreen, flip), GetParam().green);
        EXPECT_EQ(Pixel(kBlue, flip), GetParam().blue);
    }
}

TEST_P(BgraToI444, EveryPixelStandsForItselfAtOddSizesToo) {
    const Plane x(Shape(12, 3, 5));
    x.Fill(kit::Pattern::Noise, 4);
    const I444Frame to(3, 3, 4);
    const Bytes before = to.v.Snapshot();
    Convert(GetParam().convert, to, x, 3, 3, 0);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const std::uint8_t* p = &x.At(row, 4 * column);
            EXPECT_EQ(Pixel({p[0], p[1], p[2], 0}),
                      (Bytes{to.y.At(row, column), to.u.At(row, column), to.v.At(row, column)}));
        }
    }
    EXPECT_EQ(to.v.GapDifference("v", before.data()), "");
}

TEST_P(BgraToI444, AlphaNeverCounts) {
    for (std::size_t width = 1; width <= 19; ++width) {
        const Plane x(Shape(4 * width, 2));
        x.Fill(kit::Pattern::Noise, width);
        const I444Frame to(width, 2);
        Convert(GetParam().convert, to, x, width, 2, 0);
        const Bytes y = to.y.Samples(), u = to.u.Samples(), v = to.v.Samples();
        for (std::size_t pixel = 0; pixel < 2 * width; ++pixel) {
            x.At(pixel / width, pixel % width * 4 + 3) ^= 0xff;
        }
        Convert(GetParam().convert, to, x, width, 2, 0);
        EXPECT_TRUE(to.y.Samples() == y && to.u.Samples() == u && to.v.Samples() == v);
    }
}

TEST_P(BgraToI444, AlphaAtTheEndOfTheImageIsNotEvenRead) {
    for (std::size_t width = 1; width <= 40; ++width) {
        kit::PlaneShape shape = Shape(4 * width - 1, 2);
        shape.pitch = 4 * width;
        const Plane x(shape);
        const I444Frame to(width, 2);
        Convert(GetParam().convert, to, x, width, 2, 0);
    }
}

TEST_P(BgraToI444, ZeroSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, size, 0, flip);
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, 0, size, flip);
        }
    }
}

TEST(BgraToI444Bt601, FlipReadsTheLastRowFirst) {
    const Plane x(Shape(4, 3));
    x.SetSamples({0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0});
    const I444Frame to(1, 3);
    Convert(&KorBGRAToI444_C_, to, x, 1, 3, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{41, 143, 81}));
    EXPECT_EQ(to.u.Samples(), (Bytes{239, 54, 90}));
    EXPECT_EQ(to.v.Samples(), (Bytes{110, 34, 239}));
}

TEST(BgraToI444Bt709, FlipStartsAtTheLastRowAndGoesOnDownwards) {
    // The source extends below the image: rows 0, 1 and 2 in memory are red, green, blue.
    const Plane x(Shape(4, 3));
    x.SetSamples({0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0});
    const I444Frame to(1, 2);
    Convert(&KorBGRAToI444UsingBT709_C_, to, x, 1, 2, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{172, 31}));
    EXPECT_EQ(to.u.Samples(), (Bytes{41, 239}));
    EXPECT_EQ(to.v.Samples(), (Bytes{26, 118}));
}

}  // namespace
