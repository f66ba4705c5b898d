// Dither levels beyond the four named ones: conversions treat them as Off, the filter does nothing at all.
#include <gtest/gtest.h>

#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Dithering.h"
#include "tests/support/Frames.h"

namespace {

using kit::Plane;
using kit::ScriptedRandom;

constexpr KorVideoFrameDitherLevel kUndefined[] = {
    static_cast<KorVideoFrameDitherLevel>(4),
    static_cast<KorVideoFrameDitherLevel>(5),
    static_cast<KorVideoFrameDitherLevel>(0x80000001u),
    static_cast<KorVideoFrameDitherLevel>(0xffffffffu),
};

class UndefinedLevel : public testing::TestWithParam<kit::Ditherer> {};

TEST_P(UndefinedLevel, ConvertsAsWithOffAndDrawsNothing) {
    constexpr std::size_t kWidth = 14, kHeight = 6;
    const kit::YuvPlanes planes(GetParam(), kWidth, kHeight);
    const Plane off(kit::Shape(GetParam().pixelBytes * kWidth, kHeight)), found(off.shape());
    planes.y.Fill(kit::Pattern::Noise, 1);
    planes.u.Fill(kit::Pattern::Noise, 2);
    planes.v.Fill(kit::Pattern::Noise, 3);
    Convert(GetParam(), planes, off, kWidth, kHeight, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    for (const KorVideoFrameDitherLevel level : kUndefined) {
        ScriptedRandom::ServeSeed(4);
        found.SetAll(0x5a);
        Convert(GetParam(), planes, found, kWidth, kHeight, level);
        EXPECT_EQ(found.Difference("x", off.allocation()), "") << static_cast<KorUint>(level);
        EXPECT_TRUE(ScriptedRandom::Draws().empty()) << static_cast<KorUint>(level);
    }
}

INSTANTIATE_TEST_SUITE_P(, UndefinedLevel, testing::ValuesIn(kit::Ditherers()), testing::PrintToStringParamName());

TEST(UndefinedLevelOfTheFilter, DrawsAndWritesNothing) {
    const kit::I420Frame in(14, 6), out(14, 6);
    const kit::Bytes before = out.Samples();
    for (const KorVideoFrameDitherLevel level : kUndefined) {
        for (const KorBool randomize : {KorBool{0}, KorBool{1}}) {
            ScriptedRandom::ServeSeed(4);
            KorI420Dither_C_(in.y.data(), in.y.pitch(), in.u.data(), in.u.pitch(), in.v.data(), in.v.pitch(),
                             out.y.data(), out.y.pitch(), out.u.data(), out.u.pitch(), out.v.data(), out.v.pitch(), 14,
                             6, level, randomize);
            EXPECT_EQ(out.Samples(), before) << static_cast<KorUint>(level);
            EXPECT_TRUE(ScriptedRandom::Draws().empty()) << static_cast<KorUint>(level);
        }
    }
}

}  // namespace
