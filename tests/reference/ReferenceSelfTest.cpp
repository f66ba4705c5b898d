/*
 * The reference against values worked out by hand, which anchors everything that is compared with it. Each expectation
 * can be checked with pencil and paper; where noise takes part, it is given as entries of the table.
 */
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "conformance/core/ScriptedRandom.h"
#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace {

using namespace reference;

using Bytes = std::vector<KorUint8>;

// What destinations hold before the call, and afterwards wherever nothing was written.
constexpr KorUint8 o = 0xa5;

Bytes Blank(KorSizeT size) {
    return Bytes(size, o);
}

// The planes of an I420 or I444 image.
struct Image {
    KorSizeT pitchY;
    KorSizeT pitchC;
    Bytes y;
    Bytes u;
    Bytes v;
};

Image BlankImage(KorSizeT pitchY, KorSizeT rowsY, KorSizeT pitchC, KorSizeT rowsC) {
    return {pitchY, pitchC, Blank(pitchY * rowsY), Blank(pitchC * rowsC), Blank(pitchC * rowsC)};
}

struct Rgb {
    KorUint8 red;
    KorUint8 green;
    KorUint8 blue;
};

constexpr Rgb kWhite = {255, 255, 255};
constexpr Rgb kBlack = {0, 0, 0};
constexpr Rgb kRed = {255, 0, 0};
constexpr Rgb kGreen = {0, 255, 0};
constexpr Rgb kBlue = {0, 0, 255};

constexpr Rgb Reddish(KorUint8 red) {
    return {red, 0, 0};
}

// Pixels of four bytes, each with another alpha.
Bytes Bgra(const std::vector<Rgb>& pixels) {
    Bytes bytes;
    KorUint8 alpha = 7;
    for (const Rgb& p : pixels) {
        bytes.insert(bytes.end(), {p.blue, p.green, p.red, alpha});
        alpha = static_cast<KorUint8>(alpha + 91);
    }
    return bytes;
}

Bytes Raw(const std::vector<Rgb>& pixels) {
    Bytes bytes;
    for (const Rgb& p : pixels) {
        bytes.insert(bytes.end(), {p.red, p.green, p.blue});
    }
    return bytes;
}

using Capture = decltype(&KorBGRAToI420_C_);

// Converts a source without padding into blank planes.
Image Captured(Capture capture, Image to, const Bytes& from, KorSizeT pitchX, KorSizeT width, KorSizeT height,
               bool flip = false) {
    capture(to.y.data(), to.pitchY, to.u.data(), to.pitchC, to.v.data(), to.pitchC, from.data(), pitchX, width, height,
            flip);
    return to;
}

// Luma, U and V of an image of one pixel.
Bytes OnePixel(Capture capture, const Bytes& pixel) {
    const Image to = Captured(capture, BlankImage(2, 2, 1, 1), pixel, 4, 1, 1);
    return {to.y[0], to.u[0], to.v[0]};
}

using Render = decltype(&KorI420ToBGRA_C_);

Bytes Rendered(Render render, const Image& from, KorSizeT pitchX, KorSizeT rows, KorSizeT width, KorSizeT height,
               KorVideoFrameDitherLevel level = KOR_VIDEOFRAMEDITHERLEVEL_Off) {
    Bytes x = Blank(pitchX * rows);
    render(from.y.data(), from.pitchY, from.u.data(), from.pitchC, from.v.data(), from.pitchC, x.data(), pitchX, width,
           height, level);
    return x;
}

// A 2 by 2 image of one colour, as I420 or as I444.
Image Uniform(KorUint8 y, KorUint8 u, KorUint8 v) {
    return {2, 2, Bytes(4, y), Bytes(4, u), Bytes(4, v)};
}

Bytes FirstPixel(Render render, const Image& from, KorSizeT size = 4) {
    const Bytes x = Rendered(render, from, 8, 2, 2, 2);
    return Bytes(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(size));
}

Bytes GeneralRendered(const KorInt (&coeffs)[3][3], const Image& from, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel level = KOR_VIDEOFRAMEDITHERLEVEL_Off) {
    Bytes x = Blank(pitchX * height);
    KorI420ToBGRAGeneral_C_(from.y.data(), from.pitchY, from.u.data(), from.pitchC, from.v.data(), from.pitchC,
                            x.data(), pitchX, width, height, coeffs, level);
    return x;
}

// The sizes of three draws of an index.
const std::vector<std::size_t> kThreeIndices(3, sizeof(KorSizeT));

int Entry(KorSizeT index) {
    return KorTblDitherStd4[index % 16384];
}

// The sample plus half a table entry, rounded: chroma at the strongest level.
KorUint8 PlusHalf(int sample, KorSizeT index) {
    return detail::Clamp(sample + detail::FloorDivide(Entry(index) + 1, 2));
}

/* Building blocks of the reference */

TEST(ReferenceDetail, FloorsAndClamps) {
    EXPECT_EQ(detail::FloorDivide(-3 + 2, 4), -1);
    EXPECT_EQ(detail::FloorDivide(-2 + 2, 4), 0);
    EXPECT_EQ(detail::FloorDivide(-1 + 2, 4), 0);
    EXPECT_EQ(detail::FloorDivide(1 + 2, 4), 0);
    EXPECT_EQ(detail::Clamp(-5), 0);
    EXPECT_EQ(detail::Clamp(77), 77);
    EXPECT_EQ(detail::Clamp(300), 255);
    EXPECT_EQ(detail::Clamp(255 - 32768), 0);
    EXPECT_EQ(detail::LowByte(510 + 16), 14);
    EXPECT_EQ(detail::LowByte(-127), 129);
    EXPECT_EQ(detail::RoundUpToEight(1), 8U);
    EXPECT_EQ(detail::RoundUpToEight(8), 8U);
    EXPECT_EQ(detail::RoundUpToEight(9), 16U);
    EXPECT_EQ(detail::RoundUpToEight(639), 640U);
}

TEST(ReferenceDetail, ScalesNoiseByLevel) {
    const KorInt luma[4][2] = {{8, 4}, {4, 2}, {2, 1}, {1, 0}};
    const KorInt chroma[4][2] = {{16, 8}, {8, 4}, {4, 2}, {2, 1}};
    for (KorUint level = 0; level < 4; ++level) {
        const auto enumerator = static_cast<KorVideoFrameDitherLevel>(level);
        EXPECT_EQ(detail::LumaScale(enumerator).divisor, luma[level][0]);
        EXPECT_EQ(detail::LumaScale(enumerator).rounding, luma[level][1]);
        EXPECT_EQ(detail::ChromaScale(enumerator).divisor, chroma[level][0]);
        EXPECT_EQ(detail::ChromaScale(enumerator).rounding, chroma[level][1]);
    }
}

/* Plane geometry */

TEST(ReferencePlaneGeometry, AveragesRowsRoundingUp) {
    const Bytes src = {10, 20, 255, 11, 21, 255};
    Bytes dst = Blank(4);
    KorPlanarUV422To420_C_(src.data(), 3, dst.data(), 4, 3, 1);
    EXPECT_EQ(dst, (Bytes{11, 21, 255, o}));

    // Upwards from the last row: rows 3 and 2, then rows 1 and 0.
    const Bytes rows = {1, 2, 10, 13};
    Bytes upwards = Blank(2);
    KorPlanarUV422To420_C_(rows.data() + 3, -1, upwards.data(), 1, 1, 2);
    EXPECT_EQ(upwards, (Bytes{12, 2}));
}

TEST(ReferencePlaneGeometry, ZeroSizesWriteNothing) {
    const Bytes src(8, 1);
    Bytes a = Blank(4);
    Bytes b = Blank(4);
    for (const auto& size : {std::pair<KorSizeT, KorSizeT>{0, 2}, {2, 0}, {0, 0}}) {
        const KorSizeT w = size.first;
        const KorSizeT h = size.second;
        KorPlanarUV422To420_C_(src.data(), 2, a.data(), 2, w, h);
        KorPlanarUVDeinterlace_C_(src.data(), 2, a.data(), 2, b.data(), 2, w, h);
        KorPlanarMirror_C_(src.data(), 2, a.data(), 2, w, h);
        KorPlanarUVDeinterlaceMirror_C_(src.data(), 2, a.data(), 2, b.data(), 2, w, h);
        for (const KorImageRotationDegree degree : {0U, 45U, 90U, 180U, 270U}) {
            KorPlanarRotation_C_(src.data(), 2, a.data(), 2, w, h, degree);
            KorPlanarUVDeinterlaceRotation_C_(src.data(), 2, a.data(), 2, b.data(), 2, w, h, degree);
        }
    }
    EXPECT_EQ(a, Blank(4));
    EXPECT_EQ(b, Blank(4));
}

TEST(ReferencePlaneGeometry, SplitsAndMirrors) {
    const Bytes pairs = {1, 11, 2, 12, 3, 13, 4, 14, 5, 15, 6, 16};
    Bytes uv1 = Blank(7);
    Bytes uv2 = Blank(6);
    KorPlanarUVDeinterlace_C_(pairs.data(), 6, uv1.data(), 4, uv2.data(), 3, 3, 2);
    EXPECT_EQ(uv1, (Bytes{1, 2, 3, o, 4, 5, 6}));
    EXPECT_EQ(uv2, (Bytes{11, 12, 13, 14, 15, 16}));

    // The last row first, from right to left.
    KorPlanarUVDeinterlaceMirror_C_(pairs.data() + 6, -6, uv1.data(), 4, uv2.data(), 3, 3, 2);
    EXPECT_EQ(uv1, (Bytes{6, 5, 4, o, 3, 2, 1}));
    EXPECT_EQ(uv2, (Bytes{16, 15, 14, 13, 12, 11}));

    const Bytes src = {1, 2, 3, 4, 5, 6, 7, 8};
    Bytes dst = Blank(9);
    KorPlanarMirror_C_(src.data(), 4, dst.data(), 5, 4, 2);
    EXPECT_EQ(dst, (Bytes{4, 3, 2, 1, o, 8, 7, 6, 5}));
    KorPlanarMirror_C_(src.data(), 4, dst.data(), 5, 1, 2);
    EXPECT_EQ(dst, (Bytes{1, 3, 2, 1, o, 5, 7, 6, 5}));
}

TEST(ReferencePlaneGeometry, RotatesClockwise) {
    const Bytes src = {'a', 'b', 'c', 'd', 'e', 'f'};
    const auto rotated = [&](KorSizeT pitch, KorSizeT rows, KorImageRotationDegree degree) {
        Bytes dst = Blank(pitch * rows);
        KorPlanarRotation_C_(src.data(), 3, dst.data(), pitch, 3, 2, degree);
        return dst;
    };
    EXPECT_EQ(rotated(4, 2, 0), (Bytes{'a', 'b', 'c', o, 'd', 'e', 'f', o}));
    EXPECT_EQ(rotated(3, 3, 90), (Bytes{'d', 'a', o, 'e', 'b', o, 'f', 'c', o}));
    EXPECT_EQ(rotated(3, 2, 180), (Bytes{'f', 'e', 'd', 'c', 'b', 'a'}));
    EXPECT_EQ(rotated(2, 3, 270), (Bytes{'c', 'f', 'b', 'e', 'a', 'd'}));
    EXPECT_EQ(rotated(3, 3, 45), Blank(9));
    EXPECT_EQ(rotated(3, 3, 360), Blank(9));

    Bytes upwards = Blank(6);
    KorPlanarRotation_C_(src.data() + 3, -3, upwards.data(), 2, 3, 2, 90);
    EXPECT_EQ(upwards, (Bytes{'a', 'd', 'b', 'e', 'c', 'f'}));

    Bytes same = src;
    KorPlanarRotation_C_(same.data(), 3, same.data(), 3, 3, 2, 0);
    EXPECT_EQ(same, src);
}

TEST(ReferencePlaneGeometry, RotatesAndSplits) {
    const Bytes src = {'a', 'A', 'b', 'B', 'c', 'C', 'd', 'D', 'e', 'E', 'f', 'F'};
    struct Expected {
        KorImageRotationDegree degree;
        KorSizeT pitch;
        Bytes uv1;
        Bytes uv2;
    };
    const Bytes rotated270a = {'c', 'f', 'b', 'e', 'a', 'd'};
    const Bytes rotated270b = {'C', 'F', 'B', 'E', 'A', 'D'};
    for (const Expected& expected :
         std::vector<Expected>{{0, 3, {'a', 'b', 'c', 'd', 'e', 'f'}, {'A', 'B', 'C', 'D', 'E', 'F'}},
                               {90, 2, {'d', 'a', 'e', 'b', 'f', 'c'}, {'D', 'A', 'E', 'B', 'F', 'C'}},
                               {180, 3, {'f', 'e', 'd', 'c', 'b', 'a'}, {'F', 'E', 'D', 'C', 'B', 'A'}},
                               {270, 2, rotated270a, rotated270b},
                               {45, 2, rotated270a, rotated270b},
                               {360, 2, rotated270a, rotated270b}}) {
        Bytes uv1 = Blank(6);
        Bytes uv2 = Blank(6);
        KorPlanarUVDeinterlaceRotation_C_(src.data(), 6, uv1.data(), expected.pitch, uv2.data(), expected.pitch, 3, 2,
                                          expected.degree);
        EXPECT_EQ(uv1, expected.uv1) << expected.degree;
        EXPECT_EQ(uv2, expected.uv2) << expected.degree;
    }
}

TEST(ReferencePlaneGeometry, FlipsInPlace) {
    const auto flipped = [](Image image, KorSizeT width, KorSizeT height) {
        KorI420FlipVertical_C_(image.y.data(), image.pitchY, image.u.data(), image.pitchC, image.v.data(), image.pitchC,
                               width, height);
        return image;
    };
    // 5 by 5: chroma counts as 2 by 2, so its third row and column stay in place.
    const Image image = {6,
                         3,
                         {1, 1, 1, 1, 1, 9, 2, 2, 2, 2, 2, 9, 3, 3, 3, 3, 3, 9, 4, 4, 4, 4, 4, 9, 5, 5, 5, 5, 5, 9},
                         {11, 12, 13, 21, 22, 23, 31, 32, 33},
                         {61, 62, 63, 71, 72, 73, 81, 82, 83}};
    const Image once = flipped(image, 5, 5);
    EXPECT_EQ(once.y,
              (Bytes{5, 5, 5, 5, 5, 9, 4, 4, 4, 4, 4, 9, 3, 3, 3, 3, 3, 9, 2, 2, 2, 2, 2, 9, 1, 1, 1, 1, 1, 9}));
    EXPECT_EQ(once.u, (Bytes{21, 22, 13, 11, 12, 23, 31, 32, 33}));
    EXPECT_EQ(once.v, (Bytes{71, 72, 63, 61, 62, 73, 81, 82, 83}));
    const Image twice = flipped(once, 5, 5);
    EXPECT_EQ(twice.y, image.y);
    EXPECT_EQ(twice.u, image.u);
    EXPECT_EQ(twice.v, image.v);

    const Image three = flipped({1, 1, {1, 2, 3}, {4, 5}, {6, 7}}, 1, 3);
    EXPECT_EQ(three.y, (Bytes{3, 2, 1}));
    EXPECT_EQ(three.u, (Bytes{4, 5}));
    const Image two = flipped({2, 1, {1, 2, 3, 4}, {5, 6}, {7, 8}}, 2, 2);
    EXPECT_EQ(two.y, (Bytes{3, 4, 1, 2}));
    EXPECT_EQ(two.u, (Bytes{5, 6}));
    const Image one = flipped({2, 1, {1, 2, 3, 4}, {5, 6}, {7, 8}}, 2, 1);
    EXPECT_EQ(one.y, (Bytes{1, 2, 3, 4}));
}

/* RGB to YUV */

TEST(ReferenceRgbToYuv, PrimaryColours601) {
    for (const Capture capture : {&KorBGRAToI420_C_, &KorBGRAToI444_C_}) {
        EXPECT_EQ(OnePixel(capture, Bgra({kWhite})), (Bytes{235, 128, 128}));
        EXPECT_EQ(OnePixel(capture, Bgra({kBlack})), (Bytes{16, 128, 128}));
        EXPECT_EQ(OnePixel(capture, Bgra({kRed})), (Bytes{81, 90, 239}));
        EXPECT_EQ(OnePixel(capture, Bgra({kGreen})), (Bytes{143, 54, 34}));
        EXPECT_EQ(OnePixel(capture, Bgra({kBlue})), (Bytes{41, 239, 110}));
    }
}

TEST(ReferenceRgbToYuv, PrimaryColours709) {
    for (const Capture capture : {&KorBGRAToI420UsingBT709_C_, &KorBGRAToI444UsingBT709_C_}) {
        EXPECT_EQ(OnePixel(capture, Bgra({kWhite})), (Bytes{235, 127, 128}));
        EXPECT_EQ(OnePixel(capture, Bgra({kBlack})), (Bytes{16, 128, 128}));
        EXPECT_EQ(OnePixel(capture, Bgra({kRed})), (Bytes{62, 102, 239}));
        EXPECT_EQ(OnePixel(capture, Bgra({kGreen})), (Bytes{172, 41, 26}));
        EXPECT_EQ(OnePixel(capture, Bgra({kBlue})), (Bytes{31, 239, 118}));
    }
}

TEST(ReferenceRgbToYuv, PrimaryColours24) {
    EXPECT_EQ(OnePixel(KorRawToI420_C_, {255, 255, 255}), (Bytes{235, 128, 128}));
    EXPECT_EQ(OnePixel(KorRawToI420_C_, {0, 0, 0}), (Bytes{16, 128, 128}));
    // 66 * 255 = 65 * 256 + 190; -38 * 255 = -38 * 256 + 38; 112 * 255 = 111 * 256 + 144; and so on.
    EXPECT_EQ(OnePixel(KorRawToI420_C_, {255, 0, 0}), (Bytes{81, 90, 239}));
    EXPECT_EQ(OnePixel(KorRawToI420_C_, {0, 255, 0}), (Bytes{144, 54, 34}));
    EXPECT_EQ(OnePixel(KorRawToI420_C_, {0, 0, 255}), (Bytes{40, 239, 110}));
    EXPECT_EQ(OnePixel(Kor24BGToI420_C_, {0, 0, 255}), (Bytes{81, 90, 239}));
    EXPECT_EQ(OnePixel(Kor24BGToI420_C_, {255, 0, 0}), (Bytes{40, 239, 110}));
}

TEST(ReferenceRgbToYuv, ByteOrders) {
    // Red, in each order, with an alpha that must not matter.
    EXPECT_EQ(OnePixel(KorRGBAToI420_C_, {255, 0, 0, 99}), (Bytes{81, 90, 239}));
    EXPECT_EQ(OnePixel(KorBGRAToI420_C_, {0, 0, 255, 99}), (Bytes{81, 90, 239}));
    EXPECT_EQ(OnePixel(KorARGBToI420_C_, {99, 255, 0, 0}), (Bytes{81, 90, 239}));
    EXPECT_EQ(OnePixel(KorABGRToI420_C_, {99, 0, 0, 255}), (Bytes{81, 90, 239}));
    // Blue.
    EXPECT_EQ(OnePixel(KorRGBAToI420_C_, {0, 0, 255, 99}), (Bytes{41, 239, 110}));
    EXPECT_EQ(OnePixel(KorBGRAToI420_C_, {255, 0, 0, 99}), (Bytes{41, 239, 110}));
    EXPECT_EQ(OnePixel(KorARGBToI420_C_, {99, 0, 0, 255}), (Bytes{41, 239, 110}));
    EXPECT_EQ(OnePixel(KorABGRToI420_C_, {99, 255, 0, 0}), (Bytes{41, 239, 110}));
}

TEST(ReferenceRgbToYuv, AveragesColumnsFirst) {
    // Columns first: 3 and 2, then 3, and 56 * 3 = 168 gives V 129. Rows first would give 2 and V 128.
    const Bytes from = Bgra({Reddish(3), Reddish(3), Reddish(2), Reddish(0)});
    const Image to = Captured(KorBGRAToI420_C_, BlankImage(2, 2, 1, 1), from, 8, 2, 2);
    EXPECT_EQ(to.y, (Bytes{16, 16, 16, 16}));
    EXPECT_EQ(to.u, (Bytes{127}));
    EXPECT_EQ(to.v, (Bytes{129}));
}

// Luma of (66 or 33 / 128) red: 0 gives 16, 10 gives 18, 21 gives 21, 51 gives 29, 100 gives 41, 255 gives 81.
TEST(ReferenceRgbToYuv, OddEdges) {
    const Bytes from = Bgra({Reddish(0), Reddish(0), Reddish(100), Reddish(0), Reddish(0), Reddish(51), Reddish(10),
                             Reddish(21), Reddish(255)});
    const Image to = Captured(KorBGRAToI420_C_, BlankImage(4, 4, 3, 3), from, 12, 3, 3);
    EXPECT_EQ(to.y, (Bytes{16, 16, 41, o, 16, 16, 29, o, 18, 21, 81, o, o, o, o, o}));
    // Averages: 0, 76 of the right column, 16 of the last row, and the corner itself.
    EXPECT_EQ(to.u, (Bytes{128, 116, o, 125, 90, o, o, o, o}));
    EXPECT_EQ(to.v, (Bytes{128, 161, o, 135, 239, o, o, o, o}));

    // Flipped, the first row in memory is the one without a partner.
    const Image flipped = Captured(KorBGRAToI420_C_, BlankImage(3, 3, 2, 2), from, 12, 3, 3, true);
    EXPECT_EQ(flipped.y, (Bytes{18, 21, 81, 16, 16, 29, 16, 16, 41}));
    // Averages: (5 + 11 + 1) / 2 = 8, (255 + 51 + 1) / 2 = 153, 0, and 100 on its own.
    EXPECT_EQ(flipped.v, (Bytes{131, 194, 128, 171}));
}

TEST(ReferenceRgbToYuv, ZeroSizesWriteNothing) {
    const Bytes from(16, 200);
    for (const Capture capture :
         {&KorRGBAToI420_C_, &KorBGRAToI420_C_, &KorARGBToI420_C_, &KorABGRToI420_C_, &KorBGRAToI444_C_,
          &KorBGRAToI420UsingBT709_C_, &KorBGRAToI444UsingBT709_C_, &KorRawToI420_C_, &Kor24BGToI420_C_}) {
        for (const bool flip : {false, true}) {
            for (const auto& size : {std::pair<KorSizeT, KorSizeT>{0, 1}, {0, 2}, {1, 0}, {2, 0}}) {
                const Image to = Captured(capture, BlankImage(4, 4, 2, 2), from, 8, size.first, size.second, flip);
                EXPECT_EQ(to.y, Blank(16));
                EXPECT_EQ(to.u, Blank(4));
                EXPECT_EQ(to.v, Blank(4));
            }
        }
    }
}

TEST(ReferenceRgbToYuv, I444FlipsUnlikeItsBt709Sibling) {
    const Bytes from = Bgra({kRed, kBlue, kGreen, kWhite});  // four rows, the first two of which are the image
    const Image plain = Captured(KorBGRAToI444_C_, BlankImage(1, 2, 1, 2), from, 4, 1, 2, true);
    EXPECT_EQ(plain.y, (Bytes{41, 81}));
    EXPECT_EQ(plain.u, (Bytes{239, 90}));
    EXPECT_EQ(plain.v, (Bytes{110, 239}));

    // Starts at the last row and continues past the image.
    const Image downwards = Captured(KorBGRAToI444UsingBT709_C_, BlankImage(1, 2, 1, 2), from, 4, 1, 2, true);
    EXPECT_EQ(downwards.y, (Bytes{31, 172}));
    EXPECT_EQ(downwards.u, (Bytes{239, 41}));
    EXPECT_EQ(downwards.v, (Bytes{118, 26}));
}

TEST(ReferenceRgbToYuv, Bt709RepeatsAnOddLastRow) {
    const Bytes from = Bgra({kWhite, kWhite, kWhite, kWhite, kWhite, kWhite, kRed, kRed, kBlue});
    const Image to = Captured(KorBGRAToI420UsingBT709_C_, BlankImage(4, 4, 2, 2), from, 12, 3, 3);
    EXPECT_EQ(to.y, (Bytes{235, 235, 235, o, 235, 235, 235, o, 62, 62, 31, o, 62, 62, o, o}));
    EXPECT_EQ(to.u, (Bytes{127, 127, 102, 239}));
    EXPECT_EQ(to.v, (Bytes{128, 128, 239, 118}));

    const Image single = Captured(KorBGRAToI420UsingBT709_C_, BlankImage(2, 2, 1, 1), from, 12, 2, 1);
    EXPECT_EQ(single.y, (Bytes{235, 235, 235, 235}));

    // The last column of a row pair: the vertical pair is (128, 128, 128), whose U is 127.
    const Bytes pair = Bgra({kBlack, kBlack, kWhite, kBlack, kBlack, kBlack});
    const Image column = Captured(KorBGRAToI420UsingBT709_C_, BlankImage(3, 2, 2, 1), pair, 12, 3, 2);
    EXPECT_EQ(column.y, (Bytes{16, 16, 235, 16, 16, 16}));
    EXPECT_EQ(column.u, (Bytes{128, 127}));
    EXPECT_EQ(column.v, (Bytes{128, 128}));
}

Image GeneralCaptured(const KorInt (&coeffs)[3][3], Image to, const Bytes& from, KorSizeT pitchX, KorSizeT width,
                      KorSizeT height, bool flip = false) {
    KorBGRAToI420General_C_(to.y.data(), to.pitchY, to.u.data(), to.pitchC, to.v.data(), to.pitchC, from.data(), pitchX,
                            width, height, flip, coeffs);
    return to;
}

TEST(ReferenceRgbToYuv, CallerMatrixEqualsBt709AtEvenSizes) {
    const KorInt bt709[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
    const Bytes from = Bgra({kRed, kGreen, kWhite, {1, 2, 3}, kBlue, {200, 100, 50}, kBlack, {17, 255, 99}});
    const Image fixed = Captured(KorBGRAToI420UsingBT709_C_, BlankImage(4, 2, 2, 1), from, 16, 4, 2);
    const Image general = GeneralCaptured(bt709, BlankImage(4, 2, 2, 1), from, 16, 4, 2);
    EXPECT_EQ(general.y, fixed.y);
    EXPECT_EQ(general.u, fixed.u);
    EXPECT_EQ(general.v, fixed.v);
}

TEST(ReferenceRgbToYuv, CallerMatrixAtOddEdges) {
    // Luma is green, U is red, V is blue; at the odd edges luma becomes blue. The numbers in the pixels are distinct.
    const KorInt coeffs[3][3] = {{0, 256, 0}, {256, 0, 0}, {0, 0, 256}};
    // clang-format off
    const Bytes from = Bgra({{1, 10, 100}, {1, 11, 100}, {2, 12, 102},
                             {1, 13, 100}, {1, 14, 100}, {3, 15, 105},
                             {4, 16, 106}, {5, 17, 107}, {6, 18, 108}});
    // clang-format on
    const Image to = GeneralCaptured(coeffs, BlankImage(5, 5, 3, 3), from, 12, 3, 3);
    EXPECT_EQ(to.y, (Bytes{26, 27, 118, 118, o,  29, 30, 121, 121, o, 122, 123, 34,
                           34, o,  122, 123, 34, 34, o,  o,   o,   o, o,   o}));
    EXPECT_EQ(to.u, (Bytes{129, 131, o, 133, 134, o, o, o, o}));
    EXPECT_EQ(to.v, (Bytes{228, 232, o, 235, 236, o, o, o, o}));

    // A single row is written to row 0 and row 1, by the rules of an odd last row.
    const Image row = GeneralCaptured(coeffs, BlankImage(3, 3, 1, 1), from, 12, 2, 1);
    EXPECT_EQ(row.y, (Bytes{116, 116, o, 116, 116, o, o, o, o}));
    const Image pixel = GeneralCaptured(coeffs, BlankImage(3, 3, 1, 1), from, 12, 1, 1);
    EXPECT_EQ(pixel.y, (Bytes{26, 26, o, 26, 26, o, o, o, o}));

    for (const bool flip : {false, true}) {
        const Image noHeight = GeneralCaptured(coeffs, BlankImage(2, 2, 1, 1), from, 12, 1, 0, flip);
        EXPECT_EQ(noHeight.y, Blank(4));
        const Image noWidth = GeneralCaptured(coeffs, BlankImage(2, 2, 1, 1), from, 12, 0, 1, flip);
        EXPECT_EQ(noWidth.y, Blank(4));
        EXPECT_EQ(noWidth.u, Blank(1));
    }
}

TEST(ReferenceRgbToYuv, CallerMatrixWraps) {
    const KorInt coeffs[3][3] = {{512, 0, 0}, {INT32_MAX, INT32_MAX, INT32_MAX}, {-256, 0, 0}};
    const Image to = GeneralCaptured(coeffs, BlankImage(2, 2, 1, 1), Bgra({kWhite, kWhite, kWhite, kWhite}), 8, 2, 2);
    EXPECT_EQ(to.y, (Bytes{14, 14, 14, 14}));
    // 765 * (2^31 - 1) is 0x7ffffd03 modulo 2^32; 0xfd + 128 = 381.
    EXPECT_EQ(to.u, (Bytes{125}));
    // -255 + 128 = -127.
    EXPECT_EQ(to.v, (Bytes{129}));
}

TEST(ReferenceRgbToYuv, CallerMatrixIsReadForEverySample) {
    // The luma plane lies over the red weight of luma, one byte per sample.
    KorInt coeffs[3][3] = {{256, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    KorUint8 lowByteOfOne = 0;
    const KorInt one = 1;
    std::memcpy(&lowByteOfOne, &one, 1);
    if (lowByteOfOne != 1) {
        GTEST_SKIP() << "worked out for little-endian weights";
    }
    const Bytes from = Bgra({Reddish(10), Reddish(10), Reddish(10), Reddish(10)});
    KorUint8 u = o;
    KorUint8 v = o;
    KorBGRAToI420General_C_(reinterpret_cast<KorUint8*>(coeffs), 2, &u, 1, &v, 1, from.data(), 8, 2, 2, 0, coeffs);
    // Weights 256, 256 + 26 = 282, 26 + 27 * 256 = 6938 and 6938 + 31 * 65536 = 2038554. Sums divided by 256:
    // 10, 11, 271 and 79631; plus 16, low bytes: 26, 27, 31 and 31.
    EXPECT_EQ(coeffs[0][0], 26 + 27 * 0x100 + 31 * 0x10000 + 31 * 0x1000000);
    EXPECT_EQ(u, 128);
    EXPECT_EQ(v, 128);
}

TEST(ReferenceRgbToYuv, CallerMatrixUnderChroma) {
    // U lies over the first byte of the blue weight of V, so V uses the U just written: 128 times blue 64, over 256.
    KorInt coeffs[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    KorUint8 lowByteOfOne = 0;
    const KorInt one = 1;
    std::memcpy(&lowByteOfOne, &one, 1);
    if (lowByteOfOne != 1) {
        GTEST_SKIP() << "worked out for little-endian weights";
    }
    const Bytes from = Bgra({{0, 0, 64}, {0, 0, 64}, {0, 0, 64}, {0, 0, 64}});
    Bytes y = Blank(4);
    KorUint8 v = o;
    KorBGRAToI420General_C_(y.data(), 2, reinterpret_cast<KorUint8*>(&coeffs[2][2]), 1, &v, 1, from.data(), 8, 2, 2, 0,
                            coeffs);
    EXPECT_EQ(coeffs[2][2], 128);
    EXPECT_EQ(v, 32 + 128);
}

TEST(ReferenceRgbToYuv, Raw24AveragesConvertedChroma) {
    // V of red is 111 above the middle: (111 + 514) / 4 = 156; U is 38 below: (-38 + 514) / 4 = 119.
    const Bytes from = Raw({kRed, kBlack, kBlack, kBlack});
    const Image to = Captured(KorRawToI420_C_, BlankImage(3, 3, 1, 1), from, 6, 2, 2);
    EXPECT_EQ(to.y, (Bytes{81, 16, o, 16, 16, o, o, o, o}));
    EXPECT_EQ(to.u, (Bytes{119}));
    EXPECT_EQ(to.v, (Bytes{156}));
}

TEST(ReferenceRgbToYuv, Raw24OddEdges) {
    const Bytes from = Raw({kBlack, kBlack, kRed, kBlack, kBlack, kBlack, kBlack, Reddish(104), Reddish(200)});
    const Image to = Captured(KorRawToI420_C_, BlankImage(5, 5, 3, 3), from, 9, 3, 3);
    // The corner repeats the black above it; 104 gives 16 + 26 = 42.
    EXPECT_EQ(to.y, (Bytes{16, 16, 81, 81, o, 16, 16, 16, 16, o, 16, 42, 16, o, o, 16, 42, o, o, o, o, o, o, o, o}));
    // Right column (-38 + 257) / 2 = 109 and (111 + 257) / 2 = 184; last row (-16 + 257) / 2 = 120 and
    // (45 + 257) / 2 = 151; the corner averages them, a half rounded up.
    EXPECT_EQ(to.u, (Bytes{128, 109, o, 120, 115, o, o, o, o}));
    EXPECT_EQ(to.v, (Bytes{128, 184, o, 151, 168, o, o, o, o}));

    // Flipped: the last row is the first in memory, and the corner is below a black pixel.
    const Image flipped = Captured(KorRawToI420_C_, BlankImage(5, 5, 3, 3), from, 9, 3, 3, true);
    // 200 gives 16 + 51 = 67.
    EXPECT_EQ(flipped.y,
              (Bytes{16, 42, 67, 67, o, 16, 16, 16, 16, o, 16, 16, 16, o, o, 16, 16, o, o, o, o, o, o, o, o}));
    // V of 200 is 87 above the middle: (87 + 257) / 2 = 172; the corner (172 + 128 + 1) / 2 = 150.
    // The block (45 + 514) / 4 = 139.
    EXPECT_EQ(flipped.v, (Bytes{139, 172, o, 128, 150, o, o, o, o}));
}

TEST(ReferenceRgbToYuv, Raw24CornersWithoutNeighbours) {
    // One row: the corner's luma is its own, its chroma is that to its left.
    const Image row = Captured(KorRawToI420_C_, BlankImage(4, 2, 2, 1), Raw({kBlack, Reddish(100), kRed}), 9, 3, 1);
    EXPECT_EQ(row.y, (Bytes{16, 41, 81, o, 16, 41, o, o}));
    EXPECT_EQ(row.u, (Bytes{121, 121}));
    EXPECT_EQ(row.v, (Bytes{150, 150}));

    // One column: luma and chroma are those above.
    const Image column = Captured(KorRawToI420_C_, BlankImage(2, 4, 1, 2), Raw({kBlack, Reddish(100), kRed}), 3, 1, 3);
    EXPECT_EQ(column.y, (Bytes{16, 16, 41, 41, 41, o, o, o}));
    EXPECT_EQ(column.u, (Bytes{121, 121}));
    EXPECT_EQ(column.v, (Bytes{150, 150}));

    const Image pixel = Captured(KorRawToI420_C_, BlankImage(2, 2, 1, 1), Raw({kRed}), 3, 1, 1);
    EXPECT_EQ(pixel.y, (Bytes{81, o, o, o}));
    EXPECT_EQ(pixel.u, (Bytes{90}));
    EXPECT_EQ(pixel.v, (Bytes{239}));
}

/* YUV to RGB */

TEST(ReferenceYuvToRgb, WorkedValues) {
    for (const Render render : {&KorI420ToBGRA_C_, &KorI444ToBGRA_C_}) {
        EXPECT_EQ(FirstPixel(render, Uniform(16, 128, 128)), (Bytes{0, 0, 0, 255}));
        EXPECT_EQ(FirstPixel(render, Uniform(235, 128, 128)), (Bytes{254, 254, 254, 255}));
        EXPECT_EQ(FirstPixel(render, Uniform(255, 128, 128)), (Bytes{255, 255, 255, 255}));
        EXPECT_EQ(FirstPixel(render, Uniform(128, 128, 128)), (Bytes{130, 130, 130, 255}));
        // yY 116; R 116 + 159 - 223; G 116 + 135 - 135; B 116 + 282 - 277.
        EXPECT_EQ(FirstPixel(render, Uniform(100, 140, 100)), (Bytes{121, 116, 52, 255}));
    }
    for (const Render render : {&KorI420ToBGRAUsingBT709_C_, &KorI444ToBGRAUsingBT709_C_}) {
        EXPECT_EQ(FirstPixel(render, Uniform(16, 128, 128)), (Bytes{0, 0, 0, 255}));
        EXPECT_EQ(FirstPixel(render, Uniform(235, 128, 128)), (Bytes{254, 255, 254, 255}));
        EXPECT_EQ(FirstPixel(render, Uniform(128, 128, 128)), (Bytes{130, 131, 130, 255}));
        // yY 116; R 116 + 178 - 248; G 116 + 78 - 83; B 116 + 295 - 289.
        EXPECT_EQ(FirstPixel(render, Uniform(100, 140, 100)), (Bytes{122, 111, 46, 255}));
    }
}

TEST(ReferenceYuvToRgb, ByteOrders) {
    const Image image = Uniform(100, 140, 100);
    EXPECT_EQ(FirstPixel(KorI420ToRGBA_C_, image), (Bytes{52, 116, 121, 255}));
    EXPECT_EQ(FirstPixel(KorI420ToARGB_C_, image), (Bytes{255, 52, 116, 121}));
    EXPECT_EQ(FirstPixel(KorI420ToABGR_C_, image), (Bytes{255, 121, 116, 52}));
    EXPECT_EQ(FirstPixel(KorI420To24BG_C_, image, 3), (Bytes{121, 116, 52}));
}

TEST(ReferenceYuvToRgb, OddEdgesStay) {
    // Greys 16, 128 and 255 come out as 0, 130 and 255; column 2 and row 2 are not rendered.
    const Image image = {3, 2, {16, 128, 128, 255, 16, 128, 16, 16, 16}, Bytes(4, 128), Bytes(4, 128)};
    const KorUint8 a = 255;
    EXPECT_EQ(Rendered(KorI420ToBGRA_C_, image, 12, 3, 3, 3),
              (Bytes{0, 0, 0, a, 130, 130, 130, a, o, o, o, o, 255, 255, 255, a, 0, 0,
                     0, a, o, o, o,   o,   o,   o, o, o, o, o, o,   o,   o,   o, o, o}));
    EXPECT_EQ(Rendered(KorI420To24BG_C_, image, 7, 3, 3, 3),
              (Bytes{0, 0, 0, 130, 130, 130, o, 255, 255, 255, 0, 0, 0, o, o, o, o, o, o, o, o}));
    for (const Render render : {&KorI420ToRGBA_C_, &KorI420ToBGRA_C_, &KorI420ToARGB_C_, &KorI420ToABGR_C_,
                                &KorI420ToBGRAUsingBT709_C_, &KorI420To24BG_C_, &KorI420ToYUY2_C_, &KorI420ToUYVY_C_}) {
        EXPECT_EQ(Rendered(render, image, 12, 3, 1, 3), Blank(36));
        EXPECT_EQ(Rendered(render, image, 12, 3, 3, 1), Blank(36));
        EXPECT_EQ(Rendered(render, image, 12, 3, 0, 0), Blank(36));
    }
}

TEST(ReferenceYuvToRgb, I444RendersEveryPixel) {
    const Image image = {3, 3, {16, 100, 128}, {128, 140, 128}, {128, 100, 128}};
    EXPECT_EQ(Rendered(KorI444ToBGRA_C_, image, 13, 1, 3, 1),
              (Bytes{0, 0, 0, 255, 121, 116, 52, 255, 130, 130, 130, 255, o}));
    EXPECT_EQ(Rendered(KorI444ToBGRA_C_, image, 8, 1, 1, 1), (Bytes{0, 0, 0, 255, o, o, o, o}));
    EXPECT_EQ(Rendered(KorI444ToBGRA_C_, image, 8, 1, 0, 1), Blank(8));
    EXPECT_EQ(Rendered(KorI444ToBGRAUsingBT709_C_, image, 8, 1, 1, 0), Blank(8));
}

TEST(ReferenceYuvToRgb, CallerMatrix) {
    const auto first = [](const KorInt(&coeffs)[3][3], const Image& image) {
        const Bytes x = GeneralRendered(coeffs, image, 8, 2, 2);
        return Bytes(x.begin(), x.begin() + 4);
    };
    const KorInt identity[3][3] = {{256, 0, 0}, {256, 0, 0}, {256, 0, 0}};
    EXPECT_EQ(first(identity, Uniform(16, 0, 255)), (Bytes{0, 0, 0, 255}));
    EXPECT_EQ(first(identity, Uniform(255, 0, 255)), (Bytes{239, 239, 239, 255}));
    const KorInt zero[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(first(zero, Uniform(255, 0, 255)), (Bytes{0, 0, 0, 255}));

    // The scale of row 0 for all, the offset of each row: -16, -32 and 0.
    const KorInt unequal[3][3] = {{256, 0, 0}, {512, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(first(unequal, Uniform(100, 128, 128)), (Bytes{100, 68, 84, 255}));

    // Chroma sums of -128 and -129 give 0 and -1.
    const KorInt rounding[3][3] = {{256, 0, 0}, {0, 128, 0}, {0, 0, -129}};
    EXPECT_EQ(first(rounding, Uniform(50, 127, 129)), (Bytes{49, 50, 34, 255}));

    // 130 * (2^31 - 1) is -130 modulo 2^32, whose shifted value is -1; -16 * (2^31 - 1) + 128 is 144, shifted 0.
    // B: 30 * 256 + 144, shifted 30.
    const KorInt wrapping[3][3] = {{INT32_MAX, 0, 0}, {0, 0, 256}, {INT32_MAX, 256, 0}};
    EXPECT_EQ(first(wrapping, Uniform(130, 158, 138)), (Bytes{29, 9, 0, 255}));
}

/* Noise in the renderers */

TEST(ReferenceNoise, DrawsThreeIndicesUnlessOff) {
    const Image image = Uniform(100, 128, 128);
    const KorInt coeffs[3][3] = {{256, 0, 0}, {256, 0, 0}, {256, 0, 0}};
    for (const Render render : {&KorI420ToRGBA_C_, &KorI420ToBGRA_C_, &KorI420ToARGB_C_, &KorI420ToABGR_C_,
                                &KorI444ToBGRA_C_, &KorI444ToBGRAUsingBT709_C_, &KorI420ToBGRAUsingBT709_C_,
                                &KorI420To24BG_C_, &KorI420ToYUY2_C_, &KorI420ToUYVY_C_}) {
        for (const KorSizeT size : {KorSizeT{0}, KorSizeT{1}, KorSizeT{2}}) {
            kit::ScriptedRandom::ServeScript({});
            Rendered(render, image, 8, 2, size, size);
            EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
            Rendered(render, image, 8, 2, size, size, KOR_VIDEOFRAMEDITHERLEVEL_0);
            EXPECT_EQ(kit::ScriptedRandom::Draws(), kThreeIndices);
        }
    }
    kit::ScriptedRandom::ServeScript({});
    GeneralRendered(coeffs, image, 8, 2, 2);
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
    GeneralRendered(coeffs, image, 8, 1, 2, KOR_VIDEOFRAMEDITHERLEVEL_2);
    EXPECT_EQ(kit::ScriptedRandom::Draws(), kThreeIndices);
}

TEST(ReferenceNoise, LevelsBeyondTheFourCountAsOff) {
    const Image image = Uniform(100, 128, 128);
    kit::ScriptedRandom::ServeScript({});
    for (const KorUint level : {4u, 5u, UINT32_MAX}) {
        EXPECT_EQ(Rendered(&KorI420ToBGRA_C_, image, 8, 2, 2, 2, static_cast<KorVideoFrameDitherLevel>(level)),
                  Rendered(&KorI420ToBGRA_C_, image, 8, 2, 2, 2));
    }
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
}

// Only luma is rendered, 16 darker. Width 9: strides of 16, of which columns 0 to 7 are rendered.
TEST(ReferenceNoise, LumaWalksARaster) {
    const KorInt luma[3][3] = {{256, 0, 0}, {256, 0, 0}, {256, 0, 0}};
    const Image image = {9, 5, Bytes(36, 120), Bytes(10, 128), Bytes(10, 128)};
    kit::ScriptedRandom::ServeScript({UINT64_MAX, 5, 6});  // luma starts at 16376, with its low bits cleared
    const Bytes x = GeneralRendered(luma, image, 36, 9, 4, KOR_VIDEOFRAMEDITHERLEVEL_2);
    for (KorSizeT row = 0; row < 4; ++row) {
        for (KorSizeT column = 0; column < 8; ++column) {
            const int noisy = detail::Clamp(120 + Entry(16376 + 16 * row + column));
            EXPECT_EQ(x[36 * row + 4 * column], detail::Clamp(noisy - 16)) << column << ' ' << row;
        }
        EXPECT_EQ(x[36 * row + 32], o);
    }
}

TEST(ReferenceNoise, LumaAtWeakerLevels) {
    const KorInt luma[3][3] = {{256, 0, 0}, {256, 0, 0}, {256, 0, 0}};
    const Image image = {2, 1, Bytes(4, 120), Bytes(1, 128), Bytes(1, 128)};
    for (const KorVideoFrameDitherLevel level : {KOR_VIDEOFRAMEDITHERLEVEL_0, KOR_VIDEOFRAMEDITHERLEVEL_1}) {
        const int divisor = level == KOR_VIDEOFRAMEDITHERLEVEL_0 ? 4 : 2;
        kit::ScriptedRandom::ServeScript({8, 0, 0});
        const Bytes x = GeneralRendered(luma, image, 8, 2, 2, level);
        for (const KorSizeT position : {0U, 1U, 8U, 9U}) {
            const auto noise = detail::FloorDivide(Entry(8 + position) + divisor / 2, divisor);
            const int noisy = detail::Clamp(120 + noise);
            EXPECT_EQ(x[position < 2 ? 4 * position : 4 * position - 24], detail::Clamp(noisy - 16));
        }
    }
}

// Only U in red, only V in blue, 100 darker. Width 6: three blocks a row, and the noise runs on past the end of a row.
TEST(ReferenceNoise, ChromaRunsFree) {
    const KorInt chroma[3][3] = {{0, 256, 0}, {0, 0, 0}, {0, 0, 256}};
    const Image image = {6, 3, Bytes(24, 120), Bytes(6, 200), Bytes(6, 210)};
    kit::ScriptedRandom::ServeScript({0, UINT64_MAX, 4097});  // U starts at 16383, with no bits cleared
    const Bytes x = GeneralRendered(chroma, image, 24, 6, 4, KOR_VIDEOFRAMEDITHERLEVEL_2);
    for (KorSizeT row = 0; row < 4; ++row) {
        for (KorSizeT column = 0; column < 6; ++column) {
            const KorSizeT block = (row / 2) * 3 + column / 2;
            EXPECT_EQ(x[24 * row + 4 * column + 2], detail::Clamp(PlusHalf(200, 16383 + block) - 128));
            EXPECT_EQ(x[24 * row + 4 * column + 1], 0);
            EXPECT_EQ(x[24 * row + 4 * column], detail::Clamp(PlusHalf(210, 4097 + block) - 128));
        }
    }
}

// In I444 every plane walks the raster, and chroma starts anywhere. Where luma and chroma meet in one channel, the
// noisy samples are computed here and rendered without noise.
TEST(ReferenceNoise, I444WalksThreeRasters) {
    const Image image = {3, 3, Bytes(6, 120), Bytes(6, 130), Bytes(6, 140)};
    for (const Render render : {&KorI444ToBGRA_C_, &KorI444ToBGRAUsingBT709_C_}) {
        Image noisy = image;
        for (KorSizeT row = 0; row < 2; ++row) {
            for (KorSizeT column = 0; column < 3; ++column) {
                noisy.y[3 * row + column] = detail::Clamp(120 + Entry(24 + 8 * row + column));
                noisy.u[3 * row + column] = PlusHalf(130, 33 + 8 * row + column);
                noisy.v[3 * row + column] = PlusHalf(140, 16383 + 8 * row + column);
            }
        }
        kit::ScriptedRandom::ServeScript({31, 33, 16383});
        EXPECT_EQ(Rendered(render, image, 12, 2, 3, 2, KOR_VIDEOFRAMEDITHERLEVEL_2),
                  Rendered(render, noisy, 12, 2, 3, 2));
    }
}

// The fixed renderers: all four pixels of a block share the noisy chroma.
TEST(ReferenceNoise, I420RenderersShareTheWalk) {
    const Image image = Uniform(120, 130, 140);
    Image noisy = image;
    noisy.y = {detail::Clamp(120 + Entry(24)), detail::Clamp(120 + Entry(25)), detail::Clamp(120 + Entry(32)),
               detail::Clamp(120 + Entry(33))};
    noisy.u[0] = PlusHalf(130, 33);
    noisy.v[0] = PlusHalf(140, 5001);
    for (const Render render : {&KorI420ToRGBA_C_, &KorI420ToBGRA_C_, &KorI420ToARGB_C_, &KorI420ToABGR_C_,
                                &KorI420ToBGRAUsingBT709_C_, &KorI420To24BG_C_}) {
        kit::ScriptedRandom::ServeScript({31, 33, 5001});
        EXPECT_EQ(Rendered(render, image, 8, 2, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_2),
                  Rendered(render, noisy, 8, 2, 2, 2));
    }
}

/* Packed and semi-planar YUV */

TEST(ReferencePackedYuv, SplitsAndAverages) {
    // Width 5: two groups; bytes 8 and 9 of each row are never used.
    const Bytes yuy2 = {1,  255, 2,  0,  3,  10, 4,  20, 99, 99, 5,  254, 6,  1,  7,
                        12, 8,   21, 99, 99, 9,  40, 10, 50, 11, 41, 12,  51, 99, 99};
    const Image to = Captured(KorYUY2ToI420_C_, BlankImage(6, 5, 3, 2), yuy2, 10, 5, 3);
    EXPECT_EQ(to.y,
              (Bytes{1, 2, 3, 4, o, o, 5, 6, 7, 8, o, o, 9, 10, 11, 12, o, o, 9, 10, 11, 12, o, o, o, o, o, o, o, o}));
    EXPECT_EQ(to.u, (Bytes{255, 11, o, 40, 41, o}));
    EXPECT_EQ(to.v, (Bytes{1, 21, o, 50, 51, o}));

    const Image flipped = Captured(KorYUY2ToI420_C_, BlankImage(4, 4, 2, 2), yuy2, 10, 4, 3, true);
    EXPECT_EQ(flipped.y, (Bytes{9, 10, 11, 12, 5, 6, 7, 8, 1, 2, 3, 4, 1, 2, 3, 4}));
    EXPECT_EQ(flipped.u, (Bytes{147, 27, 255, 10}));
    EXPECT_EQ(flipped.v, (Bytes{26, 36, 0, 20}));
}

TEST(ReferencePackedYuv, UyvyDiffersInByteOrderOnly) {
    const Bytes uyvy = {10, 1, 20, 2, 11, 3, 21, 4};
    const Image pair = Captured(KorUYVYToI420_C_, BlankImage(2, 2, 1, 1), uyvy, 4, 2, 2);
    EXPECT_EQ(pair.y, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(pair.u, (Bytes{11}));
    EXPECT_EQ(pair.v, (Bytes{21}));
    const Image single = Captured(KorUYVYToI420_C_, BlankImage(4, 3, 2, 2), uyvy, 8, 4, 1);
    EXPECT_EQ(single.y, (Bytes{1, 2, 3, 4, 1, 2, 3, 4, o, o, o, o}));
    EXPECT_EQ(single.u, (Bytes{10, 11, o, o}));
    EXPECT_EQ(single.v, (Bytes{20, 21, o, o}));
    for (const Capture capture : {&KorYUY2ToI420_C_, &KorUYVYToI420_C_, &KorYuv2ToI420_C_}) {
        for (const auto& size : {std::pair<KorSizeT, KorSizeT>{1, 1}, {0, 1}, {1, 2}, {2, 0}, {4, 0}}) {
            const Image none = Captured(capture, BlankImage(4, 3, 2, 2), uyvy, 4, size.first, size.second, true);
            EXPECT_EQ(none.y, Blank(12));
            EXPECT_EQ(none.u, Blank(4));
            EXPECT_EQ(none.v, Blank(4));
        }
    }
}

TEST(ReferencePackedYuv, PacksRepeatingChroma) {
    const Image image = {3, 2, {1, 2, 99, 3, 4, 99, 98, 98, 98}, {10, 99, 98, 98}, {20, 99, 98, 98}};
    EXPECT_EQ(Rendered(KorI420ToYUY2_C_, image, 5, 3, 3, 3), (Bytes{1, 10, 2, 20, o, 3, 10, 4, 20, o, o, o, o, o, o}));
    EXPECT_EQ(Rendered(KorI420ToUYVY_C_, image, 5, 3, 3, 3), (Bytes{10, 1, 20, 2, o, 10, 3, 20, 4, o, o, o, o, o, o}));
}

// Width 6: strides of 8 for luma and chroma, and all three starts lose their low bits.
TEST(ReferencePackedYuv, PacksWithNoise) {
    const Image image = {6, 3, Bytes(24, 120), Bytes(6, 130), Bytes(6, 140)};
    kit::ScriptedRandom::ServeScript({31, 47, UINT64_MAX});
    const Bytes x = Rendered(KorI420ToYUY2_C_, image, 12, 4, 6, 4, KOR_VIDEOFRAMEDITHERLEVEL_2);
    for (KorSizeT row = 0; row < 4; ++row) {
        for (KorSizeT group = 0; group < 3; ++group) {
            const KorUint8* bytes = &x[12 * row + 4 * group];
            EXPECT_EQ(bytes[0], detail::Clamp(120 + Entry(24 + 8 * row + 2 * group)));
            EXPECT_EQ(bytes[1], PlusHalf(130, 40 + 8 * (row / 2) + group));
            EXPECT_EQ(bytes[2], detail::Clamp(120 + Entry(24 + 8 * row + 2 * group + 1)));
            EXPECT_EQ(bytes[3], PlusHalf(140, 16376 + 8 * (row / 2) + group));
        }
    }
}

TEST(ReferencePackedYuv, Yuv2ToI420) {
    // Luma 0, 255, 128 and 64; U -128 twice, V 127 twice; then U 1 over -1 and V 10 over 20.
    const Bytes yuv2 = {0, 0x80, 255, 0x7f, 0, 1, 0, 10, 128, 0x80, 64, 0x7f, 0, 255, 0, 20};
    const Image to = Captured(KorYuv2ToI420_C_, BlankImage(4, 3, 2, 1), yuv2, 8, 4, 2);
    EXPECT_EQ(to.y, (Bytes{16, 235, 16, 16, 126, 71, 16, 16, o, o, o, o}));
    EXPECT_EQ(to.u, (Bytes{15, 128}));
    // 10 * 113 / 128 = 8, 20 * 113 / 128 = 17, (25 + 257) / 2 = 141.
    EXPECT_EQ(to.v, (Bytes{240, 141}));

    const Image single = Captured(KorYuv2ToI420_C_, BlankImage(4, 3, 2, 1), yuv2, 8, 4, 1);
    EXPECT_EQ(single.y, (Bytes{16, 235, 16, 16, 16, 235, 16, 16, o, o, o, o}));
    EXPECT_EQ(single.u, (Bytes{15, 128}));
    EXPECT_EQ(single.v, (Bytes{240, 136}));

    const Image flipped = Captured(KorYuv2ToI420_C_, BlankImage(4, 2, 2, 1), yuv2, 8, 4, 2, true);
    EXPECT_EQ(flipped.y, (Bytes{126, 71, 16, 16, 16, 235, 16, 16}));
    EXPECT_EQ(flipped.v, (Bytes{240, 141}));
}

TEST(ReferencePackedYuv, Yuv2ToI420DriftsAtOddWidths) {
    // Pitch 8. The second pair of rows is read at 14 and 22 and goes to luma 7, 8 and 11, 12.
    Bytes yuv2(32, 0);
    yuv2[0] = 64;
    yuv2[2] = 128;
    yuv2[8] = 192;
    yuv2[10] = 255;
    yuv2[14] = 128;
    yuv2[15] = 0x80;
    yuv2[16] = 64;
    yuv2[22] = 255;
    yuv2[23] = 0x80;
    yuv2[24] = 192;
    const Image to = Captured(KorYuv2ToI420_C_, BlankImage(4, 4, 1, 2), yuv2, 8, 3, 4);
    EXPECT_EQ(to.y, (Bytes{71, 126, o, o, 181, 235, o, 126, 71, o, o, 235, 181, o, o, o}));
    EXPECT_EQ(to.u, (Bytes{128, 15}));
    EXPECT_EQ(to.v, (Bytes{128, 128}));

    // A last row on its own is written where the drift has led, and so is its copy.
    const Image odd = Captured(KorYuv2ToI420_C_, BlankImage(4, 4, 1, 2), yuv2, 8, 3, 3);
    EXPECT_EQ(odd.y, (Bytes{71, 126, o, o, 181, 235, o, 126, 71, o, o, 126, 71, o, o, o}));
    EXPECT_EQ(odd.u, (Bytes{128, 15}));

    // Flipped: rows at 24 and 16, then at 8 - 2 = 6 and 0 - 2; the image starts 2 bytes into the buffer.
    Bytes upwards(34, 0);
    upwards[2 + 24] = 255;
    upwards[2 + 16] = 64;
    upwards[2 + 6] = 128;
    upwards[2 - 2] = 192;
    Image flipped = BlankImage(4, 4, 1, 2);
    KorYuv2ToI420_C_(flipped.y.data(), 4, flipped.u.data(), 1, flipped.v.data(), 1, upwards.data() + 2, 8, 3, 4, 1);
    EXPECT_EQ(flipped.y, (Bytes{235, 16, o, o, 71, 16, o, 126, 16, o, o, 181, 16, o, o, o}));
}

TEST(ReferencePackedYuv, I420ToYuv2) {
    const auto packed = [](const Image& from, KorSizeT pitch, KorSizeT rows, KorSizeT width, KorSizeT height) {
        Bytes x = Blank(pitch * rows);
        KorI420toYuv2_C_(from.y.data(), from.pitchY, from.u.data(), from.pitchC, from.v.data(), from.pitchC, x.data(),
                         pitch, width, height);
        return x;
    };
    const Image image = {6, 3, {0, 1, 2, 3, 4, 5, 255, 6, 7, 8, 9, 10}, {128, 16, 240}, {15, 241, 128}};
    EXPECT_EQ(packed(image, 12, 2, 6, 2),
              (Bytes{0, 0, 1, 127, 2, 129, 3, 128, 4, 126, 5, 0, 255, 0, 6, 127, 7, 129, 8, 128, 9, 126, 10, 0}));
    EXPECT_EQ(packed(image, 12, 2, 6, 1), Blank(24));
    EXPECT_EQ(packed(image, 12, 2, 1, 2), Blank(24));

    // Width 3, pitches 4 and 8: the second pair is read one byte and written two bytes earlier; row 4 is not packed.
    Image drifting = {4, 2, Bytes(20), {128, 99, 240, 99, 99, 99}, {16, 99, 128, 99, 99, 99}};
    for (KorSizeT i = 0; i < 20; ++i) {
        drifting.y[i] = static_cast<KorUint8>(i);
    }
    EXPECT_EQ(packed(drifting, 8, 4, 3, 5), (Bytes{0, 0, 1, 129, o, o, o,  o,   4,  0, 5, 129, o, o, 7, 126,
                                                   8, 0, o, o,   o, o, 11, 126, 12, 0, o, o,   o, o, o, o}));
}

TEST(ReferencePackedYuv, M420) {
    Bytes m420(48);
    for (KorSizeT i = 0; i < m420.size(); ++i) {
        m420[i] = static_cast<KorUint8>(i);
    }
    const Image to = Captured(KorM420ToI420_C_, BlankImage(5, 4, 3, 2), m420, 12, 4, 4);
    EXPECT_EQ(to.y, (Bytes{0, 1, 2, 3, o, 4, 5, 6, 7, o, 12, 13, 14, 15, o, 16, 17, 18, 19, o}));
    EXPECT_EQ(to.u, (Bytes{8, 10, o, 20, 22, o}));
    EXPECT_EQ(to.v, (Bytes{9, 11, o, 21, 23, o}));

    // Flipped: blocks 3 and 2, numbered by pitch; the rows inside a block keep their order.
    const Image flipped = Captured(KorM420ToI420_C_, BlankImage(4, 4, 2, 2), m420, 12, 4, 4, true);
    EXPECT_EQ(flipped.y, (Bytes{36, 37, 38, 39, 40, 41, 42, 43, 24, 25, 26, 27, 28, 29, 30, 31}));
    EXPECT_EQ(flipped.u, (Bytes{44, 46, 32, 34}));
    EXPECT_EQ(flipped.v, (Bytes{45, 47, 33, 35}));

    const Image narrow = Captured(KorM420ToI420_C_, BlankImage(2, 3, 1, 2), m420, 12, 1, 3);
    EXPECT_EQ(narrow.y, (Bytes{0, o, 1, o, o, o}));
    EXPECT_EQ(narrow.u, Blank(2));
    const Image odd = Captured(KorM420ToI420_C_, BlankImage(3, 2, 1, 1), m420, 12, 3, 2);
    EXPECT_EQ(odd.y, (Bytes{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(odd.u, (Bytes{6}));
    EXPECT_EQ(odd.v, (Bytes{7}));
    const Image flat = Captured(KorM420ToI420_C_, BlankImage(4, 2, 2, 1), m420, 12, 4, 1, true);
    EXPECT_EQ(flat.y, Blank(8));
    const Image none = Captured(KorM420ToI420_C_, BlankImage(4, 2, 2, 1), m420, 12, 4, 0, true);
    EXPECT_EQ(none.y, Blank(8));
}

Image Rotated(decltype(&KorYUY2ToI420WithRotation_C_) capture, Image to, const Bytes& from, KorSizeT pitchX,
              KorSizeT width, KorSizeT height, KorImageRotationDegree degree, bool flip = false) {
    capture(to.y.data(), to.pitchY, to.u.data(), to.pitchC, to.v.data(), to.pitchC, from.data(), pitchX, width, height,
            flip, degree);
    return to;
}

TEST(ReferencePackedYuv, RotatesAPairOfRows) {
    const Bytes yuy2 = {1, 10, 2, 20, 3, 30, 4, 40, 5, 11, 6, 20, 7, 32, 8, 43};
    const auto capture = &KorYUY2ToI420WithRotation_C_;
    const Image at0 = Rotated(capture, BlankImage(5, 2, 3, 1), yuy2, 8, 4, 2, 0);
    EXPECT_EQ(at0.y, (Bytes{1, 2, 3, 4, o, 5, 6, 7, 8, o}));
    EXPECT_EQ(at0.u, (Bytes{11, 31, o}));
    EXPECT_EQ(at0.v, (Bytes{20, 42, o}));
    const Image at90 = Rotated(capture, BlankImage(3, 4, 2, 2), yuy2, 8, 4, 2, 90);
    EXPECT_EQ(at90.y, (Bytes{5, 1, o, 6, 2, o, 7, 3, o, 8, 4, o}));
    EXPECT_EQ(at90.u, (Bytes{11, o, 31, o}));
    EXPECT_EQ(at90.v, (Bytes{20, o, 42, o}));
    const Image at180 = Rotated(capture, BlankImage(4, 2, 2, 1), yuy2, 8, 4, 2, 180);
    EXPECT_EQ(at180.y, (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(at180.u, (Bytes{31, 11}));
    for (const KorImageRotationDegree degree : {270U, 45U, 360U}) {
        const Image at270 = Rotated(capture, BlankImage(2, 4, 1, 2), yuy2, 8, 4, 2, degree);
        EXPECT_EQ(at270.y, (Bytes{4, 8, 3, 7, 2, 6, 1, 5}));
        EXPECT_EQ(at270.u, (Bytes{31, 11}));
        EXPECT_EQ(at270.v, (Bytes{42, 20}));
    }

    // A flip and then a rotation by 180 is a mirror.
    const Image mirror = Rotated(capture, BlankImage(4, 2, 2, 1), yuy2, 8, 4, 2, 180, true);
    EXPECT_EQ(mirror.y, (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));

    const Bytes uyvy = {10, 1, 20, 2, 11, 5, 21, 6};
    const Image other = Rotated(KorUYVYToI420WithRotation_C_, BlankImage(2, 2, 1, 1), uyvy, 4, 2, 2, 90);
    EXPECT_EQ(other.y, (Bytes{5, 1, 6, 2}));
    EXPECT_EQ(other.u, (Bytes{11}));
    EXPECT_EQ(other.v, (Bytes{21}));
}

TEST(ReferencePackedYuv, RotatesAnOddHeightPadded) {
    const Bytes yuy2 = {1, 10, 2, 20, 3, 12, 4, 22, 5, 30, 6, 40};
    const auto capture = &KorYUY2ToI420WithRotation_C_;
    const Image at0 = Rotated(capture, BlankImage(2, 4, 1, 2), yuy2, 4, 2, 3, 0);
    EXPECT_EQ(at0.y, (Bytes{1, 2, 3, 4, 5, 6, 5, 6}));
    EXPECT_EQ(at0.u, (Bytes{11, 30}));
    EXPECT_EQ(at0.v, (Bytes{21, 40}));
    const Image at90 = Rotated(capture, BlankImage(4, 2, 2, 1), yuy2, 4, 2, 3, 90);
    EXPECT_EQ(at90.y, (Bytes{5, 5, 3, 1, 6, 6, 4, 2}));
    EXPECT_EQ(at90.u, (Bytes{30, 11}));
    const Image at180 = Rotated(capture, BlankImage(2, 4, 1, 2), yuy2, 4, 2, 3, 180);
    EXPECT_EQ(at180.y, (Bytes{6, 5, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(at180.v, (Bytes{40, 21}));
    const Image at270 = Rotated(capture, BlankImage(4, 2, 2, 1), yuy2, 4, 2, 3, 270);
    EXPECT_EQ(at270.y, (Bytes{2, 4, 6, 6, 1, 3, 5, 5}));
    EXPECT_EQ(at270.u, (Bytes{11, 30}));

    // Flipped, the row on its own is the first in memory: the mirrored rows move down by one.
    const Image mirror = Rotated(capture, BlankImage(2, 4, 1, 2), yuy2, 4, 2, 3, 180, true);
    EXPECT_EQ(mirror.y, (Bytes{2, 1, 2, 1, 4, 3, 6, 5}));
    EXPECT_EQ(mirror.u, (Bytes{10, 21}));

    const Image row = Rotated(capture, BlankImage(2, 2, 1, 1), yuy2, 4, 2, 1, 90);
    EXPECT_EQ(row.y, (Bytes{1, 1, 2, 2}));
    EXPECT_EQ(row.u, (Bytes{10}));
    for (const KorImageRotationDegree degree : {0U, 90U, 180U, 270U}) {
        for (const auto& size : {std::pair<KorSizeT, KorSizeT>{1, 1}, {1, 2}, {2, 0}, {0, 3}}) {
            const Image none = Rotated(capture, BlankImage(2, 2, 1, 1), yuy2, 4, size.first, size.second, degree, true);
            EXPECT_EQ(none.y, Blank(4));
            EXPECT_EQ(none.u, Blank(1));
        }
    }
}

TEST(ReferencePackedYuv, RotationDriftsAtOddWidths) {
    // Width 3, pitch 8: rows at 0, 8, 14 and 22. Bytes are numbered.
    Bytes yuy2(32);
    for (KorSizeT i = 0; i < yuy2.size(); ++i) {
        yuy2[i] = static_cast<KorUint8>(i);
    }
    const auto capture = &KorYUY2ToI420WithRotation_C_;
    const Image at0 = Rotated(capture, BlankImage(4, 4, 1, 2), yuy2, 8, 3, 4, 0);
    EXPECT_EQ(at0.y, (Bytes{0, 2, o, o, 8, 10, o, 14, 16, o, o, 22, 24, o, o, o}));
    EXPECT_EQ(at0.u, (Bytes{5, 19}));
    EXPECT_EQ(at0.v, (Bytes{7, 21}));

    // At 90 the second pair begins a row above the plane, which starts in row 1 here.
    Image at90 = BlankImage(4, 4, 2, 1);
    capture(at90.y.data() + 4, 4, at90.u.data(), 2, at90.v.data(), 2, yuy2.data(), 8, 3, 4, 0, 90);
    EXPECT_EQ(at90.y, (Bytes{22, 14, o, o, 24, 16, 8, 0, o, o, 10, 2, o, o, o, o}));
    EXPECT_EQ(at90.u, (Bytes{19, 5}));

    const Image at180 = Rotated(capture, BlankImage(4, 4, 1, 2), yuy2, 8, 3, 4, 180);
    EXPECT_EQ(at180.y, (Bytes{o, o, 24, 22, o, o, 16, 14, o, 10, 8, o, o, 2, 0, o}));
    EXPECT_EQ(at180.v, (Bytes{21, 7}));

    // A last row on its own is read at 14, and both its copies drift.
    const Image at270 = Rotated(capture, BlankImage(4, 4, 2, 1), yuy2, 8, 3, 3, 270);
    EXPECT_EQ(at270.y, (Bytes{o, o, o, o, 2, 10, o, o, 0, 8, 16, 16, o, o, 14, 14}));
    EXPECT_EQ(at270.u, (Bytes{5, 15}));
}

/* Compositing and noise */

Image Dithered(const Image& from, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel level, bool randomize) {
    Image to = {from.pitchY, from.pitchC, Blank(from.y.size()), Blank(from.u.size()), Blank(from.v.size())};
    KorI420Dither_C_(from.y.data(), from.pitchY, from.u.data(), from.pitchC, from.v.data(), from.pitchC, to.y.data(),
                     to.pitchY, to.u.data(), to.pitchC, to.v.data(), to.pitchC, width, height, level, randomize);
    return to;
}

TEST(ReferenceDither, LevelsBeyondTheFourDrawAndWriteNothing) {
    const Image image = {4, 2, Bytes(16, 120), Bytes(4, 130), Bytes(4, 140)};
    kit::ScriptedRandom::ServeScript({});
    const Image to = Dithered(image, 4, 4, static_cast<KorVideoFrameDitherLevel>(4), true);
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
    EXPECT_EQ(to.y, Blank(16));
    EXPECT_EQ(to.u, Blank(4));
    EXPECT_EQ(to.v, Blank(4));
}

TEST(ReferenceDither, FixedOffsets) {
    // 4 by 4: rows 1 and 2 have the same noise; U starts at 16 and V at 20, four entries a row.
    const Image image = {4, 2, Bytes(16, 120), Bytes(4, 130), Bytes(4, 140)};
    kit::ScriptedRandom::ServeScript({1, 2, 3});
    const Image to = Dithered(image, 4, 4, KOR_VIDEOFRAMEDITHERLEVEL_2, false);
    EXPECT_TRUE(kit::ScriptedRandom::Draws().empty());
    const KorSizeT firstOfRow[4] = {0, 4, 4, 8};
    for (KorSizeT row = 0; row < 4; ++row) {
        for (KorSizeT column = 0; column < 4; ++column) {
            EXPECT_EQ(to.y[4 * row + column], detail::Clamp(120 + Entry(firstOfRow[row] + column)));
        }
    }
    EXPECT_EQ(to.u, (Bytes{PlusHalf(130, 16), PlusHalf(130, 17), PlusHalf(130, 20), PlusHalf(130, 21)}));
    EXPECT_EQ(to.v, (Bytes{PlusHalf(140, 20), PlusHalf(140, 21), PlusHalf(140, 24), PlusHalf(140, 25)}));

    // 4 by 2: U starts at 8 and V at 10.
    const Image flat = Dithered(image, 4, 2, KOR_VIDEOFRAMEDITHERLEVEL_2, false);
    EXPECT_EQ(flat.u, (Bytes{PlusHalf(130, 8), PlusHalf(130, 9), o, o}));
    EXPECT_EQ(flat.v, (Bytes{PlusHalf(140, 10), PlusHalf(140, 11), o, o}));
}

TEST(ReferenceDither, OddEdgesStayAndOffsetsCountTheWholeWidth) {
    // 3 by 3: U starts at 9 and V at 10; the lower row's noise starts at 3.
    const Image image = {3, 1, Bytes(9, 120), Bytes(2, 130), Bytes(2, 140)};
    const Image to = Dithered(image, 3, 3, KOR_VIDEOFRAMEDITHERLEVEL_2, false);
    EXPECT_EQ(to.y, (Bytes{detail::Clamp(120 + Entry(0)), detail::Clamp(120 + Entry(1)), o,
                           detail::Clamp(120 + Entry(3)), detail::Clamp(120 + Entry(4)), o, o, o, o}));
    EXPECT_EQ(to.u, (Bytes{PlusHalf(130, 9), o}));
    EXPECT_EQ(to.v, (Bytes{PlusHalf(140, 10), o}));
}

TEST(ReferenceDither, RandomOffsets) {
    const Image image = {2, 1, Bytes(4, 120), Bytes(1, 130), Bytes(1, 140)};
    kit::ScriptedRandom::ServeScript({16385, 5, 49157});  // all 16 bits count, modulo the table: 1, 5 and 5
    const Image to = Dithered(image, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_2, true);
    EXPECT_EQ(kit::ScriptedRandom::Draws(), std::vector<std::size_t>(3, 2));
    EXPECT_EQ(to.y, (Bytes{detail::Clamp(120 + Entry(1)), detail::Clamp(120 + Entry(2)), detail::Clamp(120 + Entry(3)),
                           detail::Clamp(120 + Entry(4))}));
    EXPECT_EQ(to.u, (Bytes{PlusHalf(130, 5)}));
    EXPECT_EQ(to.v, (Bytes{PlusHalf(140, 5)}));

    kit::ScriptedRandom::ServeScript({});
    const Image none = Dithered(image, 2, 1, KOR_VIDEOFRAMEDITHERLEVEL_2, true);
    EXPECT_EQ(kit::ScriptedRandom::Draws().size(), 3U);
    EXPECT_EQ(none.y, Blank(4));
    EXPECT_EQ(none.u, Blank(1));
}

TEST(ReferenceDither, OffIsTheWeakestLevel) {
    const Image image = {2, 1, Bytes(4, 120), Bytes(1, 130), Bytes(1, 140)};
    kit::ScriptedRandom::ServeScript({2048, 2049, 12288});
    const Image to = Dithered(image, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_Off, true);
    EXPECT_EQ(to.y[3], detail::Clamp(120 + detail::FloorDivide(Entry(2051) + 4, 8)));
    EXPECT_EQ(to.u[0], detail::Clamp(130 + detail::FloorDivide(Entry(2049) + 8, 16)));
    EXPECT_EQ(to.v[0], detail::Clamp(140 + detail::FloorDivide(Entry(12288) + 8, 16)));
}

TEST(ReferenceDither, InPlace) {
    Image image = {2, 1, {0, 100, 200, 255}, {130}, {140}};
    const Image to = Dithered(image, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_1, false);
    KorI420Dither_C_(image.y.data(), 2, image.u.data(), 1, image.v.data(), 1, image.y.data(), 2, image.u.data(), 1,
                     image.v.data(), 1, 2, 2, KOR_VIDEOFRAMEDITHERLEVEL_1, 0);
    EXPECT_EQ(image.y, to.y);
    EXPECT_EQ(image.u, to.u);
    EXPECT_EQ(image.v, to.v);
}

KorUint8 BlendedOne(KorUint8 background, KorUint8 foreground, KorUint8 alpha) {
    KorUint8 y = background;
    KorUint8 u = background;
    KorUint8 v = background;
    KorI420AlphaBlend_C_(&y, 1, &u, 1, &v, 1, &foreground, 1, &foreground, 1, &foreground, 1, 1, 1, 0, 0, alpha);
    EXPECT_EQ(u, y);
    EXPECT_EQ(v, y);
    return y;
}

TEST(ReferenceBlend, WorkedValues) {
    EXPECT_EQ(BlendedOne(0, 255, 128), 128);
    EXPECT_EQ(BlendedOne(255, 0, 128), 127);
    EXPECT_EQ(BlendedOne(100, 200, 128), 150);
    EXPECT_EQ(BlendedOne(0, 128, 1), 0);  // a weighted sum of 128 is not rounded to 1
    for (int sample = 0; sample < 256; ++sample) {
        const auto s = static_cast<KorUint8>(sample);
        EXPECT_EQ(BlendedOne(s, 77, 0), s);
        EXPECT_EQ(BlendedOne(77, s, 255), s);
        EXPECT_EQ(BlendedOne(s, s, 93), s);
    }
}

TEST(ReferenceBlend, PlacesChromaRoundedDownInSizeRoundedUp) {
    // 3 by 3 at column 5 and row 1 of a background of 8 by 4: luma columns 5 to 7, chroma columns 2 and 3 of rows 0, 1.
    Image background = BlankImage(8, 4, 4, 2);
    const Image foreground = {3, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {11, 12, 13, 14}, {21, 22, 23, 24}};
    KorI420AlphaBlend_C_(background.y.data(), 8, background.u.data(), 4, background.v.data(), 4, foreground.y.data(), 3,
                         foreground.u.data(), 2, foreground.v.data(), 2, 3, 3, 5, 1, 255);
    EXPECT_EQ(background.y,
              (Bytes{o, o, o, o, o, o, o, o, o, o, o, o, o, 1, 2, 3, o, o, o, o, o, 4, 5, 6, o, o, o, o, o, 7, 8, 9}));
    EXPECT_EQ(background.u, (Bytes{o, o, 11, 12, o, o, 13, 14}));
    EXPECT_EQ(background.v, (Bytes{o, o, 21, 22, o, o, 23, 24}));

    for (const auto& size : {std::pair<KorSizeT, KorSizeT>{0, 3}, {3, 0}}) {
        Image untouched = BlankImage(8, 4, 4, 2);
        KorI420AlphaBlend_C_(untouched.y.data(), 8, untouched.u.data(), 4, untouched.v.data(), 4, foreground.y.data(),
                             3, foreground.u.data(), 2, foreground.v.data(), 2, size.first, size.second, 5, 1, 255);
        EXPECT_EQ(untouched.y, Blank(32));
        EXPECT_EQ(untouched.u, Blank(8));
    }
}

TEST(ReferenceBlend, WeighsEverySample) {
    // 2 by 2 at column 1 and row 1. Luma weights 0, 128, 255 and 128; U is replaced, V unchanged.
    Image background = {3, 2, {9, 9, 9, 9, 50, 0, 9, 50, 255}, {60, 61, 62, 63}, {70, 71, 72, 73}};
    const Image foreground = {2, 1, {100, 255, 100, 0}, {11}, {21}};
    Bytes yAlpha = {0, 128, 99, 255, 128};
    KorUint8 uAlpha = 255;
    KorUint8 vAlpha = 0;
    KorI420AlphaArrayBlend_C_(background.y.data(), 3, background.u.data(), 2, background.v.data(), 2,
                              foreground.y.data(), 2, foreground.u.data(), 1, foreground.v.data(), 1, 2, 2, 1, 1,
                              yAlpha.data(), 3, &uAlpha, 1, &vAlpha, 1);
    EXPECT_EQ(background.y, (Bytes{9, 9, 9, 9, 50, 128, 9, 100, 127}));
    EXPECT_EQ(background.u, (Bytes{11, 61, 62, 63}));
    EXPECT_EQ(background.v, (Bytes{70, 71, 72, 73}));
}

}  // namespace
