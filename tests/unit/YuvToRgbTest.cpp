// I420 and I444 rendered as RGB, without dither: values worked out by hand, odd and degenerate sizes, byte orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <ostream>

#include "conformance/core/Case.h"
#include "conformance/core/Functions.h"
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Frames.h"

namespace {

using kit::Bytes;
using kit::I420Frame;
using kit::I444Frame;
using kit::Plane;
using kit::Shape;

constexpr KorVideoFrameDitherLevel kOff = KOR_VIDEOFRAMEDITHERLEVEL_Off;
constexpr std::size_t kNone = SIZE_MAX;

struct Renderer {
    const char* name;
    kit::RenderFunction render;
    std::size_t pixelBytes, red, green, blue, alpha;
    bool bt709;
};

void PrintTo(const Renderer& renderer, std::ostream* out) {
    *out << renderer.name;
}

template <class Frame>
void Render(kit::RenderFunction render, const Frame& from, const Plane& x, std::size_t width, std::size_t height) {
    render(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(), x.data(),
           x.pitch(), width, height, kOff);
}

class RenderI420 : public testing::TestWithParam<Renderer> {
  protected:
    // The colours {R, G, B} of a 2 by 2 image whose four pixels each have their own luma, one after the other.
    Bytes Block(const Bytes& luma, std::uint8_t u, std::uint8_t v) const {
        const I420Frame from(2, 2);
        from.y.SetSamples(luma);
        from.u.SetSamples({u});
        from.v.SetSamples({v});
        const Plane x(Shape(2 * GetParam().pixelBytes, 2, 5));
        Render(GetParam().render, from, x, 2, 2);
        Bytes colours;
        for (std::size_t i = 0; i < 4; ++i) {
            const std::uint8_t* pixel = &x.At(i / 2, i % 2 * GetParam().pixelBytes);
            colours.insert(colours.end(), {pixel[GetParam().red], pixel[GetParam().green], pixel[GetParam().blue]});
            if (GetParam().alpha != kNone) {
                EXPECT_EQ(pixel[GetParam().alpha], 255);
            }
        }
        return colours;
    }
};

std::vector<Renderer> I420Renderers() {
    return {
        {"RGBA", &KorI420ToRGBA_C_, 4, 0, 1, 2, 3, false},
        {"BGRA", &KorI420ToBGRA_C_, 4, 2, 1, 0, 3, false},
        {"ARGB", &KorI420ToARGB_C_, 4, 1, 2, 3, 0, false},
        {"ABGR", &KorI420ToABGR_C_, 4, 3, 2, 1, 0, false},
        {"BGRAUsingBT709", &KorI420ToBGRAUsingBT709_C_, 4, 2, 1, 0, 3, true},
        {"BGR24", &KorI420To24BG_C_, 3, 2, 1, 0, kNone, false},
    };
}

INSTANTIATE_TEST_SUITE_P(, RenderI420, testing::ValuesIn(I420Renderers()), testing::PrintToStringParamName());

// ---- I420 --------------------------------------------------------------------------------------------------------

TEST_P(RenderI420, BlackWhiteAndWhiterThanWhite) {
    // The truncated constants give white as 254; with BT.709 green is one higher. Luma 0 and 255 saturate.
    const std::uint8_t green = GetParam().bt709 ? 255 : 254;
    EXPECT_EQ(Block({16, 235, 255, 0}, 128, 128), (Bytes{0, 0, 0, 254, green, 254, 255, 255, 255, 0, 0, 0}));
}

TEST_P(RenderI420, MiddleGrey) {
    const std::uint8_t green = GetParam().bt709 ? 131 : 130;
    EXPECT_EQ(Block({128, 128, 128, 128}, 128, 128),
              (Bytes{130, green, 130, 130, green, 130, 130, green, 130, 130, green, 130}));
}

TEST_P(RenderI420, EveryPixelHasItsOwnLumaAndTheChromaOfItsBlock) {
    // Luma 60, 100, 140, 180 gives 69, 116, 162, 209; U = 100 and V = 160 shift the channels of all four alike.
    const int y[4] = {69, 116, 162, 209};
    const int r = GetParam().bt709 ? 160 * 229 / 128 - 248 : 160 * 204 / 128 - 223;
    const int g = GetParam().bt709 ? 78 - (100 * 14 + 160 * 34) / 64 : 135 - (100 * 25 + 160 * 52) / 64;
    const int b = GetParam().bt709 ? 100 * 135 / 64 - 289 : 100 * 129 / 64 - 277;
    Bytes expected;
    for (const int luma : y) {
        for (const int shift : {r, g, b}) {
            expected.push_back(static_cast<std::uint8_t>(std::clamp(luma + shift, 0, 255)));
        }
    }
    EXPECT_EQ(Block({60, 100, 140, 180}, 100, 160), expected);
}

TEST_P(RenderI420, ExtremeChromaSaturatesInBothDirections) {
    EXPECT_EQ(Block({128, 128, 128, 128}, 0, 255)[0], 255);
    EXPECT_EQ(Block({128, 128, 128, 128}, 0, 255)[2], 0);
    EXPECT_EQ(Block({128, 128, 128, 128}, 255, 0)[0], 0);
    EXPECT_EQ(Block({128, 128, 128, 128}, 255, 0)[2], 255);
    EXPECT_EQ(Block({128, 128, 128, 128}, 255, 255)[1], GetParam().bt709 ? 36 : 0);
    EXPECT_EQ(Block({200, 200, 200, 200}, 0, 0)[1], 255);
}

TEST_P(RenderI420, OddLastColumnAndRowStayAsTheyWere) {
    const I420Frame from(5, 3);
    const std::size_t bytes = GetParam().pixelBytes;
    const Plane x(Shape(5 * bytes, 3, 7));
    x.SetAll(0xee);
    const Bytes before = x.Snapshot();
    Render(GetParam().render, from, x, 5, 3);
    EXPECT_EQ(x.Row(2), Bytes(5 * bytes, 0xee));
    for (std::size_t row = 0; row < 2; ++row) {
        const Bytes line = x.Row(row);
        EXPECT_EQ(Bytes(line.end() - static_cast<std::ptrdiff_t>(bytes), line.end()), Bytes(bytes, 0xee));
        if (GetParam().alpha != kNone) {
            EXPECT_EQ(line[3 * bytes + GetParam().alpha], 255);
        }
    }
    EXPECT_EQ(x.GapDifference("x", before.data()), "");
}

TEST_P(RenderI420, RowsAreWrittenToTheLastByteAndNoFurther) {
    const I420Frame from(4, 2);
    kit::PlaneShape shape = Shape(4 * GetParam().pixelBytes, 2, 3);
    const Plane x(shape);
    const Bytes before = x.Snapshot();
    Render(GetParam().render, from, x, 4, 2);
    EXPECT_EQ(x.GapDifference("x", before.data()), "");
}

TEST_P(RenderI420, TooSmallSizesTouchNothing) {
    kit::ScriptedRandom::ServeSeed(1);
    for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
        for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
            GetParam().render(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, tooSmall, kOff);
            GetParam().render(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall, size, kOff);
        }
    }
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
}

// ---- The caller's matrix -----------------------------------------------------------------------------------------

// The bytes B, G, R, A of the upper left pixel of a block of one colour.
Bytes General(const kit::Matrix& matrix, std::uint8_t y, std::uint8_t u, std::uint8_t v) {
    const I420Frame from(2, 2);
    from.y.SetAll(y);
    from.u.SetAll(u);
    from.v.SetAll(v);
    const Plane x(Shape(8, 2));
    KorI420ToBGRAGeneral_C_(from.y.data(), from.y.pitch(), from.u.data(), from.u.pitch(), from.v.data(), from.v.pitch(),
                            x.data(), x.pitch(), 2, 2, matrix.rows, kOff);
    const Bytes row = x.Row(0);
    EXPECT_EQ(Bytes(row.begin(), row.begin() + 4), Bytes(row.begin() + 4, row.end()));
    EXPECT_EQ(x.Row(1), row);
    return Bytes(row.begin(), row.begin() + 4);
}

TEST(RenderI420General, IdentityOfLumaTakesOffTheLumaOffset) {
    const kit::Matrix grey{{{256, 0, 0}, {256, 0, 0}, {256, 0, 0}}};
    EXPECT_EQ(General(grey, 16, 0, 255), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(General(grey, 17, 128, 128), (Bytes{1, 1, 1, 255}));
    EXPECT_EQ(General(grey, 255, 128, 128), (Bytes{239, 239, 239, 255}));
    EXPECT_EQ(General(grey, 0, 128, 128), (Bytes{0, 0, 0, 255}));
}

TEST(RenderI420General, ZeroMatrixIsOpaqueBlack) {
    EXPECT_EQ(General({}, 200, 30, 40), (Bytes{0, 0, 0, 255}));
}

TEST(RenderI420General, LumaScaleIsThatOfRedAndTheOffsetEachChannelsOwn) {
    // yY = 100 for all channels; the offsets are (-16 * 512 + 128) >> 8 = -32 for green and +16 for blue.
    const kit::Matrix matrix{{{256, 0, 0}, {512, 0, 0}, {-256, 0, 0}}};
    EXPECT_EQ(General(matrix, 100, 128, 128), (Bytes{116, 68, 84, 255}));
}

TEST(RenderI420General, LumaTermIsNotRounded) {
    // 3 * 85 = 255 gives 0; the offset (-16 * 85 + 128) >> 8 = -5 is added afterwards.
    const kit::Matrix matrix{{{85, 0, 0}, {0, 0, 0}, {0, 0, 0}}};
    EXPECT_EQ(General(matrix, 3, 128, 128), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(General(matrix, 4, 128, 128)[0], 1);
}

TEST(RenderI420General, ChromaTermRoundsTowardMinusInfinityAfterAddingAHalf) {
    // Luma adds 10 (with an offset of zero for green, whose own row has no luma); green shows the term alone.
    const kit::Matrix matrix{{{256, 0, 0}, {0, 1, 1}, {0, -1, -1}}};
    EXPECT_EQ(General(matrix, 10, 0, 128)[1], 10);  // -128 gives 0
    EXPECT_EQ(General(matrix, 10, 0, 127)[1], 9);   // -129 gives -1
    EXPECT_EQ(General(matrix, 10, 0, 127)[0], 11);  // +129 gives 1
    EXPECT_EQ(General(matrix, 10, 1, 128)[0], 10);  // +127 gives 0
    EXPECT_EQ(General(matrix, 10, 0, 128)[0], 11);  // +128 gives 1
}

TEST(RenderI420General, EachCoefficientHasItsPlace) {
    // One coefficient of 256 at a time, with luma 26 and chroma 128 + 1, 128 + 2; only its channel changes.
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 1; column < 3; ++column) {
            kit::Matrix matrix{{{256, 0, 0}, {256, 0, 0}, {256, 0, 0}}};
            matrix.rows[row][column] = 256;
            Bytes expected{10, 10, 10, 255};
            expected[2 - row] = static_cast<std::uint8_t>(10 + column);
            EXPECT_EQ(General(matrix, 26, 129, 130), expected) << row << ", " << column;
        }
    }
}

TEST(RenderI420General, SumsWrapAround) {
    // 2 * 2^30 wraps to -2^31: the green term is -2^23; twice that wraps to 0.
    const KorInt big = 1 << 30;
    EXPECT_EQ(General({{{256, 0, 0}, {0, big, 0}, {0, 0, big}}}, 77, 130, 132), (Bytes{77, 0, 61, 255}));
    // Luma 2 * INT_MIN wraps to 0, and so does 16 * INT_MIN.
    EXPECT_EQ(General({{{INT_MIN, 0, 0}, {0, 0, 0}, {0, 0, 0}}}, 2, 128, 128), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(General({{{INT_MIN, 256, 0}, {0, 0, 0}, {0, 0, 0}}}, 2, 228, 128), (Bytes{0, 0, 100, 255}));
}

// Products of small coefficients are computed in narrow lanes, others in wide ones. Covers both sides of the limit, for
// each coefficient alone and for all of them together, with samples at both ends and around the middle.
class RenderI420GeneralLimits : public testing::Test {
  protected:
    static constexpr std::uint8_t kSamples[] = {0, 1, 127, 128, 129, 254, 255};
    static constexpr std::size_t kCount = std::size(kSamples);
    static constexpr std::size_t kPairs = kCount * kCount * kCount;

    RenderI420GeneralLimits() : from_(2 * kPairs, 2), x_(Shape(8 * kPairs, 2)) {
        for (std::size_t i = 0; i < kPairs; ++i) {
            for (const std::size_t row : {0u, 1u}) {
                from_.y.At(row, 2 * i) = from_.y.At(row, 2 * i + 1) = kSamples[i % kCount];
            }
            from_.u.At(0, i) = kSamples[i / kCount % kCount];
            from_.v.At(0, i) = kSamples[i / kCount / kCount];
        }
    }

    void ExpectTheFormula(const kit::Matrix& matrix) {
        KorI420ToBGRAGeneral_C_(from_.y.data(), from_.y.pitch(), from_.u.data(), from_.u.pitch(), from_.v.data(),
                                from_.v.pitch(), x_.data(), x_.pitch(), 2 * kPairs, 2, matrix.rows, kOff);
        for (std::size_t i = 0; i < kPairs; ++i) {
            const int y = from_.y.At(0, 2 * i);
            const int u = from_.u.At(0, i) - 128;
            const int v = from_.v.At(0, i) - 128;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const KorInt(&row)[3] = matrix.rows[channel];
                const int term = (u * row[1] + v * row[2] - 16 * row[0] + 128) >> 8;
                const int expected = std::clamp((y * matrix.rows[0][0] >> 8) + term, 0, 255);
                ASSERT_EQ(x_.At(1, 8 * i + 2 - channel), expected)
                    << "channel " << channel << " of " << y << ", " << u << ", " << v << " by " << matrix.rows[0][0]
                    << ", " << row[0] << ", " << row[1] << ", " << row[2];
            }
        }
    }

  private:
    I420Frame from_;
    Plane x_;
};

TEST_F(RenderI420GeneralLimits, OfEachCoefficient) {
    for (std::size_t place = 0; place < 9; ++place) {
        for (const KorInt limit : {-32769, -32768, -8193, -8192, -8191, 8191, 8192, 8193, 32767, 32768}) {
            kit::Matrix matrix = {{{298, 0, 409}, {298, -100, -208}, {298, 516, 0}}};
            matrix.rows[place / 3][place % 3] = limit;
            ExpectTheFormula(matrix);
        }
    }
}

TEST_F(RenderI420GeneralLimits, OfAllTogether) {
    for (const KorInt limit : {8191, 8192, 12000, 16383, 32767, 32768}) {
        for (unsigned signs = 0; signs < 1u << 9; ++signs) {
            kit::Matrix matrix;
            for (std::size_t place = 0; place < 9; ++place) {
                matrix.rows[place / 3][place % 3] = (signs >> place & 1) != 0 ? -limit : limit;
            }
            ExpectTheFormula(matrix);
        }
    }
}

TEST(RenderI420General, TooSmallSizesTouchNothingNotEvenTheMatrix) {
    for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
        for (const std::size_t tooSmall : kit::Sizes{0, 1}) {
            KorI420ToBGRAGeneral_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, tooSmall, nullptr, kOff);
            KorI420ToBGRAGeneral_C_(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, tooSmall, size, nullptr, kOff);
        }
    }
}

// ---- I444 --------------------------------------------------------------------------------------------------------

class RenderI444 : public testing::TestWithParam<Renderer> {
  protected:
    Bytes Pixel(std::uint8_t y, std::uint8_t u, std::uint8_t v) const {
        const I444Frame from(1, 1);
        from.y.SetAll(y);
        from.u.SetAll(u);
        from.v.SetAll(v);
        const Plane x(Shape(4, 1));
        Render(GetParam().render, from, x, 1, 1);
        return x.Samples();
    }
};

INSTANTIATE_TEST_SUITE_P(, RenderI444,
                         testing::Values(Renderer{"BGRA", &KorI444ToBGRA_C_, 4, 2, 1, 0, 3, false},
                                         Renderer{"BGRAUsingBT709", &KorI444ToBGRAUsingBT709_C_, 4, 2, 1, 0, 3, true}),
                         testing::PrintToStringParamName());

TEST_P(RenderI444, BlackWhiteAndGreyOfASinglePixel) {
    const bool bt709 = GetParam().bt709;
    EXPECT_EQ(Pixel(16, 128, 128), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(Pixel(235, 128, 128), (bt709 ? Bytes{254, 255, 254, 255} : Bytes{254, 254, 254, 255}));
    EXPECT_EQ(Pixel(128, 128, 128), (bt709 ? Bytes{130, 131, 130, 255} : Bytes{130, 130, 130, 255}));
}

TEST_P(RenderI444, EveryPixelHasItsOwnChroma) {
    const I444Frame from(3, 3, 2);
    from.y.Fill(kit::Pattern::Noise, 1);
    from.u.Fill(kit::Pattern::Noise, 2);
    from.v.Fill(kit::Pattern::Noise, 3);
    const Plane x(Shape(12, 3, 5));
    const Bytes before = x.Snapshot();
    Render(GetParam().render, from, x, 3, 3);
    EXPECT_EQ(x.GapDifference("x", before.data()), "");
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const std::uint8_t* pixel = &x.At(row, 4 * column);
            EXPECT_EQ(Bytes(pixel, pixel + 4),
                      Pixel(from.y.At(row, column), from.u.At(row, column), from.v.At(row, column)));
        }
    }
}

TEST_P(RenderI444, ZeroSizesTouchNothing) {
    for (const std::size_t size : kit::Sizes{0, 1, 2, 3, 17}) {
        GetParam().render(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, size, 0, kOff);
        GetParam().render(nullptr, 8, nullptr, 8, nullptr, 8, nullptr, 8, 0, size, kOff);
    }
}

}  // namespace
