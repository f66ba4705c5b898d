// RGB to YUV: 32-bit and 24-bit pixels to I420 and I444.
//
// A kernel takes whole vectors of pixels, whatever their layout: the weights of a matrix lie in groups of bytes that are
// ordered as the pixels are, with 0 for alpha. Results are bits 8 to 15 of a weighted sum.
#include "Kor/Video/Common/Vector/Memory.h"
#include "Kor/Video/Common/Vector/Ops.h"
#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// The bytes of a 32-bit pixel that hold red, green, blue and alpha.
struct RgbLayout {
    KorUint ro, go, bo, ao;
};

constexpr RgbLayout kRgba = {0, 1, 2, 3};
constexpr RgbLayout kBgra = {2, 1, 0, 3};
constexpr RgbLayout kArgb = {1, 2, 3, 0};
constexpr RgbLayout kAbgr = {3, 2, 1, 0};

// Rows Y, U, V; columns red, green, blue; units of 1/256.
struct RgbToYuvMatrix {
    KorInt y[3], u[3], v[3];
};

static_assert(sizeof(RgbToYuvMatrix) == 9 * sizeof(KorInt), "laid out as callers lay out theirs");

// ITU-R BT.601 with its seven fraction bits doubled, and BT.709.
constexpr RgbToYuvMatrix kBt601 = {{66, 128, 26}, {-38, -74, 112}, {112, -94, -18}};
constexpr RgbToYuvMatrix kBt709 = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};

// BT.601 with eight fraction bits: the matrix of the 24-bit captures.
constexpr RgbToYuvMatrix kBt601Of24Bit = {{66, 129, 25}, {-38, -74, 112}, {112, -94, -18}};

constexpr KorUint8 kLumaOffset = 16;
constexpr KorUint8 kChromaOffset = 128;

// The low bytes of three weights, each in the place of its channel.
constexpr KorUint WeightGroup(const KorInt (&weights)[3], const RgbLayout& layout) {
    return (static_cast<KorUint>(weights[0]) & 0xff) << 8 * layout.ro | (static_cast<KorUint>(weights[1]) & 0xff) << 8 * layout.go |
           (static_cast<KorUint>(weights[2]) & 0xff) << 8 * layout.bo;
}

// A matrix of bytes, with luma weights in units of 1/256 or, where they are even, of 1/128.
//
// Units of 1/256: luma has unsigned weights with a sum of at most 255. They meet samples that are made signed, and the offset
// holds what that takes away. Two products lie in 255 * -128 to 255 * 127. Units of 1/128: the weights are signed bytes, and
// samples stay as they are; four products and the offset lie below 127 * 255 + 128 * 16.
//
// Chroma has signed weights; those above zero sum to at most 128 and those below to at least -128, so that products of
// unsigned samples stay within 128 * 255.
template <int lumaShift>
struct ByteWeights {
    KorUint y, u, v;
    KorUint16 yOffset;

    constexpr ByteWeights(const RgbToYuvMatrix& matrix, const RgbLayout& layout)
        : y(WeightGroup(matrix.y, layout) >> (8 - lumaShift)),
          u(WeightGroup(matrix.u, layout)),
          v(WeightGroup(matrix.v, layout)),
          yOffset(static_cast<KorUint16>(256 * kLumaOffset + 128 * (matrix.y[0] + matrix.y[1] + matrix.y[2]))) {}

    KOR_INLINE V8 Y(V8 a, V8 b, V8 c, V8 d) const {
        const V8 weights = SetGroups(y);
        if constexpr (lumaShift == 8) {
            return WeighGroups(weights, Signed(a), weights, Signed(b), weights, Signed(c), weights, Signed(d), yOffset, 0);
        } else {
            const VI8 s = hn::BitCast(DI8(), weights);
            return WeighGroups<lumaShift>(a, s, b, s, c, s, d, s, 0, kLumaOffset);
        }
    }
    KOR_INLINE V8 U(V8 a, V8 b, V8 c, V8 d) const { return Chroma(a, b, c, d, u, u); }
    KOR_INLINE V8 V(V8 a, V8 b, V8 c, V8 d) const { return Chroma(a, b, c, d, v, v); }
    // U of all pixels, then V of all.
    KOR_INLINE V8 UV(V8 a, V8 b) const { return Chroma(a, b, a, b, u, v); }

  private:
    static KOR_INLINE VI8 Signed(V8 x) { return hn::BitCast(DI8(), hn::Xor(x, hn::Set(D8(), 0x80))); }
    static KOR_INLINE V8 Chroma(V8 a, V8 b, V8 c, V8 d, KorUint ab, KorUint cd) {
        const VI8 weightsAb = hn::BitCast(DI8(), SetGroups(ab));
        const VI8 weightsCd = hn::BitCast(DI8(), SetGroups(cd));
        return WeighGroups(a, weightsAb, b, weightsAb, c, weightsCd, d, weightsCd, 0, kChromaOffset);
    }
};

using Bt601Weights = ByteWeights<kHasShiftedSums ? 7 : 8>;
using Bt709Weights = ByteWeights<8>;

// Any matrix. The result is a byte of the sum, so that weights count modulo 2^16; no sum of four products leaves 32 bits.
struct WordWeights {
    // The weights of the first and third byte of a pixel, and of the second and fourth.
    struct Row {
        KorUint even, odd;
    };
    Row y, u, v;

    constexpr WordWeights(const RgbToYuvMatrix& matrix, const RgbLayout& layout)
        : y(Pairs(matrix.y, layout)), u(Pairs(matrix.u, layout)), v(Pairs(matrix.v, layout)) {}

    KOR_INLINE V8 Y(V8 a, V8 b, V8 c, V8 d) const { return Weigh(a, b, c, d, y, y, kLumaOffset); }
    KOR_INLINE V8 UV(V8 a, V8 b) const { return Weigh(a, b, a, b, u, v, kChromaOffset); }

  private:
    static constexpr KorUint Pair(KorUint first, KorUint second) { return (first & 0xffff) | second << 16; }
    static constexpr Row Pairs(const KorInt (&weights)[3], const RgbLayout& layout) {
        KorUint bytes[4] = {};
        bytes[layout.ro] = static_cast<KorUint>(weights[0]);
        bytes[layout.go] = static_cast<KorUint>(weights[1]);
        bytes[layout.bo] = static_cast<KorUint>(weights[2]);
        return {Pair(bytes[0], bytes[2]), Pair(bytes[1], bytes[3])};
    }
    static KOR_INLINE VI32 Sum(V8 pixels, const Row& row) {
        const DI16 d;
        const D16 d16;
        const VI16 even = hn::BitCast(d, hn::And(hn::BitCast(d16, pixels), hn::Set(d16, 0xff)));
        const VI16 odd = hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(d16, pixels)));
        const VI32 sum = AddDotWords(hn::Zero(DI32()), even, hn::BitCast(d, SetGroups(row.even)));
        return AddDotWords(sum, odd, hn::BitCast(d, SetGroups(row.odd)));
    }
    static KOR_INLINE V8 Weigh(V8 a, V8 b, V8 c, V8 d, const Row& ab, const Row& cd, KorUint8 offset) {
        return hn::Add(SecondBytes(Sum(a, ab), Sum(b, ab), Sum(c, cd), Sum(d, cd)), hn::Set(D8(), offset));
    }
};

// A byte of a block of pixels that may not be read: the alpha that begins or ends an image may lie outside the caller's memory.
enum class Unread {
    None,
    FirstByte,
    LastByte,
};

constexpr KorSizeT kBlockBytes = 4 * HWY_MAX_BYTES;

// A block of pixels that can be read whole: the caller's or, but for the byte that may not be read, a copy.
KOR_INLINE inline const KorUint8* Readable(KorUint8 (&copy)[kBlockBytes], const KorUint8* x, KorSizeT bytes, Unread unread) {
    if (HWY_LIKELY(unread == Unread::None)) {
        return x;
    }
    const KorSizeT skip = unread == Unread::FirstByte ? 1 : 0;
    KorMemCpy(copy + skip, x + skip, bytes - 1);
    copy[skip == 1 ? 0 : bytes - 1] = 0;  // its weight is 0, but MemorySanitizer wants it defined
    return copy;
}

// Two rows of n pixels, n at least a vector of bytes and even. y1 and x1 may be y0 and x0.
template <Memory memory, class Weights>
KOR_KERNEL void CaptureRowPair(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                               const KorUint8* x0, const KorUint8* x1, KorSizeT n, Weights weights, Unread unread) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    KorUint8 copy0[kBlockBytes], copy1[kBlockBytes];
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        FetchAhead<memory>(x0 + 4 * start, 4 * size);
        FetchAhead<memory>(x1 + 4 * start, 4 * size);
        const KorUint8* upper = Readable(copy0, x0 + 4 * start, 4 * size, unread);
        const KorUint8* lower = Readable(copy1, x1 + 4 * start, 4 * size, unread);
        const V8 a0 = hn::LoadU(d, upper), b0 = hn::LoadU(d, upper + size);
        const V8 c0 = hn::LoadU(d, upper + 2 * size), d0 = hn::LoadU(d, upper + 3 * size);
        const V8 a1 = hn::LoadU(d, lower), b1 = hn::LoadU(d, lower + size);
        const V8 c1 = hn::LoadU(d, lower + 2 * size), d1 = hn::LoadU(d, lower + 3 * size);
        stores.Store(weights.Y(a0, b0, c0, d0), y0 + start);
        stores.Store(weights.Y(a1, b1, c1, d1), y1 + start);
        // Columns after rows, as the order of the two roundings is part of the contract.
        const V8 ab = AveragePixelPairs(RoundedAverage(a0, a1), RoundedAverage(b0, b1));
        const V8 cd = AveragePixelPairs(RoundedAverage(c0, c1), RoundedAverage(d0, d1));
        const V8 uv = OrderPairs(weights.UV(ab, cd));
        StoreHalves(stores, uv, u + start / 2, v + start / 2);
    });
}

// One row of n pixels, n at least a vector of bytes.
template <Memory memory, class Weights>
KOR_KERNEL void CaptureRow(KorUint8* y, KorUint8* u, KorUint8* v, const KorUint8* x, KorSizeT n, Weights weights, Unread unread) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    KorUint8 copy[kBlockBytes];
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        FetchAhead<memory>(x + 4 * start, 4 * size);
        const KorUint8* pixels = Readable(copy, x + 4 * start, 4 * size, unread);
        const V8 a = hn::LoadU(d, pixels), b = hn::LoadU(d, pixels + size);
        const V8 c = hn::LoadU(d, pixels + 2 * size), e = hn::LoadU(d, pixels + 3 * size);
        stores.Store(weights.Y(a, b, c, e), y + start);
        stores.Store(weights.U(a, b, c, e), u + start);
        stores.Store(weights.V(a, b, c, e), v + start);
    });
}

// The bytes of a 24-bit pixel: red first or blue first.
enum class Order24 {
    Rgb,
    Bgr,
};

// The weights of 24-bit pixels, in the order in which LoadTriples has their bytes: that of green stands there twice. Its luma
// weight is too large for a signed byte, and parts of it, 62 next to red and 67 next to blue, leave two products at
// 128 * 255 or below.
struct TripleWeights {
    KorUint y, u, v;

    explicit constexpr TripleWeights(Order24 order)
        : y(Group(order, 66, 62, 25, 67)), u(Group(order, -38, -74, 112, 0)), v(Group(order, 112, -94, -18, 0)) {}

  private:
    // Red and blue, and the part of green that stands next to each.
    static constexpr KorUint Group(Order24 order, KorInt r, KorInt gOfRed, KorInt b, KorInt gOfBlue) {
        const KorUint red = (static_cast<KorUint>(r) & 0xff) | (static_cast<KorUint>(gOfRed) & 0xff) << 8;
        const KorUint blue = (static_cast<KorUint>(b) & 0xff) | (static_cast<KorUint>(gOfBlue) & 0xff) << 8;
        return order == Order24::Rgb ? red | blue << 16 : blue | red << 16;
    }
};

#if defined(KOR_VNNI)
// One row of samples, a byte each.
KOR_INLINE inline V8 WeighTriples(V8 a, V8 b, V8 c, V8 d, KorUint group, KorUint8 offset) {
    const VI8 weights = hn::BitCast(DI8(), SetGroups(group));
    return WeighGroups(a, weights, b, weights, c, weights, d, weights, 0, offset);
}

// The rounded averages of two by two samples.
KOR_INLINE inline V16 AverageBlocks(V8 upper, V8 lower) {
    return hn::ShiftRight<2>(hn::Add(hn::Add(SumBytePairs(upper), SumBytePairs(lower)), hn::Set(D16(), 2)));
}

// One row of luma, and the chroma of its pixels.
KOR_INLINE inline void Convert24(V8& y, V8& u, V8& v, const KorUint8* x, const TripleWeights& weights) {
    V8 a, b, c, d;
    LoadTriples(x, a, b, c, d);
    y = WeighTriples(a, b, c, d, weights.y, kLumaOffset);
    u = WeighTriples(a, b, c, d, weights.u, kChromaOffset);
    v = WeighTriples(a, b, c, d, weights.v, kChromaOffset);
}

// The chroma of two rows: U of all blocks, then V of all.
KOR_INLINE inline V8 Capture24Pair(V8& y0, V8& y1, const KorUint8* x0, const KorUint8* x1, const TripleWeights& weights) {
    V8 u0, v0, u1, v1;
    Convert24(y0, u0, v0, x0, weights);
    Convert24(y1, u1, v1, x1, weights);
    return JoinBytes(AverageBlocks(u0, u1), AverageBlocks(v0, v1));
}
#else
// The weighted sums of pixels whose pairs lie in two vectors.
KOR_INLINE inline VI16 WeighPairs(V8 fronts, V8 backs, KorUint group) {
    const DI8 d;
    const VI8 front = hn::BitCast(d, hn::Set(D16(), static_cast<KorUint16>(group & 0xffff)));
    const VI8 back = hn::BitCast(d, hn::Set(D16(), static_cast<KorUint16>(group >> 16)));
    return hn::Add(MulAddBytes(fronts, front), MulAddBytes(backs, back));
}

// Luma before its offset is added.
KOR_INLINE inline V16 LumaOfPairs(V8 fronts, V8 backs, KorUint group) {
    const D16 d;
    return hn::ShiftRight<8>(hn::BitCast(d, WeighPairs(fronts, backs, group)));
}

// One row of luma, and the chroma of its pixels, centred on 0.
KOR_INLINE inline void Convert24(V8& y, VI16& uLeft, VI16& uRight, VI16& vLeft, VI16& vRight, const KorUint8* x,
                                 const TripleWeights& weights) {
    V8 a, b, c, d;
    LoadTriples(x, a, b, c, d);
    y = hn::Add(JoinBytes(LumaOfPairs(a, b, weights.y), LumaOfPairs(c, d, weights.y)), hn::Set(D8(), kLumaOffset));
    uLeft = hn::ShiftRight<8>(WeighPairs(a, b, weights.u));
    uRight = hn::ShiftRight<8>(WeighPairs(c, d, weights.u));
    vLeft = hn::ShiftRight<8>(WeighPairs(a, b, weights.v));
    vRight = hn::ShiftRight<8>(WeighPairs(c, d, weights.v));
}

// The chroma of two rows: U of all blocks, then V of all.
KOR_INLINE inline V8 Capture24Pair(V8& y0, V8& y1, const KorUint8* x0, const KorUint8* x1, const TripleWeights& weights) {
    VI16 u0Left, u0Right, v0Left, v0Right, u1Left, u1Right, v1Left, v1Right;
    Convert24(y0, u0Left, u0Right, v0Left, v0Right, x0, weights);
    Convert24(y1, u1Left, u1Right, v1Left, v1Right, x1, weights);
    return BytesOfSums<2>(hn::Add(u0Left, u1Left), hn::Add(u0Right, u1Right), hn::Add(v0Left, v1Left), hn::Add(v0Right, v1Right),
                          4 * kChromaOffset + 2);
}
#endif

// Two rows of n pixels of 24 bits, n at least a vector of bytes and even. x1 may be x0. Every pixel's chroma is converted
// and then averaged.
template <Memory memory>
KOR_KERNEL void Capture24RowPair(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                                 const KorUint8* x0, const KorUint8* x1, KorSizeT n, TripleWeights weights) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        FetchAhead<memory>(x0 + 3 * start, 3 * size);
        FetchAhead<memory>(x1 + 3 * start, 3 * size);
        V8 luma0, luma1;
        const V8 uv = Capture24Pair(luma0, luma1, x0 + 3 * start, x1 + 3 * start, weights);
        stores.Store(luma0, y0 + start);
        stores.Store(luma1, y1 + start);
        StoreHalves(stores, uv, u + start / 2, v + start / 2);
    });
}

struct Rgb {
    KorUint8 r, g, b;
};

constexpr KorUint8 Average(KorUint8 a, KorUint8 b) {
    return static_cast<KorUint8>((a + b + 1) >> 1);
}

constexpr Rgb Average(Rgb a, Rgb b) {
    return {Average(a.r, b.r), Average(a.g, b.g), Average(a.b, b.b)};
}

Rgb PixelAt(const KorUint8* row, KorSizeT column, const RgbLayout& layout) {
    const KorUint8* x = row + 4 * column;
    return {x[layout.ro], x[layout.go], x[layout.bo]};
}

// One sample of one pixel.
constexpr KorUint8 Weigh(const KorInt (&weights)[3], KorUint8 offset, Rgb c) {
    const KorUint sum =
        static_cast<KorUint>(weights[0]) * c.r + static_cast<KorUint>(weights[1]) * c.g + static_cast<KorUint>(weights[2]) * c.b;
    return static_cast<KorUint8>(((sum >> 8) + offset) & 0xff);
}

// Whether a picture has what the kernels need: at least one vector of pixels in even columns.
bool IsWide(KorSizeT width, KorSizeT height) {
    return (width & ~KorSizeT{1}) >= hn::Lanes(D8()) && height != 0;
}

// The row of an image, in reading order, that begins or ends with the alpha that may not be read.
KorSizeT EdgeRow(SourceRows rows, KorSizeT height, Unread edge) {
    const bool isLastInMemory = edge == Unread::LastByte;
    return isLastInMemory == (rows.pitch >= 0) ? height - 1 : 0;
}

constexpr Unread EdgeOf(const RgbLayout& layout) {
    return layout.ao == 0 ? Unread::FirstByte : Unread::LastByte;
}

// A lone last row is a pair with itself: averages of a sample with itself change nothing. An odd last column is converted on
// its own.
template <class Weights>
void CaptureI420(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height,
                 const RgbLayout& layout, const RgbToYuvMatrix& matrix) {
    const Weights weights(matrix, layout);
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT edgeRow = EdgeRow(rows, height, EdgeOf(layout));
    const bool isStreamed = AreStreamed(y, u, v, width * height * 3 / 2, 2);
    const auto capture = ForMemory(4 * width * height, isStreamed, &CaptureRowPair<Memory::Cached, Weights>,
                                   &CaptureRowPair<Memory::FetchedAhead, Weights>, &CaptureRowPair<Memory::Streamed, Weights>);
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorSizeT row1 = Min(row + 1, height - 1);
        const KorUint8* x0 = rows.Row(row);
        const KorUint8* x1 = rows.Row(row1);
        const bool isEdge = edgeRow == row || edgeRow == row1;
        capture(y.Row(row), y.Row(row1), u.Row(row / 2), v.Row(row / 2), x0, x1, width2, weights,
                isEdge ? EdgeOf(layout) : Unread::None);
        if (IsOdd(width)) {
            const Rgb upper = PixelAt(x0, width2, layout);
            const Rgb lower = PixelAt(x1, width2, layout);
            y.Row(row)[width2] = Weigh(matrix.y, kLumaOffset, upper);
            y.Row(row1)[width2] = Weigh(matrix.y, kLumaOffset, lower);
            u.Row(row / 2)[width2 / 2] = Weigh(matrix.u, kChromaOffset, Average(upper, lower));
            v.Row(row / 2)[width2 / 2] = Weigh(matrix.v, kChromaOffset, Average(upper, lower));
        }
    }
    FinishStores(isStreamed);
}

template <class Weights>
void CaptureI444(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height,
                 const RgbLayout& layout, const RgbToYuvMatrix& matrix) {
    const Weights weights(matrix, layout);
    const KorSizeT edgeRow = EdgeRow(rows, height, EdgeOf(layout));
    const bool isStreamed = AreStreamed(y, u, v, 3 * width * height, 1);
    const auto capture = ForMemory(4 * width * height, isStreamed, &CaptureRow<Memory::Cached, Weights>,
                                   &CaptureRow<Memory::FetchedAhead, Weights>, &CaptureRow<Memory::Streamed, Weights>);
    for (KorSizeT row = 0; row < height; ++row) {
        capture(y.Row(row), u.Row(row), v.Row(row), rows.Row(row), width, weights, row == edgeRow ? EdgeOf(layout) : Unread::None);
    }
    FinishStores(isStreamed);
}

// Whether the weights of a matrix are as ByteWeights wants them.
bool FitsBytes(const RgbToYuvMatrix& matrix) {
    const auto isByte = [](KorInt weight, KorInt low) { return weight >= low && weight <= low + 255; };
    KorInt luma = 0;
    for (const KorInt weight : matrix.y) {
        if (!isByte(weight, 0)) {
            return false;
        }
        luma += weight;
    }
    for (const auto& row : {matrix.u, matrix.v}) {
        KorInt above = 0, below = 0;
        for (KorSizeT i = 0; i < 3; ++i) {
            if (!isByte(row[i], -128)) {
                return false;
            }
            (row[i] > 0 ? above : below) += row[i];
        }
        if (above > 128 || below < -128) {
            return false;
        }
    }
    return luma <= 255;
}

// Whether coefficients share a byte with the width by height samples of a plane.
bool Overlap(const KorInt (*coeffs)[3], Plane plane, KorSizeT width, KorSizeT height) {
    const uintptr_t coeffsBegin = reinterpret_cast<uintptr_t>(coeffs);
    const uintptr_t planeBegin = reinterpret_cast<uintptr_t>(plane.samples);
    const KorSizeT planeBytes = (height - 1) * plane.pitch + width;
    return coeffsBegin < planeBegin + planeBytes && planeBegin < coeffsBegin + 3 * sizeof *coeffs;
}

// The even rows and columns, and the odd edges as the caller's matrix has them.
template <class Weights>
void CaptureGeneral(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height, const RgbToYuvMatrix& matrix) {
    // Deliberate: at the odd edges the luma weights meet the channels in the order red, blue, green.
    RgbToYuvMatrix edge = matrix;
    edge.y[1] = matrix.y[2];
    edge.y[2] = matrix.y[1];
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT height2 = height & ~KorSizeT{1};
    CaptureI420<Weights>(y, u, v, rows, width, height2, kBgra, matrix);
    if (IsOdd(width)) {
        for (KorSizeT row = 0; row < height2; ++row) {
            KorUint8* last = y.Row(row) + width2;
            last[0] = last[1] = Weigh(edge.y, kLumaOffset, PixelAt(rows.Row(row), width2, kBgra));
        }
    }
    if (IsOdd(height)) {
        CaptureI420<Weights>(y.From(height2), u.From(height2 / 2), v.From(height2 / 2), rows.From(height2), width, 1, kBgra, edge);
        KorMemCpy(y.Row(height), y.Row(height2), width2);
    }
    if (IsOdd(width) && IsOdd(height)) {
        // Deliberate: the corner stands in four places, with the weights in their normal order.
        const KorUint8 corner = Weigh(matrix.y, kLumaOffset, PixelAt(rows.Row(height2), width2, kBgra));
        for (KorSizeT row = height2; row <= height; ++row) {
            y.Row(row)[width2] = corner;
            y.Row(row)[width] = corner;
        }
    }
}

// The samples of one pixel.
struct Yuv {
    KorUint8 y, u, v;
};

Yuv Convert24(const KorUint8* x, Order24 order) {
    const bool redFirst = order == Order24::Rgb;
    const Rgb c = {x[redFirst ? 0 : 2], x[1], x[redFirst ? 2 : 0]};
    return {Weigh(kBt601Of24Bit.y, kLumaOffset, c), Weigh(kBt601Of24Bit.u, kChromaOffset, c), Weigh(kBt601Of24Bit.v, kChromaOffset, c)};
}

// The odd edges are those of the portable function, which says why they are as they are.
void Capture24(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height, Order24 order) {
    const TripleWeights weights(order);
    const bool isStreamed = AreStreamed(y, u, v, width * height * 3 / 2, 2);
    const auto capture = ForMemory(3 * width * height, isStreamed, &Capture24RowPair<Memory::Cached>,
                                   &Capture24RowPair<Memory::FetchedAhead>, &Capture24RowPair<Memory::Streamed>);
    const KorSizeT widthC = width / 2;
    const KorSizeT width2 = 2 * widthC;
    const KorSizeT heightC = height / 2;
    const KorSizeT height2 = 2 * heightC;
    // The luma of a lone last row is also written to the row below the picture.
    for (KorSizeT row = 0; row < height; row += 2) {
        capture(y.Row(row), y.Row(row + 1), u.Row(row / 2), v.Row(row / 2),
                rows.Row(row), rows.Row(Min(row + 1, height - 1)), width2, weights);
    }
    FinishStores(isStreamed);
    if (!IsOdd(width)) {
        return;
    }
    for (KorSizeT row = 0; row < height2; row += 2) {
        const Yuv upper = Convert24(rows.Row(row) + 3 * width2, order);
        const Yuv lower = Convert24(rows.Row(row + 1) + 3 * width2, order);
        y.Row(row)[width2] = y.Row(row)[width] = upper.y;
        y.Row(row + 1)[width2] = y.Row(row + 1)[width] = lower.y;
        u.Row(row / 2)[widthC] = Average(upper.u, lower.u);
        v.Row(row / 2)[widthC] = Average(upper.v, lower.v);
    }
    if (IsOdd(height)) {
        KorUint8* cornerU = u.Row(heightC) + widthC;
        KorUint8* cornerV = v.Row(heightC) + widthC;
        if (heightC != 0) {
            y.Row(height2)[width2] = y.Row(height2 - 1)[width2];
            *cornerU = Average(u.Row(heightC - 1)[widthC], cornerU[-1]);
            *cornerV = Average(v.Row(heightC - 1)[widthC], cornerV[-1]);
        } else {
            y.Row(height2)[width2] = Convert24(rows.Row(height2) + 3 * width2, order).y;
            *cornerU = cornerU[-1];
            *cornerV = cornerV[-1];
        }
    }
}

}  // namespace

void KorRGBAToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorRGBAToI420_C_ KOR_ARGUMENTS_Capture;
    }
    CaptureI420<Bt601Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kRgba, kBt601);
}

void KorBGRAToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorBGRAToI420_C_ KOR_ARGUMENTS_Capture;
    }
    CaptureI420<Bt601Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBgra, kBt601);
}

void KorARGBToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorARGBToI420_C_ KOR_ARGUMENTS_Capture;
    }
    CaptureI420<Bt601Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kArgb, kBt601);
}

void KorABGRToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorABGRToI420_C_ KOR_ARGUMENTS_Capture;
    }
    CaptureI420<Bt601Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kAbgr, kBt601);
}

void KorBGRAToI444 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorBGRAToI444_C_ KOR_ARGUMENTS_Capture;
    }
    CaptureI444<Bt601Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBgra, kBt601);
}

void KorBGRAToI420UsingBT709 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorBGRAToI420UsingBT709_C_ KOR_ARGUMENTS_Capture;
    }
    const Plane luma = {y, pitchY};
    CaptureI420<Bt709Weights>(luma, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBgra, kBt709);
    if (IsOdd(height)) {
        // Deliberate: the luma of an odd last row is repeated in the row below the picture, without an odd last column.
        KorMemCpy(luma.Row(height), luma.Row(height - 1), width & ~KorSizeT{1});
    }
}

void KorBGRAToI444UsingBT709 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorBGRAToI444UsingBT709_C_ KOR_ARGUMENTS_Capture;
    }
    // Deliberate: a set flip chooses the first row and no more. From there the walk goes downwards, past the picture.
    const SourceRows rows = TopDown(ReadingOrder(x, pitchX, height, flip).first, pitchX);
    CaptureI444<Bt709Weights>({y, pitchY}, {u, pitchU}, {v, pitchV}, rows, width, height, kBgra, kBt709);
}

void KorBGRAToI420General KOR_PARAMETERS_CaptureGeneral {
    if (!IsWide(width, height)) {
        return KorBGRAToI420General_C_ KOR_ARGUMENTS_CaptureGeneral;
    }
    const Plane planeY = {y, pitchY};
    const Plane planeU = {u, pitchU};
    const Plane planeV = {v, pitchV};
    const KorSizeT widthC = (width + 1) / 2;
    const KorSizeT heightC = (height + 1) / 2;
    // The luma that is written includes the spare column and row of odd sizes.
    if (Overlap(coeffs, planeY, 2 * widthC, 2 * heightC) || Overlap(coeffs, planeU, widthC, heightC) ||
        Overlap(coeffs, planeV, widthC, heightC)) {
        return KorBGRAToI420General_C_ KOR_ARGUMENTS_CaptureGeneral;
    }
    RgbToYuvMatrix matrix;
    KorMemCpy(&matrix, coeffs, sizeof matrix);
    const SourceRows rows = ReadingOrder(x, pitchX, height, flip);
    if (FitsBytes(matrix)) {
        CaptureGeneral<ByteWeights<8>>(planeY, planeU, planeV, rows, width, height, matrix);
    } else {
        CaptureGeneral<WordWeights>(planeY, planeU, planeV, rows, width, height, matrix);
    }
}

void KorRawToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorRawToI420_C_ KOR_ARGUMENTS_Capture;
    }
    Capture24({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, Order24::Rgb);
}

void Kor24BGToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return Kor24BGToI420_C_ KOR_ARGUMENTS_Capture;
    }
    Capture24({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, Order24::Bgr);
}

}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor
