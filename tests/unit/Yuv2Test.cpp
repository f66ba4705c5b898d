// Yuv2 to and from I420: full-range luma, signed chroma, and the drift of odd widths.
#include <gtest/gtest.h>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

Plane Filled(const kit::PlaneShape& shape, const Bytes& samples) {
    Plane plane(shape);
    plane.SetSamples(samples);
    return plane;
}

void Capture(const I420Frame& to, const Plane& yuv2, std::size_t width, std::size_t height, KorBool flip = 0) {
    KorYuv2ToI420_C_(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), yuv2.data(),
                     yuv2.pitch(), width, height, flip);
}

void Pack(const I420Frame& from, const Plane& yuy2, std::size_t width, std::size_t height) {
    KorI420toYuv2_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                     yuy2.data(), yuy2.pitch(), width, height);
}

int FloorShift(int value, int bits) {
    return (value - (value & ((1 << bits) - 1))) / (1 << bits);
}

// ---- To I420 -----------------------------------------------------------------------------------------------------

TEST(Yuv2ToI420, LumaIsCompressedAndChromaCentred) {
    const I420Frame to(2, 2);
    Capture(to, Filled(Shape(4, 2), {0, 0x80, 255, 0x7f, 128, 0x80, 1, 0x7f}), 2, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{16, 235, 126, 16}));
    EXPECT_EQ(to.u.Samples(), (Bytes{15}));
    EXPECT_EQ(to.v.Samples(), (Bytes{240}));
}

TEST(Yuv2ToI420, OppositeChromaCancels) {
    const I420Frame to(2, 2);
    Capture(to, Filled(Shape(4, 2), {0, 1, 0, 0, 0, 255, 0, 0}), 2, 2);
    EXPECT_EQ(to.u.Samples(), (Bytes{128}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128}));
}

TEST(Yuv2ToI420, EveryLumaByteAndEveryPairOfChromaBytes) {
    // The upper chroma byte counts row pairs, the lower one columns; luma counts along.
    Plane yuv2(Shape(1024, 512));
    for (std::size_t row = 0; row < 512; ++row) {
        for (std::size_t group = 0; group < 256; ++group) {
            const auto chroma = static_cast<std::uint8_t>(row % 2 == 0 ? row / 2 : group);
            std::uint8_t* bytes = &yuv2.At(row, 4 * group);
            bytes[0] = static_cast<std::uint8_t>(group);
            bytes[1] = chroma;
            bytes[2] = static_cast<std::uint8_t>(row / 2);
            bytes[3] = static_cast<std::uint8_t>(~chroma & 0xff);
        }
    }
    const I420Frame to(512, 512);
    Capture(to, yuv2, 512, 512);
    const auto scaled = [](std::size_t byte) { return FloorShift(static_cast<std::int8_t>(byte & 0xff) * 113, 7); };
    for (std::size_t a = 0; a < 256; ++a) {
        for (std::size_t b = 0; b < 256; ++b) {
            ASSERT_EQ(to.y.At(2 * a, 2 * b), b * 220 / 256 + 16);
            ASSERT_EQ(to.y.At(2 * a + 1, 2 * b + 1), a * 220 / 256 + 16);
            ASSERT_EQ(to.u.At(a, b), FloorShift(scaled(a) + scaled(b) + 257, 1)) << a << ", " << b;
            ASSERT_EQ(to.v.At(a, b), FloorShift(scaled(~a) + scaled(~b) + 257, 1)) << a << ", " << b;
        }
    }
}

TEST(Yuv2ToI420, SingleRowGoesToTheSpareRowTooAndKeepsItsChroma) {
    const I420Frame to(2, 1, kit::ShapeWithSpares(2, 1, 0, 1));
    Capture(to, Filled(Shape(4, 1), {0, 0x80, 255, 0x7f}), 2, 1);
    EXPECT_EQ(to.y.Row(0), (Bytes{16, 235}));
    EXPECT_EQ(to.y.Row(1), (Bytes{16, 235}));
    EXPECT_EQ(to.u.Samples(), (Bytes{15}));
    EXPECT_EQ(to.v.Samples(), (Bytes{240}));
}

TEST(Yuv2ToI420, EveryChromaByteOfALoneRow) {
    Plane yuv2(Shape(1024, 1));
    for (std::size_t i = 0; i < 256; ++i) {
        yuv2.At(0, 4 * i + 1) = static_cast<std::uint8_t>(i);
        yuv2.At(0, 4 * i + 3) = static_cast<std::uint8_t>(255 - i);
    }
    const I420Frame to(512, 1, kit::ShapeWithSpares(512, 1, 0, 1));
    Capture(to, yuv2, 512, 1);
    for (std::size_t i = 0; i < 256; ++i) {
        ASSERT_EQ(to.u.At(0, i), FloorShift(static_cast<std::int8_t>(i) * 113, 7) + 128);
        ASSERT_EQ(to.v.At(0, i), FloorShift(static_cast<std::int8_t>(255 - i) * 113, 7) + 128);
    }
}

TEST(Yuv2ToI420, FlipReadsTheLastRowFirst) {
    const Plane yuv2 = Filled(Shape(4, 3), {0, 0, 0, 0, 100, 0x7f, 100, 0x7f, 255, 0x80, 255, 0x80});
    const I420Frame to(2, 3, kit::ShapeWithSpares(2, 3, 0, 1));
    Capture(to, yuv2, 2, 3, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{235, 235, 101, 101, 16, 16}));
    EXPECT_EQ(to.y.Row(3), (Bytes{16, 16}));
    // -113 and 112 average to -0.5, rounded up to 0.
    EXPECT_EQ(to.u.Samples(), (Bytes{128, 128}));
}

TEST(Yuv2ToI420, OddWidthDriftsLeftWithEveryRowPair) {
    // Width 3 is one group; the second row pair is read two bytes earlier and written one byte earlier.
    const Plane yuv2(Shape(6, 4));
    yuv2.Fill(kit::Pattern::Ramp, 1);
    const I420Frame to(3, 4);
    to.y.SetAll(0);
    Capture(to, yuv2, 3, 4);
    const auto luma = [&](std::size_t offset) { return yuv2.data()[offset] * 220 / 256 + 16; };
    const Bytes y = to.y.Samples();
    EXPECT_EQ(y[0], luma(0));
    EXPECT_EQ(y[1], luma(2));
    EXPECT_EQ(y[2], 0);
    EXPECT_EQ(y[3], luma(6));
    EXPECT_EQ(y[4], luma(8));
    EXPECT_EQ(y[5], luma(12 - 2));
    EXPECT_EQ(y[6], luma(12));
    EXPECT_EQ(y[7], 0);
    EXPECT_EQ(y[8], luma(18 - 2));
    EXPECT_EQ(y[9], luma(18));
    // The chroma planes do not drift, but their sources do.
    const auto scaled = [&](std::size_t offset) {
        return FloorShift(static_cast<std::int8_t>(yuv2.data()[offset]) * 113, 7);
    };
    EXPECT_EQ(to.u.At(1, 0), FloorShift(scaled(12 - 1) + scaled(18 - 1) + 257, 1));
    EXPECT_EQ(to.v.At(1, 0), FloorShift(scaled(12 + 1) + scaled(18 + 1) + 257, 1));
}

TEST(Yuv2ToI420, TooSmallSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            KorYuv2ToI420_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, flip);
            KorYuv2ToI420_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 1, size, flip);
            KorYuv2ToI420_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, flip);
        }
    }
}

// ---- From I420 ---------------------------------------------------------------------------------------------------

TEST(I420ToYuv2, LumaIsCopiedAndChromaSigned) {
    const I420Frame from(2, 2);
    from.y.SetSamples({0, 255, 17, 34});
    from.u.SetSamples({16});
    from.v.SetSamples({240});
    const Plane yuy2(Shape(4, 2));
    Pack(from, yuy2, 2, 2);
    EXPECT_EQ(yuy2.Samples(), (Bytes{0, 129, 255, 126, 17, 129, 34, 126}));
}

TEST(I420ToYuv2, EveryChromaSample) {
    const I420Frame from(512, 2);
    for (std::size_t i = 0; i < 256; ++i) {
        from.u.At(0, i) = static_cast<std::uint8_t>(i);
        from.v.At(0, i) = static_cast<std::uint8_t>(255 - i);
    }
    const Plane yuy2(Shape(1024, 2));
    Pack(from, yuy2, 512, 2);
    const auto expected = [](std::size_t c) { return (c * 145 + 14208) / 128 % 256; };
    for (std::size_t i = 0; i < 256; ++i) {
        for (const std::size_t row : kit::Sizes{0, 1}) {
            ASSERT_EQ(yuy2.At(row, 4 * i + 1), expected(i));
            ASSERT_EQ(yuy2.At(row, 4 * i + 3), expected(255 - i));
        }
    }
}

TEST(I420ToYuv2, ChromaBeyondLimitedRangeWrapsAround) {
    const I420Frame from(2, 2);
    from.u.SetSamples({15});
    from.v.SetSamples({241});
    const Plane yuy2(Shape(4, 2));
    Pack(from, yuy2, 2, 2);
    EXPECT_EQ(yuy2.At(0, 1), 127);
    EXPECT_EQ(yuy2.At(0, 3), 128);
}

TEST(I420ToYuv2, GreyIsZero) {
    const I420Frame from(2, 2);
    from.u.SetSamples({128});
    from.v.SetSamples({128});
    const Plane yuy2(Shape(4, 2));
    Pack(from, yuy2, 2, 2);
    EXPECT_EQ(yuy2.At(1, 1), 0);
    EXPECT_EQ(yuy2.At(1, 3), 0);
}

TEST(I420ToYuv2, OddLastRowAndColumnAreNotWritten) {
    const I420Frame from(3, 3);
    const Plane yuy2(Shape(6, 3));
    yuy2.SetAll(0xee);
    Pack(from, yuy2, 3, 3);
    EXPECT_EQ(yuy2.Row(2), Bytes(6, 0xee));
    EXPECT_EQ(yuy2.At(0, 4), 0xee);
    EXPECT_EQ(yuy2.At(0, 5), 0xee);
}

TEST(I420ToYuv2, OddWidthDriftsLeftWithEveryRowPair) {
    const I420Frame from(3, 4);
    from.y.Fill(kit::Pattern::Ramp, 1);
    const Plane yuy2(Shape(6, 4));
    yuy2.SetAll(0xee);
    Pack(from, yuy2, 3, 4);
    const Bytes y = from.y.Samples(), x = yuy2.Samples();
    EXPECT_EQ(x[0], y[0]);
    EXPECT_EQ(x[2], y[1]);
    EXPECT_EQ(x[6], y[3]);
    EXPECT_EQ(x[8], y[4]);
    EXPECT_EQ(x[12 - 2], y[6 - 1]);
    EXPECT_EQ(x[12], y[6]);
    EXPECT_EQ(x[18 - 2], y[9 - 1]);
    EXPECT_EQ(x[18], y[9]);
    EXPECT_EQ(x[14], 0xee);
    EXPECT_EQ(x[20], 0xee);
}

TEST(I420ToYuv2, TooSmallSizesTouchNothing) {
    for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
        for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
            KorI420toYuv2_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall, size);
            KorI420toYuv2_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, tooSmall);
        }
    }
}

}  // namespace
