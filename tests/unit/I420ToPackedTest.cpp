// I420 packed as YUY2 and UYVY, without dither.
#include <gtest/gtest.h>

#include <ostream>

#include "conformance/core/Functions.h"
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

struct Packer {
    const char* name;
    kit::RenderFunction pack;
    std::size_t left, u, right, v;
};

void PrintTo(const Packer& packer, std::ostream* out) {
    *out << packer.name;
}

class I420ToPacked : public testing::TestWithParam<Packer> {
  protected:
    void Pack(const I420Frame& from, const Plane& x, std::size_t width, std::size_t height) const {
        GetParam().pack(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                        x.data(), x.pitch(), width, height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    }

    // The samples of a group in the order left, U, right, V.
    Bytes Group(const Plane& x, std::size_t row, std::size_t group) const {
        const std::uint8_t* bytes = &x.At(row, 4 * group);
        return {bytes[GetParam().left], bytes[GetParam().u], bytes[GetParam().right], bytes[GetParam().v]};
    }
};

INSTANTIATE_TEST_SUITE_P(, I420ToPacked,
                         testing::Values(Packer{"YUY2", &KorI420ToYUY2_C_, 0, 1, 2, 3},
                                         Packer{"UYVY", &KorI420ToUYVY_C_, 1, 0, 3, 2}),
                         testing::PrintToStringParamName());

TEST_P(I420ToPacked, BothRowsOfAPairHaveTheSameChroma) {
    const I420Frame from(4, 4);
    from.y.SetSamples({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
    from.u.SetSamples({50, 51, 52, 53});
    from.v.SetSamples({60, 61, 62, 63});
    const Plane x(Shape(8, 4, 3));
    const Bytes before = x.Snapshot();
    Pack(from, x, 4, 4);
    EXPECT_EQ(Group(x, 0, 0), (Bytes{1, 50, 2, 60}));
    EXPECT_EQ(Group(x, 0, 1), (Bytes{3, 51, 4, 61}));
    EXPECT_EQ(Group(x, 1, 0), (Bytes{5, 50, 6, 60}));
    EXPECT_EQ(Group(x, 1, 1), (Bytes{7, 51, 8, 61}));
    EXPECT_EQ(Group(x, 2, 0), (Bytes{9, 52, 10, 62}));
    EXPECT_EQ(Group(x, 2, 1), (Bytes{11, 53, 12, 63}));
    EXPECT_EQ(Group(x, 3, 0), (Bytes{13, 52, 14, 62}));
    EXPECT_EQ(Group(x, 3, 1), (Bytes{15, 53, 16, 63}));
    EXPECT_EQ(x.GapDifference("x", before.data()), "");
}

TEST_P(I420ToPacked, OddLastRowAndColumnAreNotPacked) {
    const I420Frame from(3, 3);
    const Plane x(Shape(6, 3));
    x.SetAll(0xee);
    Pack(from, x, 3, 3);
    EXPECT_EQ(x.Row(2), Bytes(6, 0xee));
    for (const std::size_t row : kit::Sizes{0, 1}) {
        EXPECT_EQ(x.At(row, 4), 0xee);
        EXPECT_EQ(x.At(row, 5), 0xee);
        EXPECT_EQ(Group(x, row, 0), (Bytes{from.y.At(row, 0), from.u.At(0, 0), from.y.At(row, 1), from.v.At(0, 0)}));
    }
}

TEST_P(I420ToPacked, TooSmallSizesTouchNothingAndDrawNothing) {
    kit::ScriptedRandom::ServeSeed(1);
    for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
        for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
            GetParam().pack(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, tooSmall,
                            KOR_VIDEOFRAMEDITHERLEVEL_Off);
            GetParam().pack(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall, size,
                            KOR_VIDEOFRAMEDITHERLEVEL_Off);
        }
    }
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
}

}  // namespace
