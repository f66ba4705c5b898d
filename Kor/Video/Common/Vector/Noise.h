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

// Every sample's noise as it is added. Behind the last entry the first ones are repeated, so that no run of up to kReach samples
// has to look for the end. Two tables fit 40 KiB of stack.
class NoiseTable {
  public:
    static constexpr KorSizeT kReach = 3328;
    static_assert(kReach % HWY_MAX_BYTES == 0, "strips are whole blocks");

    explicit NoiseTable(KorUint rsBits)
        : rsBits_(rsBits) {}

    // Takes in count entries from index on.
    KOR_KERNEL void Fill(KorSizeT index, KorSizeT count) {
        if (isWhole_) {
            return;
        }
        const KorSizeT first = index & (kNoiseEntries - 1);
        const KorSizeT end = first + Min(count, kNoiseEntries);
        FillBlocks(first & ~(kBlock - 1), Min(end, kNoiseEntries));
        if (first + count > kNoiseEntries) {
            FillBlocks(0, end - kNoiseEntries);
            KorMemCpy(entries_ + kNoiseEntries, entries_, kReach);
        }
        isWhole_ = count >= kNoiseEntries;
    }

    // Whether nothing that was taken in is limited. The limits themselves count as such.
    bool IsExact() const { return isExact_; }

    const KorInt8* At(KorSizeT index) const { return entries_ + (index & (kNoiseEntries - 1)); }

  private:
    static constexpr KorSizeT kBlock = HWY_MAX_BYTES;

    KOR_KERNEL void FillBlocks(KorSizeT begin, KorSizeT end) {
        const D8 d;
        const DI8 di;
        const V8 sign = hn::Set(d, 0x80);
        V8 lowest = sign;
        V8 highest = sign;
        for (KorSizeT i = begin; i < end; i += hn::Lanes(d)) {
            const VI8 noise = JoinSaturated(Shifted(i), Shifted(i + hn::Lanes(DI16())));
            hn::StoreU(noise, di, entries_ + i);
            // Every processor compares unsigned bytes.
            const V8 level = hn::Xor(hn::BitCast(d, noise), sign);
            lowest = hn::Min(lowest, level);
            highest = hn::Max(highest, level);
        }
        isExact_ = isExact_ && hn::AllFalse(d, hn::Eq(lowest, hn::Zero(d))) && hn::AllFalse(d, hn::Eq(highest, hn::Set(d, 255)));
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
    alignas(HWY_MAX_BYTES) KorInt8 entries_[kNoiseEntries + kReach];
};

// Signed bytes saturate where samples do, so that noise is added to those.
template <class D>
KOR_INLINE inline hn::Vec<D> LoadNoisy(D d, const KorUint8* samples, const KorInt8* noise) {
    const hn::RebindToSigned<D> di;
    const auto signedSamples = hn::BitCast(di, hn::Xor(hn::LoadU(d, samples), hn::Set(d, 0x80)));
    return hn::BitCast(d, hn::SaturatedAdd(signedSamples, hn::LoadU(di, noise)));
}

struct NoisyRow {
    static constexpr bool kIsSigned = true;
    const KorUint8* samples;
    const KorInt8* noise;

    template <class D>
    KOR_INLINE inline hn::Vec<D> Load(D d, KorSizeT i) const {
        return LoadNoisy(d, samples + i, noise + i);
    }
};

// How a plane walks the table: the index of its first sample, the distance of rows, and the shift.
struct Walk {
    KorSizeT index;
    KorSizeT stride;
    KorUint rsBits;
};

// Columns of a plane from start on, at most as many as a table reaches.
struct NoisyPlane {
    SourceRows rows;
    const NoiseTable* noise;
    Walk walk;
    KorSizeT start;

    NoisyRow Row(KorSizeT row) const { return {rows.Row(row) + start, noise->At(walk.index + row * walk.stride + start)}; }
};

// Adds the noise from index on in 16 bits. Entries are limited to 13 bits, which changes no result: at the largest shift, 4, the
// limits still saturate every sample.
[[maybe_unused]] KOR_KERNEL void AddNoise(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT src, KorSizeT index, KorUint rsBits,
                                          KorSizeT n) {
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
    static_assert(kStrip % HWY_MAX_BYTES == 0, "strips are whole blocks");

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

[[maybe_unused]] KorSizeT DrawIndex(KorSizeT startMask) {
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

// The width of strips that are about equal and at most limit samples wide.
constexpr KorSizeT StripWidth(KorSizeT width, KorSizeT limit) {
    constexpr KorSizeT kBlock = HWY_MAX_BYTES;
    const KorSizeT strips = (width + limit - 1) / limit;
    return Min(width, ((width + strips - 1) / strips + kBlock - 1) / kBlock * kBlock);
}

// False, and nothing done, if there is noise that does not fit bytes.
template <class Convert>
KOR_KERNEL bool ConvertWithTables(const Planes<SourceRows>& source, const Planes<Walk>& walks, KorSizeT width, KorSizeT height,
                                  KorSizeT chromaSize, const Convert& convert) {
    NoiseTable luma(walks.y.rsBits);
    NoiseTable chroma(walks.u.rsBits);
    luma.Fill(walks.y.index, height * walks.y.stride);
    chroma.Fill(walks.u.index, height / chromaSize * walks.u.stride);
    chroma.Fill(walks.v.index, height / chromaSize * walks.v.stride);
    if (!luma.IsExact() || !chroma.IsExact()) {
        return false;
    }
    const KorSizeT size = StripWidth(width, NoiseTable::kReach);
    ForEachBlock(width, size, [&](KorSizeT start) {
        const KorSizeT startC = start / chromaSize;
        convert(
            Planes<NoisyPlane>{
                {source.y, &luma, walks.y, start}, {source.u, &chroma, walks.u, startC}, {source.v, &chroma, walks.v, startC}},
            start, size);
    });
    return true;
}

template <class Convert>
KOR_KERNEL void ConvertStaged(const Planes<SourceRows>& source, const Planes<Walk>& walks, KorSizeT width, KorSizeT chromaSize,
                              const Convert& convert) {
    const KorSizeT size = StripWidth(width, StagedPlane::kStrip);
    ForEachBlock(width, size, [&](KorSizeT start) {
        const KorSizeT startC = start / chromaSize;
        const KorSizeT sizeC = size / chromaSize;
        convert(
            Planes<StagedPlane>{{source.y, walks.y, start, size}, {source.u, walks.u, startC, sizeC}, {source.v, walks.v, startC, sizeC}},
            start, size);
    });
}

// Calls convert(planes, start, n) for columns start to start + n: once for all columns or, with noise, for strips that may
// overlap. Starts in the table are drawn in the order Y, U, V.
template <class Convert>
void ConvertDithered(const Planes<SourceRows>& source, KorSizeT width, KorSizeT height, KorUint ditherLevel, const Family& family,
                     const Convert& convert) {
    if (!IsDithering(ditherLevel)) {
        convert(Planes<PlainPlane>{{source.y}, {source.u}, {source.v}}, 0, width);
        return;
    }
    const Planes<Walk> walks = {{DrawIndex(kAlignedStart), family.lumaStride, LumaShift(ditherLevel)},
                                {DrawIndex(family.chromaStart), family.chromaStride, ChromaShift(ditherLevel)},
                                {DrawIndex(family.chromaStart), family.chromaStride, ChromaShift(ditherLevel)}};
    if (!ConvertWithTables(source, walks, width, height, family.chromaSize, convert)) {
        ConvertStaged(source, walks, width, family.chromaSize, convert);
    }
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
