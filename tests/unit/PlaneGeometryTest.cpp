// Plane geometry: halving chroma, splitting interleaved chroma, mirroring, rotating, flipping in place.
#include <gtest/gtest.h>

#include <algorithm>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::Plane;
using kit::Shape;

Plane Filled(const kit::PlaneShape& shape, const Bytes& samples) {
    Plane plane(shape);
    plane.SetSamples(samples);
    return plane;
}

KorDistanceT Down(const Plane& plane) {
    return static_cast<KorDistanceT>(plane.pitch());
}
KorDistanceT Up(const Plane& plane) {
    return -Down(plane);
}
const KorUint8* LastRow(const Plane& plane) {
    return &plane.At(plane.shape().rows - 1, 0);
}

// ---- Halving the height of chroma --------------------------------------------------------------------------------

TEST(HalveChroma, AveragesRowPairsRoundingUp) {
    const Plane src = Filled(Shape(3, 2), {10, 20, 255, 11, 21, 255});
    const Plane dst(Shape(3, 1));
    KorPlanarUV422To420_C_(src.data(), Down(src), dst.data(), dst.pitch(), 3, 1);
    EXPECT_EQ(dst.Samples(), (Bytes{11, 21, 255}));
}

TEST(HalveChroma, EveryPairOfSamples) {
    const Plane src(Shape(256, 512)), dst(Shape(256, 256));
    for (std::size_t row = 0; row < 512; ++row) {
        for (std::size_t column = 0; column < 256; ++column) {
            src.At(row, column) = static_cast<std::uint8_t>(row % 2 == 0 ? row / 2 : column);
        }
    }
    KorPlanarUV422To420_C_(src.data(), Down(src), dst.data(), dst.pitch(), 256, 256);
    for (std::size_t a = 0; a < 256; ++a) {
        for (std::size_t b = 0; b < 256; ++b) {
            ASSERT_EQ(dst.At(a, b), (a + b + 1) / 2) << a << ", " << b;
        }
    }
}

TEST(HalveChroma, HeightCountsOutputRows) {
    const Plane src = Filled(Shape(1, 4), {0, 2, 100, 103}), dst(Shape(1, 2));
    KorPlanarUV422To420_C_(src.data(), Down(src), dst.data(), dst.pitch(), 1, 2);
    EXPECT_EQ(dst.Samples(), (Bytes{1, 102}));
}

TEST(HalveChroma, NegativePitchPairsRowsUpwards) {
    const Plane src = Filled(Shape(1, 4), {0, 10, 20, 30}), dst(Shape(1, 2));
    KorPlanarUV422To420_C_(LastRow(src), Up(src), dst.data(), dst.pitch(), 1, 2);
    EXPECT_EQ(dst.Samples(), (Bytes{25, 5}));
}

TEST(HalveChroma, ZeroSizesTouchNothing) {
    KorPlanarUV422To420_C_(nullptr, 8, nullptr, 8, 0, 5);
    KorPlanarUV422To420_C_(nullptr, -8, nullptr, 8, 5, 0);
    KorPlanarUV422To420_C_(nullptr, 0, nullptr, 0, 0, 0);
}

// ---- Interleaved chroma and mirroring ----------------------------------------------------------------------------

TEST(Split, FirstBytesGoToUv1AndSecondToUv2) {
    const Plane src = Filled(Shape(6, 1), {1, 101, 2, 102, 3, 103}), uv1(Shape(3, 1)), uv2(Shape(3, 1));
    KorPlanarUVDeinterlace_C_(src.data(), Down(src), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(), 3, 1);
    EXPECT_EQ(uv1.Samples(), (Bytes{1, 2, 3}));
    EXPECT_EQ(uv2.Samples(), (Bytes{101, 102, 103}));
}

TEST(Split, MirroredReversesEachRow) {
    const Plane src = Filled(Shape(6, 2), {1, 101, 2, 102, 3, 103, 4, 104, 5, 105, 6, 106});
    const Plane uv1(Shape(3, 2)), uv2(Shape(3, 2));
    KorPlanarUVDeinterlaceMirror_C_(src.data(), Down(src), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(), 3, 2);
    EXPECT_EQ(uv1.Samples(), (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(uv2.Samples(), (Bytes{103, 102, 101, 106, 105, 104}));
}

TEST(Split, NegativePitchFlips) {
    const Plane src = Filled(Shape(2, 3), {1, 101, 2, 102, 3, 103}), uv1(Shape(1, 3)), uv2(Shape(1, 3));
    KorPlanarUVDeinterlace_C_(LastRow(src), Up(src), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(), 1, 3);
    EXPECT_EQ(uv1.Samples(), (Bytes{3, 2, 1}));
    EXPECT_EQ(uv2.Samples(), (Bytes{103, 102, 101}));
}

TEST(Split, DestinationsHaveTheirOwnPitches) {
    const Plane src = Filled(Shape(4, 2, 3), {1, 101, 2, 102, 3, 103, 4, 104}), uv1(Shape(2, 2, 1)),
                uv2(Shape(2, 2, 6));
    KorPlanarUVDeinterlace_C_(src.data(), Down(src), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(), 2, 2);
    EXPECT_EQ(uv1.Samples(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(uv2.Samples(), (Bytes{101, 102, 103, 104}));
}

TEST(Split, ZeroSizesTouchNothing) {
    KorPlanarUVDeinterlace_C_(nullptr, 8, nullptr, 8, nullptr, 8, 0, 3);
    KorPlanarUVDeinterlace_C_(nullptr, -8, nullptr, 8, nullptr, 8, 3, 0);
    KorPlanarUVDeinterlaceMirror_C_(nullptr, 8, nullptr, 8, nullptr, 8, 0, 3);
    KorPlanarUVDeinterlaceMirror_C_(nullptr, -8, nullptr, 8, nullptr, 8, 3, 0);
}

TEST(Mirror, LeftBecomesRightAndRowsKeepTheirOrder) {
    const Plane src = Filled(Shape(4, 2), {1, 2, 3, 4, 5, 6, 7, 8}), dst(Shape(4, 2));
    KorPlanarMirror_C_(src.data(), Down(src), dst.data(), dst.pitch(), 4, 2);
    EXPECT_EQ(dst.Samples(), (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));
}

TEST(Mirror, OneColumnIsACopy) {
    const Plane src = Filled(Shape(1, 3), {1, 2, 3}), dst(Shape(1, 3));
    KorPlanarMirror_C_(src.data(), Down(src), dst.data(), dst.pitch(), 1, 3);
    EXPECT_EQ(dst.Samples(), (Bytes{1, 2, 3}));
}

TEST(Mirror, NegativePitchRotatesBy180) {
    const Plane src = Filled(Shape(2, 2), {1, 2, 3, 4}), dst(Shape(2, 2));
    KorPlanarMirror_C_(LastRow(src), Up(src), dst.data(), dst.pitch(), 2, 2);
    EXPECT_EQ(dst.Samples(), (Bytes{4, 3, 2, 1}));
}

TEST(Mirror, ZeroSizesTouchNothing) {
    KorPlanarMirror_C_(nullptr, 8, nullptr, 8, 0, 3);
    KorPlanarMirror_C_(nullptr, -8, nullptr, 8, 3, 0);
}

// ---- Rotation ----------------------------------------------------------------------------------------------------

Bytes Rotate(const Plane& src, KorImageRotationDegree degree, std::size_t width, std::size_t height) {
    const Plane dst(Shape(width, height));
    dst.SetAll(0);
    KorPlanarRotation_C_(src.data(), Down(src), dst.data(), dst.pitch(), src.shape().rowBytes, src.shape().rows,
                         degree);
    return dst.Samples();
}

TEST(Rotation, ThreeByTwoInAllAngles) {
    const Plane src = Filled(Shape(3, 2), {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(Rotate(src, 0, 3, 2), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(Rotate(src, 90, 2, 3), (Bytes{4, 1, 5, 2, 6, 3}));
    EXPECT_EQ(Rotate(src, 180, 3, 2), (Bytes{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(Rotate(src, 270, 2, 3), (Bytes{3, 6, 2, 5, 1, 4}));
}

TEST(Rotation, OneColumnBecomesARowAndOneRowAColumn) {
    const Plane column = Filled(Shape(1, 3), {1, 2, 3}), row = Filled(Shape(3, 1), {1, 2, 3});
    EXPECT_EQ(Rotate(column, 90, 3, 1), (Bytes{3, 2, 1}));
    EXPECT_EQ(Rotate(column, 270, 3, 1), (Bytes{1, 2, 3}));
    EXPECT_EQ(Rotate(row, 90, 1, 3), (Bytes{1, 2, 3}));
    EXPECT_EQ(Rotate(row, 270, 1, 3), (Bytes{3, 2, 1}));
}

TEST(Rotation, UnknownAnglesLeaveTheDestinationAlone) {
    const Plane src = Filled(Shape(2, 2), {1, 2, 3, 4});
    for (const KorImageRotationDegree degree : {1u, 45u, 89u, 91u, 179u, 271u, 360u, 450u, 4294967206u, 4294967295u}) {
        EXPECT_EQ(Rotate(src, degree, 2, 2), Bytes(4, 0)) << degree;
    }
}

TEST(Rotation, AngleZeroOnItselfDoesNothing) {
    const Plane plane = Filled(Shape(3, 3, 2), {1, 2, 3, 4, 5, 6, 7, 8, 9});
    const Bytes before = plane.Snapshot();
    // Even with a pitch that would copy row 2 over row 1.
    KorPlanarRotation_C_(plane.data(), 2 * Down(plane), plane.data(), plane.pitch(), 3, 2, 0);
    EXPECT_EQ(plane.Difference("plane", before.data()), "");
}

TEST(Rotation, AngleZeroCopiesRowsAndLeavesPaddingAlone) {
    const Plane src = Filled(Shape(2, 2, 3), {1, 2, 3, 4}), dst(Shape(2, 2, 1));
    const Bytes before = dst.Snapshot();
    KorPlanarRotation_C_(src.data(), Down(src), dst.data(), dst.pitch(), 2, 2, 0);
    EXPECT_EQ(dst.Samples(), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(dst.GapDifference("dst", before.data()), "");
}

TEST(Rotation, NegativePitchRotatesTheFlippedImage) {
    const Plane src = Filled(Shape(2, 2), {1, 2, 3, 4}), dst(Shape(2, 2));
    KorPlanarRotation_C_(LastRow(src), Up(src), dst.data(), dst.pitch(), 2, 2, 90);
    EXPECT_EQ(dst.Samples(), (Bytes{1, 3, 2, 4}));
}

TEST(Rotation, ZeroSizesTouchNothing) {
    for (const KorImageRotationDegree degree : {0u, 90u, 180u, 270u, 45u}) {
        KorPlanarRotation_C_(nullptr, 8, nullptr, 8, 0, 3, degree);
        KorPlanarRotation_C_(nullptr, -8, nullptr, 8, 3, 0, degree);
        KorPlanarRotation_C_(nullptr, 8, nullptr, 8, 0, 0, degree);
    }
}

TEST(Rotation, AngleZeroOfNoColumnsTouchesNothing) {
    // Empty rows are rows too; the planes differ, so the shortcut for identical planes is not taken.
    const Plane src(Shape(0, 3, 4)), dst(Shape(0, 3, 7));
    KorPlanarRotation_C_(src.data(), Down(src), dst.data(), dst.pitch(), 0, 3, 0);
}

struct Halves {
    Bytes uv1, uv2;
};

Halves RotateAndSplit(const Plane& src, KorImageRotationDegree degree, std::size_t width, std::size_t height) {
    const Plane uv1(Shape(width, height)), uv2(Shape(width, height));
    uv1.SetAll(0);
    uv2.SetAll(0);
    KorPlanarUVDeinterlaceRotation_C_(src.data(), Down(src), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(),
                                      src.shape().rowBytes / 2, src.shape().rows, degree);
    return {uv1.Samples(), uv2.Samples()};
}

TEST(SplitRotation, ThreeByTwoInAllAngles) {
    const Plane src = Filled(Shape(6, 2), {1, 101, 2, 102, 3, 103, 4, 104, 5, 105, 6, 106});
    EXPECT_EQ(RotateAndSplit(src, 0, 3, 2).uv1, (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(RotateAndSplit(src, 0, 3, 2).uv2, (Bytes{101, 102, 103, 104, 105, 106}));
    EXPECT_EQ(RotateAndSplit(src, 90, 2, 3).uv1, (Bytes{4, 1, 5, 2, 6, 3}));
    EXPECT_EQ(RotateAndSplit(src, 90, 2, 3).uv2, (Bytes{104, 101, 105, 102, 106, 103}));
    EXPECT_EQ(RotateAndSplit(src, 180, 3, 2).uv1, (Bytes{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(RotateAndSplit(src, 180, 3, 2).uv2, (Bytes{106, 105, 104, 103, 102, 101}));
    EXPECT_EQ(RotateAndSplit(src, 270, 2, 3).uv1, (Bytes{3, 6, 2, 5, 1, 4}));
    EXPECT_EQ(RotateAndSplit(src, 270, 2, 3).uv2, (Bytes{103, 106, 102, 105, 101, 104}));
}

TEST(SplitRotation, UnknownAnglesRotateBy270) {
    const Plane src = Filled(Shape(6, 2), {1, 101, 2, 102, 3, 103, 4, 104, 5, 105, 6, 106});
    const Halves rotated = RotateAndSplit(src, 270, 2, 3);
    for (const KorImageRotationDegree degree : {1u, 45u, 89u, 360u, 450u, 4294967206u}) {
        EXPECT_EQ(RotateAndSplit(src, degree, 2, 3).uv1, rotated.uv1) << degree;
        EXPECT_EQ(RotateAndSplit(src, degree, 2, 3).uv2, rotated.uv2) << degree;
    }
}

TEST(SplitRotation, ZeroSizesTouchNothingAtAnyAngle) {
    for (const KorImageRotationDegree degree : {0u, 90u, 180u, 270u, 45u}) {
        KorPlanarUVDeinterlaceRotation_C_(nullptr, 8, nullptr, 8, nullptr, 8, 0, 3, degree);
        KorPlanarUVDeinterlaceRotation_C_(nullptr, -8, nullptr, 8, nullptr, 8, 3, 0, degree);
    }
}

// ---- Flipping in place -------------------------------------------------------------------------------------------

// An image of full I420 planes, chroma rounded up, whose samples encode their row and column.
struct Picture {
    Plane y, u, v;

    Picture(std::size_t width, std::size_t height)
        : y(Shape(width, height, 3)), u(Shape((width + 1) / 2, (height + 1) / 2, 2)), v(u.shape()) {
        for (const Plane* plane : {&y, &u, &v}) {
            for (std::size_t row = 0; row < plane->shape().rows; ++row) {
                for (std::size_t column = 0; column < plane->shape().rowBytes; ++column) {
                    plane->At(row, column) = static_cast<std::uint8_t>(10 * row + column + (plane == &v ? 100 : 0));
                }
            }
        }
    }

    void Flip(std::size_t width, std::size_t height) const {
        KorI420FlipVertical_C_(y.data(), y.pitch(), u.data(), u.pitch(), v.data(), v.pitch(), width, height);
    }
};

TEST(FlipVertical, ExchangesRowsAboutTheMiddle) {
    const Picture picture(4, 5);
    picture.Flip(4, 5);
    EXPECT_EQ(picture.y.Samples(), (Bytes{40, 41, 42, 43, 30, 31, 32, 33, 20, 21, 22, 23, 10, 11, 12, 13, 0, 1, 2, 3}));
    // Chroma counts as 2 by 2; the third row stays in place.
    EXPECT_EQ(picture.u.Samples(), (Bytes{10, 11, 0, 1, 20, 21}));
    EXPECT_EQ(picture.v.Samples(), (Bytes{110, 111, 100, 101, 120, 121}));
}

TEST(FlipVertical, HeightOfThreeLeavesChromaAlone) {
    const Picture picture(2, 3);
    picture.Flip(2, 3);
    EXPECT_EQ(picture.y.Samples(), (Bytes{20, 21, 10, 11, 0, 1}));
    EXPECT_EQ(picture.u.Samples(), (Bytes{0, 10}));
    EXPECT_EQ(picture.v.Samples(), (Bytes{100, 110}));
}

TEST(FlipVertical, OddWidthLeavesTheLastChromaColumn) {
    const Picture picture(5, 4);
    picture.Flip(5, 4);
    EXPECT_EQ(picture.y.Row(0), (Bytes{30, 31, 32, 33, 34}));
    EXPECT_EQ(picture.u.Samples(), (Bytes{10, 11, 2, 0, 1, 12}));
    EXPECT_EQ(picture.v.Samples(), (Bytes{110, 111, 102, 100, 101, 112}));
}

TEST(FlipVertical, HeightOfTwoExchangesOnlyLuma) {
    const Picture picture(2, 2);
    picture.Flip(2, 2);
    EXPECT_EQ(picture.y.Samples(), (Bytes{10, 11, 0, 1}));
    EXPECT_EQ(picture.u.Samples(), (Bytes{0}));
}

TEST(FlipVertical, OneColumnHasNoChromaToFlip) {
    const Picture picture(1, 4);
    picture.Flip(1, 4);
    EXPECT_EQ(picture.y.Samples(), (Bytes{30, 20, 10, 0}));
    EXPECT_EQ(picture.u.Samples(), (Bytes{0, 10}));
}

TEST(FlipVertical, DegenerateSizesTouchNothing) {
    for (const std::size_t size : kit::Sizes{0, 1, 2, 5, 17}) {
        KorI420FlipVertical_C_(nullptr, 8, nullptr, 8, nullptr, 8, size, 0);
        KorI420FlipVertical_C_(nullptr, 8, nullptr, 8, nullptr, 8, size, 1);
        KorI420FlipVertical_C_(nullptr, 8, nullptr, 8, nullptr, 8, 0, size);
    }
}

}  // namespace
