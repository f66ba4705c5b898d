// Capture of packed 4:2:2, plain and rotated: YUY2 and UYVY to I420.
#include <gtest/gtest.h>

#include <ostream>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::Plane;
using kit::Shape;

// A group of four bytes: two pixels that share their chroma.
struct Group {
    std::uint8_t left, u, right, v;
};

struct Format {
    const char* name;
    kit::CaptureFunction convert;
    kit::CaptureRotatingFunction rotate;
    std::size_t left, u, right, v;
};

void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

// The planes that a conversion writes, including the spare luma row, zeroed.
struct Result {
    Plane y, u, v;

    // The size of the luma plane without its spare row, and whether it has one.
    Result(std::size_t width, std::size_t height, std::size_t spareRows, std::size_t padding = 0)
        : y(WithSpareRow(width, height, spareRows, padding)),
          u(Shape(width / 2, (height + 1) / 2, padding)),
          v(Shape(width / 2, (height + 1) / 2, padding)) {
        for (const Plane* plane : {&y, &u, &v}) {
            plane->SetAll(0);
        }
    }

    static kit::PlaneShape WithSpareRow(std::size_t width, std::size_t height, std::size_t spareRows,
                                        std::size_t padding) {
        kit::PlaneShape shape = Shape(width, height, padding);
        shape.spareRows = spareRows;
        return shape;
    }

    Bytes SpareRow() const { return y.Row(y.shape().rows); }
};

class PackedToI420 : public testing::TestWithParam<Format> {
  protected:
    // The groups row by row; an odd width leaves half a group at the end of each row, which must not be read.
    Plane Source(std::size_t groups, std::size_t rows, const std::vector<Group>& content) const {
        Plane x(Shape(4 * groups, rows, 2));
        for (std::size_t i = 0; i < content.size(); ++i) {
            std::uint8_t* group = &x.At(i / groups, i % groups * 4);
            group[GetParam().left] = content[i].left;
            group[GetParam().right] = content[i].right;
            group[GetParam().u] = content[i].u;
            group[GetParam().v] = content[i].v;
        }
        return x;
    }

    void Convert(const Result& to, const Plane& x, std::size_t width, std::size_t height, KorBool flip = 0) const {
        GetParam().convert(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(),
                           x.pitch(), width, height, flip);
    }

    void Rotate(const Result& to, const Plane& x, std::size_t width, std::size_t height, KorBool flip,
                KorImageRotationDegree degree) const {
        GetParam().rotate(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(),
                          x.pitch(), width, height, flip, degree);
    }
};

INSTANTIATE_TEST_SUITE_P(, PackedToI420,
                         testing::Values(Format{"YUY2", &KorYUY2ToI420_C_, &KorYUY2ToI420WithRotation_C_, 0, 1, 2, 3},
                                         Format{"UYVY", &KorUYVYToI420_C_, &KorUYVYToI420WithRotation_C_, 1, 0, 3, 2}),
                         testing::PrintToStringParamName());

const std::vector<Group> kTwoByTwoGroups{{1, 10, 2, 110}, {3, 20, 4, 120}, {5, 12, 6, 113}, {7, 21, 8, 122}};
const std::vector<Group> kThreeRows{
    {1, 10, 2, 110}, {3, 20, 4, 120}, {5, 12, 6, 113}, {7, 21, 8, 122}, {9, 30, 10, 130}, {11, 40, 12, 140},
};

// ---- Plain -------------------------------------------------------------------------------------------------------

TEST_P(PackedToI420, LumaIsCopiedAndChromaAveraged) {
    const Result to(4, 2, 0);
    Convert(to, Source(2, 2, kTwoByTwoGroups), 4, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(to.u.Samples(), (Bytes{11, 21}));
    EXPECT_EQ(to.v.Samples(), (Bytes{112, 121}));
}

TEST_P(PackedToI420, ChromaAverageRoundsHalfUp) {
    const Result to(2, 2, 0);
    Convert(to, Source(1, 2, {{0, 255, 0, 0}, {0, 254, 0, 1}}), 2, 2);
    EXPECT_EQ(to.u.Samples(), (Bytes{255}));
    EXPECT_EQ(to.v.Samples(), (Bytes{1}));
}

TEST_P(PackedToI420, EveryPairOfChromaSamples) {
    std::vector<Group> groups;
    for (int row = 0; row < 512; ++row) {
        for (int column = 0; column < 256; ++column) {
            const auto sample = static_cast<std::uint8_t>(row % 2 == 0 ? row / 2 : column);
            groups.push_back({0, sample, 0, static_cast<std::uint8_t>(255 - sample)});
        }
    }
    const Result to(512, 512, 0);
    Convert(to, Source(256, 512, groups), 512, 512);
    for (std::size_t a = 0; a < 256; ++a) {
        for (std::size_t b = 0; b < 256; ++b) {
            ASSERT_EQ(to.u.At(a, b), (a + b + 1) / 2);
            ASSERT_EQ(to.v.At(a, b), (255 - a + 255 - b + 1) / 2);
        }
    }
}

TEST_P(PackedToI420, LoneLastRowGoesToTheSpareRowTooAndKeepsItsChroma) {
    const Result to(4, 3, 1);
    Convert(to, Source(2, 3, kThreeRows), 4, 3);
    EXPECT_EQ(to.y.Samples(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    EXPECT_EQ(to.SpareRow(), (Bytes{9, 10, 11, 12}));
    EXPECT_EQ(to.u.Samples(), (Bytes{11, 21, 30, 40}));
    EXPECT_EQ(to.v.Samples(), (Bytes{112, 121, 130, 140}));
}

TEST_P(PackedToI420, SingleRowIsALoneRow) {
    const Result to(4, 1, 1);
    Convert(to, Source(2, 1, {{1, 10, 2, 110}, {3, 20, 4, 120}}), 4, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(to.SpareRow(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(to.u.Samples(), (Bytes{10, 20}));
    EXPECT_EQ(to.v.Samples(), (Bytes{110, 120}));
}

TEST_P(PackedToI420, FlipReadsTheLastRowFirst) {
    const Result to(4, 2, 0);
    Convert(to, Source(2, 2, kTwoByTwoGroups), 4, 2, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{5, 6, 7, 8, 1, 2, 3, 4}));
    EXPECT_EQ(to.u.Samples(), (Bytes{11, 21}));
}

TEST_P(PackedToI420, FlippedOddHeightEndsWithTheFirstRowInMemory) {
    const Result to(4, 3, 1);
    Convert(to, Source(2, 3, kThreeRows), 4, 3, 1);
    EXPECT_EQ(to.y.Samples(), (Bytes{9, 10, 11, 12, 5, 6, 7, 8, 1, 2, 3, 4}));
    EXPECT_EQ(to.SpareRow(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(to.u.Samples(), (Bytes{21, 31, 10, 20}));
}

TEST_P(PackedToI420, OddLastColumnIsIgnored) {
    // Two groups for five pixels: the fifth falls into the padding of source and destination.
    const Result to(4, 2, 0, 3);
    const Bytes before = to.y.Snapshot();
    Convert(to, Source(2, 2, kTwoByTwoGroups), 5, 2);
    EXPECT_EQ(to.y.Samples(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(to.y.GapDifference("y", before.data()), "");
}

TEST_P(PackedToI420, TooSmallSizesTouchNothing) {
    for (const KorBool flip : kit::kFlips) {
        for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, flip);
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 1, size, flip);
            GetParam().convert(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, flip);
            for (const KorImageRotationDegree degree : {0u, 90u, 180u, 270u, 45u}) {
                GetParam().rotate(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, flip, degree);
                GetParam().rotate(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 1, size, flip, degree);
                GetParam().rotate(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, flip, degree);
            }
        }
    }
}

// ---- Rotated -----------------------------------------------------------------------------------------------------

TEST_P(PackedToI420, RotationBy90OfFourByTwo) {
    const Plane x = Source(2, 2, kTwoByTwoGroups);
    const Result to(2, 4, 0);
    Rotate(to, x, 4, 2, 0, 90);
    EXPECT_EQ(to.y.Samples(), (Bytes{5, 1, 6, 2, 7, 3, 8, 4}));
    EXPECT_EQ(to.u.Samples(), (Bytes{11, 21}));
    EXPECT_EQ(to.v.Samples(), (Bytes{112, 121}));
}

TEST_P(PackedToI420, RotationBy180OfFourByTwo) {
    const Plane x = Source(2, 2, kTwoByTwoGroups);
    const Result to(4, 2, 0);
    Rotate(to, x, 4, 2, 0, 180);
    EXPECT_EQ(to.y.Samples(), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(to.u.Samples(), (Bytes{21, 11}));
    EXPECT_EQ(to.v.Samples(), (Bytes{121, 112}));
}

TEST_P(PackedToI420, RotationBy270OfFourByTwoAndUnknownAngles) {
    const Plane x = Source(2, 2, kTwoByTwoGroups);
    for (const KorImageRotationDegree degree : {270u, 45u, 360u, 4294967206u}) {
        const Result to(2, 4, 0);
        Rotate(to, x, 4, 2, 0, degree);
        EXPECT_EQ(to.y.Samples(), (Bytes{4, 8, 3, 7, 2, 6, 1, 5})) << degree;
        EXPECT_EQ(to.u.Samples(), (Bytes{21, 11}));
        EXPECT_EQ(to.v.Samples(), (Bytes{121, 112}));
    }
}

TEST_P(PackedToI420, OddHeightIsPaddedWithTheLastRow) {
    const Plane x = Source(2, 3, kThreeRows);
    const Result none(4, 4, 0), quarter(4, 4, 0), half(4, 4, 0), threeQuarters(4, 4, 0);
    Rotate(none, x, 4, 3, 0, 0);
    EXPECT_EQ(none.y.Samples(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 9, 10, 11, 12}));
    EXPECT_EQ(none.u.Samples(), (Bytes{11, 21, 30, 40}));
    Rotate(quarter, x, 4, 3, 0, 90);
    EXPECT_EQ(quarter.y.Samples(), (Bytes{9, 9, 5, 1, 10, 10, 6, 2, 11, 11, 7, 3, 12, 12, 8, 4}));
    EXPECT_EQ(quarter.u.Samples(), (Bytes{30, 11, 40, 21}));
    Rotate(half, x, 4, 3, 0, 180);
    EXPECT_EQ(half.y.Samples(), (Bytes{12, 11, 10, 9, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(half.u.Samples(), (Bytes{40, 30, 21, 11}));
    Rotate(threeQuarters, x, 4, 3, 0, 270);
    EXPECT_EQ(threeQuarters.y.Samples(), (Bytes{4, 8, 12, 12, 3, 7, 11, 11, 2, 6, 10, 10, 1, 5, 9, 9}));
    EXPECT_EQ(threeQuarters.u.Samples(), (Bytes{21, 40, 11, 30}));
}

TEST_P(PackedToI420, FlipAndRotationBy180Mirror) {
    const Result even(4, 2, 0), odd(4, 4, 0);
    Rotate(even, Source(2, 2, kTwoByTwoGroups), 4, 2, 1, 180);
    EXPECT_EQ(even.y.Samples(), (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));
    // The mirrored rows of an odd height lie one row lower, and row 0 repeats source row 0.
    Rotate(odd, Source(2, 3, kThreeRows), 4, 3, 1, 180);
    EXPECT_EQ(odd.y.Samples(), (Bytes{4, 3, 2, 1, 4, 3, 2, 1, 8, 7, 6, 5, 12, 11, 10, 9}));
}

TEST_P(PackedToI420, TwoByOneFillsABlock) {
    const Plane x = Source(1, 1, {{1, 10, 2, 110}});
    const struct {
        KorImageRotationDegree degree;
        Bytes y;
    } rows[] = {{0, {1, 2, 1, 2}}, {90, {1, 1, 2, 2}}, {180, {2, 1, 2, 1}}, {270, {2, 2, 1, 1}}};
    for (const auto& row : rows) {
        for (const KorBool flip : kit::kFlips) {
            const Result to(2, 2, 0);
            Rotate(to, x, 2, 1, flip, row.degree);
            EXPECT_EQ(to.y.Samples(), row.y) << row.degree;
            EXPECT_EQ(to.u.Samples(), (Bytes{10}));
            EXPECT_EQ(to.v.Samples(), (Bytes{110}));
        }
    }
}

TEST_P(PackedToI420, OddWidthDriftsByOneSampleAColumnPairAndRowPair) {
    // Three pixels a row, one group of which is converted; the second row pair is read two bytes further left.
    const Plane x(Shape(6, 4));
    x.Fill(kit::Pattern::Ramp, 3);
    const Result to(3, 4, 0);
    Rotate(to, x, 3, 4, 0, 0);
    const Bytes y = to.y.Samples();
    const std::size_t left = GetParam().left, right = GetParam().right;
    EXPECT_EQ(y[0], x.At(0, left));
    EXPECT_EQ(y[1], x.At(0, right));
    EXPECT_EQ(y[2 * 3 - 1], x.data()[2 * 6 - 2 + left]);
    EXPECT_EQ(y[2 * 3], x.data()[2 * 6 - 2 + right]);
    EXPECT_EQ(y[3 * 3 - 1], x.data()[3 * 6 - 2 + left]);
    EXPECT_EQ(y[3 * 3], x.data()[3 * 6 - 2 + right]);
}

}  // namespace
