// Compositing: blends, and noise in the planes of a picture. All of it works in place, so the last vector of a row, which
// overlaps the one before it, is loaded before anything is stored.
#include "Kor/Video/Common/Vector/Memory.h"
#include "Kor/Video/Common/Vector/Noise.h"
#include "Kor/Video/Common/Vector/Ops.h"
#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

bool IsWide(KorSizeT width) {
    return width >= hn::Lanes(D8());
}

// Replaces n bytes, at least a vector, by result(i) for the vector from i on.
template <class Result>
KOR_INLINE inline void ReplaceRow(KorUint8* row, KorSizeT n, Result result) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    const bool hasRest = n % size != 0;
    const V8 last = hasRest ? result(n - size) : hn::Zero(d);
    for (KorSizeT i = 0; i + size <= n; i += size) {
        Store(result(i), row + i);
    }
    if (hasRest) {
        Store(last, row + (n - size));
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Blends
// ---------------------------------------------------------------------------------------------------------------------

// The quotients by 255, rounded down, of 128 * 255 plus sums. With samples minus 128, by weights that sum to 255, the sums lie in
// -128 * 255 to 127 * 255, and their products do not saturate. Of s up to 65025 the quotient is ((s + 1) * 257) >> 16.
KOR_INLINE inline VI16 Quotients(VI16 sums) {
    const D16 d;
    const V16 s1 = hn::Add(hn::BitCast(d, sums), hn::Set(d, 128 * 255 + 1));
    return hn::BitCast(DI16(), hn::MulHigh(s1, hn::Set(d, 257)));
}

// Weights are pairs, background first, in the order in which the lower and the upper halves of all blocks are interleaved.
KOR_INLINE inline V8 Blend(V8 background, V8 foreground, V8 lowerWeights, V8 upperWeights) {
    const D8 d;
    const DI8 di;
    const V8 sign = hn::Set(d, 0x80);
    const V8 b = hn::Xor(background, sign);
    const V8 f = hn::Xor(foreground, sign);
    return PackBlocks(Quotients(MulAddBytes(lowerWeights, hn::BitCast(di, hn::InterleaveLower(d, b, f)))),
                      Quotients(MulAddBytes(upperWeights, hn::BitCast(di, hn::InterleaveUpper(d, b, f)))));
}

struct ConstantAlpha {
    KorUint8 alpha;

    const ConstantAlpha& Row(KorSizeT) const { return *this; }
    bool HasGaps(KorSizeT) const { return false; }

    KOR_INLINE inline V8 Blended(V8 background, V8 foreground, KorSizeT) const {
        const V8 weights = hn::BitCast(D8(), hn::Set(D16(), static_cast<KorUint16>((255 - alpha) | alpha << 8)));
        return Blend(background, foreground, weights, weights);
    }
};

struct AlphaRow {
    const KorUint8* alpha;

    KOR_INLINE inline V8 Blended(V8 background, V8 foreground, KorSizeT i) const {
        const D8 d;
        const V8 weight = hn::LoadU(d, alpha + i);
        // Saturating, though nothing saturates: from a plain difference GCC makes a ternary operation that waits for what was in
        // its destination before.
        const V8 rest = hn::SaturatedSub(hn::Set(d, 255), weight);
        return Blend(background, foreground, hn::InterleaveLower(d, rest, weight), hn::InterleaveUpper(d, rest, weight));
    }
};

struct AlphaPlane {
    SourceRows rows;

    AlphaRow Row(KorSizeT row) const { return {rows.Row(row)}; }
    bool HasGaps(KorSizeT width) const { return rows.pitch != static_cast<KorDistanceT>(width); }
};

template <class Alpha>
KOR_KERNEL void BlendRow(KorUint8* background, const KorUint8* foreground, Alpha alpha, KorSizeT n) {
    const D8 d;
    ReplaceRow(background, n, [&](KorSizeT i) KOR_INLINE {
        return alpha.Blended(hn::LoadU(d, background + i), hn::LoadU(d, foreground + i), i);
    });
}

// Blends from (column, row) of the background on. Planes whose rows follow each other without gaps are one long row.
template <class Alpha>
void BlendPlane(Plane background, KorSizeT column, KorSizeT row, SourceRows foreground, KorSizeT width, KorSizeT height,
                const Alpha& alpha) {
    if (background.pitch == width && foreground.pitch == static_cast<KorDistanceT>(width) && !alpha.HasGaps(width)) {
        BlendRow(background.Row(row) + column, foreground.first, alpha.Row(0), width * height);
        return;
    }
    for (KorSizeT h = 0; h < height; ++h) {
        BlendRow(background.Row(row + h) + column, foreground.Row(h), alpha.Row(h), width);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Dither filter
// ---------------------------------------------------------------------------------------------------------------------

KOR_KERNEL void DitherRow(KorUint8* out, const KorUint8* in, const NoiseTable& noise, KorSizeT index, KorSizeT n) {
    ReplaceRow(out, n, [&](KorSizeT i) KOR_INLINE { return Unsigned<NoisyRow>(LoadNoisy(D8(), in + i, noise.At(index + i))); });
}

// The same in 16 bits, through a run on the stack.
KOR_KERNEL void DitherRowWide(KorUint8* out, const KorUint8* in, KorSizeT index, KorUint rsBits, KorSizeT n) {
    constexpr KorSizeT kRun = 512;
    KorUint8 noisy[kRun];
    for (KorSizeT start = 0; start < n; start += kRun) {
        const KorSizeT run = Min(kRun, n - start);
        AddNoise(noisy, in + start, index + start, rsBits, run);
        KorMemCpy(out + start, noisy, run);
    }
}

struct FilteredPlane {
    Plane out;
    SourceRows in;
    KorSizeT noiseIndex;
    KorSizeT width, height;
};

// Row j has the noise from noiseIndex + step(j) on.
template <class Step>
KOR_INLINE inline void DitherPlane(const FilteredPlane& plane, const NoiseTable& noise, KorUint rsBits, Step step) {
    for (KorSizeT j = 0; j < plane.height; ++j) {
        const KorSizeT index = plane.noiseIndex + step(j);
        if (noise.IsExact()) {
            DitherRow(plane.out.Row(j), plane.in.Row(j), noise, index, plane.width);
        } else {
            DitherRowWide(plane.out.Row(j), plane.in.Row(j), index, rsBits, plane.width);
        }
    }
}

// The filter draws 16 bits and leaves the reduction to the table's reader.
KorSizeT DrawShortIndex() {
    KorUint16 index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof index);
    return index;
}

}  // namespace

void KorI420Dither KOR_PARAMETERS_Dither {
    if (ditherLevel > KOR_VIDEOFRAMEDITHERLEVEL_2 || !IsWide(width / 2) || height < 2) {
        return KorI420Dither_C_ KOR_ARGUMENTS_Dither;
    }
    // Fixed offsets are those of one stream of noise through Y, then U, then V.
    const KorSizeT widthC = width / 2;
    const KorSizeT heightC = height / 2;
    const KorSizeT yNoiseIndex = randomizeNoiseOffsets ? DrawShortIndex() : 0;
    const KorSizeT uNoiseIndex = randomizeNoiseOffsets ? DrawShortIndex() : height * width;
    const KorSizeT vNoiseIndex = randomizeNoiseOffsets ? DrawShortIndex() : height * width + heightC * widthC;
    NoiseTable luma(LumaShift(ditherLevel));
    NoiseTable chroma(ChromaShift(ditherLevel));
    luma.Fill(yNoiseIndex, (heightC + 1) * width);
    chroma.Fill(uNoiseIndex, heightC * width);
    chroma.Fill(vNoiseIndex, heightC * width);
    // Deliberate: a row pair moves the noise on by one row only, so that the lower row of a pair and the upper row of the next get
    // the same noise. Chroma rows lie as far apart in the noise as luma rows.
    DitherPlane({{yOut, yOutPitch}, TopDown(yIn, yInPitch), yNoiseIndex, 2 * widthC, 2 * heightC}, luma, LumaShift(ditherLevel),
                [&](KorSizeT row) { return (row + 1) / 2 * width; });
    const auto chromaStep = [&](KorSizeT row) { return row * width; };
    DitherPlane({{uOut, uOutPitch}, TopDown(uIn, uInPitch), uNoiseIndex, widthC, heightC}, chroma, ChromaShift(ditherLevel), chromaStep);
    DitherPlane({{vOut, vOutPitch}, TopDown(vIn, vInPitch), vNoiseIndex, widthC, heightC}, chroma, ChromaShift(ditherLevel), chromaStep);
}

void KorI420AlphaBlend KOR_PARAMETERS_Blend {
    if (!IsWide(width / 2) || height == 0) {
        return KorI420AlphaBlend_C_ KOR_ARGUMENTS_Blend;
    }
    // Deliberate: the chroma position is rounded down while the chroma size is rounded up.
    const KorSizeT widthC = (width + 1) / 2;
    const KorSizeT heightC = (height + 1) / 2;
    const ConstantAlpha constant = {alpha};
    BlendPlane({yBackground, yBackgroundPitch}, xPosition, yPosition, TopDown(yForeground, yForegroundPitch), width, height, constant);
    BlendPlane({uBackground, uBackgroundPitch}, xPosition / 2, yPosition / 2, TopDown(uForeground, uForegroundPitch), widthC, heightC,
               constant);
    BlendPlane({vBackground, vBackgroundPitch}, xPosition / 2, yPosition / 2, TopDown(vForeground, vForegroundPitch), widthC, heightC,
               constant);
}

void KorI420AlphaArrayBlend KOR_PARAMETERS_BlendArray {
    if (!IsWide(width / 2) || height == 0) {
        return KorI420AlphaArrayBlend_C_ KOR_ARGUMENTS_BlendArray;
    }
    // Deliberate: the chroma position is rounded down while the chroma size is rounded up.
    const KorSizeT widthC = (width + 1) / 2;
    const KorSizeT heightC = (height + 1) / 2;
    BlendPlane({yBackground, yBackgroundPitch}, xPosition, yPosition, TopDown(yForeground, yForegroundPitch), width, height,
               AlphaPlane{TopDown(yAlpha, yAlphaPitch)});
    BlendPlane({uBackground, uBackgroundPitch}, xPosition / 2, yPosition / 2, TopDown(uForeground, uForegroundPitch), widthC, heightC,
               AlphaPlane{TopDown(uAlpha, uAlphaPitch)});
    BlendPlane({vBackground, vBackgroundPitch}, xPosition / 2, yPosition / 2, TopDown(vForeground, vForegroundPitch), widthC, heightC,
               AlphaPlane{TopDown(vAlpha, vAlphaPitch)});
}

}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor
