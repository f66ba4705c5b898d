// Packed and semi-planar YUV: YUY2, UYVY, Yuv2 and M420 to I420, and I420 to the first three.
//
// A kernel takes whole vectors of packed bytes. An odd last column is never part of it.
#include "Kor/Video/Common/Vector/Memory.h"
#include "Kor/Video/Common/Vector/Noise.h"
#include "Kor/Video/Common/Vector/Ops.h"
#include "Kor/Video/Common/Vector/Reorder.h"
#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// Which byte of every pair is luma; the other one is U or V, in turn.
enum class LumaByte {
    First,
    Second,
};

constexpr LumaByte kYuy2 = LumaByte::First;
constexpr LumaByte kUyvy = LumaByte::Second;

// Whether a picture has what the kernels need: at least one vector of pixels in even columns.
bool IsWide(KorSizeT width, KorSizeT height) {
    return (width & ~KorSizeT{1}) >= hn::Lanes(D8()) && height != 0;
}

// Two rows of n pixels, n at least a vector of bytes and even. x1 may be x0. Backwards, the last pixel is written first.
template <LumaByte lumaByte, Order order, Memory memory>
KOR_KERNEL void CaptureRowPair(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                               const KorUint8* x0, const KorUint8* x1, KorSizeT n) {
    constexpr int luma = lumaByte == LumaByte::First ? 0 : 1;
    constexpr int direction = order == Order::Forwards ? 1 : -1;
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        const KorSizeT from = order == Order::Forwards ? start : n - size - start;
        const KorUint8* upper = x0 + 2 * from;
        const KorUint8* lower = x1 + 2 * from;
        FetchAhead<memory, direction>(upper, 2 * size);
        FetchAhead<memory, direction>(lower, 2 * size);
        const V8 a0 = hn::LoadU(d, upper), b0 = hn::LoadU(d, upper + size);
        const V8 a1 = hn::LoadU(d, lower), b1 = hn::LoadU(d, lower + size);
        const V8 luma0 = TakeOfPairs<luma>(a0, b0);
        const V8 luma1 = TakeOfPairs<luma>(a1, b1);
        const V8 uv = TakeOfGroups<1 - luma>(RoundedAverage(a0, a1), RoundedAverage(b0, b1));
        if constexpr (order == Order::Forwards) {
            stores.Store(luma0, y0 + start);
            stores.Store(luma1, y1 + start);
            StoreHalves(stores, uv, u + start / 2, v + start / 2);
        } else {
            stores.Store(Reversed(luma0), y0 + start);
            stores.Store(Reversed(luma1), y1 + start);
            StoreHalves(stores, Reversed(uv), v + start / 2, u + start / 2);
        }
    });
}

// The row below a pair's upper one: a lone last row is its own, and its luma is also written to the row below the picture.
KorSizeT LowerRow(KorSizeT row, KorSizeT height) {
    return Min(row + 1, height - 1);
}

// The kernel for a picture.
template <LumaByte lumaByte, Order order>
auto CaptureFor(KorSizeT width, KorSizeT height, bool isStreamed) {
    return ForMemory(2 * width * height, isStreamed, &CaptureRowPair<lumaByte, order, Memory::Cached>,
                     &CaptureRowPair<lumaByte, order, Memory::FetchedAhead>, &CaptureRowPair<lumaByte, order, Memory::Streamed>);
}

template <LumaByte lumaByte>
void PackedToI420(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const bool isStreamed = AreStreamed(y, u, v, width * height * 3 / 2, 2);
    const auto capture = CaptureFor<lumaByte, Order::Forwards>(width, height, isStreamed);
    for (KorSizeT row = 0; row < height; row += 2) {
        capture(y.Row(row), y.Row(row + 1), u.Row(row / 2), v.Row(row / 2),
                rows.Row(row), rows.Row(LowerRow(row, height)), width & ~KorSizeT{1});
    }
    FinishStores(isStreamed);
}

// Turns by 180 degrees. A lone last row is taken twice, as everywhere.
template <LumaByte lumaByte>
void PackedToI420Reversed(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const bool isStreamed = AreStreamed(y, u, v, width * height * 3 / 2, 2);
    const auto capture = CaptureFor<lumaByte, Order::Backwards>(width, height, isStreamed);
    const KorSizeT lastPair = (height - 1) / 2;
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorSizeT to = lastPair - row / 2;
        capture(y.Row(2 * to + 1), y.Row(2 * to), u.Row(to), v.Row(to), rows.Row(row), rows.Row(LowerRow(row, height)), width);
    }
    FinishStores(isStreamed);
}

// A tile of 8 pixels by as many rows as a vector has bytes. Before the last step of the transposition its columns stand there
// by even and by odd rows, and there their chroma is averaged: of two columns that share a vector one is luma, the other chroma.
template <LumaByte lumaByte>
KOR_KERNEL void TurnPackedTile(KorUint8* y, KorDistanceT columnY, KorUint8* u, KorDistanceT columnU,
                               KorUint8* v, KorDistanceT columnV, SourceRows src) {
    constexpr bool isLumaFirst = lumaByte == LumaByte::First;
    constexpr KorSizeT half = kTileBytes / 2;
    const D8 d;
    const hn::ScalableTag<uint64_t> d64;
    Tile tile(src);
    tile.InterleaveHalves();
    tile.InterleaveHalves();
    tile.InterleaveHalves();
    for (KorSizeT k = 0; k < half; ++k) {
        const V8 even = tile.rows[k];
        const V8 odd = tile.rows[k + half];
        const V8 luma = isLumaFirst ? hn::InterleaveLower(d, even, odd) : hn::InterleaveUpper(d, even, odd);
        hn::StoreU(luma, d, y + static_cast<KorDistanceT>(k) * columnY);
    }
    for (KorSizeT k = 0; k < half / 2; ++k) {
        const auto ofU = hn::BitCast(d64, RoundedAverage(tile.rows[2 * k], tile.rows[2 * k + half]));
        const auto ofV = hn::BitCast(d64, RoundedAverage(tile.rows[2 * k + 1], tile.rows[2 * k + 1 + half]));
        const auto both = isLumaFirst ? hn::InterleaveUpper(d64, ofU, ofV) : hn::InterleaveLower(d64, ofU, ofV);
        StoreHalves(PlainStores(), OrderHalves(hn::BitCast(d, both)), u + static_cast<KorDistanceT>(k) * columnU,
                    v + static_cast<KorDistanceT>(k) * columnV);
    }
}

template <LumaByte lumaByte>
void TurnRowPairs(TurnedPlane y, TurnedPlane u, TurnedPlane v, SourceRows src, KorSizeT width, KorSizeT height) {
    const SourceRows rows = Along(src, height, y.upwards);
    ForEachTile(rows, 2 * width, height, kBandOfPairs, [&](KorSizeT i, KorSizeT j, SourceRows tile) KOR_INLINE {
        TurnPackedTile<lumaByte>(y.Column(i / 2) + j, y.column, u.Column(i / 4) + j / 2, u.column, v.Column(i / 4) + j / 2, v.column,
                                 tile);
    });
}

// The portable functions of two layouts have one type.
using CaptureRotation = decltype(&KorYUY2ToI420WithRotation_C_);

template <LumaByte lumaByte>
void PackedToI420WithRotation(CaptureRotation portable, Plane y, Plane u, Plane v, const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree) {
    const KorSizeT height2 = height & ~KorSizeT{1};
    const bool isStraight = rotationDegree == 0 || rotationDegree == 180;
    // With 16 bytes a vector, rows that are read backwards from memory cost more than the portable function's.
    const bool isSlow = rotationDegree == 180 && HWY_ARCH_X86 && hn::MaxLanes(D8()) == 16 && 2 * width * height >= kBeyondCaches;
    if (IsOdd(width) || isSlow || !(isStraight ? IsWide(width, height) : HasTiles(2 * width, height2))) {
        portable(y.samples, y.pitch, u.samples, u.pitch, v.samples, v.pitch, x, pitchX, width, height, flip, rotationDegree);
        return;
    }
    const SourceRows rows = ReadingOrder(x, pitchX, height, flip);
    if (rotationDegree == 0) {
        PackedToI420<lumaByte>(y, u, v, rows, width, height);
        return;
    }
    if (rotationDegree == 180) {
        PackedToI420Reversed<lumaByte>(y, u, v, rows, width, height);
        return;
    }
    // Deliberate: every angle that is none of the four is taken for 270. A lone last row, which stands twice, makes the first two
    // columns at 90 degrees and the last two at 270.
    const bool is90 = rotationDegree == 90;
    const KorSizeT pairs = is90 && IsOdd(height) ? 2 : 0;
    TurnRowPairs<lumaByte>({{y.samples + pairs, y.pitch}, width, is90}, {{u.samples + pairs / 2, u.pitch}, width / 2, is90},
                           {{v.samples + pairs / 2, v.pitch}, width / 2, is90}, rows, width, height2);
    if (IsOdd(height)) {
        const KorSizeT lone = is90 ? 0 : height2;
        portable(y.samples + lone, y.pitch, u.samples + lone / 2, u.pitch, v.samples + lone / 2, v.pitch,
                 rows.Row(height - 1), pitchX, width, 1, 0, rotationDegree);
    }
}

// Full-range luma, the first bytes of pairs, to limited range: (220 y) >> 8, to which 16 is added.
KOR_INLINE inline V8 LimitLuma(V8 a, V8 b) {
    const D16 d;
    const V16 scale = hn::Set(d, 220);
    const V16 a16 = hn::MulHigh(hn::ShiftLeft<8>(hn::BitCast(d, a)), scale);
    const V16 b16 = hn::MulHigh(hn::ShiftLeft<8>(hn::BitCast(d, b)), scale);
    return hn::Add(JoinBytes(a16, b16), hn::Set(D8(), 16));
}

// Signed chroma, the second bytes of pairs, scaled to -113 to 112: (113 c) >> 7.
KOR_INLINE inline VI16 LimitChroma(V8 x) {
    const DI16 d;
    return hn::MulHigh(hn::And(hn::BitCast(d, x), hn::Set(d, -256)), hn::Set(d, 226));
}

// The average of two rows, rounded up and centred on 128; 257 holds that offset and half a step.
KOR_INLINE inline V8 AverageSigned(V8 upper, V8 lower) {
    const VI16 sum = hn::Add(hn::Add(LimitChroma(upper), LimitChroma(lower)), hn::Set(DI16(), 257));
    return hn::BitCast(D8(), hn::ShiftRight<1>(sum));
}

template <Memory memory>
KOR_KERNEL void CaptureYuv2RowPair(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                                   const KorUint8* x0, const KorUint8* x1, KorSizeT n) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        FetchAhead<memory>(x0 + 2 * start, 2 * size);
        FetchAhead<memory>(x1 + 2 * start, 2 * size);
        const V8 a0 = hn::LoadU(d, x0 + 2 * start), b0 = hn::LoadU(d, x0 + 2 * start + size);
        const V8 a1 = hn::LoadU(d, x1 + 2 * start), b1 = hn::LoadU(d, x1 + 2 * start + size);
        stores.Store(LimitLuma(a0, b0), y0 + start);
        stores.Store(LimitLuma(a1, b1), y1 + start);
        StoreHalves(stores, TakeOfGroups<0>(AverageSigned(a0, a1), AverageSigned(b0, b1)), u + start / 2, v + start / 2);
    });
}

// A block of two rows of luma, which are copied, and a row of n pairs of chroma, n at least a vector of bytes.
template <Memory memory>
KOR_KERNEL void UnpackM420Block(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                                const KorUint8* x0, const KorUint8* x1, const KorUint8* uv, KorSizeT n) {
    const D8 d;
    const KorSizeT size = hn::Lanes(d);
    const auto copy = [&](KorUint8* y, const KorUint8* x) KOR_INLINE {
        ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
            const V8 a = hn::LoadU(d, x + 2 * start), b = hn::LoadU(d, x + 2 * start + size);
            stores.Store(a, y + 2 * start);
            stores.Store(b, y + 2 * start + size);
        });
    };
    copy(y0, x0);
    copy(y1, x1);
    ForEachStoredBlock<memory>(n, size, 0, [&](KorSizeT start, auto stores) KOR_INLINE {
        V8 ofU, ofV;
        SplitPairs<Order::Forwards>(hn::LoadU(d, uv + 2 * start), hn::LoadU(d, uv + 2 * start + size), ofU, ofV);
        stores.Store(ofU, u + start);
        stores.Store(ofV, v + start);
    });
}

template <LumaByte lumaByte, class Stores>
KOR_INLINE inline void StorePacked(Stores stores, V8 luma, V8 uv, KorUint8* x) {
    if constexpr (lumaByte == LumaByte::First) {
        StorePairs(stores, luma, uv, x);
    } else {
        StorePairs(stores, uv, luma, x);
    }
}

// A row of n pixels, n at least a vector of bytes and even. One row at a time, although two share their chroma: one stream of
// stores is faster than two, once the picture is larger than the caches.
template <Memory memory, LumaByte lumaByte>
KOR_KERNEL void PackRow(KorUint8* x, PlainRow y, PlainRow u, PlainRow v, KorSizeT n) {
    const D8 d;
    const H8 half;
    ForEachStoredBlock<memory>(n, hn::Lanes(d), FirstAligned<2>(x), [&](KorSizeT start, auto stores) KOR_INLINE {
        const V8 uv = JoinPairs(u.Load(half, start / 2), v.Load(half, start / 2));
        StorePacked<lumaByte>(stores, y.Load(d, start), uv, x + 2 * start);
    });
}

// Two rows, so that noise is added to their chroma once.
template <Memory memory, LumaByte lumaByte>
KOR_KERNEL void PackNoisyRowPair(KorUint8* x0, KorUint8* x1, NoisyRow y0, NoisyRow y1, NoisyRow u, NoisyRow v, KorSizeT n) {
    const D8 d;
    const H8 half;
    ForEachStoredBlock<memory>(n, hn::Lanes(d), FirstAligned<2>(x0), [&](KorSizeT start, auto stores) KOR_INLINE {
        const V8 uv = Unsigned<NoisyRow>(JoinPairs(u.Load(half, start / 2), v.Load(half, start / 2)));
        StorePacked<lumaByte>(stores, Unsigned<NoisyRow>(y0.Load(d, start)), uv, x0 + 2 * start);
        StorePacked<lumaByte>(stores, Unsigned<NoisyRow>(y1.Load(d, start)), uv, x1 + 2 * start);
    });
}

template <Memory memory, LumaByte lumaByte>
void PackRowPair(KorUint8* x0, KorUint8* x1, PlainRow y0, PlainRow y1, PlainRow u, PlainRow v, KorSizeT n) {
    PackRow<memory, lumaByte>(x0, y0, u, v, n);
    PackRow<memory, lumaByte>(x1, y1, u, v, n);
}

template <Memory memory, LumaByte lumaByte>
void PackRowPair(KorUint8* x0, KorUint8* x1, NoisyRow y0, NoisyRow y1, NoisyRow u, NoisyRow v, KorSizeT n) {
    PackNoisyRowPair<memory, lumaByte>(x0, x1, y0, y1, u, v, n);
}

// An odd last column or row is not packed.
template <LumaByte lumaByte>
void I420ToPacked(const Planes<SourceRows>& source, Plane x, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const KorSizeT height2 = height & ~KorSizeT{1};
    // Vectors must begin with even pixels.
    const bool isStreamed = IsStreamed(x, 2 * width * height, 4);
    ConvertDithered(source, width & ~KorSizeT{1}, height2, ditherLevel, PackedFamily(width),
                    [&](const auto& planes, KorSizeT start, KorSizeT n) {
                        using Row = decltype(planes.y.Row(0));
                        using Pack = void (*)(KorUint8*, KorUint8*, Row, Row, Row, Row, KorSizeT);
                        const Pack pack =
                            isStreamed ? Pack{&PackRowPair<Memory::Streamed, lumaByte>} : Pack{&PackRowPair<Memory::Cached, lumaByte>};
                        for (KorSizeT row = 0; row < height2; row += 2) {
                            pack(x.Row(row) + 2 * start, x.Row(row + 1) + 2 * start, planes.y.Row(row), planes.y.Row(row + 1),
                                 planes.u.Row(row / 2), planes.v.Row(row / 2), n);
                        }
                    });
    FinishStores(isStreamed);
}

// Deliberate: with an odd width every row pair of Yuv2 starts one luma sample and half a group earlier than the pitches say.
KorSizeT Drift(KorSizeT row, KorSizeT width) {
    return IsOdd(width) ? row / 2 : 0;
}

void Yuv2ToI420(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    // With an odd width rows do not begin where the pitches say.
    const bool isStreamed = !IsOdd(width) && AreStreamed(y, u, v, width * height * 3 / 2, 2);
    const auto capture = ForMemory(2 * width * height, isStreamed, &CaptureYuv2RowPair<Memory::Cached>,
                                   &CaptureYuv2RowPair<Memory::FetchedAhead>, &CaptureYuv2RowPair<Memory::Streamed>);
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorSizeT drift = Drift(row, width);
        capture(y.Row(row) - drift, y.Row(row + 1) - drift, u.Row(row / 2), v.Row(row / 2),
                rows.Row(row) - 2 * drift, rows.Row(LowerRow(row, height)) - 2 * drift, width & ~KorSizeT{1});
    }
    FinishStores(isStreamed);
}

// Chroma to the signed bytes of Yuv2, U and V in turn: the low byte of ((145 c) >> 7) + 111. Deliberate: below 16 and above 240
// the result wraps.
KOR_INLINE inline V8 ExpandChroma(V8 uv) {
    const D16 d;
    const V16 scale = hn::Set(d, 290);
    const V16 even = hn::MulHigh(hn::ShiftLeft<8>(hn::BitCast(d, uv)), scale);
    const V16 odd = hn::MulHigh(hn::And(hn::BitCast(d, uv), hn::Set(d, 0xff00)), scale);
    const V16 both = hn::Or(hn::And(even, hn::Set(d, 0xff)), hn::ShiftLeft<8>(odd));
    return hn::Add(hn::BitCast(D8(), both), hn::Set(D8(), 111));
}

KOR_KERNEL void ExpandChromaRow(KorUint8* uv, const KorUint8* u, const KorUint8* v, KorSizeT n) {
    const D8 d;
    const H8 half;
    ForEachBlock(n, hn::Lanes(d), [&](KorSizeT start) KOR_INLINE {
        hn::StoreU(ExpandChroma(JoinPairs(hn::LoadU(half, u + start / 2), hn::LoadU(half, v + start / 2))), d, uv + start);
    });
}

template <Memory memory>
KOR_KERNEL void JoinRow(KorUint8* x, const KorUint8* y, const KorUint8* uv, KorSizeT n) {
    const D8 d;
    ForEachStoredBlock<memory>(n, hn::Lanes(d), FirstAligned<2>(x), [&](KorSizeT start, auto stores) KOR_INLINE {
        StorePairs(stores, hn::LoadU(d, y + start), hn::LoadU(d, uv + start), x + 2 * start);
    });
}

// Chroma is expanded once for two rows, a long run at a time: rows that are written by turns in short pieces are much slower, once
// the picture is larger than the caches.
void I420ToYuv2(SourceRows y, SourceRows u, SourceRows v, Plane x, KorSizeT width, KorSizeT height) {
    constexpr KorSizeT kRun = 4096;
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT size = Min(width2, kRun);
    KorUint8 uv[kRun];
    const bool isStreamed = IsStreamed(x, 2 * width * height, 2);
    const auto join = isStreamed ? &JoinRow<Memory::Streamed> : &JoinRow<Memory::Cached>;
    for (KorSizeT row = 0; row + 1 < height; row += 2) {
        const KorSizeT drift = Drift(row, width);
        ForEachBlock(width2, size, [&](KorSizeT start) {
            ExpandChromaRow(uv, u.Row(row / 2) + start / 2, v.Row(row / 2) + start / 2, size);
            join(x.Row(row) - 2 * drift + 2 * start, y.Row(row) - drift + start, uv, size);
            join(x.Row(row + 1) - 2 * drift + 2 * start, y.Row(row + 1) - drift + start, uv, size);
        });
    }
    FinishStores(isStreamed);
}

}  // namespace

void KorYUY2ToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorYUY2ToI420_C_ KOR_ARGUMENTS_Capture;
    }
    PackedToI420<kYuy2>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height);
}

void KorUYVYToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorUYVYToI420_C_ KOR_ARGUMENTS_Capture;
    }
    PackedToI420<kUyvy>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height);
}

void KorYUY2ToI420WithRotation KOR_PARAMETERS_CaptureRotation {
    PackedToI420WithRotation<kYuy2>(&KorYUY2ToI420WithRotation_C_, {y, pitchY}, {u, pitchU}, {v, pitchV}, x, pitchX, width, height, flip,
                                    rotationDegree);
}

void KorUYVYToI420WithRotation KOR_PARAMETERS_CaptureRotation {
    PackedToI420WithRotation<kUyvy>(&KorUYVYToI420WithRotation_C_, {y, pitchY}, {u, pitchU}, {v, pitchV}, x, pitchX, width, height, flip,
                                    rotationDegree);
}

void KorI420ToYUY2 KOR_PARAMETERS_Render {
    if (!IsWide(width, height)) {
        return KorI420ToYUY2_C_ KOR_ARGUMENTS_Render;
    }
    I420ToPacked<kYuy2>({TopDown(y, pitchY), TopDown(u, pitchU), TopDown(v, pitchV)}, {x, pitchX}, width, height, ditherLevel);
}

void KorI420ToUYVY KOR_PARAMETERS_Render {
    if (!IsWide(width, height)) {
        return KorI420ToUYVY_C_ KOR_ARGUMENTS_Render;
    }
    I420ToPacked<kUyvy>({TopDown(y, pitchY), TopDown(u, pitchU), TopDown(v, pitchV)}, {x, pitchX}, width, height, ditherLevel);
}

void KorYuv2ToI420 KOR_PARAMETERS_Capture {
    if (!IsWide(width, height)) {
        return KorYuv2ToI420_C_ KOR_ARGUMENTS_Capture;
    }
    Yuv2ToI420({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height);
}

void KorI420toYuv2 KOR_PARAMETERS_Pack {
    if (!IsWide(width, height)) {
        return KorI420toYuv2_C_ KOR_ARGUMENTS_Pack;
    }
    I420ToYuv2(TopDown(y, pitchY), TopDown(u, pitchU), TopDown(v, pitchV), {x, pitchX}, width, height);
}

void KorM420ToI420 KOR_PARAMETERS_Capture {
    // Two thirds are copied, which the C library does with longer vectors than these may be.
    constexpr bool hasLongVectors = HWY_MAX_BYTES > 16;
    if (!hasLongVectors || !IsWide(width / 2, height / 2)) {
        return KorM420ToI420_C_ KOR_ARGUMENTS_Capture;
    }
    const KorSizeT widthC = width / 2;
    const Plane planeY = {y, pitchY};
    const Plane planeU = {u, pitchU};
    const Plane planeV = {v, pitchV};
    // Deliberate: rows are blocks of three here, yet a set flip starts as many pitches down as there are luma rows above the
    // last.
    const SourceRows blocks = ReadingOrder(x, pitchX, height, flip);
    const bool isStreamed = AreStreamed(planeY, planeU, planeV, width * height * 3 / 2, 1);
    const auto unpack = isStreamed ? &UnpackM420Block<Memory::Streamed> : &UnpackM420Block<Memory::Cached>;
    for (KorSizeT row = 0; row < height / 2; ++row) {
        const KorUint8* block = blocks.Row(row);
        KorUint8* y0 = planeY.Row(2 * row);
        KorUint8* y1 = planeY.Row(2 * row + 1);
        unpack(y0, y1, planeU.Row(row), planeV.Row(row), block, block + width, block + 2 * width, widthC);
        if (IsOdd(width)) {
            y0[width - 1] = block[width - 1];
            y1[width - 1] = block[2 * width - 1];
        }
    }
    FinishStores(isStreamed);
}

}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor
