// YUV to RGB.
//
// Colour is computed in 16-bit lanes. A lane of chroma stands for two pixels of I420, and luma is split into its even and its
// odd samples instead, so that chroma is never duplicated: a vector of bytes has as many pairs of luma as the lanes of chroma.
// Factors are in the upper byte of their lanes, or in the multiplier, so that products are taken from the upper half.
//
// Red and blue are treated alike. A layout says which of them comes first in memory, and the rest is "first" and "last".
#include "Kor/Video/Common/Vector/Memory.h"
#include "Kor/Video/Common/Vector/Noise.h"
#include "Kor/Video/Common/Vector/Ops.h"
#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// ---------------------------------------------------------------------------------------------------------------------
// Matrices
// ---------------------------------------------------------------------------------------------------------------------

// Noisy rows hold samples minus 128. Where that scales to a whole number it is part of the offset, and costs nothing.
template <class Row>
constexpr KorInt kCentre = Row::kIsSigned ? 128 : 0;

// (sample * factor) >> 8 for samples in the upper bytes of their lanes.
template <class Row>
KOR_INLINE inline VI16 Scale(V16 samples, KorInt factor) {
    const D16 d;
    const DI16 di;
    if constexpr (Row::kIsSigned) {
        return hn::MulHigh(hn::BitCast(di, samples), hn::Set(di, static_cast<KorInt16>(factor)));
    } else {
        return hn::BitCast(di, hn::MulHigh(samples, hn::Set(d, static_cast<KorUint16>(factor))));
    }
}

// R = Y + ((V * rV) >> 8) - rBias, G = Y + gBias - ((U * gU + V * gV) >> 6), B = Y + ((U * bU) >> 8) - bBias, with luma as
// (Y * 298) >> 8. All factors of 1/256 are even, and green's sum to less than 128.
struct YuvToRgbMatrix {
    KorInt rV, bU, gU, gV, rBias, gBias, bBias;
};

constexpr YuvToRgbMatrix kBt601 = {2 * 204, 4 * 129, 25, 52, 223, 135, 277};
constexpr YuvToRgbMatrix kBt709 = {2 * 229, 4 * 135, 14, 34, 248, 78, 289};
constexpr KorInt kLuma = 298;

// A fixed matrix for a layout: what the chroma of the first and of the last channel adds to luma.
struct FixedTerms {
    KorInt first, last, green0, green1, firstBias, greenBias, lastBias;

    constexpr FixedTerms(const YuvToRgbMatrix& m, bool blueFirst)
        : first(blueFirst ? m.bU : m.rV),
          last(blueFirst ? m.rV : m.bU),
          green0(blueFirst ? m.gU : m.gV),
          green1(blueFirst ? m.gV : m.gU),
          firstBias(blueFirst ? m.bBias : m.rBias),
          greenBias(m.gBias),
          lastBias(blueFirst ? m.rBias : m.bBias) {}

    template <class Row>
    KOR_INLINE inline VI16 Luma(V16 y) const {
        return Scale<Row>(y, kLuma);
    }

    // c0 and c1 hold the chroma of the first and of the last channel in the upper bytes of their lanes.
    template <class Row>
    KOR_INLINE inline void Get(V16 c0, V16 c1, VI16& firstTerm, VI16& greenTerm, VI16& lastTerm) const {
        constexpr KorInt lumaCentre = kCentre<Row> * kLuma / 256;
        firstTerm = hn::Add(Scale<Row>(c0, first), Set(lumaCentre + kCentre<Row> * first / 256 - firstBias));
        lastTerm = hn::Add(Scale<Row>(c1, last), Set(lumaCentre + kCentre<Row> * last / 256 - lastBias));
        // The unsigned factor of a product of bytes is the sample or, where that is signed, the weight.
        const V8 pairs = hn::BitCast(D8(), hn::Or(hn::ShiftRight<8>(c0), c1));
        const V8 weights = hn::BitCast(D8(), Set(green0 | green1 << 8));
        const VI16 sums =
            Row::kIsSigned ? MulAddBytes(weights, hn::BitCast(DI8(), pairs)) : MulAddBytes(pairs, hn::BitCast(DI8(), weights));
        greenTerm = hn::Sub(Set(lumaCentre + greenBias - kCentre<Row> * (green0 + green1) / 64), hn::ShiftRight<6>(sums));
    }

  private:
    static KOR_INLINE inline VI16 Set(KorInt value) { return hn::Set(DI16(), static_cast<KorInt16>(value)); }
};

// The caller's matrix: rows R, G, B with the multipliers of luma, U - 128 and V - 128, in units of 1/256.
struct CallerMatrix {
    KorInt rows[3][3];

    // Within these limits luma, terms and their sums stay in 16 bits. The multiplier of luma is taken as unsigned.
    bool FitsLanes() const {
        constexpr KorInt kLimit = 8191;
        bool fits = rows[0][0] >= 0;
        for (const auto& row : rows) {
            for (const KorInt coefficient : row) {
                fits = fits && coefficient >= -kLimit && coefficient <= kLimit;
            }
        }
        return fits;
    }
};

// The caller's matrix for BGRA.
class CallerTerms {
  public:
    explicit CallerTerms(const CallerMatrix& m)
        : luma_(m.rows[0][0]), blue_(m.rows[2]), green_(m.rows[1]), red_(m.rows[0]) {}

    template <class Row>
    KOR_INLINE inline VI16 Luma(V16 y) const {
        return Scale<PlainRow>(Row::kIsSigned ? hn::Xor(y, hn::Set(D16(), 0x8000)) : y, luma_);
    }

    template <class Row>
    KOR_INLINE inline void Get(V16 u, V16 v, VI16& blue, VI16& green, VI16& red) const {
        // Chroma minus 128, in units of 1/256. Samples of even and of odd lanes make pairs of their own.
        const DI16 d;
        const DI32 d32;
        const VI16 sign = hn::Set(d, Row::kIsSigned ? 0 : -32768);
        const VI16 u16 = hn::Xor(hn::BitCast(d, u), sign);
        const VI16 v16 = hn::Xor(hn::BitCast(d, v), sign);
        const VI16 vUp = hn::BitCast(d, hn::ShiftLeft<16>(hn::BitCast(d32, v16)));
        const VI16 uDown = hn::BitCast(d, hn::ShiftRight<16>(hn::BitCast(d32, u16)));
        const VI16 even = hn::OddEven(vUp, u16);
        const VI16 odd = hn::OddEven(v16, uDown);
        blue = blue_.Of(even, odd);
        green = green_.Of(even, odd);
        red = red_.Of(even, odd);
    }

  private:
    // Sums are in units of 1/65536, so that they are rounded down by taking their upper halves. Their magnitude is at most
    // 2 * 32768 * 8191 + 256 * 131184, less than 2^30.
    struct Channel {
        KorInt weights, offset;

        explicit Channel(const KorInt (&row)[3])
            : weights(static_cast<KorInt>((static_cast<KorUint>(row[1]) & 0xffff) | static_cast<KorUint>(row[2]) << 16)),
              offset(256 * (128 - 16 * row[0])) {}

        KOR_INLINE inline VI16 Of(VI16 even, VI16 odd) const {
            const DI16 d;
            const DI32 d32;
            const VI16 pair = hn::BitCast(d, hn::Set(d32, weights));
            const VI32 from = hn::Set(d32, offset);
            const VI32 evenSum = AddDotWords(from, even, pair);
            const VI32 oddSum = AddDotWords(from, odd, pair);
            return hn::OddEven(hn::BitCast(d, oddSum), hn::BitCast(d, hn::ShiftRight<16>(evenSum)));
        }
    };

    KorInt luma_;
    Channel blue_, green_, red_;
};

// ---------------------------------------------------------------------------------------------------------------------
// Pixels
// ---------------------------------------------------------------------------------------------------------------------

// Both halves of a vector's luma, scaled, plus the term of one channel: even pixels, then odd ones, in every 128 bits. On SVE
// pixels stay in order, as its stores of several channels take them.
KOR_INLINE inline V8 Channel(VI16 evenLuma, VI16 oddLuma, VI16 evenTerm, VI16 oddTerm) {
#if HWY_HAVE_SCALABLE
    const DI16 d;
    const VI16 zero = hn::Zero(d);
    const VI16 limit = hn::Set(d, 255);
    const VI16 even = hn::Min(hn::Max(hn::Add(evenLuma, evenTerm), zero), limit);
    const VI16 odd = hn::Min(hn::Max(hn::Add(oddLuma, oddTerm), zero), limit);
    return hn::BitCast(D8(), hn::Or(even, hn::ShiftLeft<8>(odd)));
#else
    return PackBlocks(hn::Add(evenLuma, evenTerm), hn::Add(oddLuma, oddTerm));
#endif
}

// 32-bit pixels. Their joints work in blocks of 128 bits, so the fours of pixels that end up in one block of the result must
// be in one block before: Order() arranges samples, and lanes of chroma, so that all stores are in order.
template <bool alphaFirst>
struct Pixels32 {
    static constexpr KorSizeT kBytes = 4;
    // What even pixels lie apart, in bytes, modulo the size of a vector.
    static constexpr KorSizeT kStep = 8;

    template <class V>
    static KOR_INLINE inline V Order(V x) {
#if HWY_TARGET == HWY_AVX3
        return V{_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), x.raw)};
#elif HWY_TARGET == HWY_AVX2
        return V{_mm256_permutevar8x32_epi32(x.raw, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7))};
#else
        return x;
#endif
    }

    template <class Stores>
    static KOR_INLINE inline void Write(Stores stores, KorUint8* x, V8 first, V8 green, V8 last) {
#if HWY_HAVE_SCALABLE
        static_cast<void>(stores);
        const V8 alpha = hn::Set(D8(), 0xff);
        if constexpr (alphaFirst) {
            hn::StoreInterleaved4(alpha, first, green, last, D8(), x);
        } else {
            hn::StoreInterleaved4(first, green, last, alpha, D8(), x);
        }
#else
        static constexpr Places kFrom0(0), kFrom8(8);
        const D16 d;
        const V8 pair0 = alphaFirst ? green : first;
        const V8 pair1 = alphaFirst ? last : green;
        const V16 even = hn::BitCast(d, hn::InterleaveLower(D8(), pair0, pair1));
        const V16 odd = hn::BitCast(d, hn::InterleaveUpper(D8(), pair0, pair1));
        const V16 joined0 = hn::InterleaveLower(d, even, odd);
        const V16 joined1 = hn::InterleaveUpper(d, even, odd);
        const V16 alpha0 = WithAlpha(alphaFirst ? first : last, kFrom0);
        const V16 alpha1 = WithAlpha(alphaFirst ? first : last, kFrom8);
        StoreFour(stores, x, alphaFirst ? alpha0 : joined0, alphaFirst ? joined0 : alpha0);
        StoreFour(stores, x + 2 * hn::Lanes(D8()), alphaFirst ? alpha1 : joined1, alphaFirst ? joined1 : alpha1);
#endif
    }

  private:
    // The bytes of a channel from pixel 0 or 8 on, each beside a zero that becomes its alpha.
    struct Places {
        alignas(16) KorUint8 places[16] = {};

        explicit constexpr Places(KorUint first) {
            for (KorUint k = 0; k < 16; ++k) {
                const KorUint pixel = first + k / 2;
                places[k] = k % 2 == (alphaFirst ? 0 : 1) ? 128 : static_cast<KorUint8>(pixel / 2 + pixel % 2 * 8);
            }
        }
    };

    static KOR_INLINE inline V16 WithAlpha(V8 channel, const Places& beside) {
        const D8 d;
        const D16 d16;
        const V8 spread = hn::TableLookupBytesOr0(channel, hn::LoadDup128(d, beside.places));
        return hn::Or(hn::BitCast(d16, spread), hn::Set(d16, alphaFirst ? 0xff : 0xff00));
    }

    // Pairs of bytes that make the first and the second half of pixels.
    template <class Stores>
    static KOR_INLINE inline void StoreFour(Stores stores, KorUint8* x, V16 front, V16 back) {
        const D8 d;
        stores.Store(hn::BitCast(d, hn::InterleaveLower(D16(), front, back)), x);
        stores.Store(hn::BitCast(d, hn::InterleaveUpper(D16(), front, back)), x + hn::Lanes(d));
    }
};

// 24-bit pixels. In a group of 16 or 64 bytes pixel p's byte of channel c belongs at place 3 p + c of three groups of output.
// Modulo the size of a group these places are all different, because 3 divides no power of 2. One permutation thus puts every
// byte of a channel where it belongs in one group or another, and each group picks from the three channels.
#if defined(KOR_VNNI)
constexpr KorUint kGroup = 64;
constexpr KorUint kInverseOf3 = 43;
#else
constexpr KorUint kGroup = 16;
constexpr KorUint kInverseOf3 = 11;
#endif
static_assert(3 * kInverseOf3 % kGroup == 1, "modulo the size of a group");

// For every place the byte of the channel that goes there. Channels are packed: even pixels, then odd ones, in every 128 bits.
struct Places24 {
    alignas(kGroup) KorUint8 channel[3][kGroup] = {};
    alignas(kGroup) KorUint8 modulo3[kGroup] = {};

    constexpr Places24() {
        for (KorUint k = 0; k < kGroup; ++k) {
            for (KorUint c = 0; c < 3; ++c) {
                const KorUint pixel = (k + kGroup - c) * kInverseOf3 % kGroup;
                channel[c][k] = static_cast<KorUint8>(pixel / 16 * 16 + pixel % 16 / 2 + pixel % 2 * 8);
            }
            modulo3[k] = static_cast<KorUint8>(k % 3);
        }
    }
};

constexpr Places24 kPlaces;

struct Pixels24 {
    static constexpr KorSizeT kBytes = 3;
    static constexpr KorSizeT kStep = 2;

    template <class V>
    static KOR_INLINE inline V Order(V x) {
        return x;
    }

    template <class Stores>
    static KOR_INLINE inline void Write(Stores stores, KorUint8* x, V8 first, V8 green, V8 last) {
#if HWY_HAVE_SCALABLE
        static_cast<void>(stores);
        hn::StoreInterleaved3(first, green, last, D8(), x);
#else
        const V8 c0 = Permute(first, kPlaces.channel[0]);
        const V8 c1 = Permute(green, kPlaces.channel[1]);
        const V8 c2 = Permute(last, kPlaces.channel[2]);
        const auto at1 = IsAt(1);
        const auto at2 = IsAt(2);
        StoreGroups(stores, x, Pick(c0, at1, c1, at2, c2), Pick(c1, at1, c2, at2, c0), Pick(c2, at1, c0, at2, c1));
#endif
    }

  private:
    static KOR_INLINE inline V8 Permute(V8 x, const KorUint8 (&places)[kGroup]) {
#if defined(KOR_VNNI)
        return V8{_mm512_permutexvar_epi8(_mm512_load_si512(places), x.raw)};
#else
        return hn::TableLookupBytes(x, hn::LoadDup128(D8(), places));
#endif
    }

    static KOR_INLINE inline hn::Mask<D8> IsAt(KorUint8 remainder) {
        const D8 d;
#if defined(KOR_VNNI)
        return hn::Eq(hn::LoadU(d, kPlaces.modulo3), hn::Set(d, remainder));
#else
        return hn::Eq(hn::LoadDup128(d, kPlaces.modulo3), hn::Set(d, remainder));
#endif
    }

    static KOR_INLINE inline V8 Pick(V8 a, hn::Mask<D8> at1, V8 b, hn::Mask<D8> at2, V8 c) {
        return hn::IfThenElse(at2, c, hn::IfThenElse(at1, b, a));
    }

    template <class Stores>
    static KOR_INLINE inline void StoreGroups(Stores stores, KorUint8* x, V8 a, V8 b, V8 c) {
        const D8 d;
#if HWY_TARGET == HWY_AVX2
        // The groups of the lower halves, then those of the upper ones.
        stores.Store(hn::ConcatLowerLower(d, b, a), x);
        stores.Store(hn::ConcatUpperLower(d, a, c), x + 32);
        stores.Store(hn::ConcatUpperUpper(d, c, b), x + 64);
#else
        stores.Store(a, x);
        stores.Store(b, x + hn::Lanes(d));
        stores.Store(c, x + 2 * hn::Lanes(d));
#endif
    }
};

// ---------------------------------------------------------------------------------------------------------------------
// Kernels and drivers
// ---------------------------------------------------------------------------------------------------------------------

// A vector of pixels of luma and of the terms of its even and of its odd pixels.
template <class Pixels, class Stores>
KOR_INLINE inline void StorePixels(Stores stores, KorUint8* x, VI16 evenLuma, VI16 oddLuma, VI16 first0, VI16 green0, VI16 last0,
                                   VI16 first1, VI16 green1, VI16 last1) {
    Pixels::Write(stores, x, Channel(evenLuma, oddLuma, first0, first1), Channel(evenLuma, oddLuma, green0, green1),
                  Channel(evenLuma, oddLuma, last0, last1));
}

// Every other sample, from the first or from the second on, in the upper byte of a lane.
KOR_INLINE inline V16 EvenSamples(V8 x) {
    return hn::ShiftLeft<8>(hn::BitCast(D16(), x));
}

KOR_INLINE inline V16 OddSamples(V8 x) {
    return hn::And(hn::BitCast(D16(), x), hn::Set(D16(), 0xff00));
}

// Two rows of n pixels and their chroma, c0 that of the first channel. n must be even, and at least a vector.
template <Memory memory, class Pixels, class Row, class Terms>
KOR_KERNEL void RenderRowPair(KorUint8* x0, KorUint8* x1, Row y0, Row y1, Row c0, Row c1, KorSizeT n, Terms terms) {
    const D8 d;
    const H8 half;
    const Terms t = terms;
    const KorSizeT aligned = FirstAligned<Pixels::kBytes>(x0);
    ForEachStoredBlock<memory>(n, hn::Lanes(d), aligned, [&](KorSizeT start, auto stores) KOR_INLINE {
        const V16 chroma0 = hn::PromoteTo(D16(), c0.Load(half, start / 2));
        const V16 chroma1 = hn::PromoteTo(D16(), c1.Load(half, start / 2));
        VI16 first, green, last;
        t.template Get<Row>(hn::ShiftLeft<8>(Pixels::Order(chroma0)), hn::ShiftLeft<8>(Pixels::Order(chroma1)), first, green, last);
        const V8 luma0 = Pixels::Order(y0.Load(d, start));
        const V8 luma1 = Pixels::Order(y1.Load(d, start));
        const auto store = [&](KorUint8* x, V8 luma) KOR_INLINE {
            StorePixels<Pixels>(stores, x + Pixels::kBytes * start, t.template Luma<Row>(EvenSamples(luma)),
                                t.template Luma<Row>(OddSamples(luma)), first, green, last, first, green, last);
        };
        store(x0, luma0);
        store(x1, luma1);
    });
}

// A row of n pixels with chroma of their own, n at least a vector.
template <Memory memory, class Pixels, class Row, class Terms>
KOR_KERNEL void RenderRow(KorUint8* x, Row y, Row c0, Row c1, KorSizeT n, Terms terms) {
    const D8 d;
    const Terms t = terms;
    const KorSizeT aligned = FirstAligned<Pixels::kBytes>(x);
    ForEachStoredBlock<memory>(n, hn::Lanes(d), aligned, [&](KorSizeT start, auto stores) KOR_INLINE {
        const V8 chroma0 = Pixels::Order(c0.Load(d, start));
        const V8 chroma1 = Pixels::Order(c1.Load(d, start));
        const V8 luma = Pixels::Order(y.Load(d, start));
        VI16 first0, green0, last0, first1, green1, last1;
        t.template Get<Row>(EvenSamples(chroma0), EvenSamples(chroma1), first0, green0, last0);
        t.template Get<Row>(OddSamples(chroma0), OddSamples(chroma1), first1, green1, last1);
        StorePixels<Pixels>(stores, x + Pixels::kBytes * start, t.template Luma<Row>(EvenSamples(luma)),
                            t.template Luma<Row>(OddSamples(luma)), first0, green0, last0, first1, green1, last1);
    });
}

// The chroma planes of the first and of the last channel.
template <class Samples>
const Samples& FirstChroma(const Planes<Samples>& planes, bool blueFirst) {
    return blueFirst ? planes.u : planes.v;
}

template <class Samples>
const Samples& LastChroma(const Planes<Samples>& planes, bool blueFirst) {
    return blueFirst ? planes.v : planes.u;
}

struct Picture {
    Planes<SourceRows> planes;
    KorSizeT width, height;
    KorUint ditherLevel;
};

// False where kernels have not one vector to work on; nothing has been written, or drawn, then. An odd last column or row is not
// rendered.
template <class Pixels, class Terms>
bool RenderI420(const Picture& picture, Plane x, bool blueFirst, const Terms& terms) {
    const KorSizeT width2 = picture.width & ~KorSizeT{1};
    if (width2 < hn::Lanes(D8()) || picture.height < 2) {
        return false;
    }
    const bool isStreamed = IsStreamed(x, Pixels::kBytes * width2 * picture.height, Pixels::kStep);
    ConvertDithered(picture.planes, width2, picture.height & ~KorSizeT{1}, picture.ditherLevel, I420Family(picture.width),
                    [&](const auto& planes, KorSizeT start, KorSizeT n) {
                        using Row = decltype(planes.y.Row(0));
                        const auto render = isStreamed ? &RenderRowPair<Memory::Streamed, Pixels, Row, Terms>
                                                       : &RenderRowPair<Memory::Cached, Pixels, Row, Terms>;
                        const auto& chroma0 = FirstChroma(planes, blueFirst);
                        const auto& chroma1 = LastChroma(planes, blueFirst);
                        for (KorSizeT row = 0; row + 2 <= picture.height; row += 2) {
                            render(x.Row(row) + Pixels::kBytes * start, x.Row(row + 1) + Pixels::kBytes * start, planes.y.Row(row),
                                   planes.y.Row(row + 1), chroma0.Row(row / 2), chroma1.Row(row / 2), n, terms);
                        }
                    });
    FinishStores(isStreamed);
    return true;
}

// BGRA with a chroma sample a pixel. False as above.
bool RenderI444(const Picture& picture, Plane x, const YuvToRgbMatrix& matrix) {
    using Pixels = Pixels32<false>;
    if (picture.width < hn::Lanes(D8()) || picture.height == 0) {
        return false;
    }
    const FixedTerms terms(matrix, true);
    const bool isStreamed = IsStreamed(x, Pixels::kBytes * picture.width * picture.height, Pixels::kStep);
    ConvertDithered(picture.planes, picture.width, picture.height, picture.ditherLevel, I444Family(picture.width),
                    [&](const auto& planes, KorSizeT start, KorSizeT n) {
                        using Row = decltype(planes.y.Row(0));
                        const auto render = isStreamed ? &RenderRow<Memory::Streamed, Pixels, Row, FixedTerms>
                                                       : &RenderRow<Memory::Cached, Pixels, Row, FixedTerms>;
                        for (KorSizeT row = 0; row < picture.height; ++row) {
                            render(x.Row(row) + Pixels::kBytes * start, planes.y.Row(row), planes.u.Row(row), planes.v.Row(row), n, terms);
                        }
                    });
    FinishStores(isStreamed);
    return true;
}

}  // namespace

#define KOR_PICTURE \
    { {TopDown(y, pitchY), TopDown(u, pitchU), TopDown(v, pitchV)}, width, height, ditherLevel }

void KorI420ToRGBA KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels32<false>>(KOR_PICTURE, {x, pitchX}, false, FixedTerms(kBt601, false))) {
        KorI420ToRGBA_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI420ToBGRA KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels32<false>>(KOR_PICTURE, {x, pitchX}, true, FixedTerms(kBt601, true))) {
        KorI420ToBGRA_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI420ToARGB KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels32<true>>(KOR_PICTURE, {x, pitchX}, false, FixedTerms(kBt601, false))) {
        KorI420ToARGB_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI420ToABGR KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels32<true>>(KOR_PICTURE, {x, pitchX}, true, FixedTerms(kBt601, true))) {
        KorI420ToABGR_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI444ToBGRA KOR_PARAMETERS_Render {
    if (!RenderI444(KOR_PICTURE, {x, pitchX}, kBt601)) {
        KorI444ToBGRA_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI444ToBGRAUsingBT709 KOR_PARAMETERS_Render {
    if (!RenderI444(KOR_PICTURE, {x, pitchX}, kBt709)) {
        KorI444ToBGRAUsingBT709_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI420ToBGRAUsingBT709 KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels32<false>>(KOR_PICTURE, {x, pitchX}, true, FixedTerms(kBt709, true))) {
        KorI420ToBGRAUsingBT709_C_ KOR_ARGUMENTS_Render;
    }
}

void KorI420ToBGRAGeneral KOR_PARAMETERS_RenderGeneral {
    CallerMatrix matrix = {};
    if (width >= 2 && height >= 2) {
        KorMemCpy(&matrix, coeffs, sizeof matrix);
    }
    if (!matrix.FitsLanes() || !RenderI420<Pixels32<false>>(KOR_PICTURE, {x, pitchX}, true, CallerTerms(matrix))) {
        KorI420ToBGRAGeneral_C_ KOR_ARGUMENTS_RenderGeneral;
    }
}

void KorI420To24BG KOR_PARAMETERS_Render {
    if (!RenderI420<Pixels24>(KOR_PICTURE, {x, pitchX}, true, FixedTerms(kBt601, true))) {
        KorI420To24BG_C_ KOR_ARGUMENTS_Render;
    }
}

}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor
