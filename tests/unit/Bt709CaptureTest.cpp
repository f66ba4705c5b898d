// Capture of BGRA to I420 with BT.709, fixed or as the caller's matrix, and what both write beyond odd sizes.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "conformance/core/Case.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Matrix;
using kit::Plane;
using kit::Shape;

constexpr Matrix kBt709{{{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}}};

// Pixels as numbers 0xRRGGBB, row by row; alpha is random.
Plane Source(std::size_t width, std::size_t height, const std::vector<unsigned>& pixels) {
    const Plane x(Shape(4 * width, height, 3));
    x.Fill(kit::Pattern::Noise, 11);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        for (std::size_t byte = 0; byte < 3; ++byte) {
            x.At(i / width, i % width * 4 + byte) = static_cast<std::uint8_t>((pixels[i] >> (8 * byte)) & 0xff);
        }
    }
    return x;
}

// A frame whose luma plane has the spare column and row of an odd size; all writable bytes start as 0xee.
I420Frame Target(std::size_t width, std::size_t height, bool spareColumn) {
    const I420Frame frame(width, height, kit::ShapeWithSpares(width, height, spareColumn ? width % 2 : 0, height % 2));
    for (std::size_t row = 0; row < height + height % 2; ++row) {
        for (std::size_t column = 0; column < width + (spareColumn ? width % 2 : 0); ++column) {
            frame.y.At(row, column) = 0xee;
        }
    }
    return frame;
}

void Bt709(const I420Frame& to, const Plane& x, std::size_t width, std::size_t height, KorBool flip = 0) {
    KorBGRAToI420UsingBT709_C_(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(),
                               x.data(), x.pitch(), width, height, flip);
}

void General(const I420Frame& to, const Plane& x, std::size_t width, std::size_t height, const Matrix& matrix,
             KorBool flip = 0) {
    KorBGRAToI420General_C_(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(),
                            x.pitch(), width, height, flip, matrix.rows);
}

// A row of luma with its spare column.
Bytes LumaRow(const I420Frame& frame, std::size_t row) {
    const std::uint8_t* first = &frame.y.At(row, 0);
    return Bytes(first, first + frame.y.shape().rowBytes + frame.y.shape().spareColumns);
}

// ---- Fixed BT.709 ------------------------------------------------------------------------------------------------

TEST(BgraToI420Bt709, WhiteBlackAndPrimariesHaveTheirValues) {
    const struct {
        unsigned colour;
        std::uint8_t y, u, v;
    } rows[] = {
        {0xffffff, 235, 127, 128}, {0x000000, 16, 128, 128}, {0xff0000, 62, 102, 239},
        {0x00ff00, 172, 41, 26},   {0x0000ff, 31, 239, 118},
    };
    for (const auto& row : rows) {
        const I420Frame to(2, 2);
        Bt709(to, Source(2, 2, std::vector<unsigned>(4, row.colour)), 2, 2);
        EXPECT_EQ(to.Samples(), (Bytes{row.y, row.y, row.y, row.y, row.u, row.v})) << row.colour;
    }
}

TEST(BgraToI420Bt709, ColumnsAreAveragedBeforeRows) {
    // Red averages to 3 (columns first) and not to 2: 112 * 3 = 336 gives 1, 112 * 2 = 224 nothing.
    const I420Frame to(2, 2);
    Bt709(to, Source(2, 2, {0x030000, 0x030000, 0x020000, 0x000000}), 2, 2);
    EXPECT_EQ(to.v.Samples(), (Bytes{129}));
}

TEST(BgraToI420Bt709, OddLastRowIsWrittenBelowTheImageToo) {
    const I420Frame to = Target(2, 3, false);
    Bt709(to, Source(2, 3, {0, 0, 0, 0, 0xff0000, 0x00ff00}), 2, 3);
    EXPECT_EQ(to.y.Samples(), (Bytes{16, 16, 16, 16, 62, 172}));
    EXPECT_EQ(LumaRow(to, 3), (Bytes{62, 172}));
}

TEST(BgraToI420Bt709, SingleRowIsWrittenTwice) {
    const I420Frame to = Target(2, 1, false);
    Bt709(to, Source(2, 1, {0xff0000, 0x0000ff}), 2, 1);
    EXPECT_EQ(LumaRow(to, 0), (Bytes{62, 31}));
    EXPECT_EQ(LumaRow(to, 1), (Bytes{62, 31}));
    // The horizontal pair: red and blue average to 128 each.
    EXPECT_EQ(to.u.Samples(), (Bytes{128 + ((-26 * 128 + 112 * 128) >> 8)}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128 + ((112 * 128 - 10 * 128) >> 8)}));
}

TEST(BgraToI420Bt709, CornerIsNotWrittenBelowTheImage) {
    const I420Frame to = Target(3, 3, false);
    Bt709(to, Source(3, 3, std::vector<unsigned>(9, 0xffffff)), 3, 3);
    EXPECT_EQ(to.y.Samples(), Bytes(9, 235));
    EXPECT_EQ(LumaRow(to, 3), (Bytes{235, 235, 0xee}));
}

TEST(BgraToI420Bt709, OddLastColumnTakesItsVerticalPair) {
    const I420Frame to(3, 2);
    Bt709(to, Source(3, 2, {0, 0, 0xff0000, 0, 0, 0x0000ff}), 3, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{16, 16, 62, 16, 16, 31}));
    EXPECT_EQ(to.u.Samples(), (Bytes{128, 171}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128, 179}));
}

TEST(BgraToI420Bt709, CornerStandsForItself) {
    const I420Frame to = Target(3, 3, false);
    Bt709(to, Source(3, 3, {0, 0, 0, 0, 0, 0, 0, 0, 0xff0000}), 3, 3);
    EXPECT_EQ(to.u.Samples(), (Bytes{128, 128, 128, 102}));
    EXPECT_EQ(to.v.Samples(), (Bytes{128, 128, 128, 239}));
}

TEST(BgraToI420Bt709, FlippedOddHeightEndsWithTheFirstRowInMemory) {
    const I420Frame to = Target(2, 3, false);
    Bt709(to, Source(2, 3, {0xff0000, 0x00ff00, 0, 0, 0x0000ff, 0x0000ff}), 2, 3, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{31, 31, 16, 16, 62, 172}));
    EXPECT_EQ(LumaRow(to, 3), (Bytes{62, 172}));
}

TEST(BgraToI420Bt709, ZeroSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            KorBGRAToI420UsingBT709_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, size, 0, flip);
            KorBGRAToI420UsingBT709_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, 0, size, flip);
        }
    }
}

// ---- The caller's matrix -----------------------------------------------------------------------------------------

TEST(BgraToI420General, FixedRowsGiveTheFixedFunctionAtEvenSizes) {
    for (const KorBool flip : kit::kFlips) {
        const Plane x(Shape(4 * 34, 6));
        x.Fill(kit::Pattern::Noise, 3);
        const I420Frame fixed(34, 6), general(34, 6);
        Bt709(fixed, x, 34, 6, flip);
        General(general, x, 34, 6, kBt709, flip);
        EXPECT_EQ(general.Samples(), fixed.Samples());
    }
}

TEST(BgraToI420General, EachCoefficientHasItsPlace) {
    // 256 in one place at a time: Y, U or V is its offset plus that channel.
    const std::uint8_t channels[3] = {10, 20, 30};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            Matrix matrix{};
            matrix.rows[row][column] = 256;
            const I420Frame to(2, 2);
            General(to, Source(2, 2, std::vector<unsigned>(4, 0x0a141e)), 2, 2, matrix);
            const auto sample = [&](std::size_t plane, int offset) {
                return static_cast<std::uint8_t>(offset + (plane == row ? channels[column] : 0));
            };
            const Bytes expected{sample(0, 16), sample(0, 16),  sample(0, 16),
                                 sample(0, 16), sample(1, 128), sample(2, 128)};
            EXPECT_EQ(to.Samples(), expected) << row << ", " << column;
        }
    }
}

TEST(BgraToI420General, LumaOfTheOddLastColumnSwapsGreenAndBlueAndSpillsToTheRight) {
    // Weights 1, 1/2, 1/4; the pixel 40, 80, 160: 40 + 40 + 40 = 120 in order, 40 + 80 + 20 = 140 swapped.
    const Matrix matrix{{{256, 128, 64}, {0, 256, 0}, {0, 0, 256}}};
    const I420Frame to = Target(3, 2, true);
    General(to, Source(3, 2, std::vector<unsigned>(6, 0x2850a0)), 3, 2, matrix);
    EXPECT_EQ(LumaRow(to, 0), (Bytes{136, 136, 156, 156}));
    EXPECT_EQ(LumaRow(to, 1), (Bytes{136, 136, 156, 156}));
    // Chroma keeps the normal order: U is 128 + green, V is 128 + blue, modulo 256.
    EXPECT_EQ(to.u.Samples(), (Bytes{208, 208}));
    EXPECT_EQ(to.v.Samples(), (Bytes{32, 32}));
}

TEST(BgraToI420General, LumaOfTheOddLastRowSwapsGreenAndBlueAndSpillsBelow) {
    const Matrix matrix{{{256, 128, 64}, {0, 256, 0}, {0, 0, 256}}};
    const I420Frame to = Target(2, 3, true);
    General(to, Source(2, 3, std::vector<unsigned>(6, 0x2850a0)), 2, 3, matrix);
    EXPECT_EQ(to.y.Samples(), (Bytes{136, 136, 136, 136, 156, 156}));
    EXPECT_EQ(LumaRow(to, 3), (Bytes{156, 156}));
    EXPECT_EQ(to.u.Samples(), (Bytes{208, 208}));
    EXPECT_EQ(to.v.Samples(), (Bytes{32, 32}));
}

TEST(BgraToI420General, CornerKeepsTheOrderAndFillsABlock) {
    const Matrix matrix{{{256, 128, 64}, {0, 256, 0}, {0, 0, 256}}};
    const I420Frame to = Target(3, 3, true);
    General(to, Source(3, 3, std::vector<unsigned>(9, 0x2850a0)), 3, 3, matrix);
    EXPECT_EQ(LumaRow(to, 0), (Bytes{136, 136, 156, 156}));
    EXPECT_EQ(LumaRow(to, 1), (Bytes{136, 136, 156, 156}));
    EXPECT_EQ(LumaRow(to, 2), (Bytes{156, 156, 136, 136}));
    EXPECT_EQ(LumaRow(to, 3), (Bytes{156, 156, 136, 136}));
}

TEST(BgraToI420General, SinglePixelIsACorner) {
    const Matrix matrix{{{256, 128, 64}, {0, 256, 0}, {0, 0, 256}}};
    const I420Frame to = Target(1, 1, true);
    General(to, Source(1, 1, {0x2850a0}), 1, 1, matrix);
    EXPECT_EQ(LumaRow(to, 0), (Bytes{136, 136}));
    EXPECT_EQ(LumaRow(to, 1), (Bytes{136, 136}));
    EXPECT_EQ(to.u.Samples(), (Bytes{208}));
    EXPECT_EQ(to.v.Samples(), (Bytes{32}));
}

TEST(BgraToI420General, SingleRowSpillsBelow) {
    const I420Frame to = Target(2, 1, true);
    General(to, Source(2, 1, {0xff0000, 0xff0000}), 2, 1, kBt709);
    EXPECT_EQ(LumaRow(to, 0), (Bytes{62, 62}));
    EXPECT_EQ(LumaRow(to, 1), (Bytes{62, 62}));
}

TEST(BgraToI420General, ResultsWrapInsteadOfClamping) {
    const Matrix matrix{{{512, 0, 0}, {-512, 0, 0}, {0, 0, 0}}};
    const I420Frame to(2, 2);
    General(to, Source(2, 2, std::vector<unsigned>(4, 0xff0000)), 2, 2, matrix);
    EXPECT_EQ(to.Samples(), (Bytes{14, 14, 14, 14, 130, 128}));
}

TEST(BgraToI420General, SumsWrapAt32Bits) {
    // 255 * INT_MAX and the like, modulo 2^32; bits 8 to 15 count.
    const Matrix matrix{{{INT_MAX, 0, 0}, {INT_MIN, 512, 0}, {INT_MAX, INT_MAX, INT_MIN}}};
    const I420Frame to(2, 2);
    General(to, Source(2, 2, std::vector<unsigned>(4, 0xff01ff)), 2, 2, matrix);
    // 255 * (2^31 - 1) = ...7fffff01 + ...: low 16 bits 0xff01, so 0xff + 16 = 15.
    // U: 255 * 2^31 has no low bits; 512 gives 2. V: -255 - 1 = -256, so 0xff + 128 = 127.
    EXPECT_EQ(to.Samples(), (Bytes{15, 15, 15, 15, 130, 127}));
}

TEST(BgraToI420General, MatrixIsReadAfreshForEverySample) {
    // The luma plane lies over the matrix. All pixels are white; the first luma sample becomes the low byte of the red
    // weight (the high byte on big-endian machines), and all later samples use the changed weight.
    const Plane x = Source(2, 2, std::vector<unsigned>(4, 0xffffff));
    Matrix shared{{{256, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
    const I420Frame chroma(2, 2);
    KorUint8* luma = reinterpret_cast<KorUint8*>(&shared.rows[0][0]);
    KorBGRAToI420General_C_(luma, 2, chroma.u.data(), chroma.u.pitch(), chroma.v.data(), chroma.v.pitch(), x.data(),
                            x.pitch(), 2, 2, 0, shared.rows);
    Matrix model{{{256, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
    const auto store = [&](std::size_t at) {
        const KorUint sum = 255u * static_cast<KorUint>(model.rows[0][0]);
        const auto sample = static_cast<std::uint8_t>(((sum >> 8) + 16) & 0xff);
        std::memcpy(reinterpret_cast<std::uint8_t*>(&model.rows[0][0]) + at, &sample, 1);
    };
    for (const std::size_t at : kit::Sizes{0, 1, 2, 3}) {
        store(at);
    }
    EXPECT_EQ(shared.rows[0][0], model.rows[0][0]);
}

TEST(BgraToI420General, ZeroSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            KorBGRAToI420General_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, size, 0, flip, kBt709.rows);
            KorBGRAToI420General_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 64, 0, size, flip, kBt709.rows);
        }
    }
}

}  // namespace
