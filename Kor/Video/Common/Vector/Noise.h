// The samples that renderers and packers read: as they are, or with dither noise.
//
// A kernel takes the type of its rows as a parameter, so that it is compiled once for plain rows and once for noisy ones. A
// noisy row adds a vector of noise to every vector that is loaded. That noise lies ready as bytes: the part of the table that
// a picture walks is shifted and packed once, before its first row. Noise that does not fit a byte, which no sensible table has
// but any may have, is added in 16 bits to runs on the stack, which are plain rows then.
#ifndef KOR_VIDEO_COMMON_VECTOR_NOISE_H
#define KOR_VIDEO_COMMON_VECTOR_NOISE_H

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorVideoCommonUtilityInline_.h"
#include "Kor/Video/Common/Vector/Ops.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// Rows load as many samples from column i on as the tag has lanes. Signed ones are samples minus 128.
struct PlainRow {
    static constexpr bool kIsSigned = false;
    const KorUint8* samples;

    template <class D>
    KOR_INLINE inline hn::Vec<D> Load(D d, KorSizeT i) const {
        return hn::LoadU(d, samples + i);
    }
};

struct PlainPlane {
    SourceRows rows;

    PlainRow Row(KorSizeT row) const { return {rows.Row(row)}; }
};

// The samples themselves, whatever a row of this type loads.
template <class Row, class V>
KOR_INLINE inline V Unsigned(V x) {
    return Row::kIsSigned ? hn::Xor(x, hn::Set(hn::DFromV<V>(), 0x80)) : x;
}

constexpr KorSizeT kNoiseEntries = 16384;

// Every sample's noise as it is added. Behind the last entry the first ones are repeated, for vectors that begin before it.
class NoiseTable {
  public:
    explicit NoiseTable(KorUint rsBits)
        : rsBits_(rsBits) {}

    // Takes in count entries from index on.
    void Fill(KorSizeT index, KorSizeT count) {
        const KorSizeT first = index & (kNoiseEntries - 1) & ~(kBlock - 1);
        const KorSizeT end = (index & (kNoiseEntries - 1)) + Min(count, kNoiseEntries);
        if (!isWhole_) {
            FillBlocks(first, Min(end, kNoiseEntries));
            FillBlocks(0, end - Min(end, kNoiseEntries));
            KorMemCpy(entries_ + kNoiseEntries, entries_, kBlock);
        }
        isWhole_ = isWhole_ || count >= kNoiseEntries;
    }

    // Whether nothing that was taken in is limited. The limits themselves count as such.
    bool IsExact() const { return isExact_; }

    const KorInt8* At(KorSizeT index) const { return entries_ + (index & (kNoiseEntries - 1)); }

  private:
    static constexpr KorSizeT kBlock = HWY_MAX_BYTES;

    KOR_KERNEL void FillBlocks(KorSizeT begin, KorSizeT end) {
        const DI8 d8;
        VI8 lowest = hn::Zero(d8);
        VI8 highest = hn::Zero(d8);
        for (KorSizeT i = begin; i < end; i += hn::Lanes(d8)) {
            const VI8 noise = JoinSaturated(Shifted(i), Shifted(i + hn::Lanes(DI16())));
            lowest = hn::Min(lowest, noise);
            highest = hn::Max(highest, noise);
            hn::StoreU(noise, d8, entries_ + i);
        }
        isExact_ = isExact_ && hn::AllFalse(d8, hn::Eq(lowest, hn::Set(d8, -128))) && hn::AllFalse(d8, hn::Eq(highest, hn::Set(d8, 127)));
    }

    // A rounded high product: (entry * 2^(15 - rsBits) + 2^14) >> 15 is (entry + round) >> rsBits.
    KOR_INLINE inline VI16 Shifted(KorSizeT i) const {
        const DI16 d;
        const VI16 entry = hn::LoadU(d, KorTblDitherStd4 + i);
        return rsBits_ == 0 ? entry : hn::MulFixedPoint15(entry, hn::Set(d, static_cast<KorInt16>(1 << (15 - rsBits_))));
    }

    KorUint rsBits_;
    bool isWhole_ = false;
    bool isExact_ = true;
    alignas(HWY_MAX_BYTES) KorInt8 entries_[kNoiseEntries + kBlock];
};

// Signed bytes saturate where samples do, so that noise is added to those.
struct NoisyRow {
    static constexpr bool kIsSigned = true;
    const KorUint8* samples;
    const NoiseTable* noise;
    KorSizeT index;

    template <class D>
    KOR_INLINE inline hn::Vec<D> Load(D d, KorSizeT i) const {
        const hn::RebindToSigned<D> di;
        const auto signedSamples = hn::BitCast(di, hn::Xor(hn::LoadU(d, samples + i), hn::Set(d, 0x80)));
        return hn::BitCast(d, hn::SaturatedAdd(signedSamples, hn::LoadU(di, noise->At(index + i))));
    }
};

// How a plane walks the table: the index of its first sample, the distance of rows, and the shift.
struct Walk {
    KorSizeT index;
    KorSizeT stride;
    KorUint rsBits;
};

struct NoisyPlane {
    SourceRows rows;
    const NoiseTable* noise;
    Walk walk;

    NoisyRow Row(KorSizeT row) const { return {rows.Row(row), noise, walk.index + row * walk.stride}; }
};

// Adds the noise from index on in 16 bits. Entries are limited to 13 bits, which changes no result: at the largest shift, 4, the
// limits still saturate every sample.
inline void AddNoise(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT src, KorSizeT index, KorUint rsBits, KorSizeT n) {
    const KorInt rsRound = (1 << rsBits) >> 1;
    while (n != 0) {
        const KorSizeT entry = index & (kNoiseEntries - 1);
        const KorSizeT run = Min(n, kNoiseEntries - entry);
        const KorInt16* tbl = KorTblDitherStd4 + entry;
        for (KorSizeT i = 0; i < run; ++i) {
            const KorInt16 limited = static_cast<KorInt16>(KorClip3(-4096, 4095, tbl[i]));
            dst[i] = KorByteClip(src[i] + ((limited + rsRound) >> rsBits));
        }
        dst += run;
        src += run;
        index += run;
        n -= run;
    }
}

// The pictures that renderers and packers read.
template <class Samples>
struct Planes {
    Samples y, u, v;
};

// Columns of a plane with noise, at most a strip of them: a row is made when it is asked for, and stays until the next but one.
class StagedPlane {
  public:
    static constexpr KorSizeT kStrip = 512;

    StagedPlane(SourceRows rows, Walk walk, KorSizeT start, KorSizeT n)
        : rows_(rows), walk_(walk), start_(start), n_(n) {}

    PlainRow Row(KorSizeT row) const {
        AddNoise(staged_[row % 2], rows_.Row(row) + start_, walk_.index + row * walk_.stride + start_, walk_.rsBits, n_);
        return {staged_[row % 2]};
    }

  private:
    SourceRows rows_;
    Walk walk_;
    KorSizeT start_, n_;
    mutable KorUint8 staged_[2][kStrip];
};

constexpr KorUint LumaShift(KorUint ditherLevel) {
    return 3 - ditherLevel;
}

constexpr KorUint ChromaShift(KorUint ditherLevel) {
    return 4 - ditherLevel;
}

// Levels beyond the four that are defined count as Off.
constexpr bool IsDithering(KorUint ditherLevel) {
    return ditherLevel != KOR_VIDEOFRAMEDITHERLEVEL_Off && ditherLevel <= KOR_VIDEOFRAMEDITHERLEVEL_2;
}

constexpr KorSizeT kAnyStart = 0x3fff;
constexpr KorSizeT kAlignedStart = 0x3ff8;

inline KorSizeT DrawIndex(KorSizeT startMask) {
    KorSizeT index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof index);
    return index & startMask;
}

constexpr KorSizeT RoundUpTo8(KorSizeT n) {
    return (n + 7) & ~KorSizeT{7};
}

// What a family of conversions reads, and how it walks the noise: the size of a chroma sample in pixels, where chroma may start,
// and the distances of rows. Luma starts at multiples of 8.
struct Family {
    KorSizeT chromaSize;
    KorSizeT chromaStart;
    KorSizeT lumaStride, chromaStride;
};

// Chroma of I420 runs on from one row to the next.
constexpr Family I420Family(KorSizeT width) {
    return {2, kAnyStart, RoundUpTo8(width), width / 2};
}

constexpr Family I444Family(KorSizeT width) {
    return {1, kAnyStart, RoundUpTo8(width), RoundUpTo8(width)};
}

constexpr Family PackedFamily(KorSizeT width) {
    return {2, kAlignedStart, RoundUpTo8(width), RoundUpTo8(width / 2)};
}

// convert(planes, start, n) is called for columns start to start + n, once for all of them or for strips that overlap. Starts
// are drawn in the order Y, U, V.
template <class Convert>
KOR_KERNEL void ConvertWithNoise(const Planes<SourceRows>& source, KorSizeT width, KorSizeT height, KorUint ditherLevel,
                                 const Family& family, Convert convert) {
    const KorUint lumaShift = LumaShift(ditherLevel);
    const KorUint chromaShift = ChromaShift(ditherLevel);
    const Walk y = {DrawIndex(kAlignedStart), family.lumaStride, lumaShift};
    const Walk u = {DrawIndex(family.chromaStart), family.chromaStride, chromaShift};
    const Walk v = {DrawIndex(family.chromaStart), family.chromaStride, chromaShift};
    const KorSizeT chromaCount = height / family.chromaSize * family.chromaStride;
    NoiseTable luma(lumaShift);
    NoiseTable chroma(chromaShift);
    luma.Fill(y.index, height * y.stride);
    chroma.Fill(u.index, chromaCount);
    chroma.Fill(v.index, chromaCount);
    if (luma.IsExact() && chroma.IsExact()) {
        convert(Planes<NoisyPlane>{{source.y, &luma, y}, {source.u, &chroma, u}, {source.v, &chroma, v}}, 0, width);
        return;
    }
    const KorSizeT size = Min(width, StagedPlane::kStrip);
    ForEachBlock(width, size, [&](KorSizeT start) {
        const KorSizeT startC = start / family.chromaSize;
        const KorSizeT sizeC = size / family.chromaSize;
        convert(Planes<StagedPlane>{{source.y, y, start, size}, {source.u, u, startC, sizeC}, {source.v, v, startC, sizeC}}, start, size);
    });
}

template <class Convert>
void ConvertDithered(const Planes<SourceRows>& source, KorSizeT width, KorSizeT height, KorUint ditherLevel, const Family& family, Convert convert) {
    if (IsDithering(ditherLevel)) {
        ConvertWithNoise(source, width, height, ditherLevel, family, convert);
    } else {
        convert(Planes<PlainPlane>{{source.y}, {source.u}, {source.v}}, 0, width);
    }
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
