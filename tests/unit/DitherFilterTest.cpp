// The I420 dither filter: start offsets, its own walk through the table, odd sizes, filtering in place.
#include <gtest/gtest.h>

#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Dithering.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::ScriptedRandom;
using kit::Shape;
using kit::WithNoise;

constexpr KorVideoFrameDitherLevel kAllLevels[] = {KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_0,
                                                   KOR_VIDEOFRAMEDITHERLEVEL_1, KOR_VIDEOFRAMEDITHERLEVEL_2};

void Filter(const I420Frame& in, const I420Frame& out, std::size_t width, std::size_t height,
            KorVideoFrameDitherLevel level, KorBool randomize) {
    KorI420Dither_C_(in.y.data(), in.y.pitch(), in.u.data(), in.u.pitch(), in.v.data(), in.v.pitch(), out.y.data(),
                     out.y.pitch(), out.u.data(), out.u.pitch(), out.v.data(), out.v.pitch(), width, height, level,
                     randomize);
}

I420Frame Grey(std::size_t width, std::size_t height) {
    I420Frame frame(width, height);
    for (const Plane* plane : {&frame.y, &frame.u, &frame.v}) {
        plane->SetAll(128);
    }
    return frame;
}

// A grey sample filtered with the table entry at an index.
std::uint8_t GreyLuma(std::size_t index, KorVideoFrameDitherLevel level) {
    return WithNoise(128, index, level, false);
}
std::uint8_t GreyChroma(std::size_t index, KorVideoFrameDitherLevel level) {
    return WithNoise(128, index, level, true);
}

TEST(DitherFilter, FixedOffsetsRunThroughYThenUThenV) {
    for (const KorVideoFrameDitherLevel level : kAllLevels) {
        const I420Frame out(4, 2);
        ScriptedRandom::ServeSeed(1);
        Filter(Grey(4, 2), out, 4, 2, level, 0);
        EXPECT_TRUE(ScriptedRandom::Draws().empty());
        for (std::size_t i = 0; i < 8; ++i) {
            EXPECT_EQ(out.y.At(i / 4, i % 4), GreyLuma(i, level));
        }
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(out.u.At(0, i), GreyChroma(8 + i, level));
            EXPECT_EQ(out.v.At(0, i), GreyChroma(10 + i, level));
        }
    }
}

TEST(DitherFilter, FixedOffsetsAreTakenModuloTheTable) {
    // 130 * 130 = 16900 exceeds the size of the table.
    const I420Frame out(130, 130);
    Filter(Grey(130, 130), out, 130, 130, KOR_VIDEOFRAMEDITHERLEVEL_2, 0);
    EXPECT_EQ(out.u.At(0, 0), GreyChroma(16900, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.v.At(0, 3), GreyChroma(16900 + 65 * 65 + 3, KOR_VIDEOFRAMEDITHERLEVEL_2));
}

TEST(DitherFilter, OddSizesCountFullyInTheFixedOffsetsOfUAndByHalfInThoseOfV) {
    const I420Frame out(5, 3);
    Filter(Grey(5, 3), out, 5, 3, KOR_VIDEOFRAMEDITHERLEVEL_1, 0);
    EXPECT_EQ(out.u.At(0, 1), GreyChroma(15 + 1, KOR_VIDEOFRAMEDITHERLEVEL_1));
    EXPECT_EQ(out.v.At(0, 1), GreyChroma(15 + 2 + 1, KOR_VIDEOFRAMEDITHERLEVEL_1));
}

TEST(DitherFilter, RandomOffsetsAreThreeDrawsOfTwoBytes) {
    const I420Frame out(4, 2);
    ScriptedRandom::ServeScript({0x1234, 0x2345, 0x3456});
    Filter(Grey(4, 2), out, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_2, 1);
    EXPECT_EQ(ScriptedRandom::Draws(), (std::vector<std::size_t>{2, 2, 2}));
    EXPECT_EQ(out.y.At(1, 3), GreyLuma(0x1234 + 4 + 3, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.u.At(0, 1), GreyChroma(0x2345 + 1, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.v.At(0, 1), GreyChroma(0x3456 + 1, KOR_VIDEOFRAMEDITHERLEVEL_2));
}

TEST(DitherFilter, RandomOffsetsAreNotAligned) {
    // Starts are not aligned, up to the largest 16-bit number, and the walk wraps around the table.
    for (const std::size_t start : kit::Sizes{1, 7, 16377, 16383, 0x8000, 0xffff}) {
        const I420Frame out(12, 4);
        ScriptedRandom::ServeScript({start, start, start});
        Filter(Grey(12, 4), out, 12, 4, KOR_VIDEOFRAMEDITHERLEVEL_2, 255);
        for (std::size_t i = 0; i < 12; ++i) {
            EXPECT_EQ(out.y.At(0, i), GreyLuma(start + i, KOR_VIDEOFRAMEDITHERLEVEL_2));
            EXPECT_EQ(out.y.At(3, i), GreyLuma(start + 24 + i, KOR_VIDEOFRAMEDITHERLEVEL_2));
        }
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(out.u.At(1, i), GreyChroma(start + 12 + i, KOR_VIDEOFRAMEDITHERLEVEL_2));
            EXPECT_EQ(out.v.At(1, i), GreyChroma(start + 12 + i, KOR_VIDEOFRAMEDITHERLEVEL_2));
        }
    }
}

TEST(DitherFilter, LowerRowOfAPairAndUpperRowOfTheNextHaveTheSameNoise) {
    const I420Frame out(4, 6);
    ScriptedRandom::ServeScript({kit::kWideNoise, 0, 0});
    Filter(Grey(4, 6), out, 4, 6, KOR_VIDEOFRAMEDITHERLEVEL_1, 1);
    EXPECT_EQ(out.y.Row(1), out.y.Row(2));
    EXPECT_EQ(out.y.Row(3), out.y.Row(4));
    EXPECT_EQ(out.y.At(1, 0), GreyLuma(kit::kWideNoise + 4, KOR_VIDEOFRAMEDITHERLEVEL_1));
    EXPECT_EQ(out.y.At(5, 3), GreyLuma(kit::kWideNoise + 12 + 3, KOR_VIDEOFRAMEDITHERLEVEL_1));
}

TEST(DitherFilter, ChromaRowsAreAFullLumaWidthApartInTheTable) {
    const I420Frame out(7, 6);
    ScriptedRandom::ServeScript({0, 100, 200});
    Filter(Grey(7, 6), out, 7, 6, KOR_VIDEOFRAMEDITHERLEVEL_2, 1);
    EXPECT_EQ(out.u.At(2, 2), GreyChroma(100 + 2 * 7 + 2, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.v.At(1, 0), GreyChroma(200 + 7, KOR_VIDEOFRAMEDITHERLEVEL_2));
}

TEST(DitherFilter, OffIsTheWeakestLevelOfAll) {
    // Entries from -8 upwards: divided by 8 for luma and by 16 for chroma, rounded.
    const std::size_t minusEight = kit::kNoiseRamp + 4096 - 8;
    const I420Frame out(32, 2);
    ScriptedRandom::ServeScript({minusEight, minusEight, minusEight});
    Filter(Grey(32, 2), out, 32, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off, 1);
    const Bytes luma = out.y.Row(0);
    EXPECT_EQ(Bytes(luma.begin(), luma.begin() + 16),
              (Bytes{127, 127, 127, 127, 128, 128, 128, 128, 128, 128, 128, 128, 129, 129, 129, 129}));
    EXPECT_EQ(out.u.Row(0), (Bytes{128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128}));
    EXPECT_EQ(GreyChroma(minusEight - 1, KOR_VIDEOFRAMEDITHERLEVEL_Off), 127);
}

TEST(DitherFilter, SameInputGivesTheSameOutputWithFixedOffsets) {
    const I420Frame in(9, 5), first(9, 5), second(9, 5);
    Filter(in, first, 9, 5, KOR_VIDEOFRAMEDITHERLEVEL_1, 0);
    Filter(in, second, 9, 5, KOR_VIDEOFRAMEDITHERLEVEL_1, 0);
    EXPECT_EQ(first.Samples(), second.Samples());
}

TEST(DitherFilter, OddLastColumnAndRowAreNotWritten) {
    const I420Frame out(5, 3, 2);
    for (const Plane* plane : {&out.y, &out.u, &out.v}) {
        plane->SetAll(0xee);
    }
    const Bytes before = out.y.Snapshot();
    ScriptedRandom::ServeScript({kit::kNoiseRamp + 5000, kit::kNoiseRamp + 5000, kit::kNoiseRamp + 5000});
    Filter(Grey(5, 3), out, 5, 3, KOR_VIDEOFRAMEDITHERLEVEL_2, 1);
    EXPECT_EQ(out.y.Samples(),
              (Bytes{255, 255, 255, 255, 0xee, 255, 255, 255, 255, 0xee, 0xee, 0xee, 0xee, 0xee, 0xee}));
    EXPECT_EQ(out.u.Samples(), (Bytes{255, 255, 0xee, 0xee, 0xee, 0xee}));
    EXPECT_EQ(out.v.Samples(), (Bytes{255, 255, 0xee, 0xee, 0xee, 0xee}));
    EXPECT_EQ(out.y.GapDifference("y", before.data()), "");
}

TEST(DitherFilter, ExtremeEntriesSaturate) {
    const I420Frame in = Grey(32, 2), out(32, 2);
    ScriptedRandom::ServeScript({kit::kExtremeNoise, kit::kExtremeNoise, kit::kExtremeNoise});
    Filter(in, out, 32, 2, KOR_VIDEOFRAMEDITHERLEVEL_2, 1);
    for (std::size_t i = 0; i < 32; ++i) {
        const int entry = kit::NoiseEntry(kit::kExtremeNoise + i);
        if (entry < -1000 || entry > 1000) {
            EXPECT_EQ(out.y.At(0, i), entry < 0 ? 0 : 255);
        }
    }
}

TEST(DitherFilter, TooSmallSizesWriteNothingButDraw) {
    for (const KorVideoFrameDitherLevel level : kAllLevels) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
                for (const KorBool randomize : kit::kFlips) {
                    ScriptedRandom::ServeSeed(1);
                    KorI420Dither_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size,
                                     tooSmall, level, randomize);
                    KorI420Dither_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall,
                                     size, level, randomize);
                    EXPECT_EQ(ScriptedRandom::Draws(), std::vector<std::size_t>(randomize != 0 ? 6 : 0, 2));
                }
            }
        }
    }
}

TEST(DitherFilter, FailingServiceIsIgnored) {
    ScriptedRandom::Fail();
    const I420Frame out(9, 5, 4);
    const Bytes before = out.y.Snapshot();
    Filter(Grey(9, 5), out, 9, 5, KOR_VIDEOFRAMEDITHERLEVEL_2, 1);
    EXPECT_EQ(ScriptedRandom::Draws().size(), 3u);
    EXPECT_EQ(out.y.GapDifference("y", before.data()), "");
    // The index is zero before the draw and stays so if the service leaves it alone.
    EXPECT_EQ(out.y.At(0, 0), GreyLuma(0, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.u.At(0, 0), GreyChroma(0, KOR_VIDEOFRAMEDITHERLEVEL_2));
    EXPECT_EQ(out.v.At(0, 0), GreyChroma(0, KOR_VIDEOFRAMEDITHERLEVEL_2));
}

TEST(DitherFilter, InPlaceEqualsOutOfPlace) {
    for (const KorVideoFrameDitherLevel level : kAllLevels) {
        const I420Frame picture(37, 7), separate(37, 7);
        picture.y.Fill(kit::Pattern::Noise, 1);
        // The odd edges are not written, so both must start with the same samples there.
        separate.y.SetSamples(picture.y.Samples());
        separate.u.SetSamples(picture.u.Samples());
        separate.v.SetSamples(picture.v.Samples());
        ScriptedRandom::ServeSeed(7);
        Filter(picture, separate, 37, 7, level, 1);
        ScriptedRandom::ServeSeed(7);
        Filter(picture, picture, 37, 7, level, 1);
        EXPECT_EQ(picture.Samples(), separate.Samples());
    }
}

}  // namespace
