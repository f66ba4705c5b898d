// M420 to I420: blocks of two luma rows and the chroma row they share.
#include <gtest/gtest.h>

#include <numeric>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

// Blocks whose bytes count up.
Plane Counting(std::size_t blockBytes, std::size_t blocks, std::size_t padding = 0) {
    Plane m420(Shape(blockBytes, blocks, padding));
    Bytes samples(blockBytes * blocks);
    std::iota(samples.begin(), samples.end(), std::uint8_t{0});
    m420.SetSamples(samples);
    return m420;
}

void Convert(const I420Frame& to, const Plane& m420, std::size_t width, std::size_t height, KorBool flip = 0) {
    KorM420ToI420_C_(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), m420.data(),
                     m420.pitch(), width, height, flip);
}

TEST(M420ToI420, FourByFourIsTwentyFourBytesInARow) {
    const I420Frame to(4, 4);
    Convert(to, Counting(12, 2), 4, 4);
    EXPECT_EQ(to.y.Samples(), (Bytes{0, 1, 2, 3, 4, 5, 6, 7, 12, 13, 14, 15, 16, 17, 18, 19}));
    EXPECT_EQ(to.u.Samples(), (Bytes{8, 10, 20, 22}));
    EXPECT_EQ(to.v.Samples(), (Bytes{9, 11, 21, 23}));
}

TEST(M420ToI420, FlipStartsAtTheBlockOfTheLastLumaRowAndKeepsTheRowsOfABlock) {
    // Four blocks are addressed for a height of four; only the last two are read.
    const I420Frame to(2, 4);
    Convert(to, Counting(6, 4, 3), 2, 4, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{18, 19, 20, 21, 12, 13, 14, 15}));
    EXPECT_EQ(to.u.Samples(), (Bytes{22, 16}));
    EXPECT_EQ(to.v.Samples(), (Bytes{23, 17}));
}

TEST(M420ToI420, OddWidthCopiesAllLumaAndHasNoChromaForTheLastColumn) {
    const I420Frame to(3, 2);
    to.u.SetAll(0xee);
    Convert(to, Counting(8, 1), 3, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(to.u.Samples(), (Bytes{6, 0xee}));
    EXPECT_EQ(to.v.At(0, 0), 7);
}

TEST(M420ToI420, OddLastRowIsNotWritten) {
    const I420Frame to(2, 3);
    to.y.SetAll(0xee);
    to.u.SetAll(0xee);
    Convert(to, Counting(6, 1), 2, 3);
    EXPECT_EQ(to.y.Samples(), (Bytes{0, 1, 2, 3, 0xee, 0xee}));
    EXPECT_EQ(to.u.Samples(), (Bytes{4, 0xee}));
}

TEST(M420ToI420, OneColumnHasLumaOnly) {
    const I420Frame to(1, 2);
    to.u.SetAll(0xee);
    to.v.SetAll(0xee);
    Convert(to, Counting(2, 1), 1, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{0, 1}));
    EXPECT_EQ(to.u.Samples(), (Bytes{0xee}));
    EXPECT_EQ(to.v.Samples(), (Bytes{0xee}));
}

TEST(M420ToI420, OneColumnNeedsNoChromaPlanes) {
    const Plane y(Shape(1, 4));
    const Plane m420 = Counting(2, 2);
    const kit::PlaneView none = kit::OutOfReach();
    KorM420ToI420_C_(y.data(), y.pitch(), none.data, none.pitch, none.data, none.pitch, m420.data(), m420.pitch(), 1, 4,
                     0);
    EXPECT_EQ(y.Samples(), (Bytes{0, 1, 2, 3}));
}

TEST(M420ToI420, PaddingStaysAsItWas) {
    const I420Frame to(5, 4, 3);
    const Bytes y = to.y.Snapshot(), u = to.u.Snapshot();
    Convert(to, Counting(14, 2, 5), 5, 4);
    EXPECT_EQ(to.y.GapDifference("y", y.data()), "");
    EXPECT_EQ(to.u.GapDifference("u", u.data()), "");
}

TEST(M420ToI420, TooLowPicturesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t width : kit::Sizes{0, 1, 2, 17}) {
            KorM420ToI420_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, width, 0, flip);
            KorM420ToI420_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, width, 1, flip);
        }
    }
}

TEST(M420ToI420, NoColumnsWriteNothing) {
    const I420Frame to(0, 4, Shape(0, 4, 8));
    Convert(to, Plane(Shape(0, 4, 8)), 0, 4);
    Convert(to, Plane(Shape(0, 4, 8)), 0, 4, 1);
}

}  // namespace
