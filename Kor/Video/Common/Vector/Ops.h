// Operations that Highway does not have, each with the instruction of the processor and, for every other target, a form
// made of Highway's. Both give the same lanes; results are in the order of memory unless an operation says otherwise.
#ifndef KOR_VIDEO_COMMON_VECTOR_OPS_H
#define KOR_VIDEO_COMMON_VECTOR_OPS_H

#include "Kor/Video/Common/Vector/Target.h"

// The processor forms are written for vectors of full length. KOR_X86(name) is the intrinsic for this target's.
#if HWY_TARGET == HWY_AVX3
#define KOR_X86(name) _mm512_##name
#define KOR_X86_512 1
#elif HWY_TARGET == HWY_AVX2
#define KOR_X86(name) _mm256_##name
#define KOR_X86_256 1
#elif HWY_ARCH_X86
#define KOR_X86(name) _mm_##name
#endif
#if HWY_TARGET == HWY_AVX3 && defined(__AVX512VNNI__) && defined(__AVX512VBMI__)
#define KOR_VNNI 1
#endif

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

using D8 = hn::ScalableTag<KorUint8>;
using D16 = hn::ScalableTag<KorUint16>;
using D32 = hn::ScalableTag<KorUint>;
using DI8 = hn::ScalableTag<KorInt8>;
using DI16 = hn::ScalableTag<KorInt16>;
using DI32 = hn::ScalableTag<KorInt>;
using H8 = hn::Half<D8>;
using V8 = hn::Vec<D8>;
using V16 = hn::Vec<D16>;
using V32 = hn::Vec<D32>;
using VI8 = hn::Vec<DI8>;
using VI16 = hn::Vec<DI16>;
using VI32 = hn::Vec<DI32>;

#if defined(KOR_VNNI)
// Where a permutation takes each byte from, the second vector's beginning with 64.
struct alignas(64) Places {
    KorUint8 bytes[64];

    template <class PlaceOf>
    static constexpr Places Make(PlaceOf placeOf) {
        Places places = {};
        for (KorUint i = 0; i < 64; ++i) {
            places.bytes[i] = static_cast<KorUint8>(placeOf(i));
        }
        return places;
    }
    KOR_INLINE __m512i Load() const { return _mm512_load_si512(bytes); }
};
#endif

// The average of unsigned bytes, rounded up. Highway's loses the carry on SVE.
KOR_INLINE inline V8 RoundedAverage(V8 a, V8 b) {
#if HWY_HAVE_SCALABLE
    return hn::Sub(hn::Or(a, b), hn::BitCast(D8(), hn::And(hn::ShiftRight<1>(hn::BitCast(D16(), hn::Xor(a, b))), hn::Set(D16(), 0x7f7f))));
#else
    return hn::AverageRound(a, b);
#endif
}

// The same 32 bits in every group of four bytes.
KOR_INLINE inline V8 SetGroups(KorUint group) {
    return hn::BitCast(D8(), hn::Set(D32(), group));
}

// Sums of neighbouring products, unsigned times signed bytes. Sums saturate; callers show that theirs do not.
KOR_INLINE inline VI16 MulAddBytes(V8 a, VI8 b) {
#if HWY_ARCH_X86
    return VI16{KOR_X86(maddubs_epi16)(a.raw, b.raw)};
#else
    const DI16 d;
    const VI16 a16 = hn::BitCast(d, a);
    const VI16 b16 = hn::BitCast(d, b);
    const VI16 even = hn::Mul(hn::And(a16, hn::Set(d, 0xff)), hn::ShiftRight<8>(hn::ShiftLeft<8>(b16)));
    const VI16 odd = hn::Mul(hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(D16(), a))), hn::ShiftRight<8>(b16));
    return hn::SaturatedAdd(even, odd);
#endif
}

// Adds the sums of neighbouring products of signed words.
KOR_INLINE inline VI32 AddDotWords(VI32 sum, VI16 a, VI16 b) {
#if defined(KOR_VNNI)
    return VI32{_mm512_dpwssd_epi32(sum.raw, a.raw, b.raw)};
#elif HWY_ARCH_X86
    return hn::Add(sum, VI32{KOR_X86(madd_epi16)(a.raw, b.raw)});
#else
    const DI32 d;
    const VI32 a32 = hn::BitCast(d, a);
    const VI32 b32 = hn::BitCast(d, b);
    const VI32 even = hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a32)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b32)));
    return hn::Add(sum, hn::Add(even, hn::Mul(hn::ShiftRight<16>(a32), hn::ShiftRight<16>(b32))));
#endif
}

// The lanes of a, then those of b, limited to 0..255, in every 128 bits.
KOR_INLINE inline V8 PackBlocks(VI16 a, VI16 b) {
#if HWY_ARCH_X86
    return V8{KOR_X86(packus_epi16)(a.raw, b.raw)};
#else
    const D8 d;
    const DI16 d16;
    alignas(16) static constexpr KorUint8 kLower[16] = {0, 2, 4, 6, 8, 10, 12, 14, 128, 128, 128, 128, 128, 128, 128, 128};
    alignas(16) static constexpr KorUint8 kUpper[16] = {128, 128, 128, 128, 128, 128, 128, 128, 0, 2, 4, 6, 8, 10, 12, 14};
    const VI16 zero = hn::Zero(d16);
    const VI16 limit = hn::Set(d16, 255);
    const V8 lower = hn::BitCast(d, hn::Min(hn::Max(a, zero), limit));
    const V8 upper = hn::BitCast(d, hn::Min(hn::Max(b, zero), limit));
    return hn::Or(hn::TableLookupBytesOr0(lower, hn::LoadDup128(d, kLower)), hn::TableLookupBytesOr0(upper, hn::LoadDup128(d, kUpper)));
#endif
}

// Instructions that join two vectors do so in every 128 bits. After two such steps this puts the parts in order.
KOR_INLINE inline V8 OrderQuarters(V8 x) {
#if HWY_TARGET == HWY_AVX3
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return V8{_mm512_permutexvar_epi32(order, x.raw)};
#elif HWY_TARGET == HWY_AVX2
    return V8{_mm256_permutevar8x32_epi32(x.raw, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
#else
    return x;
#endif
}

// The second byte of every 32-bit lane of four vectors.
KOR_INLINE inline V8 SecondBytes(VI32 a, VI32 b, VI32 c, VI32 d) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return 4 * i + 1; });
    const __m512i places = kPlaces.Load();
    const __m512i ab = _mm512_permutex2var_epi8(a.raw, places, b.raw);
    const __m512i cd = _mm512_permutex2var_epi8(c.raw, places, d.raw);
    return V8{_mm512_inserti64x4(ab, _mm512_castsi512_si256(cd), 1)};
#elif HWY_ARCH_X86
    // In every 128 bits a quarter of bytes from each vector.
    const auto quarter = [](VI32 x, const KorUint8(&places)[16]) KOR_INLINE {
        return hn::TableLookupBytesOr0(hn::BitCast(D8(), x), hn::LoadDup128(D8(), places));
    };
    alignas(16) static constexpr KorUint8 kFirst[16] = {1, 5, 9, 13, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128};
    alignas(16) static constexpr KorUint8 kSecond[16] = {128, 128, 128, 128, 1, 5, 9, 13, 128, 128, 128, 128, 128, 128, 128, 128};
    alignas(16) static constexpr KorUint8 kThird[16] = {128, 128, 128, 128, 128, 128, 128, 128, 1, 5, 9, 13, 128, 128, 128, 128};
    alignas(16) static constexpr KorUint8 kFourth[16] = {128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 1, 5, 9, 13};
    return OrderQuarters(
        hn::Or(hn::Or(quarter(a, kFirst), quarter(b, kSecond)), hn::Or(quarter(c, kThird), quarter(d, kFourth))));
#else
    const D8 d8;
    const V8 ab = hn::ConcatOdd(d8, hn::BitCast(d8, b), hn::BitCast(d8, a));
    const V8 cd = hn::ConcatOdd(d8, hn::BitCast(d8, d), hn::BitCast(d8, c));
    return hn::ConcatEven(d8, cd, ab);
#endif
}

// The lower halves of all blocks of 128 bits, then the upper ones.
KOR_INLINE inline V8 OrderHalves(V8 x) {
#if HWY_TARGET == HWY_AVX3
    return V8{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), x.raw)};
#elif HWY_TARGET == HWY_AVX2
    return V8{_mm256_permute4x64_epi64(x.raw, 0xd8)};
#elif HWY_HAVE_SCALABLE
    const hn::ScalableTag<uint64_t> d;
    const auto halves = hn::BitCast(d, x);
    return hn::BitCast(D8(), hn::ConcatLowerLower(d, hn::ConcatOdd(d, halves, halves), hn::ConcatEven(d, halves, halves)));
#else
    return x;
#endif
}

// The low bytes of two vectors of 16-bit lanes, none of them above 255.
KOR_INLINE inline V8 JoinBytes(V16 a, V16 b) {
#if HWY_ARCH_X86
    return OrderHalves(V8{KOR_X86(packus_epi16)(a.raw, b.raw)});
#else
    const D8 d8;
    return hn::ConcatEven(d8, hn::BitCast(d8, b), hn::BitCast(d8, a));
#endif
}

// Two vectors of 16-bit lanes, limited to signed bytes.
KOR_INLINE inline VI8 JoinSaturated(VI16 a, VI16 b) {
#if HWY_TARGET == HWY_AVX3
    const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    return VI8{_mm512_permutexvar_epi64(order, _mm512_packs_epi16(a.raw, b.raw))};
#elif HWY_TARGET == HWY_AVX2
    return VI8{_mm256_permute4x64_epi64(_mm256_packs_epi16(a.raw, b.raw), 0xd8)};
#elif HWY_ARCH_X86
    return VI8{_mm_packs_epi16(a.raw, b.raw)};
#else
    const hn::Half<DI8> half;
    return hn::Combine(DI8(), hn::DemoteTo(half, b), hn::DemoteTo(half, a));
#endif
}

// The sums of neighbours in four vectors, and offset, shifted right. Sums wrap; what the shift leaves must be bytes.
template <int shift>
KOR_INLINE inline V8 BytesOfSums(VI16 a, VI16 b, VI16 c, VI16 d, KorUint16 offset) {
    const D16 d16;
    const V16 from = hn::Set(d16, offset);
#if HWY_ARCH_X86 && !defined(KOR_X86_512)
    const V16 ab = V16{KOR_X86(hadd_epi16)(a.raw, b.raw)};
    const V16 cd = V16{KOR_X86(hadd_epi16)(c.raw, d.raw)};
    return OrderQuarters(
        V8{KOR_X86(packus_epi16)(hn::ShiftRight<shift>(hn::Add(ab, from)).raw, hn::ShiftRight<shift>(hn::Add(cd, from)).raw)});
#else
    const DI16 di16;
    const V16 ab = hn::BitCast(d16, hn::Add(hn::ConcatEven(di16, b, a), hn::ConcatOdd(di16, b, a)));
    const V16 cd = hn::BitCast(d16, hn::Add(hn::ConcatEven(di16, d, c), hn::ConcatOdd(di16, d, c)));
    return JoinBytes(hn::ShiftRight<shift>(hn::Add(ab, from)), hn::ShiftRight<shift>(hn::Add(cd, from)));
#endif
}

// For four pairs of vectors: the sum of the four products, unsigned times signed bytes, of every group of four bytes and fraction,
// shifted right, and whole; the low byte of that. The sums of the first two and of the last two products must fit 16 bits. A shift
// other than 8 is for targets that have it, and only for results that are bytes before whole is added.
#if defined(KOR_VNNI)
constexpr bool kHasShiftedSums = false;
#else
constexpr bool kHasShiftedSums = true;
#endif

template <int shift = 8>
KOR_INLINE inline V8 WeighGroups(V8 a0, VI8 b0, V8 a1, VI8 b1, V8 a2, VI8 b2, V8 a3, VI8 b3, KorUint16 fraction, KorUint8 whole) {
    static_assert(shift == 8 || kHasShiftedSums, "this target takes whole bytes");
#if defined(KOR_VNNI)
    const __m512i from = _mm512_set1_epi32(fraction + 256 * whole);
    return SecondBytes(VI32{_mm512_dpbusd_epi32(from, a0.raw, b0.raw)}, VI32{_mm512_dpbusd_epi32(from, a1.raw, b1.raw)},
                       VI32{_mm512_dpbusd_epi32(from, a2.raw, b2.raw)}, VI32{_mm512_dpbusd_epi32(from, a3.raw, b3.raw)});
#else
    const V8 sums = BytesOfSums<shift>(MulAddBytes(a0, b0), MulAddBytes(a1, b1), MulAddBytes(a2, b2), MulAddBytes(a3, b3), fraction);
    return hn::Add(sums, hn::Set(D8(), whole));
#endif
}

// The rounded average of every pixel of four bytes and its right neighbour, in two vectors, in an order that OrderPairs
// undoes.
KOR_INLINE inline V8 AveragePixelPairs(V8 a, V8 b) {
#if HWY_ARCH_X86
    const auto floats = [](V8 x) KOR_INLINE { return hn::BitCast(hn::ScalableTag<float>(), x).raw; };
    const auto even = KOR_X86(shuffle_ps)(floats(a), floats(b), 0x88);
    const auto odd = KOR_X86(shuffle_ps)(floats(a), floats(b), 0xdd);
    const D8 d8;
    return RoundedAverage(hn::BitCast(d8, hn::Vec<hn::ScalableTag<float>>{even}), hn::BitCast(d8, hn::Vec<hn::ScalableTag<float>>{odd}));
#else
    const D32 d;
    const V32 a32 = hn::BitCast(d, a);
    const V32 b32 = hn::BitCast(d, b);
    return RoundedAverage(hn::BitCast(D8(), hn::ConcatEven(d, b32, a32)), hn::BitCast(D8(), hn::ConcatOdd(d, b32, a32)));
#endif
}

// Bytes that were made of AveragePixelPairs, one of every pixel, put in the order of the pixels.
KOR_INLINE inline V8 OrderPairs(V8 x) {
#if HWY_TARGET == HWY_AVX3
    const __m128i order = _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    return V8{_mm512_shuffle_epi8(x.raw, _mm512_broadcast_i32x4(order))};
#elif HWY_TARGET == HWY_AVX2
    const __m128i order = _mm_setr_epi8(0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15);
    return V8{_mm256_shuffle_epi8(x.raw, _mm256_broadcastsi128_si256(order))};
#else
    return x;
#endif
}

// Loads as many pixels of three bytes as a vector has bytes, and no byte more. With VNNI, into groups of a pixel's first,
// second, third and second byte; otherwise into pairs: the first and second bytes of the first half of the pixels, their
// third and second bytes, and the same of the second half.
KOR_INLINE inline void LoadTriples(const KorUint8* x, V8& a, V8& b, V8& c, V8& d) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return 3 * (i / 4) + (i % 4 == 3 ? 1 : i % 4); });
    const __m512i places = kPlaces.Load();
    a = V8{_mm512_permutexvar_epi8(places, _mm512_loadu_si512(x))};
    b = V8{_mm512_permutexvar_epi8(places, _mm512_loadu_si512(x + 48))};
    c = V8{_mm512_permutexvar_epi8(places, _mm512_loadu_si512(x + 96))};
    // The last load ends with the last pixel.
    d = V8{_mm512_permutexvar_epi8(_mm512_add_epi8(places, _mm512_set1_epi8(16)), _mm512_loadu_si512(x + 128))};
#elif HWY_ARCH_X86
    // Four pixels in every 128 bits, their pairs in halves of these. The last load ends with the last pixel.
    const __m128i place = _mm_setr_epi8(0, 1, 3, 4, 6, 7, 9, 10, 2, 1, 5, 4, 8, 7, 11, 10);
    const __m128i lastPlace = _mm_add_epi8(place, _mm_set1_epi8(4));
    const auto block = [x](int offset) KOR_INLINE { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(x + offset)); };
#if HWY_TARGET == HWY_AVX2
    const __m256i places = _mm256_broadcastsi128_si256(place);
    const __m256i p0 = _mm256_shuffle_epi8(_mm256_setr_m128i(block(0), block(24)), places);
    const __m256i p1 = _mm256_shuffle_epi8(_mm256_setr_m128i(block(12), block(36)), places);
    const __m256i p2 = _mm256_shuffle_epi8(_mm256_setr_m128i(block(48), block(72)), places);
    const __m256i p3 = _mm256_shuffle_epi8(_mm256_setr_m128i(block(60), block(80)), _mm256_setr_m128i(place, lastPlace));
#else
    const __m128i p0 = _mm_shuffle_epi8(block(0), place);
    const __m128i p1 = _mm_shuffle_epi8(block(12), place);
    const __m128i p2 = _mm_shuffle_epi8(block(24), place);
    const __m128i p3 = _mm_shuffle_epi8(block(32), lastPlace);
#endif
    a = V8{KOR_X86(unpacklo_epi64)(p0, p1)};
    b = V8{KOR_X86(unpackhi_epi64)(p0, p1)};
    c = V8{KOR_X86(unpacklo_epi64)(p2, p3)};
    d = V8{KOR_X86(unpackhi_epi64)(p2, p3)};
#else
    const D8 d8;
    HWY_ALIGN KorUint8 fronts[2 * HWY_MAX_BYTES], backs[2 * HWY_MAX_BYTES];
    V8 first, second, third;
    hn::LoadInterleaved3(d8, x, first, second, third);
    hn::StoreInterleaved2(first, second, d8, fronts);
    hn::StoreInterleaved2(third, second, d8, backs);
    const KorSizeT size = hn::Lanes(d8);
    a = hn::Load(d8, fronts);
    b = hn::Load(d8, backs);
    c = hn::Load(d8, fronts + size);
    d = hn::Load(d8, backs + size);
#endif
}

// Sums of neighbouring bytes.
KOR_INLINE inline V16 SumBytePairs(V8 x) {
    return hn::BitCast(D16(), MulAddBytes(x, hn::Set(DI8(), 1)));
}

// Byte 0 or byte 1 of every pair in two vectors.
template <int byte>
KOR_INLINE inline V8 TakeOfPairs(V8 a, V8 b) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return 2 * i + byte; });
    return V8{_mm512_permutex2var_epi8(a.raw, kPlaces.Load(), b.raw)};
#else
    const D16 d;
    const V16 a16 = hn::BitCast(d, a);
    const V16 b16 = hn::BitCast(d, b);
    if constexpr (byte == 0) {
        return JoinBytes(hn::And(a16, hn::Set(d, 0xff)), hn::And(b16, hn::Set(d, 0xff)));
    } else {
        return JoinBytes(hn::ShiftRight<8>(a16), hn::ShiftRight<8>(b16));
    }
#endif
}

// Of every group of four bytes in two vectors: a byte of all, then the one two places behind it of all.
template <int byte>
KOR_INLINE inline V8 TakeOfGroups(V8 a, V8 b) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return 4 * (i % 32) + byte + 2 * (i / 32); });
    return V8{_mm512_permutex2var_epi8(a.raw, kPlaces.Load(), b.raw)};
#elif HWY_ARCH_X86
    alignas(16) static constexpr KorUint8 kPlaces[16] = {byte, byte + 4, byte + 8, byte + 12, byte + 2, byte + 6, byte + 10, byte + 14};
    const V8 places = hn::LoadDup128(D8(), kPlaces);
    const V8 a8 = hn::TableLookupBytes(a, places);
    const V8 b8 = hn::TableLookupBytes(b, places);
    return OrderQuarters(V8{KOR_X86(unpacklo_epi32)(a8.raw, b8.raw)});
#else
    const D8 d;
    const V8 both = TakeOfPairs<byte>(a, b);
    return hn::ConcatLowerLower(d, TakeOfPairs<1>(both, both), TakeOfPairs<0>(both, both));
#endif
}

// Two half vectors put together, byte by byte in turn.
KOR_INLINE inline V8 JoinPairs(hn::Vec<H8> first, hn::Vec<H8> second) {
#if defined(KOR_VNNI)
    static constexpr Places kPlaces = Places::Make([](KorUint i) { return i / 2 + 64 * (i % 2); });
    return V8{_mm512_permutex2var_epi8(_mm512_castsi256_si512(first.raw), kPlaces.Load(), _mm512_castsi256_si512(second.raw))};
#elif HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_SSE4
    return V8{_mm_unpacklo_epi8(first.raw, second.raw)};
#else
    const D16 d;
    return hn::BitCast(D8(), hn::Or(hn::PromoteTo(d, first), hn::ShiftLeft<8>(hn::PromoteTo(d, second))));
#endif
}

// Two vectors put together, byte by byte in turn, and stored.
template <class Stores>
KOR_INLINE inline void StorePairs(Stores stores, V8 first, V8 second, KorUint8* x) {
#if defined(KOR_VNNI)
    static constexpr Places kLower = Places::Make([](KorUint i) { return i / 2 + 64 * (i % 2); });
    static constexpr Places kUpper = Places::Make([](KorUint i) { return i / 2 + 64 * (i % 2) + 32; });
    stores.Store(V8{_mm512_permutex2var_epi8(first.raw, kLower.Load(), second.raw)}, x);
    stores.Store(V8{_mm512_permutex2var_epi8(first.raw, kUpper.Load(), second.raw)}, x + 64);
#elif HWY_ARCH_X86
    const V8 a = OrderHalves(first);
    const V8 b = OrderHalves(second);
    stores.Store(V8{KOR_X86(unpacklo_epi8)(a.raw, b.raw)}, x);
    stores.Store(V8{KOR_X86(unpackhi_epi8)(a.raw, b.raw)}, x + hn::Lanes(D8()));
#else
    static_cast<void>(stores);
    hn::StoreInterleaved2(first, second, D8(), x);
#endif
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
