// Relations between the plane-geometry functions that hold for every plane.
#include <gtest/gtest.h>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::Plane;
using kit::Shape;

// Sizes of all parities, below and above the sizes of tiles and vectors.
constexpr std::size_t kExtents[] = {1, 2, 3, 7, 8, 15, 16, 17, 31, 33, 64, 130};

KorDistanceT Down(const Plane& plane) {
    return static_cast<KorDistanceT>(plane.pitch());
}

Plane Random(std::size_t rowBytes, std::size_t rows) {
    static std::uint64_t seed = kit::RunSeed();
    Plane plane(Shape(rowBytes, rows, rowBytes % 3));
    plane.Fill(kit::Pattern::Noise, ++seed);
    return plane;
}

Plane Rotated(const Plane& src, KorImageRotationDegree degree) {
    const bool side = degree == 90 || degree == 270;
    const std::size_t width = src.shape().rowBytes, height = src.shape().rows;
    Plane dst(Shape(side ? height : width, side ? width : height));
    KorPlanarRotation_C_(src.data(), Down(src), dst.data(), dst.pitch(), width, height, degree);
    return dst;
}

Plane Mirrored(const Plane& src) {
    Plane dst(Shape(src.shape().rowBytes, src.shape().rows));
    KorPlanarMirror_C_(src.data(), Down(src), dst.data(), dst.pitch(), src.shape().rowBytes, src.shape().rows);
    return dst;
}

Plane MirroredUpwards(const Plane& src) {
    Plane dst(Shape(src.shape().rowBytes, src.shape().rows));
    KorPlanarMirror_C_(&src.At(src.shape().rows - 1, 0), -Down(src), dst.data(), dst.pitch(), src.shape().rowBytes,
                       src.shape().rows);
    return dst;
}

struct Halves {
    Plane uv1, uv2;
};

Halves Split(const Plane& src) {
    Halves halves{Plane(Shape(src.shape().rowBytes / 2, src.shape().rows)),
                  Plane(Shape(src.shape().rowBytes / 2, src.shape().rows))};
    KorPlanarUVDeinterlace_C_(src.data(), Down(src), halves.uv1.data(), halves.uv1.pitch(), halves.uv2.data(),
                              halves.uv2.pitch(), src.shape().rowBytes / 2, src.shape().rows);
    return halves;
}

template <class Check>
void ForEachPlane(std::size_t bytesPerSample, Check check) {
    for (const std::size_t width : kExtents) {
        for (const std::size_t height : kExtents) {
            check(Random(bytesPerSample * width, height));
        }
    }
}

TEST(PlaneGeometryProperties, RotationsAddUp) {
    ForEachPlane(1, [](const Plane& plane) {
        const Plane quarter = Rotated(plane, 90);
        ASSERT_EQ(Rotated(quarter, 90).Samples(), Rotated(plane, 180).Samples());
        ASSERT_EQ(Rotated(Rotated(quarter, 90), 90).Samples(), Rotated(plane, 270).Samples());
        ASSERT_EQ(Rotated(quarter, 270).Samples(), plane.Samples());
        ASSERT_EQ(Rotated(Rotated(plane, 180), 180).Samples(), plane.Samples());
        ASSERT_EQ(Rotated(plane, 0).Samples(), plane.Samples());
    });
}

TEST(PlaneGeometryProperties, MirroringTwiceIsNothingAndUpwardsIsARotationBy180) {
    ForEachPlane(1, [](const Plane& plane) {
        ASSERT_EQ(Mirrored(Mirrored(plane)).Samples(), plane.Samples());
        ASSERT_EQ(MirroredUpwards(plane).Samples(), Rotated(plane, 180).Samples());
    });
}

TEST(PlaneGeometryProperties, SplittingAndRotatingAtOnceIsSplittingAndThenRotating) {
    ForEachPlane(2, [](const Plane& plane) {
        const Halves halves = Split(plane);
        const std::size_t width = plane.shape().rowBytes / 2, height = plane.shape().rows;
        for (const KorImageRotationDegree degree : {0u, 90u, 180u, 270u}) {
            const Plane expected1 = Rotated(halves.uv1, degree), expected2 = Rotated(halves.uv2, degree);
            const Plane uv1(expected1.shape()), uv2(expected2.shape());
            KorPlanarUVDeinterlaceRotation_C_(plane.data(), Down(plane), uv1.data(), uv1.pitch(), uv2.data(),
                                              uv2.pitch(), width, height, degree);
            ASSERT_EQ(uv1.Samples(), expected1.Samples());
            ASSERT_EQ(uv2.Samples(), expected2.Samples());
        }
        const Plane uv1(halves.uv1.shape()), uv2(halves.uv2.shape());
        KorPlanarUVDeinterlaceMirror_C_(plane.data(), Down(plane), uv1.data(), uv1.pitch(), uv2.data(), uv2.pitch(),
                                        width, height);
        ASSERT_EQ(uv1.Samples(), Mirrored(halves.uv1).Samples());
        ASSERT_EQ(uv2.Samples(), Mirrored(halves.uv2).Samples());
    });
}

TEST(PlaneGeometryProperties, HalvingEqualRowsIsACopy) {
    ForEachPlane(1, [](const Plane& plane) {
        // With a pitch of zero, both rows of every pair are the same.
        const std::size_t width = plane.shape().rowBytes;
        const Plane dst(Shape(width, 1));
        KorPlanarUV422To420_C_(plane.data(), 0, dst.data(), dst.pitch(), width, 1);
        ASSERT_EQ(dst.Row(0), plane.Row(0));
    });
}

TEST(PlaneGeometryProperties, FlippingTwiceIsNothing) {
    for (const std::size_t width : kExtents) {
        for (const std::size_t height : kExtents) {
            const kit::I420Frame frame(width, height, 5);
            const Bytes y = frame.y.Snapshot(), u = frame.u.Snapshot(), v = frame.v.Snapshot();
            for (int times = 0; times < 2; ++times) {
                KorI420FlipVertical_C_(frame.y.data(), frame.y.pitch(), frame.u.data(), frame.u.pitch(), frame.v.data(),
                                       frame.v.pitch(), width, height);
                if (times == 0 && height > 1) {
                    EXPECT_NE(frame.y.Snapshot(), y);
                }
            }
            EXPECT_EQ(frame.y.Difference("y", y.data()), "");
            EXPECT_EQ(frame.u.Difference("u", u.data()), "");
            EXPECT_EQ(frame.v.Difference("v", v.data()), "");
        }
    }
}

}  // namespace
