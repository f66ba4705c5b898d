// Blending one I420 image over another, with one weight or a weight for every sample.
#include <gtest/gtest.h>

#include <algorithm>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

void Blend(const I420Frame& b, const I420Frame& f, std::size_t width, std::size_t height, std::size_t x, std::size_t y,
           KorUint8 alpha) {
    KorI420AlphaBlend_C_(b.y.data(), b.y.pitch(), b.u.data(), b.u.pitch(), b.v.data(), b.v.pitch(), f.y.data(),
                         f.y.pitch(), f.u.data(), f.u.pitch(), f.v.data(), f.v.pitch(), width, height, x, y, alpha);
}

void BlendArray(const I420Frame& b, const I420Frame& f, const I420Frame& a, std::size_t width, std::size_t height,
                std::size_t x, std::size_t y) {
    KorI420AlphaArrayBlend_C_(b.y.data(), b.y.pitch(), b.u.data(), b.u.pitch(), b.v.data(), b.v.pitch(), f.y.data(),
                              f.y.pitch(), f.u.data(), f.u.pitch(), f.v.data(), f.v.pitch(), width, height, x, y,
                              a.y.data(), a.y.pitch(), a.u.data(), a.u.pitch(), a.v.data(), a.v.pitch());
}

I420Frame Even(std::size_t width, std::size_t height, std::uint8_t value) {
    I420Frame frame(width, height);
    for (const Plane* plane : {&frame.y, &frame.u, &frame.v}) {
        plane->SetAll(value);
    }
    return frame;
}

// The blend of one background and one foreground sample, which is the same in all planes and both functions.
int Blended(std::uint8_t background, std::uint8_t foreground, std::uint8_t alpha) {
    const I420Frame constant = Even(1, 1, background), array = Even(1, 1, background);
    Blend(constant, Even(1, 1, foreground), 1, 1, 0, 0, alpha);
    BlendArray(array, Even(1, 1, foreground), Even(1, 1, alpha), 1, 1, 0, 0);
    EXPECT_EQ(array.Samples(), constant.Samples());
    EXPECT_EQ(constant.Samples(), Bytes(3, constant.y.At(0, 0)));
    return constant.y.At(0, 0);
}

TEST(Blend, WorkedValues) {
    EXPECT_EQ(Blended(0, 255, 128), 128);
    EXPECT_EQ(Blended(255, 0, 128), 127);
    EXPECT_EQ(Blended(100, 200, 128), 150);
}

TEST(Blend, DivisionBy255IsNotRoundedToNearest) {
    // A sum of 128 would round to 1, but gives 0; 254 gives 0 as well, 255 gives 1.
    EXPECT_EQ(Blended(0, 1, 128), 0);
    EXPECT_EQ(Blended(0, 1, 254), 0);
    EXPECT_EQ(Blended(0, 1, 255), 1);
    EXPECT_EQ(Blended(0, 2, 127), 0);
    EXPECT_EQ(Blended(0, 2, 128), 1);
}

TEST(Blend, EqualSamplesStayAndEndsAreExact) {
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (const std::uint8_t sample : Bytes{0, 1, 16, 127, 128, 254, 255}) {
            EXPECT_EQ(Blended(sample, sample, static_cast<std::uint8_t>(alpha)), sample);
        }
    }
    for (int sample = 0; sample < 256; ++sample) {
        EXPECT_EQ(Blended(static_cast<std::uint8_t>(sample), 77, 0), sample);
        EXPECT_EQ(Blended(77, static_cast<std::uint8_t>(sample), 255), sample);
    }
}

// The rows and columns of a plane that differ from the background's value.
struct Covered {
    std::size_t top = SIZE_MAX, left = SIZE_MAX, rows = 0, columns = 0;
};

Covered Changed(const Plane& plane, std::uint8_t background) {
    Covered covered;
    std::size_t bottom = 0, right = 0;
    for (std::size_t row = 0; row < plane.shape().rows; ++row) {
        for (std::size_t column = 0; column < plane.shape().rowBytes; ++column) {
            if (plane.At(row, column) != background) {
                covered.top = std::min(covered.top, row);
                covered.left = std::min(covered.left, column);
                bottom = std::max(bottom, row + 1);
                right = std::max(right, column + 1);
            }
        }
    }
    covered.rows = bottom - covered.top;
    covered.columns = right - covered.left;
    return covered;
}

void ExpectCovers(const Plane& plane, std::size_t top, std::size_t left, std::size_t rows, std::size_t columns) {
    const Covered covered = Changed(plane, 10);
    EXPECT_EQ(covered.top, top);
    EXPECT_EQ(covered.left, left);
    EXPECT_EQ(covered.rows, rows);
    EXPECT_EQ(covered.columns, columns);
}

TEST(Blend, OddPositionRoundsChromaDownAndOddSizeRoundsItUp) {
    // 3 by 3 at (5, 1): luma columns 5 to 7 of rows 1 to 3, chroma columns 2 and 3 of rows 0 and 1.
    for (const bool array : {false, true}) {
        const I420Frame background = Even(12, 8, 10);
        if (array) {
            BlendArray(background, Even(3, 3, 200), Even(3, 3, 255), 3, 3, 5, 1);
        } else {
            Blend(background, Even(3, 3, 200), 3, 3, 5, 1, 255);
        }
        ExpectCovers(background.y, 1, 5, 3, 3);
        ExpectCovers(background.u, 0, 2, 2, 2);
        ExpectCovers(background.v, 0, 2, 2, 2);
    }
}

TEST(Blend, PositionsAndSizesOfBothParities) {
    for (std::size_t x = 0; x < 4; ++x) {
        for (std::size_t y = 0; y < 4; ++y) {
            for (std::size_t width = 1; width < 5; ++width) {
                for (std::size_t height = 1; height < 5; ++height) {
                    const I420Frame background = Even(10, 10, 10);
                    Blend(background, Even(width, height, 200), width, height, x, y, 255);
                    ExpectCovers(background.y, y, x, height, width);
                    ExpectCovers(background.u, y / 2, x / 2, (height + 1) / 2, (width + 1) / 2);
                    ExpectCovers(background.v, y / 2, x / 2, (height + 1) / 2, (width + 1) / 2);
                }
            }
        }
    }
}

TEST(Blend, EndsOfAlphaKeepTheBackgroundOrCopyTheForeground) {
    const I420Frame foreground(6, 4);
    foreground.u.Fill(kit::Pattern::Ramp, 1);
    foreground.v.Fill(kit::Pattern::Noise, 2);
    const I420Frame kept(6, 4), replaced(6, 4);
    const Bytes before = kept.Samples();
    Blend(kept, foreground, 6, 4, 0, 0, 0);
    Blend(replaced, foreground, 6, 4, 0, 0, 255);
    EXPECT_EQ(kept.Samples(), before);
    EXPECT_EQ(replaced.Samples(), foreground.Samples());
}

TEST(Blend, PlanesDoNotMix) {
    const I420Frame background = Even(2, 2, 0);
    const I420Frame foreground(2, 2);
    foreground.y.SetAll(10);
    foreground.u.SetAll(20);
    foreground.v.SetAll(30);
    Blend(background, foreground, 2, 2, 0, 0, 255);
    EXPECT_EQ(background.Samples(), (Bytes{10, 10, 10, 10, 20, 30}));
}

TEST(Blend, ZeroSizesTouchNothing) {
    for (const std::size_t size : kit::Sizes{0, 1, 2, 17}) {
        KorI420AlphaBlend_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, 5, 3,
                             128);
        KorI420AlphaBlend_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, 5, 3,
                             128);
        KorI420AlphaArrayBlend_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, 5, 3,
                                  nullptr, 8, nullptr, 8, nullptr, 8);
        KorI420AlphaArrayBlend_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, 5, 3,
                                  nullptr, 8, nullptr, 8, nullptr, 8);
    }
}

TEST(BlendArray, AlphaSampleWeighsTheForegroundSampleAtItsPlace) {
    const I420Frame background = Even(8, 8, 10), foreground = Even(3, 3, 200), alpha = Even(3, 3, 0);
    alpha.y.At(1, 2) = 255;
    alpha.u.At(0, 1) = 255;
    alpha.v.At(1, 0) = 255;
    BlendArray(background, foreground, alpha, 3, 3, 4, 2);
    ExpectCovers(background.y, 2 + 1, 4 + 2, 1, 1);
    ExpectCovers(background.u, 1 + 0, 2 + 1, 1, 1);
    ExpectCovers(background.v, 1 + 1, 2 + 0, 1, 1);
}

TEST(BlendArray, ChromaTakesItsOwnWeights) {
    const I420Frame background = Even(4, 4, 10), alpha = Even(4, 4, 0);
    alpha.y.SetAll(255);
    BlendArray(background, Even(4, 4, 200), alpha, 4, 4, 0, 0);
    EXPECT_EQ(background.y.Samples(), Bytes(16, 200));
    EXPECT_EQ(background.u.Samples(), Bytes(4, 10));
    EXPECT_EQ(background.v.Samples(), Bytes(4, 10));
}

}  // namespace
