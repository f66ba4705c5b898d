// Dither in the renderers and packers: which draws are made, where the noise starts, how it walks, what it adds.
#include <gtest/gtest.h>

#include <cstring>

#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Dithering.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::Ditherer;
using kit::NoiseWalk;
using kit::Plane;
using kit::ScriptedRandom;
using kit::Shape;
using kit::YuvPlanes;

constexpr KorVideoFrameDitherLevel kOff = KOR_VIDEOFRAMEDITHERLEVEL_Off;
constexpr KorVideoFrameDitherLevel kStrongest = KOR_VIDEOFRAMEDITHERLEVEL_2;

class Dither : public testing::TestWithParam<Ditherer> {
  protected:
    // Planes of random samples, the same ones for the same size.
    YuvPlanes Picture(std::size_t width, std::size_t height) const {
        YuvPlanes planes(GetParam(), width, height);
        planes.y.Fill(kit::Pattern::Noise, 1);
        planes.u.Fill(kit::Pattern::Noise, 2);
        planes.v.Fill(kit::Pattern::Noise, 3);
        return planes;
    }

    Bytes Converted(const YuvPlanes& planes, std::size_t width, std::size_t height,
                    KorVideoFrameDitherLevel level) const {
        const Plane x(Shape(GetParam().pixelBytes * width, height));
        Convert(GetParam(), planes, x, width, height, level);
        return x.Samples();
    }

    Bytes Dithered(std::size_t width, std::size_t height, const std::size_t (&drawn)[3],
                   KorVideoFrameDitherLevel level) const {
        ScriptedRandom::ServeScript({drawn[0], drawn[1], drawn[2]});
        return Converted(Picture(width, height), width, height, level);
    }

    // The noise is added first, followed by the plain conversion.
    Bytes Expected(std::size_t width, std::size_t height, const std::size_t (&drawn)[3],
                   KorVideoFrameDitherLevel level) const {
        const YuvPlanes planes = Picture(width, height);
        AddNoise(GetParam(), planes, width, height, drawn, level);
        return Converted(planes, width, height, kOff);
    }
};

INSTANTIATE_TEST_SUITE_P(, Dither, testing::ValuesIn(kit::Ditherers()), testing::PrintToStringParamName());

// ---- Draws -------------------------------------------------------------------------------------------------------

TEST_P(Dither, OffDrawsNothing) {
    ScriptedRandom::ServeSeed(1);
    Converted(Picture(8, 4), 8, 4, kOff);
    EXPECT_TRUE(ScriptedRandom::Draws().empty());
}

TEST_P(Dither, DrawsThreeWholeIndexVariables) {
    const std::vector<std::size_t> threeIndices(3, sizeof(KorSizeT));
    for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
        ScriptedRandom::ServeSeed(1);
        Converted(Picture(8, 4), 8, 4, level);
        EXPECT_EQ(ScriptedRandom::Draws(), threeIndices);
    }
}

TEST_P(Dither, DrawsEvenIfThereIsNothingToConvert) {
    const std::vector<std::size_t> threeIndices(3, sizeof(KorSizeT));
    for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 9}) {
            for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
                if (GetParam().fullChroma && tooSmall == 1) {
                    continue;  // I444 converts a single row or column
                }
                ScriptedRandom::ServeSeed(1);
                GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, tooSmall, level);
                EXPECT_EQ(ScriptedRandom::Draws(), threeIndices);
                ScriptedRandom::ServeSeed(1);
                GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall, size, level);
                EXPECT_EQ(ScriptedRandom::Draws(), threeIndices);
            }
        }
    }
}

TEST_P(Dither, EachCallDrawsAnew) {
    ScriptedRandom::ServeSeed(kit::RunSeed());
    const YuvPlanes planes = Picture(40, 6);
    const Bytes first = Converted(planes, 40, 6, kStrongest);
    EXPECT_NE(Converted(planes, 40, 6, kStrongest), first);
    EXPECT_EQ(ScriptedRandom::Draws().size(), 6u);
}

TEST_P(Dither, ServiceOfZerosMakesNoiseAFunctionOfTheTable) {
    const std::size_t zeros[3] = {0, 0, 0};
    for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
        EXPECT_EQ(Dithered(17, 5, zeros, level), Expected(17, 5, zeros, level));
        EXPECT_EQ(Dithered(17, 5, zeros, level), Dithered(17, 5, zeros, level));
    }
}

TEST_P(Dither, FailingServiceIsIgnored) {
    ScriptedRandom::Fail();
    const YuvPlanes planes = Picture(17, 5);
    const Plane x(Shape(GetParam().pixelBytes * 17, 5, 3));
    const Bytes before = x.Snapshot();
    Convert(GetParam(), planes, x, 17, 5, kStrongest);
    EXPECT_EQ(ScriptedRandom::Draws().size(), 3u);
    EXPECT_EQ(x.GapDifference("x", before.data()), "");
}

TEST_P(Dither, ServiceThatLeavesTheIndexAloneLeavesItAtTheStartOfTheTable) {
    ScriptedRandom::Fail();
    EXPECT_EQ(Converted(Picture(17, 5), 17, 5, kStrongest), Expected(17, 5, {0, 0, 0}, kStrongest));
}

// ---- Starts and walks --------------------------------------------------------------------------------------------

TEST_P(Dither, EqualsThePlainConversionOfANoisyPicture) {
    // Starts in every region of the table, the order of the three, and bits beyond the table's size.
    const std::size_t starts[][3] = {
        {0, 1, 2},
        {kit::kExtremeNoise + 8, kit::kSmallNoise + 77, kit::kWideNoise + 1003},
        {kit::kNoiseRamp + 4096 - 64, kit::kNoiseRamp + 4096 - 63, kit::kNoiseRamp + 4096 - 31},
        {kit::kWideNoise, kit::kExtremeNoise + 5, kit::kNoiseRamp + 3900},
        {SIZE_MAX, SIZE_MAX - 1, SIZE_MAX - 12345},
        {SIZE_MAX - 99, SIZE_MAX / 2, 0x12345}};
    const std::size_t sizes[][2] = {{2, 2}, {7, 3}, {8, 4}, {9, 4}, {16, 7}, {33, 10}, {130, 6}};
    for (const auto& size : sizes) {
        for (const auto& start : starts) {
            for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
                EXPECT_EQ(Dithered(size[0], size[1], start, level), Expected(size[0], size[1], start, level))
                    << size[0] << "x" << size[1] << " from " << start[0] << ", " << start[1] << ", " << start[2];
            }
        }
    }
}

TEST_P(Dither, LumaStartsAtAMultipleOfEight) {
    const std::size_t aligned[3] = {kit::kWideNoise + 80, 5, 6};
    const Bytes expected = Dithered(24, 4, aligned, kStrongest);
    for (std::size_t low = 1; low < 8; ++low) {
        const std::size_t drawn[3] = {aligned[0] + low + 5 * kit::kNoiseEntries, 5, 6};
        EXPECT_EQ(Dithered(24, 4, drawn, kStrongest), expected);
    }
    const std::size_t next[3] = {aligned[0] + 8, 5, 6};
    EXPECT_NE(Dithered(24, 4, next, kStrongest), expected);
}

TEST_P(Dither, ChromaStartsWhereItsMaskSays) {
    for (const std::size_t plane : kit::Sizes{1, 2}) {
        std::size_t drawn[3] = {0, kit::kWideNoise + 80, kit::kWideNoise + 160};
        const Bytes first = Dithered(24, 4, drawn, kStrongest);
        drawn[plane] += 1;
        const Bytes second = Dithered(24, 4, drawn, kStrongest);
        EXPECT_EQ(first == second, GetParam().chromaStartMask == 0x3ff8);
        drawn[plane] += 8 * kit::kNoiseEntries;
        EXPECT_EQ(Dithered(24, 4, drawn, kStrongest), second);
    }
}

TEST_P(Dither, WalksWrapAtTheEndOfTheTable) {
    for (const std::size_t back : kit::Sizes{8, 16, 24, 32, 40, 48}) {
        const std::size_t drawn[3] = {kit::kNoiseEntries - back, kit::kNoiseEntries - back,
                                      kit::kNoiseEntries - back / 2};
        for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
            EXPECT_EQ(Dithered(37, 8, drawn, level), Expected(37, 8, drawn, level)) << back;
            EXPECT_EQ(Dithered(16, 8, drawn, level), Expected(16, 8, drawn, level)) << back;
        }
    }
}

TEST_P(Dither, PicturesLargerThanTheTableWrapAgainAndAgain) {
    const std::size_t drawn[3] = {4096, 777, 9999};
    EXPECT_EQ(Dithered(515, 70, drawn, KOR_VIDEOFRAMEDITHERLEVEL_0),
              Expected(515, 70, drawn, KOR_VIDEOFRAMEDITHERLEVEL_0));
    EXPECT_EQ(Dithered(17000, 4, drawn, kStrongest), Expected(17000, 4, drawn, kStrongest));
}

// ---- Noise values, seen through the packer, which copies samples unchanged ------------------------------------------

// The luma samples of the upper row and the U samples of a dithered picture of one sample value.
struct Seen {
    Bytes luma, u;
};

Seen Look(std::uint8_t sample, std::size_t width, std::size_t lumaStart, std::size_t uStart,
          KorVideoFrameDitherLevel level) {
    const kit::I420Frame from(width, 2);
    for (const Plane* plane : {&from.y, &from.u, &from.v}) {
        plane->SetAll(sample);
    }
    const Plane x(Shape(2 * width, 2));
    ScriptedRandom::ServeScript({lumaStart, uStart, 0});
    KorI420ToYUY2_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                     x.data(), x.pitch(), width, 2, level);
    Seen seen;
    for (std::size_t i = 0; i < width; ++i) {
        seen.luma.push_back(x.At(0, 2 * i));
    }
    for (std::size_t i = 0; i < width / 2; ++i) {
        seen.u.push_back(x.At(0, 4 * i + 1));
    }
    return seen;
}

// The index of an entry of -8; entries count up from there.
constexpr std::size_t kMinusEight = kit::kNoiseRamp + 4096 - 8;

TEST(DitherNoise, WeakestLevelDividesByFourAndByEight) {
    const Seen seen = Look(100, 32, kMinusEight, kMinusEight, KOR_VIDEOFRAMEDITHERLEVEL_0);
    EXPECT_EQ(Bytes(seen.luma.begin(), seen.luma.begin() + 16),
              (Bytes{98, 98, 99, 99, 99, 99, 100, 100, 100, 100, 101, 101, 101, 101, 102, 102}));
    EXPECT_EQ(seen.u, (Bytes{99, 99, 99, 99, 100, 100, 100, 100, 100, 100, 100, 100, 101, 101, 101, 101}));
}

TEST(DitherNoise, MediumLevelDividesByTwoAndByFour) {
    const Seen seen = Look(100, 32, kMinusEight, kMinusEight, KOR_VIDEOFRAMEDITHERLEVEL_1);
    EXPECT_EQ(Bytes(seen.luma.begin(), seen.luma.begin() + 16),
              (Bytes{96, 97, 97, 98, 98, 99, 99, 100, 100, 101, 101, 102, 102, 103, 103, 104}));
    EXPECT_EQ(seen.u, (Bytes{98, 98, 99, 99, 99, 99, 100, 100, 100, 100, 101, 101, 101, 101, 102, 102}));
}

TEST(DitherNoise, StrongestLevelTakesEntriesAsTheyAreAndHalvesThemForChroma) {
    const Seen seen = Look(100, 32, kMinusEight, kMinusEight, KOR_VIDEOFRAMEDITHERLEVEL_2);
    EXPECT_EQ(Bytes(seen.luma.begin(), seen.luma.begin() + 16),
              (Bytes{92, 93, 94, 95, 96, 97, 98, 99, 100, 101, 102, 103, 104, 105, 106, 107}));
    EXPECT_EQ(seen.u, (Bytes{96, 97, 97, 98, 98, 99, 99, 100, 100, 101, 101, 102, 102, 103, 103, 104}));
}

TEST(DitherNoise, ExtremeEntriesSaturateAndDoNotWrap) {
    for (const std::uint8_t sample : Bytes{0, 1, 128, 254, 255}) {
        const Seen seen = Look(sample, 64, kit::kExtremeNoise, kit::kExtremeNoise, kStrongest);
        for (std::size_t i = 0; i < 64; ++i) {
            const int entry = kit::NoiseEntry(kit::kExtremeNoise + i);
            if (entry < -1000 || entry > 1000) {
                EXPECT_EQ(seen.luma[i], entry < 0 ? 0 : 255);
                if (i < 32) {
                    EXPECT_EQ(seen.u[i], entry < 0 ? 0 : 255);
                }
            }
        }
    }
}

}  // namespace
