// Every sample value with every entry of the noise table at every level, through every function that adds noise. The
// table of the test programs holds all entries that saturate no sample, and some that saturate every sample.
#include <gtest/gtest.h>

#include <vector>

#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Dithering.h"

namespace {

using kit::Plane;
using kit::ScriptedRandom;
using kit::Shape;

// Two rows of luma walk through the whole table; chroma does so in two passes with different starts.
constexpr std::size_t kWidth = 8192;
constexpr std::size_t kChromaStarts[] = {0, 4096, 8192, 12288};

class AllNoise : public testing::TestWithParam<kit::Ditherer> {};

TEST_P(AllNoise, EqualsThePlainConversionOfANoisyPicture) {
    const Plane dithered(Shape(GetParam().pixelBytes * kWidth, 2)), plain(dithered.shape());
    const kit::YuvPlanes planes(GetParam(), kWidth, 2);
    for (const KorVideoFrameDitherLevel level : kit::kNoisyLevels) {
        for (unsigned sample = 0; sample < 256; ++sample) {
            const auto value = static_cast<std::uint8_t>(sample);
            const std::size_t chroma = kChromaStarts[sample % 4];
            const std::size_t drawn[3] = {0, chroma, kChromaStarts[(sample + 1) % 4]};
            planes.y.SetAll(value);
            planes.u.SetAll(value);
            planes.v.SetAll(value);
            ScriptedRandom::ServeScript({drawn[0], drawn[1], drawn[2]});
            Convert(GetParam(), planes, dithered, kWidth, 2, level);
            AddNoise(GetParam(), planes, kWidth, 2, drawn, level);
            Convert(GetParam(), planes, plain, kWidth, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off);
            ASSERT_EQ(dithered.Difference("x", plain.allocation()), "") << "sample " << sample;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, AllNoise, testing::ValuesIn(kit::Ditherers()), testing::PrintToStringParamName());

TEST(AllNoiseOfTheFilter, EverySampleWithEveryEntryAtEveryLevel) {
    const Plane in(Shape(kWidth, 2)), y(Shape(kWidth, 2)), u(Shape(kWidth / 2, 1)), v(Shape(kWidth / 2, 1));
    for (unsigned level = 0; level < 4; ++level) {
        for (unsigned sample = 0; sample < 256; ++sample) {
            const auto value = static_cast<std::uint8_t>(sample);
            in.SetAll(value);
            for (const std::size_t start : kChromaStarts) {
                ScriptedRandom::ServeScript({0, start, start + 1});
                const auto ditherLevel = static_cast<KorVideoFrameDitherLevel>(level);
                KorI420Dither_C_(in.data(), kWidth, in.data(), kWidth, in.data(), kWidth, y.data(), kWidth, u.data(),
                                 kWidth, v.data(), kWidth, kWidth, 2, ditherLevel, 1);
                const std::uint8_t* luma = y.data();
                for (std::size_t i = 0; i < 2 * kWidth; ++i) {
                    if (luma[i] != kit::WithNoise(value, i, ditherLevel, false)) {
                        FAIL() << "luma " << sample << " at index " << i << ", level " << level;
                    }
                }
                for (std::size_t i = 0; i < kWidth / 2; ++i) {
                    if (u.At(0, i) != kit::WithNoise(value, start + i, ditherLevel, true) ||
                        v.At(0, i) != kit::WithNoise(value, start + 1 + i, ditherLevel, true)) {
                        FAIL() << "chroma " << sample << " at index " << start + i << ", level " << level;
                    }
                }
            }
        }
    }
}

}  // namespace
