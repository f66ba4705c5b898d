// Relations between the renderers that hold for every picture and, where noted, every dither level.
#include <gtest/gtest.h>

#include "conformance/core/Functions.h"
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::I444Frame;
using kit::Plane;
using kit::Shape;

constexpr KorVideoFrameDitherLevel kLevels[] = {KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_0,
                                                KOR_VIDEOFRAMEDITHERLEVEL_1, KOR_VIDEOFRAMEDITHERLEVEL_2};
constexpr std::size_t kWidths[] = {2, 4, 6, 16, 30, 34, 64, 258};
constexpr std::size_t kHeights[] = {2, 4, 10};

template <class Frame>
Frame Random(std::size_t width, std::size_t height) {
    Frame frame(width, height);
    std::uint64_t seed = kit::MixSeed(kit::RunSeed(), width * 1000 + height);
    for (const Plane* plane : {&frame.y, &frame.u, &frame.v}) {
        plane->Fill(kit::Pattern::Noise, ++seed);
    }
    return frame;
}

// The pixels of an image of even size; the noise is the same for every renderer.
template <class Frame>
Bytes Rendered(kit::RenderFunction render, const Frame& from, std::size_t width, std::size_t height,
               KorVideoFrameDitherLevel level, std::size_t pixelBytes = 4) {
    const Plane x(Shape(pixelBytes * width, height));
    kit::ScriptedRandom::ServeSeed(3);
    render(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(), x.data(),
           x.pitch(), width, height, level);
    return x.Samples();
}

// The same pixels with reordered or fewer bytes: byte k of the result is byte order[k].
Bytes Reordered(const Bytes& pixels, const std::vector<std::size_t>& order) {
    Bytes result;
    for (std::size_t pixel = 0; pixel < pixels.size(); pixel += 4) {
        for (const std::size_t byte : order) {
            result.push_back(pixels[pixel + byte]);
        }
    }
    return result;
}

template <class Check>
void ForEachSizeAndLevel(Check check) {
    for (const std::size_t width : kWidths) {
        for (const std::size_t height : kHeights) {
            for (const KorVideoFrameDitherLevel level : kLevels) {
                check(width, height, level);
            }
        }
    }
}

TEST(YuvToRgbProperties, ByteOrdersDifferOnlyInTheOrderOfBytes) {
    ForEachSizeAndLevel([](std::size_t width, std::size_t height, KorVideoFrameDitherLevel level) {
        const I420Frame from = Random<I420Frame>(width, height);
        const Bytes rgba = Rendered(&KorI420ToRGBA_C_, from, width, height, level);
        ASSERT_EQ(Rendered(&KorI420ToARGB_C_, from, width, height, level), Reordered(rgba, {3, 0, 1, 2}));
        ASSERT_EQ(Rendered(&KorI420ToBGRA_C_, from, width, height, level), Reordered(rgba, {2, 1, 0, 3}));
        ASSERT_EQ(Rendered(&KorI420ToABGR_C_, from, width, height, level), Reordered(rgba, {3, 2, 1, 0}));
        ASSERT_EQ(Rendered(&KorI420To24BG_C_, from, width, height, level, 3), Reordered(rgba, {2, 1, 0}));
    });
}

TEST(YuvToRgbProperties, RepeatedChromaMakesI444OfI420) {
    for (const std::size_t width : kWidths) {
        for (const std::size_t height : kHeights) {
            const I420Frame from = Random<I420Frame>(width, height);
            const I444Frame full(width, height);
            full.y.SetSamples(from.y.Samples());
            for (std::size_t row = 0; row < height; ++row) {
                for (std::size_t column = 0; column < width; ++column) {
                    full.u.At(row, column) = from.u.At(row / 2, column / 2);
                    full.v.At(row, column) = from.v.At(row / 2, column / 2);
                }
            }
            const KorVideoFrameDitherLevel off = KOR_VIDEOFRAMEDITHERLEVEL_Off;
            ASSERT_EQ(Rendered(&KorI444ToBGRA_C_, full, width, height, off),
                      Rendered(&KorI420ToBGRA_C_, from, width, height, off));
            ASSERT_EQ(Rendered(&KorI444ToBGRAUsingBT709_C_, full, width, height, off),
                      Rendered(&KorI420ToBGRAUsingBT709_C_, from, width, height, off));
        }
    }
}

TEST(YuvToRgbProperties, GreyPicturesRenderGreyButForTheGreenOfBt709) {
    for (int luma = 0; luma < 256; ++luma) {
        const I420Frame from(2, 2);
        from.y.SetAll(static_cast<std::uint8_t>(luma));
        from.u.SetAll(128);
        from.v.SetAll(128);
        const Bytes bt601 = Rendered(&KorI420ToBGRA_C_, from, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        const Bytes bt709 = Rendered(&KorI420ToBGRAUsingBT709_C_, from, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        EXPECT_TRUE(bt601[0] == bt601[1] && bt601[1] == bt601[2]);
        EXPECT_TRUE(bt709[0] == bt709[2] && bt709[1] >= bt709[0] && bt709[1] <= bt709[0] + 1);
    }
}

TEST(YuvToRgbProperties, OddSizesRenderAsTheEvenSizesBelow) {
    // Without dither; its raster depends on the width rounded up to a multiple of eight.
    for (const std::size_t width : kWidths) {
        const I420Frame from = Random<I420Frame>(width + 1, 5);
        const Plane odd(Shape(4 * width, 4, 4)), even(Shape(4 * width, 4, 4));
        KorI420ToRGBA_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                         odd.data(), odd.pitch(), width + 1, 5, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        KorI420ToRGBA_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                         even.data(), even.pitch(), width, 4, KOR_VIDEOFRAMEDITHERLEVEL_Off);
        EXPECT_EQ(odd.Difference("x", even.allocation()), "");
    }
}

TEST(YuvToRgbProperties, GeneralMatrixWithRowsExchangedExchangesRedAndBlue) {
    static const KorInt rows[3][3] = {{298, -20, 409}, {298, -100, -208}, {298, 516, 31}};
    static const KorInt exchanged[3][3] = {{298, 516, 31}, {298, -100, -208}, {298, -20, 409}};
    const I420Frame from = Random<I420Frame>(34, 6);
    const Plane x(Shape(4 * 34, 6)), z(Shape(4 * 34, 6));
    KorI420ToBGRAGeneral_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                            x.data(), x.pitch(), 34, 6, rows, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    KorI420ToBGRAGeneral_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                            z.data(), z.pitch(), 34, 6, exchanged, KOR_VIDEOFRAMEDITHERLEVEL_Off);
    EXPECT_EQ(Reordered(x.Samples(), {2, 1, 0, 3}), z.Samples());
}

}  // namespace
