// Relations between captures of packed RGB that hold for every picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "conformance/core/Functions.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::I444Frame;
using kit::Plane;
using kit::Shape;

Bytes Capture(kit::CaptureFunction convert, const Plane& x, std::size_t width, std::size_t height, KorBool flip = 0) {
    const I420Frame frame(width, height);
    convert(frame.y.data(), frame.y.pitch(), frame.u.data(), frame.u.pitch(), frame.v.data(), frame.v.pitch(), x.data(),
            x.pitch(), width, height, flip);
    return frame.Samples();
}

// The same picture with the bytes of every pixel reordered: byte k of the result is byte order[k].
Plane Reordered(const Plane& x, const std::size_t (&order)[4]) {
    Plane result(x.shape());
    for (std::size_t row = 0; row < x.shape().rows; ++row) {
        for (std::size_t i = 0; i < x.shape().rowBytes; ++i) {
            result.At(row, i) = x.At(row, i / 4 * 4 + order[i % 4]);
        }
    }
    return result;
}

Plane UpsideDown(const Plane& x) {
    Plane result(x.shape());
    for (std::size_t row = 0; row < x.shape().rows; ++row) {
        const Bytes line = x.Row(x.shape().rows - 1 - row);
        std::copy(line.begin(), line.end(), &result.At(row, 0));
    }
    return result;
}

// Part of a picture: some of its rows and the first columns.
Plane Part(const Plane& x, std::size_t firstRow, std::size_t rows, std::size_t columns) {
    Plane result(Shape(4 * columns, rows));
    for (std::size_t row = 0; row < rows; ++row) {
        std::copy_n(&x.At(firstRow + row, 0), 4 * columns, &result.At(row, 0));
    }
    return result;
}

struct Picture {
    std::size_t width, height;
    Plane x;
};

// Pictures of all parities, some of them wide enough for the longest vector loops.
std::vector<Picture> Pictures() {
    std::vector<Picture> pictures;
    std::uint64_t seed = kit::RunSeed();
    for (const std::size_t width : kit::Sizes{1, 2, 3, 7, 16, 33, 98, 257}) {
        for (const std::size_t height : kit::Sizes{1, 2, 3, 6, 9}) {
            Plane x(Shape(4 * width, height));
            x.Fill(kit::Pattern::Noise, ++seed);
            pictures.push_back({width, height, x});
        }
    }
    return pictures;
}

TEST(RgbToYuvProperties, ByteOrdersDifferOnlyInTheOrderOfBytes) {
    const std::size_t bgra[4] = {2, 1, 0, 3}, argb[4] = {3, 0, 1, 2}, abgr[4] = {3, 2, 1, 0};
    for (const Picture& p : Pictures()) {
        const Bytes rgba = Capture(&KorRGBAToI420_C_, p.x, p.width, p.height);
        EXPECT_EQ(Capture(&KorBGRAToI420_C_, Reordered(p.x, bgra), p.width, p.height), rgba);
        EXPECT_EQ(Capture(&KorARGBToI420_C_, Reordered(p.x, argb), p.width, p.height), rgba);
        EXPECT_EQ(Capture(&KorABGRToI420_C_, Reordered(p.x, abgr), p.width, p.height), rgba);
    }
}

TEST(RgbToYuvProperties, FullChromaAndHalvedChromaShareTheirLuma) {
    for (const Picture& p : Pictures()) {
        const std::size_t samples = p.width * p.height;
        const I444Frame full(p.width, p.height);
        KorBGRAToI444_C_(full.y.data(), full.y.pitch(), full.u.data(), full.u.pitch(), full.v.data(), full.v.pitch(),
                         p.x.data(), p.x.pitch(), p.width, p.height, 0);
        const Bytes halved = Capture(&KorBGRAToI420_C_, p.x, p.width, p.height);
        EXPECT_EQ(full.y.Samples(), Bytes(halved.begin(), halved.begin() + static_cast<std::ptrdiff_t>(samples)));
    }
}

TEST(RgbToYuvProperties, CallersMatrixWithTheFixedRowsIsTheFixedFunctionAtEvenSizes) {
    static const KorInt bt709[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
    for (const Picture& p : Pictures()) {
        if (p.width % 2 != 0 || p.height % 2 != 0) {
            continue;
        }
        for (const KorBool flip : kit::kFlips) {
            const I420Frame general(p.width, p.height);
            KorBGRAToI420General_C_(general.y.data(), general.y.pitch(), general.u.data(), general.u.pitch(),
                                    general.v.data(), general.v.pitch(), p.x.data(), p.x.pitch(), p.width, p.height,
                                    flip, bt709);
            EXPECT_EQ(general.Samples(), Capture(&KorBGRAToI420UsingBT709_C_, p.x, p.width, p.height, flip));
        }
    }
}

TEST(RgbToYuvProperties, TwentyFourBitOrdersDifferOnlyInTheOrderOfBytes) {
    for (const std::size_t width : kit::Sizes{2, 6, 16, 34, 98}) {
        const Plane rgb(Shape(3 * width, 4)), bgr(Shape(3 * width, 4));
        rgb.Fill(kit::Pattern::Noise, kit::RunSeed() + width);
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t i = 0; i < 3 * width; ++i) {
                bgr.At(row, i) = rgb.At(row, i / 3 * 3 + 2 - i % 3);
            }
        }
        for (const KorBool flip : kit::kFlips) {
            EXPECT_EQ(Capture(&KorRawToI420_C_, rgb, width, 4, flip), Capture(&Kor24BGToI420_C_, bgr, width, 4, flip));
        }
    }
}

struct Named {
    const char* name;
    kit::CaptureFunction convert;
};

void PrintTo(const Named& function, std::ostream* out) {
    *out << function.name;
}

class Rgb32Capture : public testing::TestWithParam<Named> {};

TEST_P(Rgb32Capture, FlipIsTheSameAsASourceUpsideDown) {
    for (const Picture& p : Pictures()) {
        EXPECT_EQ(Capture(GetParam().convert, p.x, p.width, p.height, 1),
                  Capture(GetParam().convert, UpsideDown(p.x), p.width, p.height, 0));
    }
}

TEST_P(Rgb32Capture, FlippingAFlippedSourceIsNothing) {
    for (const Picture& p : Pictures()) {
        EXPECT_EQ(Capture(GetParam().convert, UpsideDown(p.x), p.width, p.height, 1),
                  Capture(GetParam().convert, p.x, p.width, p.height, 0));
    }
}

TEST_P(Rgb32Capture, StripsOfRowPairsMakeUpTheWhole) {
    for (const Picture& p : Pictures()) {
        const I420Frame whole(p.width, p.height), strips(p.width, p.height);
        const auto convert = [&](const I420Frame& f, std::size_t row, const Plane& x, std::size_t height) {
            GetParam().convert(&f.y.At(row, 0), f.y.pitch(), &f.u.At(row / 2, 0), f.u.pitch(), &f.v.At(row / 2, 0),
                               f.v.pitch(), x.data(), x.pitch(), p.width, height, 0);
        };
        convert(whole, 0, p.x, p.height);
        for (std::size_t row = 0; row < p.height; row += 2) {
            const std::size_t rows = std::min<std::size_t>(2, p.height - row);
            convert(strips, row, Part(p.x, row, rows, p.width), rows);
        }
        EXPECT_EQ(strips.Samples(), whole.Samples()) << p.width << "x" << p.height;
    }
}

TEST_P(Rgb32Capture, ResultDoesNotDependOnHowManyPixelsFollow) {
    for (const Picture& p : Pictures()) {
        const I420Frame whole(p.width, p.height);
        GetParam().convert(whole.y.data(), whole.y.pitch(), whole.u.data(), whole.u.pitch(), whole.v.data(),
                           whole.v.pitch(), p.x.data(), p.x.pitch(), p.width, p.height, 0);
        for (std::size_t columns = 2; columns <= std::min<std::size_t>(p.width, 70); columns += 2) {
            const I420Frame part(columns, p.height);
            const Plane x = Part(p.x, 0, p.height, columns);
            GetParam().convert(part.y.data(), part.y.pitch(), part.u.data(), part.u.pitch(), part.v.data(),
                               part.v.pitch(), x.data(), x.pitch(), columns, p.height, 0);
            for (std::size_t row = 0; row < p.height; ++row) {
                ASSERT_TRUE(std::equal(&part.y.At(row, 0), &part.y.At(row, columns), &whole.y.At(row, 0)));
            }
            for (std::size_t row = 0; row < (p.height + 1) / 2; ++row) {
                ASSERT_TRUE(std::equal(&part.u.At(row, 0), &part.u.At(row, columns / 2), &whole.u.At(row, 0)));
                ASSERT_TRUE(std::equal(&part.v.At(row, 0), &part.v.At(row, columns / 2), &whole.v.At(row, 0)));
            }
        }
    }
}

TEST_P(Rgb32Capture, GreyHasNoColour) {
    for (int grey = 0; grey < 256; ++grey) {
        const Plane x(Shape(4 * 5, 3));
        x.SetAll(static_cast<std::uint8_t>(grey));
        const I420Frame frame(5, 3);
        GetParam().convert(frame.y.data(), frame.y.pitch(), frame.u.data(), frame.u.pitch(), frame.v.data(),
                           frame.v.pitch(), x.data(), x.pitch(), 5, 3, 0);
        EXPECT_EQ(frame.u.Samples(), Bytes(6, 128)) << grey;
        EXPECT_EQ(frame.v.Samples(), Bytes(6, 128)) << grey;
    }
}

INSTANTIATE_TEST_SUITE_P(, Rgb32Capture,
                         testing::Values(Named{"RGBA", &KorRGBAToI420_C_}, Named{"BGRA", &KorBGRAToI420_C_},
                                         Named{"ARGB", &KorARGBToI420_C_}, Named{"ABGR", &KorABGRToI420_C_}),
                         testing::PrintToStringParamName());

}  // namespace
