// Relations between the packed and semi-planar converters that hold for every picture.
#include <gtest/gtest.h>

#include "conformance/core/Functions.h"
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::Plane;
using kit::Shape;

constexpr std::size_t kWidths[] = {2, 4, 8, 16, 18, 34, 66, 130};
constexpr std::size_t kHeights[] = {2, 4, 6, 18, 34};

Plane Random(std::size_t rowBytes, std::size_t rows) {
    Plane plane(Shape(rowBytes, rows, 4));
    plane.Fill(kit::Pattern::Noise, kit::MixSeed(kit::RunSeed(), rowBytes * 1000 + rows));
    return plane;
}

// The same bytes with neighbours exchanged, which turns YUY2 into UYVY and vice versa.
Plane NeighboursExchanged(const Plane& x) {
    Plane result(x.shape());
    for (std::size_t row = 0; row < x.shape().rows; ++row) {
        for (std::size_t i = 0; i < x.shape().rowBytes; ++i) {
            result.At(row, i) = x.At(row, i ^ 1);
        }
    }
    return result;
}

Bytes Capture(kit::CaptureFunction convert, const Plane& x, std::size_t width, std::size_t height, KorBool flip = 0) {
    const I420Frame to(width, height);
    convert(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(), x.pitch(), width,
            height, flip);
    return to.Samples();
}

I420Frame Rotated(kit::CaptureRotatingFunction convert, const Plane& x, std::size_t width, std::size_t height,
                  KorBool flip, KorImageRotationDegree degree) {
    const bool side = degree == 90 || degree == 270;
    I420Frame to(side ? height : width, side ? width : height);
    convert(to.y.data(), to.y.pitch(), to.u.data(), to.u.pitch(), to.v.data(), to.v.pitch(), x.data(), x.pitch(), width,
            height, flip, degree);
    return to;
}

Bytes RotatedAfterwards(const Plane& plane, KorImageRotationDegree degree) {
    const bool side = degree == 90 || degree == 270;
    const std::size_t width = plane.shape().rowBytes, height = plane.shape().rows;
    const Plane dst(Shape(side ? height : width, side ? width : height));
    KorPlanarRotation_C_(plane.data(), static_cast<KorDistanceT>(plane.pitch()), dst.data(), dst.pitch(), width, height,
                         degree);
    return dst.Samples();
}

template <class Check>
void ForEachSize(Check check) {
    for (const std::size_t width : kWidths) {
        for (const std::size_t height : kHeights) {
            check(width, height);
        }
    }
}

TEST(PackedYuvProperties, Yuy2AndUyvyDifferOnlyInTheOrderOfBytes) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const Plane yuy2 = Random(2 * width, height), uyvy = NeighboursExchanged(yuy2);
        for (const KorBool flip : kit::kFlips) {
            ASSERT_EQ(Capture(&KorYUY2ToI420_C_, yuy2, width, height, flip),
                      Capture(&KorUYVYToI420_C_, uyvy, width, height, flip));
            for (const KorImageRotationDegree degree : {0u, 90u, 180u, 270u}) {
                ASSERT_EQ(Rotated(&KorYUY2ToI420WithRotation_C_, yuy2, width, height, flip, degree).Samples(),
                          Rotated(&KorUYVYToI420WithRotation_C_, uyvy, width, height, flip, degree).Samples());
            }
        }
    });
}

TEST(PackedYuvProperties, PackersDifferOnlyInTheOrderOfBytes) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const I420Frame from(width, height);
        for (const KorVideoFrameDitherLevel level : {KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_2}) {
            const Plane yuy2(Shape(2 * width, height)), uyvy(Shape(2 * width, height));
            kit::ScriptedRandom::ServeSeed(5);
            KorI420ToYUY2_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(),
                             from.v.pitch(), yuy2.data(), yuy2.pitch(), width, height, level);
            kit::ScriptedRandom::ServeSeed(5);
            KorI420ToUYVY_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(),
                             from.v.pitch(), uyvy.data(), uyvy.pitch(), width, height, level);
            ASSERT_EQ(NeighboursExchanged(yuy2).Samples(), uyvy.Samples());
        }
    });
}

TEST(PackedYuvProperties, PackingAndCapturingGivesThePictureBack) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const I420Frame from(width, height);
        const Plane x(Shape(2 * width, height));
        KorI420ToYUY2_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                         x.data(), x.pitch(), width, height, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        ASSERT_EQ(Capture(&KorYUY2ToI420_C_, x, width, height), from.Samples());
    });
}

TEST(PackedYuvProperties, AngleZeroIsThePlainConverter) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const Plane x = Random(2 * width, height);
        for (const KorBool flip : kit::kFlips) {
            ASSERT_EQ(Rotated(&KorYUY2ToI420WithRotation_C_, x, width, height, flip, 0).Samples(),
                      Capture(&KorYUY2ToI420_C_, x, width, height, flip));
            ASSERT_EQ(Rotated(&KorUYVYToI420WithRotation_C_, x, width, height, flip, 0).Samples(),
                      Capture(&KorUYVYToI420_C_, x, width, height, flip));
        }
    });
}

TEST(PackedYuvProperties, AngleZeroIsThePlainConverterAtOddHeightsToo) {
    for (const std::size_t height : kit::Sizes{1, 3, 7}) {
        const Plane x = Random(36, height);
        for (const KorBool flip : kit::kFlips) {
            const I420Frame plain(18, height, kit::ShapeWithSpares(18, height, 0, 1));
            const I420Frame rotated(18, height, kit::ShapeWithSpares(18, height, 0, 1));
            KorYUY2ToI420_C_(plain.y.data(), plain.y.pitch(), plain.u.data(), plain.u.pitch(), plain.v.data(),
                             plain.v.pitch(), x.data(), x.pitch(), 18, height, flip);
            KorYUY2ToI420WithRotation_C_(rotated.y.data(), rotated.y.pitch(), rotated.u.data(), rotated.u.pitch(),
                                         rotated.v.data(), rotated.v.pitch(), x.data(), x.pitch(), 18, height, flip, 0);
            EXPECT_EQ(rotated.Samples(), plain.Samples());
            EXPECT_EQ(rotated.y.Row(height), plain.y.Row(height));
        }
    }
}

TEST(PackedYuvProperties, RotatingOnTheWayIsRotatingAfterwards) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const Plane x = Random(2 * width, height);
        for (const KorBool flip : kit::kFlips) {
            const I420Frame plain = Rotated(&KorUYVYToI420WithRotation_C_, x, width, height, flip, 0);
            for (const KorImageRotationDegree degree : {90u, 180u, 270u}) {
                const I420Frame rotated = Rotated(&KorUYVYToI420WithRotation_C_, x, width, height, flip, degree);
                ASSERT_EQ(rotated.y.Samples(), RotatedAfterwards(plain.y, degree));
                ASSERT_EQ(rotated.u.Samples(), RotatedAfterwards(plain.u, degree));
                ASSERT_EQ(rotated.v.Samples(), RotatedAfterwards(plain.v, degree));
            }
        }
    });
}

TEST(PackedYuvProperties, Yuv2LumaOutAndInIsTheRangeMapping) {
    // One direction copies luma, the other maps it: the round trip is the mapping alone.
    ForEachSize([](std::size_t width, std::size_t height) {
        const I420Frame from(width, height), back(width, height);
        const Plane x(Shape(2 * width, height));
        KorI420toYuv2_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                         x.data(), x.pitch(), width, height);
        KorYuv2ToI420_C_(back.y.data(), back.y.pitch(), back.u.data(), back.u.pitch(), back.v.data(), back.v.pitch(),
                         x.data(), x.pitch(), width, height, 0);
        for (std::size_t row = 0; row < height; ++row) {
            for (std::size_t column = 0; column < width; ++column) {
                ASSERT_EQ(back.y.At(row, column), from.y.At(row, column) * 220 / 256 + 16);
            }
        }
    });
}

TEST(PackedYuvProperties, M420IsCopiedSampleForSample) {
    ForEachSize([](std::size_t width, std::size_t height) {
        const I420Frame picture(width, height);
        const Plane m420(Shape(3 * width, height / 2, 7));
        for (std::size_t row = 0; row < height; ++row) {
            for (std::size_t column = 0; column < width; ++column) {
                m420.At(row / 2, row % 2 * width + column) = picture.y.At(row, column);
            }
        }
        for (std::size_t row = 0; row < height / 2; ++row) {
            for (std::size_t column = 0; column < width / 2; ++column) {
                m420.At(row, 2 * width + 2 * column) = picture.u.At(row, column);
                m420.At(row, 2 * width + 2 * column + 1) = picture.v.At(row, column);
            }
        }
        ASSERT_EQ(Capture(&KorM420ToI420_C_, m420, width, height), picture.Samples());
    });
}

}  // namespace
