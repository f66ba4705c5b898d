// Plane geometry: samples move, and nothing is computed but one average. Pictures that are smaller than a vector, or than a tile,
// go to the portable functions.
#include "Kor/Video/Common/Vector/Memory.h"
#include "Kor/Video/Common/Vector/Ops.h"
#include "Kor/Video/Common/Vector/Reorder.h"
#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

bool IsWide(KorSizeT width) {
    return width >= hn::Lanes(D8());
}

// ---------------------------------------------------------------------------------------------------------------------
// Rows of n samples or pairs, n at least a vector
// ---------------------------------------------------------------------------------------------------------------------

KOR_INLINE inline void AverageRow(KorUint8* dst, const KorUint8* a, const KorUint8* b, KorSizeT n) {
    const D8 d;
    ForEachLightBlock(n, hn::Lanes(d), [&](KorSizeT start) KOR_INLINE {
        Store(RoundedAverage(hn::LoadU(d, a + start), hn::LoadU(d, b + start)), dst + start);
    });
}

KOR_INLINE inline void ReverseRow(KorUint8* dst, const KorUint8* src, KorSizeT n) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    ForEachLightBlock(n, size, [&](KorSizeT start) KOR_INLINE { Store(Reversed(hn::LoadU(d, src + (n - size - start))), dst + start); });
}

template <Order order>
KOR_INLINE inline void SplitRow(KorUint8* first, KorUint8* second, const KorUint8* src, KorSizeT n) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    ForEachLightBlock(n, size, [&](KorSizeT start) KOR_INLINE {
        const KorSizeT to = order == Order::Forwards ? start : n - size - start;
        V8 firsts, seconds;
        SplitPairs<order>(hn::LoadU(d, src + 2 * start), hn::LoadU(d, src + 2 * start + size), firsts, seconds);
        Store(firsts, first + to);
        Store(seconds, second + to);
    });
}

// The last vectors are loaded first, because the loop writes to some of their bytes.
KOR_KERNEL void SwapRows(KorUint8* top, KorUint8* bottom, KorSizeT n) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    const V8 lastOfTop = hn::LoadU(d, top + (n - size));
    const V8 lastOfBottom = hn::LoadU(d, bottom + (n - size));
    for (KorSizeT i = 0; i + size <= n; i += size) {
        const V8 ofTop = hn::LoadU(d, top + i);
        Store(hn::LoadU(d, bottom + i), top + i);
        Store(ofTop, bottom + i);
    }
    Store(lastOfBottom, top + (n - size));
    Store(lastOfTop, bottom + (n - size));
}

// ---------------------------------------------------------------------------------------------------------------------
// Planes
// ---------------------------------------------------------------------------------------------------------------------

// Planes whose rows follow each other without gaps are one long row.
void SplitPlane(Plane uv1, Plane uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    if (src.pitch == static_cast<KorDistanceT>(2 * width) && uv1.pitch == width && uv2.pitch == width) {
        width *= height;
        height = 1;
    }
    for (KorSizeT j = 0; j < height; ++j) {
        SplitRow<Order::Forwards>(uv1.Row(j), uv2.Row(j), src.Row(j), width);
    }
}

// Rows of a plane that is written from its first row downwards or from its last one upwards.
struct WrittenRows {
    KorUint8* first;
    KorDistanceT pitch;

    KorUint8* Row(KorSizeT row) const { return first + static_cast<KorDistanceT>(row) * pitch; }
};

WrittenRows Downwards(Plane dst) {
    return {dst.samples, static_cast<KorDistanceT>(dst.pitch)};
}

WrittenRows Upwards(Plane dst, KorSizeT height) {
    return {dst.Row(height - 1), -static_cast<KorDistanceT>(dst.pitch)};
}

void ReversePlane(WrittenRows dst, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        ReverseRow(dst.Row(j), src.Row(j), width);
    }
}

void SplitReversed(WrittenRows uv1, WrittenRows uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        SplitRow<Order::Backwards>(uv1.Row(j), uv2.Row(j), src.Row(j), width);
    }
}

// The middle row of an odd height stays.
void FlipPlane(Plane plane, KorSizeT width, KorSizeT height) {
    for (KorSizeT row = 0; row < height / 2; ++row) {
        SwapRows(plane.Row(row), plane.Row(height - 1 - row), width);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Quarter turns
// ---------------------------------------------------------------------------------------------------------------------

KOR_KERNEL void TurnTile(KorUint8* dst, KorDistanceT column, SourceRows src) {
    Tile tile(src);
    tile.Transpose();
    for (KorSizeT k = 0; k < kTileBytes; ++k) {
        Store(tile.rows[k], dst + static_cast<KorDistanceT>(k) * column);
    }
}

KOR_KERNEL void SplitAndTurnTile(KorUint8* dst1, KorDistanceT column1, KorUint8* dst2, KorDistanceT column2, SourceRows src) {
    Tile tile(src);
    tile.Transpose();
    for (KorSizeT k = 0; k < kTileBytes / 2; ++k) {
        Store(tile.rows[2 * k], dst1 + static_cast<KorDistanceT>(k) * column1);
        Store(tile.rows[2 * k + 1], dst2 + static_cast<KorDistanceT>(k) * column2);
    }
}

void TurnPlane(TurnedPlane dst, SourceRows src, KorSizeT width, KorSizeT height) {
    const SourceRows rows = Along(src, height, dst.upwards);
    ForEachTile(rows, width, height, kBand, [&](KorSizeT i, KorSizeT j, SourceRows tile) KOR_INLINE {
        TurnTile(dst.Column(i) + j, dst.column, tile);
    });
}

void SplitAndTurn(TurnedPlane uv1, TurnedPlane uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    const SourceRows rows = Along(src, height, uv1.upwards);
    ForEachTile(rows, 2 * width, height, kBandOfPairs, [&](KorSizeT i, KorSizeT j, SourceRows tile) KOR_INLINE {
        SplitAndTurnTile(uv1.Column(i / 2) + j, uv1.column, uv2.Column(i / 2) + j, uv2.column, tile);
    });
}

}  // namespace

void KorPlanarUV422To420 KOR_PARAMETERS_Plane {
    if (!IsWide(width)) {
        return KorPlanarUV422To420_C_ KOR_ARGUMENTS_Plane;
    }
    const SourceRows rows = {src, pitchSrc};
    const Plane plane = {dst, pitchDst};
    for (KorSizeT i = 0; i < height; ++i) {
        AverageRow(plane.Row(i), rows.Row(2 * i), rows.Row(2 * i + 1), width);
    }
}

void KorPlanarUVDeinterlace KOR_PARAMETERS_Split {
    if (!IsWide(width) || height == 0) {
        return KorPlanarUVDeinterlace_C_ KOR_ARGUMENTS_Split;
    }
    SplitPlane({uv1, pitchUv1}, {uv2, pitchUv2}, {src, pitchSrc}, width, height);
}

void KorPlanarMirror KOR_PARAMETERS_Plane {
    if (!IsWide(width)) {
        return KorPlanarMirror_C_ KOR_ARGUMENTS_Plane;
    }
    ReversePlane(Downwards({dst, pitchDst}), {src, pitchSrc}, width, height);
}

void KorPlanarUVDeinterlaceMirror KOR_PARAMETERS_Split {
    if (!IsWide(width)) {
        return KorPlanarUVDeinterlaceMirror_C_ KOR_ARGUMENTS_Split;
    }
    SplitReversed(Downwards({uv1, pitchUv1}), Downwards({uv2, pitchUv2}), {src, pitchSrc}, width, height);
}

void KorPlanarRotation KOR_PARAMETERS_PlaneRotation {
    const Plane plane = {dst, pitchDst};
    const SourceRows rows = {src, pitchSrc};
    const bool isQuarter = rotationDegree == 90 || rotationDegree == 270;
    if (isQuarter && HasTiles(widthSrc, heightSrc)) {
        TurnPlane({plane, widthSrc, rotationDegree == 90}, rows, widthSrc, heightSrc);
    } else if (rotationDegree == 180 && IsWide(widthSrc) && heightSrc != 0) {
        ReversePlane(Upwards(plane, heightSrc), rows, widthSrc, heightSrc);
    } else {
        KorPlanarRotation_C_ KOR_ARGUMENTS_PlaneRotation;
    }
}

void KorPlanarUVDeinterlaceRotation KOR_PARAMETERS_SplitRotation {
    const Plane plane1 = {uv1, pitchUv1};
    const Plane plane2 = {uv2, pitchUv2};
    const SourceRows rows = {src, pitchSrc};
    // Deliberate: every angle that is none of the four is taken for 270.
    const bool isQuarter = rotationDegree != 0 && rotationDegree != 180;
    if (isQuarter && HasTiles(2 * widthSrc, heightSrc)) {
        const bool is90 = rotationDegree == 90;
        SplitAndTurn({plane1, widthSrc, is90}, {plane2, widthSrc, is90}, rows, widthSrc, heightSrc);
    } else if (rotationDegree == 180 && IsWide(widthSrc) && heightSrc != 0) {
        SplitReversed(Upwards(plane1, heightSrc), Upwards(plane2, heightSrc), rows, widthSrc, heightSrc);
    } else if (rotationDegree == 0 && IsWide(widthSrc) && heightSrc != 0) {
        SplitPlane(plane1, plane2, rows, widthSrc, heightSrc);
    } else {
        KorPlanarUVDeinterlaceRotation_C_ KOR_ARGUMENTS_SplitRotation;
    }
}

void KorI420FlipVertical KOR_PARAMETERS_FlipVertical {
    if (!IsWide(width / 2)) {
        return KorI420FlipVertical_C_ KOR_ARGUMENTS_FlipVertical;
    }
    // Deliberate: chroma is rounded down, so the last chroma column of an odd width and the last chroma row of an odd height stay
    // where they are.
    FlipPlane({srcU, srcPitchU}, width / 2, height / 2);
    FlipPlane({srcV, srcPitchV}, width / 2, height / 2);
    FlipPlane({srcY, srcPitchY}, width, height);
}

}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor
