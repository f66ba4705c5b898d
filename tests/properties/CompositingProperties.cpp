// Relations between the two blends and the dither filter that hold for every picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;

I420Frame Random(std::size_t width, std::size_t height, std::uint64_t number) {
    I420Frame frame(width, height);
    std::uint64_t seed = kit::MixSeed(kit::RunSeed(), number);
    for (const Plane* plane : {&frame.y, &frame.u, &frame.v}) {
        plane->Fill(kit::Pattern::Noise, ++seed);
    }
    return frame;
}

Bytes Blended(const I420Frame& b, const I420Frame& f, std::size_t width, std::size_t height, std::size_t x,
              std::size_t y, KorUint8 alpha) {
    KorI420AlphaBlend_C_(b.y.data(), b.y.pitch(), b.u.data(), b.u.pitch(), b.v.data(), b.v.pitch(), f.y.data(),
                         f.y.pitch(), f.u.data(), f.u.pitch(), f.v.data(), f.v.pitch(), width, height, x, y, alpha);
    return b.Samples();
}

TEST(CompositingProperties, AlphaPlanesOfOneValueAreTheConstantAlpha) {
    for (const std::size_t width : kit::Sizes{1, 2, 5, 16, 33, 100}) {
        for (const std::size_t height : kit::Sizes{1, 2, 5}) {
            for (const int value : {0, 1, 77, 128, 254, 255}) {
                const auto alpha = static_cast<KorUint8>(value);
                const I420Frame f = Random(width, height, 1), a(width, height);
                for (const Plane* plane : {&a.y, &a.u, &a.v}) {
                    plane->SetAll(alpha);
                }
                const I420Frame b = Random(width + 7, height + 5, 2);
                KorI420AlphaArrayBlend_C_(b.y.data(), b.y.pitch(), b.u.data(), b.u.pitch(), b.v.data(), b.v.pitch(),
                                          f.y.data(), f.y.pitch(), f.u.data(), f.u.pitch(), f.v.data(), f.v.pitch(),
                                          width, height, 5, 3, a.y.data(), a.y.pitch(), a.u.data(), a.u.pitch(),
                                          a.v.data(), a.v.pitch());
                EXPECT_EQ(b.Samples(), Blended(Random(width + 7, height + 5, 2), f, width, height, 5, 3, alpha));
            }
        }
    }
}

TEST(CompositingProperties, BlendingAPictureOverItselfChangesNothing) {
    for (int alpha = 0; alpha < 256; ++alpha) {
        const I420Frame picture = Random(33, 5, 3);
        EXPECT_EQ(Blended(picture, Random(33, 5, 3), 33, 5, 0, 0, static_cast<KorUint8>(alpha)),
                  Random(33, 5, 3).Samples());
    }
}

TEST(CompositingProperties, ResultLiesBetweenBackgroundAndForeground) {
    for (int alpha = 0; alpha < 256; ++alpha) {
        const Bytes b = Random(40, 6, 4).Samples(), f = Random(40, 6, 5).Samples();
        const Bytes result = Blended(Random(40, 6, 4), Random(40, 6, 5), 40, 6, 0, 0, static_cast<KorUint8>(alpha));
        for (std::size_t i = 0; i < result.size(); ++i) {
            ASSERT_GE(result[i], std::min(b[i], f[i]));
            ASSERT_LE(result[i], std::max(b[i], f[i]));
        }
    }
}

TEST(CompositingProperties, FilterOfASampleDependsOnItsPlaceAndItselfAlone) {
    // Two pictures that share half of their samples: the shared samples must come out the same.
    const I420Frame one = Random(38, 6, 6), two = Random(38, 6, 7), outOne(38, 6), outTwo(38, 6);
    for (std::size_t row = 0; row < 6; ++row) {
        for (std::size_t column = row % 2; column < 38; column += 2) {
            two.y.At(row, column) = one.y.At(row, column);
        }
    }
    for (const auto& pair : {std::make_pair(&one, &outOne), std::make_pair(&two, &outTwo)}) {
        kit::ScriptedRandom::ServeSeed(9);
        const I420Frame& in = *pair.first;
        const I420Frame& out = *pair.second;
        KorI420Dither_C_(in.y.data(), in.y.pitch(), in.u.data(), in.u.pitch(), in.v.data(), in.v.pitch(), out.y.data(),
                         out.y.pitch(), out.u.data(), out.u.pitch(), out.v.data(), out.v.pitch(), 38, 6,
                         KOR_VIDEOFRAMEDITHERLEVEL_1, 1);
    }
    for (std::size_t row = 0; row < 6; ++row) {
        for (std::size_t column = row % 2; column < 38; column += 2) {
            EXPECT_EQ(outTwo.y.At(row, column), outOne.y.At(row, column));
        }
    }
}

}  // namespace
