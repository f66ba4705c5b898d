// The portable conversions: plain loops in standard C++, one source file, no state between calls.
//
// Rules for the whole file:
//   - An exported function handles the sizes that write nothing, names the layout and the matrix, and calls a driver. The
//     arithmetic on samples is in the kernels (KOR_KERNEL): counted loops over contiguous runs, whole blocks first where
//     there are any, then the rest; destinations first, count last, no branch that depends on data.
//   - A kernel's pointers are restrict-qualified. Where source and destination may be the same plane, samples pass
//     through a run on the stack.
//   - Plane, SourceRows, SourcePlane and RotatedPlane resolve pitches. The address of a row is formed only for a row that
//     exists; the two walks of odd widths and the flipped one that leave their planes by contract say so.
//   - Stores: KorByteClip and ClipLane saturate, LowByte wraps, a plain cast means that the value fits.
//   - Behaviour that looks odd but is intended is marked "Deliberate:".
//
// Contents
//   1  Shared vocabulary
//   2  Plane geometry                 4:2:2 to 4:2:0, split, mirror, rotation, flip in place
//   3  RGB to YUV                     32-bit and 24-bit RGB to I420 and I444
//   4  YUV to RGB                     noise, I420 and I444 to 32-bit and 24-bit RGB
//   5  Packed and semi-planar YUV     YUY2, UYVY, Yuv2, M420 to I420, with rotation; I420 to YUY2, UYVY, Yuv2
//   6  Compositing and noise          dither filter, blends

#include "Kor/Video/Common/C/KorYuv420_C_.h"

#include "Kor/Os/KorRandom.h"
#include "Kor/Utils/KorStdCLibInline.h"
#include "Kor/Video/Common/KorVideoCommonUtilityInline_.h"

// ---------------------------------------------------------------------------------------------------------------------
// 1  Shared vocabulary
// ---------------------------------------------------------------------------------------------------------------------

// Kernels are never inlined: their loops would be vectorised once per caller, and some compilers forget what restrict
// promised. GCC starts them at cache lines, so that the speed of their loops does not depend on where the linker puts
// them. KOR_INLINE is for bodies that need their arguments as constants. KOR_PREFETCH requests a cache line that is read
// soon; it changes no result.
#if defined(__GNUC__) || defined(__clang__)
#if defined(__clang__)
#define KOR_KERNEL __attribute__((noinline))
#else
#define KOR_KERNEL __attribute__((noinline, aligned(64)))
#endif
#define KOR_INLINE __attribute__((always_inline))
#define KOR_PREFETCH(address) __builtin_prefetch(address)
#elif defined(_MSC_VER)
#define KOR_KERNEL __declspec(noinline)
#define KOR_INLINE
#define KOR_PREFETCH(address) static_cast<void>(address)
#else
#define KOR_KERNEL
#define KOR_INLINE
#define KOR_PREFETCH(address) static_cast<void>(address)
#endif

// Clang derives the number of lanes from the widest type in a loop. Loops that split or join bytes ask for sixteen; with
// longer registers its own choice is better. Instrumented builds cannot comply and need not warn.
#if defined(__clang__) && !defined(__AVX2__)
#pragma clang diagnostic ignored "-Wpass-failed"
#define KOR_BYTE_LANES _Pragma("clang loop vectorize_width(16) interleave_count(1)")
#else
#define KOR_BYTE_LANES
#endif

// GCC uses the longest vectors that a loop's count fills. Byte shuffles are slow across long ones, and so are long loads
// of what shorter stores have just written; such loops therefore run in blocks of a fixed count. The pragma keeps GCC from
// unrolling a block before it can be vectorised.
#if defined(__GNUC__) && !defined(__clang__)
#define KOR_VECTOR_BLOCK _Pragma("GCC unroll 1")
#else
#define KOR_VECTOR_BLOCK KOR_BYTE_LANES
#endif

namespace {

// Keeps the low eight bits: for results that fit anyway, or that wrap by contract.
constexpr KorUint8 LowByte(KorUint value) {
    return static_cast<KorUint8>(value & 0xffu);
}

constexpr KorSizeT Min(KorSizeT a, KorSizeT b) {
    return a < b ? a : b;
}

constexpr bool IsOdd(KorSizeT size) {
    return size % 2 != 0;
}

// Rows are processed in runs of at most this many samples, through buffers that stay in the first-level cache. Even, so
// that no run ends inside a pair.
constexpr KorSizeT kRun = 128;
using Run = KorUint8[kRun];

// A destination plane: its rows run downwards.
struct Plane {
    KorUint8* samples;
    KorSizeT pitch;

    KorUint8* Row(KorSizeT row) const { return samples + row * pitch; }
};

// The rows of a source in reading order: downwards from the first row in memory or, with a negative pitch, upwards.
struct SourceRows {
    const KorUint8* first;
    KorDistanceT pitch;

    const KorUint8* Row(KorSizeT row) const { return first + static_cast<KorDistanceT>(row) * pitch; }
};

// A source plane as callers describe it.
struct ReadPlane {
    const KorUint8* samples;
    KorSizeT pitch;
};

SourceRows TopDown(ReadPlane plane) {
    return {plane.samples, static_cast<KorDistanceT>(plane.pitch)};
}

// The flip convention of the captures: bottom row first when flip is set. The height must not be 0.
SourceRows ReadingOrder(const KorUint8* x, KorSizeT pitchX, KorSizeT height, KorBool flip) {
    const SourceRows rows = TopDown({x, pitchX});
    return flip ? SourceRows{rows.Row(height - 1), -rows.pitch} : rows;
}

#if defined(__BYTE_ORDER__)
constexpr bool kBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
#elif defined(_MSC_VER)
constexpr bool kBigEndian = false;
#else
#error "Unknown byte order; define kBigEndian for this compiler."
#endif

// Two adjacent bytes as the 16-bit word that holds them in memory.
constexpr KorUint16 BytePair(KorInt16 first, KorInt16 second) {
    return static_cast<KorUint16>(kBigEndian ? first << 8 | second : second << 8 | first);
}

// How loops split and join groups of bytes: GCC vectorises single bytes best, Clang whole groups as words.
#if defined(__clang__)
constexpr bool kGroupsAsWords = true;
#else
constexpr bool kGroupsAsWords = false;
#endif

// The byte at a position in group i, where a group has the size of Word. The whole group is read.
template <class Word, KorSizeT position>
KOR_INLINE inline KorUint8 ByteOfWord(const KorUint8* x, KorSizeT i) {
    constexpr KorSizeT size = sizeof(Word);
    static_assert(position < size, "inside the group");
    Word word;
    KorMemCpy(&word, x + size * i, size);
    return LowByte(KorUint{word} >> 8 * (kBigEndian ? size - 1 - position : position));
}

// The same, read in the way that suits the compiler.
template <class Word, KorSizeT position>
KOR_INLINE inline KorUint8 ByteOf(const KorUint8* x, KorSizeT i) {
    if constexpr (kGroupsAsWords) {
        return ByteOfWord<Word, position>(x, i);
    } else {
        return x[sizeof(Word) * i + position];
    }
}

constexpr KorUint8 Average(KorUint8 a, KorUint8 b) {
    return static_cast<KorUint8>((a + b + 1) >> 1);
}

// The rounded-up average of two rows, sample by sample.
KOR_KERNEL void AverageRow(KorUint8* KOR_RESTRICT dst,
                           const KorUint8* KOR_RESTRICT a, const KorUint8* KOR_RESTRICT b, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        dst[i] = Average(a[i], b[i]);
    }
}

// The rounded-up averages of n adjacent pairs.
KOR_KERNEL void AveragePairs(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT a, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        dst[i] = Average(a[2 * i], a[2 * i + 1]);
    }
}

// Averages n samples in pairs; an odd last one is copied.
void ReducePairs(KorUint8* dst, const KorUint8* a, KorSizeT n) {
    AveragePairs(dst, a, n / 2);
    if (IsOdd(n)) {
        dst[n / 2] = a[n - 1];
    }
}

// Splits n pairs of bytes.
KOR_KERNEL void SplitRow(KorUint8* KOR_RESTRICT first, KorUint8* KOR_RESTRICT second,
                         const KorUint8* KOR_RESTRICT src, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        first[i] = src[2 * i];
        second[i] = src[2 * i + 1];
    }
}

// Joins n pairs of bytes.
KOR_KERNEL void JoinRow(KorUint8* KOR_RESTRICT dst,
                        const KorUint8* KOR_RESTRICT first, const KorUint8* KOR_RESTRICT second, KorSizeT n) {
    constexpr KorSizeT block = 32;
    const KorSizeT whole = kGroupsAsWords ? 0 : n - n % block;
    for (KorSizeT i = 0; i < whole; i += block) {
        for (KorSizeT k = 0; k < block; ++k) {
            dst[2 * (i + k)] = first[i + k];
            dst[2 * (i + k) + 1] = second[i + k];
        }
    }
    KOR_BYTE_LANES
    for (KorSizeT i = whole; i < n; ++i) {
        const KorUint16 pair = BytePair(first[i], second[i]);
        KorMemCpy(dst + 2 * i, &pair, 2);
    }
}

// Shuffles on the stack, and the copies into and out of them, work in blocks of this size, so that no load spans two
// stores. Clang does better with the whole loop.
constexpr KorSizeT kBlock = 16;

constexpr KorSizeT BlockOf(KorSizeT bytes) {
    return kGroupsAsWords ? bytes : kBlock;
}

// Interleaves the two halves of an array: one step of a perfect shuffle. A few steps transpose a tile or split pixels into
// channels, and compilers vectorise this loop where they would not vectorise the whole permutation.
template <KorSizeT bytes>
KOR_INLINE inline void InterleaveHalves(KorUint8 (&KOR_RESTRICT to)[bytes], const KorUint8 (&KOR_RESTRICT from)[bytes]) {
    constexpr KorSizeT half = bytes / 2;
    constexpr KorSizeT block = BlockOf(half);
    for (KorSizeT i = 0; i < half; i += block) {
        KOR_VECTOR_BLOCK
        for (KorSizeT k = 0; k < block; ++k) {
            to[2 * (i + k)] = from[i + k];
            to[2 * (i + k) + 1] = from[half + i + k];
        }
    }
}

// The rounded-up average of the two halves of an array, sample by sample.
template <KorSizeT half>
KOR_INLINE inline void AverageHalves(KorUint8 (&KOR_RESTRICT to)[half], const KorUint8 (&KOR_RESTRICT from)[2 * half]) {
    constexpr KorSizeT block = BlockOf(half);
    for (KorSizeT i = 0; i < half; i += block) {
        KOR_VECTOR_BLOCK
        for (KorSizeT k = 0; k < block; ++k) {
            to[i + k] = Average(from[i + k], from[half + i + k]);
        }
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// 2  Plane geometry
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// Where a rotated plane holds the sample of source column i and source row j: at origin + i * column + j * row.
struct RotatedPlane {
    KorUint8* origin;
    KorDistanceT column;
    KorDistanceT row;

    KorUint8* At(KorSizeT i, KorSizeT j) const {
        return origin + (static_cast<KorDistanceT>(i) * column + static_cast<KorDistanceT>(j) * row);
    }
    RotatedPlane From(KorSizeT j) const { return {At(0, j), column, row}; }
};

// The four clockwise rotations of a picture of width by height samples. Any other angle counts as 270.
RotatedPlane Rotated(Plane dst, KorSizeT width, KorSizeT height, KorImageRotationDegree rotationDegree) {
    const KorDistanceT pitch = static_cast<KorDistanceT>(dst.pitch);
    switch (rotationDegree) {
        case 0:
            return {dst.samples, 1, pitch};
        case 90:
            return {dst.samples + (height - 1), pitch, -1};
        case 180:
            return {dst.Row(height - 1) + (width - 1), -1, -pitch};
        default:
            return {dst.Row(width - 1), -pitch, 1};
    }
}

// Rows keep their order, columns run backwards.
RotatedPlane Mirrored(Plane dst, KorSizeT width) {
    return {dst.samples + (width - 1), -1, static_cast<KorDistanceT>(dst.pitch)};
}

// Eight bytes in reverse order. Rows are reversed through registers, because baseline x86-64 has no byte shuffle with
// which a plain loop could be vectorised.
KOR_INLINE inline uint64_t ReversedBytes(const KorUint8* src) {
    uint64_t x;
    KorMemCpy(&x, src, 8);
    x = ((x & 0x00ff00ff00ff00ffu) << 8) | ((x >> 8) & 0x00ff00ff00ff00ffu);
    x = ((x & 0x0000ffff0000ffffu) << 16) | ((x >> 16) & 0x0000ffff0000ffffu);
    return (x << 32) | (x >> 32);
}

KOR_KERNEL void ReverseRow(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT src, KorSizeT n) {
    const KorSizeT whole = n & ~KorSizeT{7};
    for (KorSizeT i = 0; i < whole; i += 8) {
        const uint64_t x = ReversedBytes(src + i);
        KorMemCpy(dst + (n - 8 - i), &x, 8);
    }
    for (KorSizeT i = whole; i < n; ++i) {
        dst[n - 1 - i] = src[i];
    }
}

// Reverses a whole run, with a fixed count.
KOR_INLINE inline void ReverseRun(KorUint8* KOR_RESTRICT dst, const Run& run) {
    for (KorSizeT k = 0; k < kRun; k += 8) {
        const uint64_t x = ReversedBytes(run + k);
        KorMemCpy(dst + (kRun - 8 - k), &x, 8);
    }
}

// Splits n pairs of bytes, in reverse order.
KOR_KERNEL void SplitRowReversed(KorUint8* KOR_RESTRICT first, KorUint8* KOR_RESTRICT second,
                                 const KorUint8* KOR_RESTRICT src, KorSizeT n) {
    Run run1, run2;
    KorSizeT left = n;
    for (; left >= kRun; left -= kRun, src += 2 * kRun) {
        KOR_BYTE_LANES
        for (KorSizeT k = 0; k < kRun; ++k) {
            run1[k] = src[2 * k];
            run2[k] = src[2 * k + 1];
        }
        ReverseRun(first + (left - kRun), run1);
        ReverseRun(second + (left - kRun), run2);
    }
    SplitRow(run1, run2, src, left);
    ReverseRow(first, run1, left);
    ReverseRow(second, run2, left);
}

KOR_KERNEL void SwapRows(KorUint8* KOR_RESTRICT top, KorUint8* KOR_RESTRICT bottom, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        const KorUint8 tmpCh = top[i];
        top[i] = bottom[i];
        bottom[i] = tmpCh;
    }
}

// The middle row of an odd height stays. With a width of 0 nothing is done and no address is formed.
void FlipPlane(Plane plane, KorSizeT width, KorSizeT height) {
    if (width == 0) {
        return;
    }
    for (KorSizeT row = 0; row < height / 2; ++row) {
        SwapRows(plane.Row(row), plane.Row(height - 1 - row), width);
    }
}

void AverageRowPairs(Plane dst, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT i = 0; i < height; ++i) {
        AverageRow(dst.Row(i), src.Row(2 * i), src.Row(2 * i + 1), width);
    }
}

void CopyPlane(Plane dst, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        KorMemCpy(dst.Row(j), src.Row(j), width);
    }
}

void SplitPlane(Plane uv1, Plane uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        SplitRow(uv1.Row(j), uv2.Row(j), src.Row(j), width);
    }
}

// Reverses every row into a plane whose columns run backwards.
void CopyReversed(RotatedPlane dst, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        ReverseRow(dst.At(width - 1, j), src.Row(j), width);
    }
}

void SplitReversed(RotatedPlane uv1, RotatedPlane uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        SplitRowReversed(uv1.At(width - 1, j), uv2.At(width - 1, j), src.Row(j), width);
    }
}

// Rotations by 90 and 270 work in tiles of 16 rows of 16 bytes, so that source and destination are both accessed 16
// adjacent bytes at a time, in few cache lines. What the bytes of a row are, samples, pairs or groups of a packed layout,
// matters only where columns are stored.
constexpr KorSizeT kTile = 16;

// A tile as columns of kTile bytes, in the order in which the samples of a rotated plane run. Interleaving halves rotates
// the bits of every byte's index by one, so four steps exchange row and column numbers. Before the last step, `halves`
// has the columns of the even rows, then those of the odd rows.
struct TransposedTile {
    KorUint8 columns[kTile * kTile];
    KorUint8 halves[kTile * kTile];

    // Takes h rows of w bytes from source row j on.
    KOR_INLINE void Load(SourceRows src, KorSizeT firstByte, KorSizeT j, KorSizeT w, KorSizeT h, bool downwards) {
        if (w < kTile || h < kTile) {
            // Tiles at the edges of a picture must not contain indeterminate bytes.
            for (KorUint8& sample : columns) {
                sample = 0;
            }
        }
        const SourceRows rows = {src.Row(downwards ? j : j + h - 1) + firstByte, downwards ? src.pitch : -src.pitch};
        for (KorSizeT r = 0; r < h; ++r) {
            KorMemCpy(columns + kTile * r, rows.Row(r), w);
        }
        InterleaveHalves(halves, columns);
        InterleaveHalves(columns, halves);
        InterleaveHalves(halves, columns);
        InterleaveHalves(columns, halves);
    }
};

// Writes n columns of h samples, stride bytes apart, for the source samples from (i, j) on.
KOR_INLINE inline void StoreColumns(const RotatedPlane& dst, KorSizeT i, KorSizeT j,
                                    const KorUint8* columns, KorSizeT stride, KorSizeT n, KorSizeT h) {
    KorUint8* const first = dst.At(i, dst.row > 0 ? j : j + h - 1);
    for (KorSizeT k = 0; k < n; ++k) {
        KorMemCpy(first + static_cast<KorDistanceT>(k) * dst.column, columns + stride * k, h);
    }
}

// Tiles are visited in bands of rows, and within a band by columns one source cache line wide: source and destination
// lines are then finished while they are still in the cache. Hardware does not predict accesses a pitch apart, so the
// band's next lines are prefetched.
constexpr KorSizeT kBand = 128;
constexpr KorSizeT kLine = 64;

// Calls visit(i, j, w, h) for every tile of a picture of rowBytes by height; whole tiles pass their size as constants.
template <class Visit>
KOR_INLINE inline void ForEachTile(SourceRows src, KorSizeT rowBytes, KorSizeT height, Visit visit) {
    for (KorSizeT band = 0; band < height; band += kBand) {
        const KorSizeT bandEnd = Min(height, band + kBand);
        for (KorSizeT line = 0; line < rowBytes; line += kLine) {
            const KorSizeT lineEnd = Min(rowBytes, line + kLine);
            for (KorSizeT j = band; j < bandEnd; j += kTile) {
                const KorSizeT h = Min(kTile, bandEnd - j);
                for (KorSizeT r = 0; lineEnd < rowBytes && r < h; ++r) {
                    KOR_PREFETCH(src.Row(j + r) + lineEnd);
                }
                for (KorSizeT i = line; i < lineEnd; i += kTile) {
                    if (lineEnd - i >= kTile && h == kTile) {
                        visit(i, j, kTile, kTile);
                    } else {
                        visit(i, j, Min(kTile, lineEnd - i), h);
                    }
                }
            }
        }
    }
}

void RotatePlane(RotatedPlane dst, SourceRows src, KorSizeT width, KorSizeT height) {
    ForEachTile(src, width, height, [&](KorSizeT i, KorSizeT j, KorSizeT w, KorSizeT h) KOR_INLINE {
        TransposedTile tile;
        tile.Load(src, i, j, w, h, dst.row > 0);
        StoreColumns(dst, i, j, tile.columns, kTile, w, h);
    });
}

void SplitAndRotate(RotatedPlane uv1, RotatedPlane uv2, SourceRows src, KorSizeT width, KorSizeT height) {
    ForEachTile(src, 2 * width, height, [&](KorSizeT i, KorSizeT j, KorSizeT w, KorSizeT h) KOR_INLINE {
        TransposedTile tile;
        tile.Load(src, i, j, w, h, uv1.row > 0);
        StoreColumns(uv1, i / 2, j, tile.columns, 2 * kTile, w / 2, h);
        StoreColumns(uv2, i / 2, j, tile.columns + kTile, 2 * kTile, w / 2, h);
    });
}

}  // namespace

void KorPlanarUV422To420_C_(const KorUint8* src, KorDistanceT pitchSrc,
                            KorUint8* dst, KorSizeT pitchDst,
                            KorSizeT width, KorSizeT height) {
    if (width == 0 || height == 0) {
        return;
    }
    AverageRowPairs({dst, pitchDst}, {src, pitchSrc}, width, height);
}

void KorPlanarUVDeinterlace_C_(const KorUint8* src, KorDistanceT pitchSrc,
                               KorUint8* uv1, KorSizeT pitchUv1,
                               KorUint8* uv2, KorSizeT pitchUv2,
                               KorSizeT width, KorSizeT height) {
    if (width == 0 || height == 0) {
        return;
    }
    SplitPlane({uv1, pitchUv1}, {uv2, pitchUv2}, {src, pitchSrc}, width, height);
}

void KorPlanarMirror_C_(const KorUint8* src, KorDistanceT pitchSrc,
                        KorUint8* dst, KorSizeT pitchDst,
                        KorSizeT width, KorSizeT height) {
    if (width == 0 || height == 0) {
        return;
    }
    CopyReversed(Mirrored({dst, pitchDst}, width), {src, pitchSrc}, width, height);
}

void KorPlanarUVDeinterlaceMirror_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                     KorUint8* uv1, KorSizeT pitchUv1,
                                     KorUint8* uv2, KorSizeT pitchUv2,
                                     KorSizeT width, KorSizeT height) {
    if (width == 0 || height == 0) {
        return;
    }
    SplitReversed(Mirrored({uv1, pitchUv1}, width), Mirrored({uv2, pitchUv2}, width), {src, pitchSrc}, width, height);
}

void KorPlanarRotation_C_(const KorUint8* src, KorDistanceT pitchSrc,
                          KorUint8* dst, KorSizeT pitchDst,
                          KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree) {
    if (widthSrc == 0 || heightSrc == 0) {
        return;
    }
    const Plane plane = {dst, pitchDst};
    const SourceRows rows = {src, pitchSrc};
    switch (rotationDegree) {
        case 0:
            if (src != dst) {
                CopyPlane(plane, rows, widthSrc, heightSrc);
            }
            break;
        case 180:
            CopyReversed(Rotated(plane, widthSrc, heightSrc, 180), rows, widthSrc, heightSrc);
            break;
        case 90:
        case 270:
            RotatePlane(Rotated(plane, widthSrc, heightSrc, rotationDegree), rows, widthSrc, heightSrc);
            break;
        default:
            // Deliberate: any other angle writes nothing here, while the functions that split or convert as they rotate
            // treat it as 270.
            break;
    }
}

void KorPlanarUVDeinterlaceRotation_C_(const KorUint8* src, KorDistanceT pitchSrc,
                                       KorUint8* uv1, KorSizeT pitchUv1,
                                       KorUint8* uv2, KorSizeT pitchUv2,
                                       KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree) {
    if (widthSrc == 0 || heightSrc == 0) {
        return;
    }
    const SourceRows rows = {src, pitchSrc};
    const RotatedPlane rotated1 = Rotated({uv1, pitchUv1}, widthSrc, heightSrc, rotationDegree);
    const RotatedPlane rotated2 = Rotated({uv2, pitchUv2}, widthSrc, heightSrc, rotationDegree);
    switch (rotationDegree) {
        case 0:
            SplitPlane({uv1, pitchUv1}, {uv2, pitchUv2}, rows, widthSrc, heightSrc);
            break;
        case 180:
            SplitReversed(rotated1, rotated2, rows, widthSrc, heightSrc);
            break;
        default:
            // Deliberate: 90, 270 and, as 270, every other angle.
            SplitAndRotate(rotated1, rotated2, rows, widthSrc, heightSrc);
            break;
    }
}

void KorI420FlipVertical_C_(KorUint8* srcY, KorSizeT srcPitchY,
                            KorUint8* srcU, KorSizeT srcPitchU,
                            KorUint8* srcV, KorSizeT srcPitchV,
                            KorSizeT width, KorSizeT height) {
    // Deliberate: chroma is rounded down, so the last chroma column of an odd width and the last chroma row of an odd
    // height are left as they are.
    const KorSizeT widthC = width >> 1;
    const KorSizeT heightC = height >> 1;
    FlipPlane({srcU, srcPitchU}, widthC, heightC);
    FlipPlane({srcV, srcPitchV}, widthC, heightC);
    FlipPlane({srcY, srcPitchY}, width, height);
}

// ---------------------------------------------------------------------------------------------------------------------
// 3  RGB to YUV
//
// Pixels are split into one run of bytes per channel, so that everything after SplitPixels is the same for every layout
// and works on contiguous bytes. The chroma of 4:2:0 comes from averaged RGB. Averaging rows first or columns first can
// differ by one, so the order is fixed: each column's vertical pair, then the two columns.
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// At cache lines, so that no load or store of a long vector straddles two.
struct alignas(64) RgbRun {
    Run r, g, b;
};

// The bytes of a 32-bit pixel that hold red, green, blue and alpha. A 24-bit pixel is one without its last byte, alpha.
struct RgbLayout {
    KorSizeT ro, go, bo, ao;
};

constexpr RgbLayout kRgba = {0, 1, 2, 3};
constexpr RgbLayout kBgra = {2, 1, 0, 3};
constexpr RgbLayout kArgb = {1, 2, 3, 0};
constexpr RgbLayout kAbgr = {3, 2, 1, 0};

// Rows Y, U, V; columns red, green, blue; units of 1/256, as in the matrices that callers pass.
using RgbToYuvRow = KorInt[3];

struct RgbToYuvMatrix {
    RgbToYuvRow y, u, v;
};

static_assert(sizeof(RgbToYuvMatrix) == 9 * sizeof(KorInt), "the same layout as a caller's");

// ITU-R BT.601, limited range. Its constants have seven fraction bits (33, 64, 13 and so on). They are doubled here, which
// changes no result and lets one shift by eight serve every matrix.
constexpr RgbToYuvMatrix kBt601 = {
    {2 * 33, 2 * 64, 2 * 13},
    {2 * -19, 2 * -37, 2 * 56},
    {2 * 56, 2 * -47, 2 * -9},
};

// ITU-R BT.709, limited range.
constexpr RgbToYuvMatrix kBt709 = {
    {47, 157, 16},
    {-26, -87, 112},
    {112, -102, -10},
};

// BT.601 with eight fraction bits: the matrix of the 24-bit captures. It differs slightly from the one above, and both are
// part of the contract.
constexpr RgbToYuvMatrix kBt601Of24Bit = {
    {66, 129, 25},
    {-38, -74, 112},
    {112, -94, -18},
};

constexpr KorUint8 kLumaOffset = 16;
constexpr KorUint8 kChromaOffset = 128;

// One sample: the low byte of the weighted sum in units of 1/256, rounded down, plus the offset.
constexpr KorUint8 Weigh(const RgbToYuvRow& weights, KorUint8 offset, KorUint8 r, KorUint8 g, KorUint8 b) {
    const KorUint sum = static_cast<KorUint>(weights[0]) * r + static_cast<KorUint>(weights[1]) * g +
                        static_cast<KorUint>(weights[2]) * b;
    return LowByte((sum >> 8) + offset);
}

constexpr bool MapsGreyTo(const RgbToYuvMatrix& matrix, KorUint8 grey, KorUint8 y, KorUint8 u, KorUint8 v) {
    return Weigh(matrix.y, kLumaOffset, grey, grey, grey) == y && Weigh(matrix.u, kChromaOffset, grey, grey, grey) == u &&
           Weigh(matrix.v, kChromaOffset, grey, grey, grey) == v;
}

static_assert(MapsGreyTo(kBt601, 0, 16, 128, 128) && MapsGreyTo(kBt601, 255, 235, 128, 128));
static_assert(MapsGreyTo(kBt601Of24Bit, 0, 16, 128, 128) && MapsGreyTo(kBt601Of24Bit, 255, 235, 128, 128));
// Deliberate: the U weights of BT.709 sum to -1, so its white has a U of 127.
static_assert(MapsGreyTo(kBt709, 0, 16, 128, 128) && MapsGreyTo(kBt709, 255, 235, 127, 128));
static_assert(Weigh(kBt601.u, kChromaOffset, 0, 0, 255) == 239 && Weigh(kBt601.v, kChromaOffset, 255, 0, 0) == 239);

// Splits n pixels, at least one. Where pixels are read as words, alpha is read as well and dropped. The first or last
// pixel, whose alpha begins or ends the run, is read byte by byte: that alpha may lie outside the caller's memory.
template <const RgbLayout& layout>
KOR_KERNEL void SplitPixels(KorUint8* KOR_RESTRICT r, KorUint8* KOR_RESTRICT g, KorUint8* KOR_RESTRICT b,
                            const KorUint8* KOR_RESTRICT x, KorSizeT n) {
    constexpr bool alphaFirst = layout.ao == 0;
    const KorSizeT begin = kGroupsAsWords && alphaFirst ? 1 : 0;
    const KorSizeT end = kGroupsAsWords && !alphaFirst ? n - 1 : n;
    KOR_BYTE_LANES
    for (KorSizeT i = begin; i < end; ++i) {
        r[i] = ByteOf<KorUint, layout.ro>(x, i);
        g[i] = ByteOf<KorUint, layout.go>(x, i);
        b[i] = ByteOf<KorUint, layout.bo>(x, i);
    }
    if constexpr (kGroupsAsWords) {
        const KorSizeT edge = alphaFirst ? 0 : n - 1;
        r[edge] = x[4 * edge + layout.ro];
        g[edge] = x[4 * edge + layout.go];
        b[edge] = x[4 * edge + layout.bo];
    }
}

// Weigh for n pixels. Only bits 8 to 15 of the sum reach the result, so it is formed modulo 2^16, in lanes half as wide
// as the full sum would need.
KOR_KERNEL void WeighLanes(KorUint8* KOR_RESTRICT dst,
                           const KorUint8* KOR_RESTRICT r, const KorUint8* KOR_RESTRICT g, const KorUint8* KOR_RESTRICT b,
                           KorUint16 wr, KorUint16 wg, KorUint16 wb, KorUint8 offset, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        const KorUint16 sum = static_cast<KorUint16>(wr * r[i] + wg * g[i] + wb * b[i]);
        dst[i] = LowByte(KorUint{sum} / 256 + offset);
    }
}

void WeighRow(KorUint8* dst, const RgbRun& x, const RgbToYuvRow& weights, KorUint8 offset, KorSizeT n) {
    const KorUint16 wr = static_cast<KorUint16>(weights[0]);
    const KorUint16 wg = static_cast<KorUint16>(weights[1]);
    const KorUint16 wb = static_cast<KorUint16>(weights[2]);
    WeighLanes(dst, x.r, x.g, x.b, wr, wg, wb, offset, n);
}

// The chroma of blocks from n columns, each already the average of its rows.
void WriteBlockChroma(KorUint8* u, KorUint8* v, const RgbRun& columns, const RgbToYuvMatrix& matrix, KorSizeT n) {
    RgbRun blocks;
    ReducePairs(blocks.r, columns.r, n);
    ReducePairs(blocks.g, columns.g, n);
    ReducePairs(blocks.b, columns.b, n);
    WeighRow(u, blocks, matrix.u, kChromaOffset, (n + 1) / 2);
    WeighRow(v, blocks, matrix.v, kChromaOffset, (n + 1) / 2);
}

template <const RgbLayout& layout>
void CaptureRowPair(KorUint8* y0, KorUint8* y1, KorUint8* u, KorUint8* v,
                    const KorUint8* x0, const KorUint8* x1, KorSizeT width, const RgbToYuvMatrix& matrix) {
    for (KorSizeT start = 0; start < width; start += kRun) {
        const KorSizeT n = Min(kRun, width - start);
        RgbRun upper, lower, columns;
        SplitPixels<layout>(upper.r, upper.g, upper.b, x0 + 4 * start, n);
        SplitPixels<layout>(lower.r, lower.g, lower.b, x1 + 4 * start, n);
        WeighRow(y0 + start, upper, matrix.y, kLumaOffset, n);
        WeighRow(y1 + start, lower, matrix.y, kLumaOffset, n);
        AverageRow(columns.r, upper.r, lower.r, n);
        AverageRow(columns.g, upper.g, lower.g, n);
        AverageRow(columns.b, upper.b, lower.b, n);
        WriteBlockChroma(u + start / 2, v + start / 2, columns, matrix, n);
    }
}

// The last row of an odd height: its blocks are one row high.
template <const RgbLayout& layout>
void CaptureLoneRow(KorUint8* y, KorUint8* u, KorUint8* v, const KorUint8* x, KorSizeT width, const RgbToYuvMatrix& matrix) {
    for (KorSizeT start = 0; start < width; start += kRun) {
        const KorSizeT n = Min(kRun, width - start);
        RgbRun row;
        SplitPixels<layout>(row.r, row.g, row.b, x + 4 * start, n);
        WeighRow(y + start, row, matrix.y, kLumaOffset, n);
        WriteBlockChroma(u + start / 2, v + start / 2, row, matrix, n);
    }
}

template <const RgbLayout& layout>
void XXXXToI420_C_(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height, const RgbToYuvMatrix& matrix) {
    const KorSizeT heightDiv2 = height / 2;
    for (KorSizeT h = 0; h < heightDiv2; ++h) {
        CaptureRowPair<layout>(y.Row(2 * h), y.Row(2 * h + 1), u.Row(h), v.Row(h),
                               rows.Row(2 * h), rows.Row(2 * h + 1), width, matrix);
    }
    if (IsOdd(height)) {
        CaptureLoneRow<layout>(y.Row(height - 1), u.Row(heightDiv2), v.Row(heightDiv2), rows.Row(height - 1), width, matrix);
    }
}

template <const RgbLayout& layout>
void XXXXToI444_C_(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height, const RgbToYuvMatrix& matrix) {
    for (KorSizeT h = 0; h < height; ++h) {
        for (KorSizeT start = 0; start < width; start += kRun) {
            const KorSizeT n = Min(kRun, width - start);
            RgbRun row;
            SplitPixels<layout>(row.r, row.g, row.b, rows.Row(h) + 4 * start, n);
            WeighRow(y.Row(h) + start, row, matrix.y, kLumaOffset, n);
            WeighRow(u.Row(h) + start, row, matrix.u, kChromaOffset, n);
            WeighRow(v.Row(h) + start, row, matrix.v, kChromaOffset, n);
        }
    }
}

struct Rgb {
    KorUint8 r, g, b;
};

template <const RgbLayout& layout>
Rgb Pixel(const KorUint8* row, KorSizeT column) {
    const KorUint8* x = row + 4 * column;
    return {x[layout.ro], x[layout.go], x[layout.bo]};
}

constexpr Rgb Average(Rgb a, Rgb b) {
    return {Average(a.r, b.r), Average(a.g, b.g), Average(a.b, b.b)};
}

// A caller's matrix, read again through its pointer for every sample.
struct CallerMatrix {
    const KorInt (*coeffs)[3];

    KorUint8 Y(Rgb c) const { return Weigh(coeffs[0], kLumaOffset, c.r, c.g, c.b); }
    // Deliberate: at the odd edges the luma weights meet the channels in the order red, blue, green.
    KorUint8 EdgeY(Rgb c) const { return Weigh(coeffs[0], kLumaOffset, c.r, c.b, c.g); }
    KorUint8 U(Rgb c) const { return Weigh(coeffs[1], kChromaOffset, c.r, c.g, c.b); }
    KorUint8 V(Rgb c) const { return Weigh(coeffs[2], kChromaOffset, c.r, c.g, c.b); }
};

// The corner of an odd width and height, in four places, with the weights in their normal order.
void WriteCorner(Plane y, KorSizeT width, KorSizeT height, KorUint8 corner) {
    for (KorSizeT row = height - 1; row <= height; ++row) {
        y.Row(row)[width - 1] = corner;
        y.Row(row)[width] = corner;
    }
}

// The conversion for coefficients that do not overlap a destination: the common kernels, plus what differs at the odd
// edges. The order of the passes is fixed: row pairs, odd column, odd row, corner.
template <const RgbLayout& layout>
void CaptureGeneral(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3]) {
    RgbToYuvMatrix matrix;
    KorMemCpy(&matrix, coeffs, sizeof matrix);
    RgbToYuvMatrix edge = matrix;
    edge.y[1] = matrix.y[2];
    edge.y[2] = matrix.y[1];
    const CallerMatrix caller = {coeffs};
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT height2 = height & ~KorSizeT{1};
    XXXXToI420_C_<layout>(y, u, v, rows, width, height2, matrix);
    if (IsOdd(width)) {
        for (KorSizeT row = 0; row < height2; ++row) {
            KorUint8* last = y.Row(row) + width2;
            last[0] = last[1] = caller.EdgeY(Pixel<layout>(rows.Row(row), width2));
        }
    }
    if (IsOdd(height)) {
        CaptureLoneRow<layout>(y.Row(height2), u.Row(height2 / 2), v.Row(height2 / 2), rows.Row(height2), width, edge);
        KorMemCpy(y.Row(height), y.Row(height2), width2);
    }
    if (IsOdd(width) && IsOdd(height)) {
        WriteCorner(y, width, height, caller.Y(Pixel<layout>(rows.Row(height2), width2)));
    }
}

// The same, one sample at a time and in the order of the passes, for coefficients that overlap a destination plane: every
// sample uses them as the samples before it left them.
template <const RgbLayout& layout>
void CaptureGeneralOverlapping(Plane y, Plane u, Plane v, SourceRows rows,
                               KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3]) {
    const CallerMatrix matrix = {coeffs};
    const KorSizeT widthC = width / 2;
    const KorSizeT width2 = 2 * widthC;
    const KorSizeT heightC = height / 2;
    const KorSizeT height2 = 2 * heightC;
    for (KorSizeT i = 0; i < heightC; ++i) {
        for (KorSizeT j = 0; j < widthC; ++j) {
            const Rgb p0 = Pixel<layout>(rows.Row(2 * i), 2 * j);
            const Rgb p1 = Pixel<layout>(rows.Row(2 * i), 2 * j + 1);
            const Rgb p2 = Pixel<layout>(rows.Row(2 * i + 1), 2 * j);
            const Rgb p3 = Pixel<layout>(rows.Row(2 * i + 1), 2 * j + 1);
            y.Row(2 * i)[2 * j] = matrix.Y(p0);
            y.Row(2 * i)[2 * j + 1] = matrix.Y(p1);
            y.Row(2 * i + 1)[2 * j] = matrix.Y(p2);
            y.Row(2 * i + 1)[2 * j + 1] = matrix.Y(p3);
            const Rgb average = Average(Average(p0, p2), Average(p1, p3));
            u.Row(i)[j] = matrix.U(average);
            v.Row(i)[j] = matrix.V(average);
        }
    }
    if (IsOdd(width)) {
        for (KorSizeT i = 0; i < heightC; ++i) {
            const Rgb p0 = Pixel<layout>(rows.Row(2 * i), width2);
            const Rgb p2 = Pixel<layout>(rows.Row(2 * i + 1), width2);
            KorUint8* y0 = y.Row(2 * i) + width2;
            KorUint8* y1 = y.Row(2 * i + 1) + width2;
            y0[0] = y0[1] = matrix.EdgeY(p0);
            y1[0] = y1[1] = matrix.EdgeY(p2);
            u.Row(i)[widthC] = matrix.U(Average(p0, p2));
            v.Row(i)[widthC] = matrix.V(Average(p0, p2));
        }
    }
    if (IsOdd(height)) {
        const KorUint8* x = rows.Row(height2);
        for (KorSizeT j = 0; j < widthC; ++j) {
            const Rgb p0 = Pixel<layout>(x, 2 * j);
            const Rgb p1 = Pixel<layout>(x, 2 * j + 1);
            y.Row(height2)[2 * j] = y.Row(height)[2 * j] = matrix.EdgeY(p0);
            y.Row(height2)[2 * j + 1] = y.Row(height)[2 * j + 1] = matrix.EdgeY(p1);
            u.Row(heightC)[j] = matrix.U(Average(p0, p1));
            v.Row(heightC)[j] = matrix.V(Average(p0, p1));
        }
    }
    if (IsOdd(width) && IsOdd(height)) {
        const Rgb corner = Pixel<layout>(rows.Row(height2), width2);
        WriteCorner(y, width, height, matrix.Y(corner));
        u.Row(heightC)[widthC] = matrix.U(corner);
        v.Row(heightC)[widthC] = matrix.V(corner);
    }
}

// Whether the coefficients share a byte with the width by height samples of a plane.
bool Overlap(const KorInt (*coeffs)[3], Plane plane, KorSizeT width, KorSizeT height) {
    const uintptr_t coeffsBegin = reinterpret_cast<uintptr_t>(coeffs);
    const uintptr_t planeBegin = reinterpret_cast<uintptr_t>(plane.samples);
    const KorSizeT planeBytes = (height - 1) * plane.pitch + width;
    return coeffsBegin < planeBegin + planeBytes && planeBegin < coeffsBegin + 3 * sizeof *coeffs;
}

// Splits n pixels of three bytes, 32 at a time. Interleaving the halves of their 96 bytes doubles the index of every byte
// modulo 95. Byte 3 * i + c must go to index i + 32 * c, which is 32 times its own modulo 95: five steps.
KOR_KERNEL void SplitTriples(KorUint8* KOR_RESTRICT first, KorUint8* KOR_RESTRICT second, KorUint8* KOR_RESTRICT third,
                             const KorUint8* KOR_RESTRICT x, KorSizeT n) {
    constexpr KorSizeT block = 32;
    static_assert(32 * (3 * 5 + 2) % 95 == 5 + 32 * 2, "32 is the inverse of 3 modulo 95");
    const KorSizeT whole = n - n % block;
    for (KorSizeT i = 0; i < whole; i += block) {
        KorUint8 pixels[3 * block], planes[3 * block];
        for (KorSizeT k = 0; k < sizeof pixels; k += kBlock) {
            KorMemCpy(pixels + k, x + 3 * i + k, kBlock);
        }
        InterleaveHalves(planes, pixels);
        InterleaveHalves(pixels, planes);
        InterleaveHalves(planes, pixels);
        InterleaveHalves(pixels, planes);
        InterleaveHalves(planes, pixels);
        for (KorSizeT k = 0; k < block; k += kBlock) {
            KorMemCpy(first + i + k, planes + k, kBlock);
            KorMemCpy(second + i + k, planes + block + k, kBlock);
            KorMemCpy(third + i + k, planes + 2 * block + k, kBlock);
        }
    }
    for (KorSizeT i = whole; i < n; ++i) {
        first[i] = x[3 * i];
        second[i] = x[3 * i + 1];
        third[i] = x[3 * i + 2];
    }
}

// The rounded averages of the four samples of n blocks.
KOR_KERNEL void AverageBlocks(KorUint8* KOR_RESTRICT dst,
                              const KorUint8* KOR_RESTRICT a, const KorUint8* KOR_RESTRICT b, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        dst[i] = static_cast<KorUint8>((a[2 * i] + a[2 * i + 1] + b[2 * i] + b[2 * i + 1] + 2) >> 2);
    }
}

// The 24-bit captures convert every pixel and then average the chroma.
template <const RgbLayout& layout>
void Convert24Bit(KorUint8* y, KorUint8* u, KorUint8* v, const KorUint8* x, KorSizeT n) {
    static_assert(layout.ao == 3, "the first three bytes are the pixel");
    RgbRun row;
    KorUint8* channels[3];
    channels[layout.ro] = row.r;
    channels[layout.go] = row.g;
    channels[layout.bo] = row.b;
    SplitTriples(channels[0], channels[1], channels[2], x, n);
    WeighRow(y, row, kBt601Of24Bit.y, kLumaOffset, n);
    WeighRow(u, row, kBt601Of24Bit.u, kChromaOffset, n);
    WeighRow(v, row, kBt601Of24Bit.v, kChromaOffset, n);
}

// The chroma of n columns of a row pair. The block of an odd last column is one column wide.
void ReduceBlocks(KorUint8* dst, const KorUint8* a, const KorUint8* b, KorSizeT n) {
    AverageBlocks(dst, a, b, n / 2);
    if (IsOdd(n)) {
        dst[n / 2] = Average(a[n - 1], b[n - 1]);
    }
}

// Deliberate: the corner of an odd width and height averages the chroma above and to its left, or copies the one that
// exists. Only a picture of one pixel converts its own.
void WriteCornerChroma(Plane plane, KorSizeT widthC, KorSizeT heightC, KorUint8 own) {
    KorUint8* corner = plane.Row(heightC) + widthC;
    if (widthC == 0 && heightC == 0) {
        *corner = own;
    } else if (heightC == 0) {
        *corner = corner[-1];
    } else if (widthC == 0) {
        *corner = plane.Row(heightC - 1)[widthC];
    } else {
        *corner = Average(plane.Row(heightC - 1)[widthC], corner[-1]);
    }
}

template <const RgbLayout& layout>
void Capture24Bit(Plane y, Plane u, Plane v, const KorUint8* x, KorSizeT pitchX,
                  KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    const SourceRows rows = ReadingOrder(x, pitchX, height, flip);
    const KorSizeT widthC = width / 2;
    const KorSizeT width2 = 2 * widthC;
    const KorSizeT heightC = height / 2;
    const KorSizeT height2 = 2 * heightC;
    Run u0, v0, u1, v1;
    for (KorSizeT i = 0; i < heightC; ++i) {
        for (KorSizeT start = 0; start < width; start += kRun) {
            const KorSizeT n = Min(kRun, width - start);
            Convert24Bit<layout>(y.Row(2 * i) + start, u0, v0, rows.Row(2 * i) + 3 * start, n);
            Convert24Bit<layout>(y.Row(2 * i + 1) + start, u1, v1, rows.Row(2 * i + 1) + 3 * start, n);
            ReduceBlocks(u.Row(i) + start / 2, u0, u1, n);
            ReduceBlocks(v.Row(i) + start / 2, v0, v1, n);
        }
    }
    if (IsOdd(width)) {
        // Deliberate: the luma of an odd last column is repeated one column to the right.
        for (KorSizeT row = 0; row < height2; ++row) {
            y.Row(row)[width] = y.Row(row)[width2];
        }
    }
    if (IsOdd(height)) {
        for (KorSizeT start = 0; start < width2; start += kRun) {
            const KorSizeT n = Min(kRun, width2 - start);
            Convert24Bit<layout>(y.Row(height2) + start, u0, v0, rows.Row(height2) + 3 * start, n);
            AveragePairs(u.Row(heightC) + start / 2, u0, n / 2);
            AveragePairs(v.Row(heightC) + start / 2, v0, n / 2);
        }
        // Deliberate: the luma of an odd last row is repeated in the row below the picture.
        if (width2 != 0) {
            KorMemCpy(y.Row(height), y.Row(height2), width2);
        }
    }
    if (IsOdd(width) && IsOdd(height)) {
        // Deliberate: the corner repeats the luma above it. Only a picture of one row converts its own.
        KorUint8 yOwn, uOwn, vOwn;
        Convert24Bit<layout>(&yOwn, &uOwn, &vOwn, rows.Row(height2) + 3 * width2, 1);
        y.Row(height2)[width2] = heightC != 0 ? y.Row(height2 - 1)[width2] : yOwn;
        WriteCornerChroma(u, widthC, heightC, uOwn);
        WriteCornerChroma(v, widthC, heightC, vOwn);
    }
}

}  // namespace

void KorRGBAToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    XXXXToI420_C_<kRgba>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt601);
}

void KorBGRAToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    XXXXToI420_C_<kBgra>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt601);
}

void KorARGBToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    XXXXToI420_C_<kArgb>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt601);
}

void KorABGRToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    XXXXToI420_C_<kAbgr>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt601);
}

void KorBGRAToI444_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    XXXXToI444_C_<kBgra>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt601);
}

void KorBGRAToI420UsingBT709_C_(KorUint8* y, KorSizeT pitchY,
                                KorUint8* u, KorSizeT pitchU,
                                KorUint8* v, KorSizeT pitchV,
                                const KorUint8* x, KorSizeT pitchX,
                                KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    const Plane luma = {y, pitchY};
    XXXXToI420_C_<kBgra>(luma, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height, kBt709);
    const KorSizeT width2 = width & ~KorSizeT{1};
    if (IsOdd(height) && width2 != 0) {
        // Deliberate: the luma of an odd last row is repeated in the row below the picture, without an odd last column.
        KorMemCpy(luma.Row(height), luma.Row(height - 1), width2);
    }
}

void KorBGRAToI444UsingBT709_C_(KorUint8* y, KorSizeT pitchY,
                                KorUint8* u, KorSizeT pitchU,
                                KorUint8* v, KorSizeT pitchV,
                                const KorUint8* x, KorSizeT pitchX,
                                KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height == 0) {
        return;
    }
    // Deliberate: a set flip only chooses the first row. From there the rows run downwards, past the picture.
    const SourceRows rows = {ReadingOrder(x, pitchX, height, flip).first, static_cast<KorDistanceT>(pitchX)};
    XXXXToI444_C_<kBgra>({y, pitchY}, {u, pitchU}, {v, pitchV}, rows, width, height, kBt709);
}

void KorBGRAToI420General_C_(KorUint8* y, KorSizeT pitchY,
                             KorUint8* u, KorSizeT pitchU,
                             KorUint8* v, KorSizeT pitchV,
                             const KorUint8* x, KorSizeT pitchX,
                             KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3]) {
    if (width == 0 || height == 0) {
        return;
    }
    const Plane planeY = {y, pitchY};
    const Plane planeU = {u, pitchU};
    const Plane planeV = {v, pitchV};
    const SourceRows rows = ReadingOrder(x, pitchX, height, flip);
    const KorSizeT widthC = (width + 1) / 2;
    const KorSizeT heightC = (height + 1) / 2;
    // The luma written includes the spare column and row of odd sizes.
    if (Overlap(coeffs, planeY, 2 * widthC, 2 * heightC) || Overlap(coeffs, planeU, widthC, heightC) ||
        Overlap(coeffs, planeV, widthC, heightC)) {
        CaptureGeneralOverlapping<kBgra>(planeY, planeU, planeV, rows, width, height, coeffs);
    } else {
        CaptureGeneral<kBgra>(planeY, planeU, planeV, rows, width, height, coeffs);
    }
}

void KorRawToI420_C_(KorUint8* y, KorSizeT pitchY,
                     KorUint8* u, KorSizeT pitchU,
                     KorUint8* v, KorSizeT pitchV,
                     const KorUint8* rgb, KorSizeT pitchRgb,
                     KorSizeT width, KorSizeT height, KorBool flip) {
    Capture24Bit<kRgba>({y, pitchY}, {u, pitchU}, {v, pitchV}, rgb, pitchRgb, width, height, flip);
}

void Kor24BGToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* bgr, KorSizeT pitchBgr,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    Capture24Bit<kBgra>({y, pitchY}, {u, pitchU}, {v, pitchV}, bgr, pitchBgr, width, height, flip);
}

// ---------------------------------------------------------------------------------------------------------------------
// 4  YUV to RGB
//
// Noise is a separate stage: it adds noise to a run of samples before the plain kernels convert it. Colour is computed in
// 16-bit lanes unless a caller's coefficients are too large; the bounds are stated with the kernels.
// ---------------------------------------------------------------------------------------------------------------------

namespace {

constexpr KorSizeT kNoiseEntries = 16384;
constexpr KorSizeT kAnyStart = 0x3fff;
constexpr KorSizeT kAlignedStart = 0x3ff8;

constexpr KorSizeT RoundUpTo8(KorSizeT n) {
    return (n + 7) & ~KorSizeT{7};
}

// The noise of one plane. The index is that of the sample in row 0 and column 0; indices grow without limit and are
// reduced only where the table is read.
struct Noise {
    bool isOn;
    KorSizeT index;
    KorSizeT stride;
    KorUint rsBits;
};

constexpr KorUint LumaShift(KorUint ditherLevel) {
    return 3 - ditherLevel;
}

constexpr KorUint ChromaShift(KorUint ditherLevel) {
    return 4 - ditherLevel;
}

// Undefined levels count as Off.
constexpr bool IsDithering(KorUint ditherLevel) {
    return ditherLevel != KOR_VIDEOFRAMEDITHERLEVEL_Off && ditherLevel <= KOR_VIDEOFRAMEDITHERLEVEL_2;
}

KorSizeT DrawIndex(KorSizeT startMask) {
    KorSizeT index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof index);
    return index & startMask;
}

// The filter draws 16 bits; AddNoise reduces them.
KorSizeT DrawShortIndex() {
    KorUint16 index = 0;
    KorRandomGetBytes(reinterpret_cast<char*>(&index), sizeof index);
    return index;
}

constexpr KorInt16 MinLane(KorInt16 a, KorInt16 b) {
    return a < b ? a : b;
}

constexpr KorInt16 MaxLane(KorInt16 a, KorInt16 b) {
    return a > b ? a : b;
}

// KorByteClip in a 16-bit lane.
constexpr KorInt16 ClipLane(KorInt16 value) {
    return MinLane(MaxLane(value, 0), 255);
}

static_assert(ClipLane(-32768) == 0 && ClipLane(-1) == 0 && ClipLane(0) == 0 &&
                  ClipLane(255) == 255 && ClipLane(256) == 255 && ClipLane(32767) == 255,
              "saturates at both ends");

// A sample with noise. Limiting the entry to 13 bits first keeps every step within 16 bits and changes no result: even at
// the largest shift, 4, the limits scale to -256 and 256, which saturate any sample.
template <KorUint rsBits>
constexpr KorUint8 NoisySample(KorUint8 sample, KorInt16 entry) {
    static_assert(rsBits <= 4, "the limits of the entry are chosen for shifts up to 4");
    constexpr KorInt rsRound = (1 << rsBits) >> 1;
    const KorInt16 limited = MinLane(MaxLane(entry, -4096), 4095);
    const KorInt16 noise = static_cast<KorInt16>(static_cast<KorInt16>(limited + rsRound) >> rsBits);
    return static_cast<KorUint8>(ClipLane(static_cast<KorInt16>(sample + noise)));
}

static_assert(NoisySample<2>(100, -3) == 99 && NoisySample<2>(100, -2) == 100 && NoisySample<2>(100, 1) == 100,
              "noise is rounded, then floored");
static_assert(NoisySample<0>(255, -32768) == 0 && NoisySample<4>(0, 32767) == 255 && NoisySample<4>(255, -32768) == 0,
              "extreme entries saturate");

template <KorUint rsBits>
KOR_KERNEL void AddNoiseRow(KorUint8* KOR_RESTRICT dst,
                            const KorUint8* KOR_RESTRICT src, const KorInt16* KOR_RESTRICT tbl, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        dst[i] = NoisySample<rsBits>(src[i], tbl[i]);
    }
}

// Adds the noise from index on, wrapping at the end of the table.
void AddNoise(KorUint8* dst, const KorUint8* src, KorSizeT index, KorUint rsBits, KorSizeT n) {
    while (n != 0) {
        const KorSizeT entry = index & (kNoiseEntries - 1);
        const KorSizeT run = Min(n, kNoiseEntries - entry);
        const KorInt16* tbl = KorTblDitherStd4 + entry;
        switch (rsBits) {
            case 0:
                AddNoiseRow<0>(dst, src, tbl, run);
                break;
            case 1:
                AddNoiseRow<1>(dst, src, tbl, run);
                break;
            case 2:
                AddNoiseRow<2>(dst, src, tbl, run);
                break;
            case 3:
                AddNoiseRow<3>(dst, src, tbl, run);
                break;
            default:
                AddNoiseRow<4>(dst, src, tbl, run);
                break;
        }
        dst += run;
        src += run;
        index += run;
        n -= run;
    }
}

// A source plane, with or without noise.
struct SourcePlane {
    SourceRows rows;
    Noise noise;

    // n samples of a row: in the plane itself or, with noise, in the run that is passed in.
    const KorUint8* Read(KorUint8* noisy, KorSizeT row, KorSizeT start, KorSizeT n) const {
        const KorUint8* plain = rows.Row(row) + start;
        if (!noise.isOn) {
            return plain;
        }
        AddNoise(noisy, plain, noise.index + row * noise.stride + start, noise.rsBits, n);
        return noisy;
    }
};

struct SourcePlanes {
    SourcePlane y, u, v;
};

// How a family of conversions walks the noise table: where chroma may start, and the distance between rows.
struct NoiseWalk {
    KorSizeT chromaStart;
    KorSizeT strideY, strideC;
};

// Luma rows start at multiples of 8; chroma runs on from one row to the next.
constexpr NoiseWalk I420Walk(KorSizeT width) {
    return {kAnyStart, RoundUpTo8(width), width >> 1};
}

constexpr NoiseWalk I444Walk(KorSizeT width) {
    return {kAnyStart, RoundUpTo8(width), RoundUpTo8(width)};
}

constexpr NoiseWalk PackedWalk(KorSizeT width) {
    return {kAlignedStart, RoundUpTo8(width), RoundUpTo8(width >> 1)};
}

// The source of a renderer or packer. If it dithers, the start of each plane's noise is drawn here, in the order Y, U, V.
SourcePlanes Source(ReadPlane y, ReadPlane u, ReadPlane v, KorUint ditherLevel, NoiseWalk walk) {
    SourcePlanes planes = {{TopDown(y), {}}, {TopDown(u), {}}, {TopDown(v), {}}};
    if (IsDithering(ditherLevel)) {
        planes.y.noise = {true, DrawIndex(kAlignedStart), walk.strideY, LumaShift(ditherLevel)};
        planes.u.noise = {true, DrawIndex(walk.chromaStart), walk.strideC, ChromaShift(ditherLevel)};
        planes.v.noise = {true, DrawIndex(walk.chromaStart), walk.strideC, ChromaShift(ditherLevel)};
    }
    return planes;
}

// n columns of a row pair from (start, row) on: the two luma rows and the chroma that they share.
struct BlockRun {
    KorSizeT row, start;
    const KorUint8 *y0, *y1, *u, *v;
    KorSizeT n;
};

// Calls write(run) for all 2 by 2 blocks of an I420 picture. An odd last column or row is left out.
template <class Write>
void ForEachBlockRun(const SourcePlanes& planes, KorSizeT width, KorSizeT height, Write write) {
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT heightC = height >> 1;
    if (width2 == 0) {
        return;
    }
    Run y0, y1, u, v;
    for (KorSizeT i = 0; i < heightC; ++i) {
        for (KorSizeT start = 0; start < width2; start += kRun) {
            const KorSizeT n = Min(kRun, width2 - start);
            write(BlockRun{2 * i, start,
                           planes.y.Read(y0, 2 * i, start, n), planes.y.Read(y1, 2 * i + 1, start, n),
                           planes.u.Read(u, i, start / 2, n / 2), planes.v.Read(v, i, start / 2, n / 2), n});
        }
    }
}

// What chroma adds to luma in each channel.
struct TermRun {
    KorInt16 rR[kRun];
    KorInt16 gG[kRun];
    KorInt16 bB[kRun];
};

// A fixed matrix: rR = ((V * rV) >> 7) - rBias, gG = gBias - ((U * gU + V * gV) >> 6), bB = ((U * bU) >> 6) - bBias.
// The biases hold the offsets of luma and chroma. All products, and the sum of the two for green, stay below 2^16.
struct YuvToRgbMatrix {
    KorUint16 rV, gU, gV, bU;
    KorInt16 rBias, gBias, bBias;
};

// ITU-R BT.601 and BT.709, limited range. With these truncated constants BT.601 renders white as 254, 254, 254, and
// BT.709 as 254, 255, 254.
constexpr YuvToRgbMatrix kRenderBt601 = {204, 25, 52, 129, 223, 135, 277};
constexpr YuvToRgbMatrix kRenderBt709 = {229, 14, 34, 135, 248, 78, 289};

// 149/128, in units of 1/256.
constexpr KorInt kRenderLuma = 298;

// Three rows R, G, B with the multipliers of luma, U - 128 and V - 128, in units of 1/256.
struct RenderCoefficients {
    KorInt rows[3][3];
};

KOR_KERNEL void WriteTerms(KorInt16* KOR_RESTRICT rR, KorInt16* KOR_RESTRICT gG, KorInt16* KOR_RESTRICT bB,
                           const KorUint8* KOR_RESTRICT u, const KorUint8* KOR_RESTRICT v, const YuvToRgbMatrix& matrix, KorSizeT n) {
    const YuvToRgbMatrix m = matrix;
    for (KorSizeT i = 0; i < n; ++i) {
        rR[i] = static_cast<KorInt16>((static_cast<KorUint16>(v[i] * m.rV) >> 7) - m.rBias);
        gG[i] = static_cast<KorInt16>(m.gBias - (static_cast<KorUint16>(u[i] * m.gU + v[i] * m.gV) >> 6));
        bB[i] = static_cast<KorInt16>((static_cast<KorUint16>(u[i] * m.bU) >> 6) - m.bBias);
    }
}

// Repeats every term, for the two pixels of a pair.
KOR_KERNEL void RepeatRow(KorInt16* KOR_RESTRICT dst, const KorInt16* KOR_RESTRICT terms, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        dst[2 * i] = terms[i];
        dst[2 * i + 1] = terms[i];
    }
}

void RepeatTerms(TermRun& pixels, const TermRun& pairs, KorSizeT n) {
    RepeatRow(pixels.rR, pairs.rR, n);
    RepeatRow(pixels.gG, pairs.gG, n);
    RepeatRow(pixels.bB, pairs.bB, n);
}

// The chroma term of one channel with a caller's coefficients. The sum wraps modulo 2^32 by contract.
constexpr KorInt CallerTerm(const KorInt (&row)[3], KorUint8 u, KorUint8 v) {
    const KorUint sum = static_cast<KorUint>(u - 128) * static_cast<KorUint>(row[1]) +
                        static_cast<KorUint>(v - 128) * static_cast<KorUint>(row[2]) - 16u * static_cast<KorUint>(row[0]) + 128u;
    return static_cast<KorInt>(sum) >> 8;
}

static_assert(CallerTerm({256, 0, 0}, 0, 0) == -16 && CallerTerm({0, 0, 0}, 9, 9) == 0,
              "chroma terms are rounded, then floored");
static_assert(CallerTerm({0, 1, 0}, 0, 128) == 0 && CallerTerm({0, 129, 0}, 127, 128) == -1, "rounded toward minus infinity");

// Coefficients below 32 in magnitude keep luma, terms and their sums within 16-bit lanes.
constexpr KorInt kLaneCoefficient = 8191;
static_assert((255 * kLaneCoefficient >> 8) + CallerTerm({-kLaneCoefficient, -kLaneCoefficient, -kLaneCoefficient}, 0, 0) <= 32767,
              "sums fit at the upper end");
static_assert((-255 * kLaneCoefficient >> 8) + CallerTerm({kLaneCoefficient, kLaneCoefficient, kLaneCoefficient}, 0, 0) >= -32768,
              "and at the lower end");

bool FitsLanes(const RenderCoefficients& coeffs) {
    bool fits = true;
    for (const auto& row : coeffs.rows) {
        for (const KorInt coefficient : row) {
            fits = fits && coefficient >= -kLaneCoefficient && coefficient <= kLaneCoefficient;
        }
    }
    return fits;
}

// CallerTerm for n samples. Products of 16-bit factors take far fewer vector operations than those of wider ones.
KOR_KERNEL void WriteCallerTerms(KorInt16* KOR_RESTRICT terms,
                                 const KorUint8* KOR_RESTRICT u, const KorUint8* KOR_RESTRICT v, const KorInt (&row)[3], KorSizeT n) {
    const KorInt offset = 128 - 16 * row[0];
    const KorInt16 uMultiplier = static_cast<KorInt16>(row[1]);
    const KorInt16 vMultiplier = static_cast<KorInt16>(row[2]);
    for (KorSizeT i = 0; i < n; ++i) {
        const KorInt16 uCentred = static_cast<KorInt16>(u[i] - 128);
        const KorInt16 vCentred = static_cast<KorInt16>(v[i] - 128);
        terms[i] = static_cast<KorInt16>((uCentred * uMultiplier + vCentred * vMultiplier + offset) >> 8);
    }
}

// (y * multiplier) >> 8 in a 16-bit lane, from the whole and fractional parts of the multiplier.
constexpr KorInt16 LumaLane(KorUint8 y, KorInt16 whole, KorUint16 fraction) {
    return static_cast<KorInt16>(y * whole + (static_cast<KorUint16>(y * fraction) >> 8));
}

// Composes a pixel in registers and writes it as two words: stores of single bytes would not be vectorised.
template <const RgbLayout& layout>
KOR_INLINE inline void WritePixel(KorUint8* x, KorInt16 yY, KorInt16 rR, KorInt16 gG, KorInt16 bB) {
    KorInt16 bytes[4] = {255, 255, 255, 255};
    bytes[layout.ro] = ClipLane(static_cast<KorInt16>(yY + rR));
    bytes[layout.go] = ClipLane(static_cast<KorInt16>(yY + gG));
    bytes[layout.bo] = ClipLane(static_cast<KorInt16>(yY + bB));
    const KorUint16 front = BytePair(bytes[0], bytes[1]);
    const KorUint16 back = BytePair(bytes[2], bytes[3]);
    KorMemCpy(x, &front, 2);
    KorMemCpy(x + 2, &back, 2);
}

template <const RgbLayout& layout>
KOR_KERNEL void RenderRow(KorUint8* KOR_RESTRICT x,
                          const KorUint8* KOR_RESTRICT y, const KorInt16* KOR_RESTRICT rR,
                          const KorInt16* KOR_RESTRICT gG, const KorInt16* KOR_RESTRICT bB,
                          KorInt lumaMultiplier, KorSizeT n) {
    const KorInt16 whole = static_cast<KorInt16>(lumaMultiplier >> 8);
    const KorUint16 fraction = LowByte(static_cast<KorUint>(lumaMultiplier));
    for (KorSizeT i = 0; i < n; ++i) {
        WritePixel<layout>(x + 4 * i, LumaLane(y[i], whole, fraction), rR[i], gG[i], bB[i]);
    }
}

// A row of pixel pairs in 32-bit arithmetic, for coefficients too large for 16-bit lanes.
template <const RgbLayout& layout>
KOR_KERNEL void RenderPairsWide(KorUint8* KOR_RESTRICT x,
                                const KorUint8* KOR_RESTRICT y, const KorUint8* KOR_RESTRICT u, const KorUint8* KOR_RESTRICT v,
                                const RenderCoefficients& coeffs, KorSizeT n) {
    for (KorSizeT i = 0; i < 2 * n; ++i) {
        const KorInt yY = static_cast<KorInt>(y[i] * static_cast<KorUint>(coeffs.rows[0][0])) >> 8;
        x[4 * i + layout.ro] = KorByteClip(yY + CallerTerm(coeffs.rows[0], u[i / 2], v[i / 2]));
        x[4 * i + layout.go] = KorByteClip(yY + CallerTerm(coeffs.rows[1], u[i / 2], v[i / 2]));
        x[4 * i + layout.bo] = KorByteClip(yY + CallerTerm(coeffs.rows[2], u[i / 2], v[i / 2]));
        x[4 * i + layout.ao] = 255;
    }
}

// Keeps the first three bytes of 32-bit pixels. The last byte of each four-byte copy is overwritten by the next copy; the
// last pixel of the run is copied as three bytes.
KOR_KERNEL void DropAlpha(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT x, KorSizeT n) {
    for (KorSizeT i = 0; i + 1 < n; ++i) {
        KorMemCpy(dst + 3 * i, x + 4 * i, 4);
    }
    KorMemCpy(dst + 3 * (n - 1), x + 4 * (n - 1), 3);
}

template <const RgbLayout& layout>
void I420ToXXXX_C_(const SourcePlanes& planes, Plane x, KorSizeT width, KorSizeT height, const YuvToRgbMatrix& matrix) {
    TermRun pairs, terms;
    ForEachBlockRun(planes, width, height, [&](const BlockRun& run) {
        WriteTerms(pairs.rR, pairs.gG, pairs.bB, run.u, run.v, matrix, run.n / 2);
        RepeatTerms(terms, pairs, run.n / 2);
        RenderRow<layout>(x.Row(run.row) + 4 * run.start, run.y0, terms.rR, terms.gG, terms.bB, kRenderLuma, run.n);
        RenderRow<layout>(x.Row(run.row + 1) + 4 * run.start, run.y1, terms.rR, terms.gG, terms.bB, kRenderLuma, run.n);
    });
}

template <const RgbLayout& layout>
void I444ToXXXX_C_(const SourcePlanes& planes, Plane x, KorSizeT width, KorSizeT height, const YuvToRgbMatrix& matrix) {
    if (width == 0) {
        return;
    }
    Run noisyY, noisyU, noisyV;
    TermRun terms;
    for (KorSizeT row = 0; row < height; ++row) {
        for (KorSizeT start = 0; start < width; start += kRun) {
            const KorSizeT n = Min(kRun, width - start);
            const KorUint8* y = planes.y.Read(noisyY, row, start, n);
            const KorUint8* u = planes.u.Read(noisyU, row, start, n);
            const KorUint8* v = planes.v.Read(noisyV, row, start, n);
            WriteTerms(terms.rR, terms.gG, terms.bB, u, v, matrix, n);
            RenderRow<layout>(x.Row(row) + 4 * start, y, terms.rR, terms.gG, terms.bB, kRenderLuma, n);
        }
    }
}

template <const RgbLayout& layout>
void I420ToXXXXGeneral(const SourcePlanes& planes, Plane x, KorSizeT width, KorSizeT height, const RenderCoefficients& matrix) {
    // Deliberate: row 0 gives the luma multiplier of all three channels; the luma offset comes from each row's own.
    const KorInt lumaMultiplier = matrix.rows[0][0];
    const bool fitsLanes = FitsLanes(matrix);
    TermRun pairs, terms;
    ForEachBlockRun(planes, width, height, [&](const BlockRun& run) {
        KorUint8* x0 = x.Row(run.row) + 4 * run.start;
        KorUint8* x1 = x.Row(run.row + 1) + 4 * run.start;
        if (fitsLanes) {
            WriteCallerTerms(pairs.rR, run.u, run.v, matrix.rows[0], run.n / 2);
            WriteCallerTerms(pairs.gG, run.u, run.v, matrix.rows[1], run.n / 2);
            WriteCallerTerms(pairs.bB, run.u, run.v, matrix.rows[2], run.n / 2);
            RepeatTerms(terms, pairs, run.n / 2);
            RenderRow<layout>(x0, run.y0, terms.rR, terms.gG, terms.bB, lumaMultiplier, run.n);
            RenderRow<layout>(x1, run.y1, terms.rR, terms.gG, terms.bB, lumaMultiplier, run.n);
        } else {
            RenderPairsWide<layout>(x0, run.y0, run.u, run.v, matrix, run.n / 2);
            RenderPairsWide<layout>(x1, run.y1, run.u, run.v, matrix, run.n / 2);
        }
    });
}

template <const RgbLayout& layout>
void I420To24Bit(const SourcePlanes& planes, Plane x, KorSizeT width, KorSizeT height) {
    static_assert(layout.ao == 3, "the first three bytes are the pixel");
    TermRun pairs, terms;
    KorUint8 pixels[4 * kRun];
    ForEachBlockRun(planes, width, height, [&](const BlockRun& run) {
        WriteTerms(pairs.rR, pairs.gG, pairs.bB, run.u, run.v, kRenderBt601, run.n / 2);
        RepeatTerms(terms, pairs, run.n / 2);
        RenderRow<layout>(pixels, run.y0, terms.rR, terms.gG, terms.bB, kRenderLuma, run.n);
        DropAlpha(x.Row(run.row) + 3 * run.start, pixels, run.n);
        RenderRow<layout>(pixels, run.y1, terms.rR, terms.gG, terms.bB, kRenderLuma, run.n);
        DropAlpha(x.Row(run.row + 1) + 3 * run.start, pixels, run.n);
    });
}

}  // namespace

void KorI420ToRGBA_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420ToXXXX_C_<kRgba>(planes, {x, pitchX}, width, height, kRenderBt601);
}

void KorI420ToBGRA_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420ToXXXX_C_<kBgra>(planes, {x, pitchX}, width, height, kRenderBt601);
}

void KorI420ToARGB_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420ToXXXX_C_<kArgb>(planes, {x, pitchX}, width, height, kRenderBt601);
}

void KorI420ToABGR_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420ToXXXX_C_<kAbgr>(planes, {x, pitchX}, width, height, kRenderBt601);
}

void KorI444ToBGRA_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I444Walk(width));
    I444ToXXXX_C_<kBgra>(planes, {x, pitchX}, width, height, kRenderBt601);
}

void KorI444ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY,
                                const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV,
                                KorUint8* x, KorSizeT pitchX,
                                KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I444Walk(width));
    I444ToXXXX_C_<kBgra>(planes, {x, pitchX}, width, height, kRenderBt709);
}

void KorI420ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY,
                                const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV,
                                KorUint8* x, KorSizeT pitchX,
                                KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420ToXXXX_C_<kBgra>(planes, {x, pitchX}, width, height, kRenderBt709);
}

void KorI420ToBGRAGeneral_C_(const KorUint8* y, KorSizeT pitchY,
                             const KorUint8* u, KorSizeT pitchU,
                             const KorUint8* v, KorSizeT pitchV,
                             KorUint8* x, KorSizeT pitchX,
                             KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    if (width < 2 || height < 2) {
        return;
    }
    RenderCoefficients matrix;
    KorMemCpy(&matrix, coeffs, sizeof matrix);
    I420ToXXXXGeneral<kBgra>(planes, {x, pitchX}, width, height, matrix);
}

void KorI420To24BG_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, I420Walk(width));
    I420To24Bit<kBgra>(planes, {x, pitchX}, width, height);
}

// ---------------------------------------------------------------------------------------------------------------------
// 5  Packed and semi-planar YUV
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// The bytes of a group of two pixels that hold the left luma sample (the right one is two bytes further), U and V.
struct PackedLayout {
    KorSizeT y, u, v;
};

constexpr PackedLayout kYuy2 = {0, 1, 3};
constexpr PackedLayout kUyvy = {1, 0, 2};

template <const PackedLayout& layout>
KOR_KERNEL void ExtractLuma(KorUint8* KOR_RESTRICT y, const KorUint8* KOR_RESTRICT x, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        y[i] = ByteOf<KorUint16, layout.y>(x, i);
    }
}

// The chroma of n groups of a row pair.
template <const PackedLayout& layout>
KOR_KERNEL void AverageChroma(KorUint8* KOR_RESTRICT u, KorUint8* KOR_RESTRICT v,
                              const KorUint8* KOR_RESTRICT x0, const KorUint8* KOR_RESTRICT x1, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        u[i] = Average(ByteOf<KorUint, layout.u>(x0, i), ByteOf<KorUint, layout.u>(x1, i));
        v[i] = Average(ByteOf<KorUint, layout.v>(x0, i), ByteOf<KorUint, layout.v>(x1, i));
    }
}

// The lower row of a pair. The last row of an odd height is its own lower row: its luma is written twice, and its chroma
// is averaged with itself.
const KorUint8* LowerRow(SourceRows rows, KorSizeT row, KorSizeT height) {
    return rows.Row(Min(row + 1, height - 1));
}

// Deliberate: an odd height writes the row below the picture as well.
template <const PackedLayout& layout>
void PackedToI420(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const KorSizeT widthC = width >> 1;
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorUint8* x0 = rows.Row(row);
        const KorUint8* x1 = LowerRow(rows, row, height);
        ExtractLuma<layout>(y.Row(row), x0, 2 * widthC);
        ExtractLuma<layout>(y.Row(row + 1), x1, 2 * widthC);
        AverageChroma<layout>(u.Row(row / 2), v.Row(row / 2), x0, x1, widthC);
    }
}

// ExtractLuma in reverse order. Luma is read as words: with single bytes, GCC ends a fixed count with a scalar loop so as
// not to read past the last byte.
template <const PackedLayout& layout>
KOR_KERNEL void ExtractLumaReversed(KorUint8* KOR_RESTRICT y, const KorUint8* KOR_RESTRICT x, KorSizeT n) {
    Run luma;
    for (; n >= kRun; n -= kRun, x += 2 * kRun) {
        KOR_BYTE_LANES
        for (KorSizeT k = 0; k < kRun; ++k) {
            luma[k] = ByteOfWord<KorUint16, layout.y>(x, k);
        }
        ReverseRun(y + (n - kRun), luma);
    }
    ExtractLuma<layout>(luma, x, n);
    ReverseRow(y, luma, n);
}

// The chroma of n pixels of a row pair, U and V still interleaved.
template <const PackedLayout& layout>
KOR_KERNEL void AverageChromaPairs(KorUint8* KOR_RESTRICT c,
                                   const KorUint8* KOR_RESTRICT x0, const KorUint8* KOR_RESTRICT x1, KorSizeT n) {
    constexpr KorSizeT chroma = Min(layout.u, layout.v);
    static_assert(chroma + layout.y == 1, "every other byte is chroma");
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        c[i] = Average(ByteOf<KorUint16, chroma>(x0, i), ByteOf<KorUint16, chroma>(x1, i));
    }
}

template <const PackedLayout& layout>
void AverageChromaReversed(KorUint8* u, KorUint8* v, const KorUint8* x0, const KorUint8* x1, KorSizeT n) {
    KorUint8* const first = layout.u < layout.v ? u : v;
    KorUint8* const second = layout.u < layout.v ? v : u;
    KorUint8 chroma[8 * kRun];
    for (KorSizeT end = n; end != 0;) {
        const KorSizeT m = Min(end, sizeof chroma / 2);
        end -= m;
        AverageChromaPairs<layout>(chroma, x0, x1, 2 * m);
        SplitRowReversed(first + end, second + end, chroma, m);
        x0 += 4 * m;
        x1 += 4 * m;
    }
}

template <const PackedLayout& layout>
void ReversePacked(RotatedPlane y, RotatedPlane u, RotatedPlane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const KorSizeT widthC = width / 2;
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorUint8* x0 = rows.Row(row);
        const KorUint8* x1 = LowerRow(rows, row, height);
        ExtractLumaReversed<layout>(y.At(width - 1, row), x0, width);
        ExtractLumaReversed<layout>(y.At(width - 1, row + 1), x1, width);
        AverageChromaReversed<layout>(u.At(widthC - 1, row / 2), v.At(widthC - 1, row / 2), x0, x1, widthC);
    }
}

// Rotates whole row pairs. Before the last step of its transposition, a tile has the even and the odd rows in separate
// halves, and chroma is averaged there: the source is read once, and nothing but a tile is buffered.
template <const PackedLayout& layout>
void RotateRowPairs(RotatedPlane y, RotatedPlane u, RotatedPlane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    constexpr KorSizeT half = kTile * kTile / 2;
    ForEachTile(rows, 2 * width, height, [&](KorSizeT i, KorSizeT j, KorSizeT w, KorSizeT h) KOR_INLINE {
        TransposedTile tile;
        KorUint8 means[half];
        tile.Load(rows, i, j, w, h, y.row > 0);
        AverageHalves(means, tile.halves);
        StoreColumns(y, i / 2, j, tile.columns + layout.y * kTile, 2 * kTile, w / 2, h);
        StoreColumns(u, i / 4, j / 2, means + layout.u * kTile / 2, 2 * kTile, w / 4, h / 2);
        StoreColumns(v, i / 4, j / 2, means + layout.v * kTile / 2, 2 * kTile, w / 4, h / 2);
    });
}

// The last row of an odd height forms a pair with itself: its pitch is 0.
template <const PackedLayout& layout>
void RotatePacked(RotatedPlane y, RotatedPlane u, RotatedPlane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const KorSizeT heightC = height / 2;
    RotateRowPairs<layout>(y, u, v, rows, width, 2 * heightC);
    if (IsOdd(height)) {
        RotateRowPairs<layout>(y.From(2 * heightC), u.From(heightC), v.From(heightC), {rows.Row(height - 1), 0}, width, 2);
    }
}

// Deliberate: an odd width, which callers must not pass, shifts every row pair against the one before: by two bytes in the
// source and one luma sample in the destination, towards the start of the row. At some angles that leaves the plane.
template <const PackedLayout& layout>
void RotatePackedOddWidth(RotatedPlane y, RotatedPlane u, RotatedPlane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    for (KorSizeT jc = 0; 2 * jc < height; ++jc) {
        const KorUint8* x0 = rows.Row(2 * jc) - 2 * jc;
        const KorUint8* x1 = LowerRow(rows, 2 * jc, height) - 2 * jc;
        for (KorSizeT k = 0; k < width / 2; ++k) {
            const KorSizeT left = 2 * k - jc;
            *y.At(left, 2 * jc) = x0[4 * k + layout.y];
            *y.At(left + 1, 2 * jc) = x0[4 * k + layout.y + 2];
            *y.At(left, 2 * jc + 1) = x1[4 * k + layout.y];
            *y.At(left + 1, 2 * jc + 1) = x1[4 * k + layout.y + 2];
            *u.At(k, jc) = Average(x0[4 * k + layout.u], x1[4 * k + layout.u]);
            *v.At(k, jc) = Average(x0[4 * k + layout.v], x1[4 * k + layout.v]);
        }
    }
}

template <const PackedLayout& layout>
void PackedToI420WithRotation(Plane y, Plane u, Plane v, const KorUint8* x, KorSizeT pitchX,
                              KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree) {
    if (width < 2 || height == 0) {
        return;
    }
    // An odd height is padded with a copy of the last row, whatever the angle.
    const KorSizeT heightUp = height + height % 2;
    const SourceRows rows = ReadingOrder(x, pitchX, height, flip);
    const RotatedPlane rotatedY = Rotated(y, width, heightUp, rotationDegree);
    const RotatedPlane rotatedU = Rotated(u, width / 2, heightUp / 2, rotationDegree);
    const RotatedPlane rotatedV = Rotated(v, width / 2, heightUp / 2, rotationDegree);
    if (IsOdd(width)) {
        RotatePackedOddWidth<layout>(rotatedY, rotatedU, rotatedV, rows, width, height);
        return;
    }
    switch (rotationDegree) {
        case 0:
            PackedToI420<layout>(y, u, v, rows, width, height);
            break;
        case 180:
            ReversePacked<layout>(rotatedY, rotatedU, rotatedV, rows, width, height);
            break;
        default:
            // Deliberate: 90, 270 and, as 270, every other angle.
            RotatePacked<layout>(rotatedY, rotatedU, rotatedV, rows, width, height);
            break;
    }
}

// A row of n pixels from luma and interleaved chroma.
template <const PackedLayout& layout>
void PackRow(KorUint8* x, const KorUint8* y, const KorUint8* chroma, KorSizeT n) {
    if constexpr (layout.y == 0) {
        JoinRow(x, y, chroma, n);
    } else {
        JoinRow(x, chroma, y, n);
    }
}

template <const PackedLayout& layout>
void I420ToPacked(const SourcePlanes& planes, Plane x, KorSizeT width, KorSizeT height) {
    Run chroma;
    ForEachBlockRun(planes, width, height, [&](const BlockRun& run) {
        JoinRow(chroma, layout.u < layout.v ? run.u : run.v, layout.u < layout.v ? run.v : run.u, run.n / 2);
        PackRow<layout>(x.Row(run.row) + 2 * run.start, run.y0, chroma, run.n);
        PackRow<layout>(x.Row(run.row + 1) + 2 * run.start, run.y1, chroma, run.n);
    });
}

// Full-range to limited-range luma.
constexpr KorUint8 LimitLuma(KorUint8 y) {
    return static_cast<KorUint8>((static_cast<KorUint16>(y * 220) >> 8) + 16);
}

// Signed chroma, scaled to -113..112.
constexpr KorInt16 LimitChroma(KorUint8 c) {
    return static_cast<KorInt16>(static_cast<KorInt16>(static_cast<KorInt8>(c) * 113) >> 7);
}

// I420 chroma to the signed bytes of Yuv2. Deliberate: below 16 and above 240 the result wraps.
constexpr KorUint8 ExpandChroma(KorUint8 c) {
    return LowByte(static_cast<KorUint16>(c * 145 + 14208) >> 7);
}

static_assert(LimitLuma(0) == 16 && LimitLuma(255) == 235, "luma spans the limited range");
static_assert(LimitChroma(0x80) == -113 && LimitChroma(0) == 0 && LimitChroma(0x7f) == 112, "chroma is scaled by 113/128");
static_assert(ExpandChroma(128) == 0 && ExpandChroma(16) == 129 && ExpandChroma(240) == 126, "chroma is scaled by 145/128");
static_assert(ExpandChroma(15) == 127 && ExpandChroma(241) == 128, "chroma wraps");

KOR_KERNEL void ExtractYuv2Luma(KorUint8* KOR_RESTRICT y, const KorUint8* KOR_RESTRICT yuv2, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        y[i] = LimitLuma(ByteOf<KorUint16, kYuy2.y>(yuv2, i));
    }
}

// The average of two rows, rounded up and centred on 128; 257 is twice that offset plus one for rounding.
constexpr KorUint8 AverageSigned(KorUint8 upper, KorUint8 lower) {
    return static_cast<KorUint8>(static_cast<KorInt16>(LimitChroma(upper) + LimitChroma(lower) + 257) >> 1);
}

KOR_KERNEL void AverageYuv2Chroma(KorUint8* KOR_RESTRICT u, KorUint8* KOR_RESTRICT v,
                                  const KorUint8* KOR_RESTRICT x0, const KorUint8* KOR_RESTRICT x1, KorSizeT n) {
    KOR_BYTE_LANES
    for (KorSizeT i = 0; i < n; ++i) {
        u[i] = AverageSigned(ByteOf<KorUint, kYuy2.u>(x0, i), ByteOf<KorUint, kYuy2.u>(x1, i));
        v[i] = AverageSigned(ByteOf<KorUint, kYuy2.v>(x0, i), ByteOf<KorUint, kYuy2.v>(x1, i));
    }
}

KOR_KERNEL void ExpandChromaRow(KorUint8* KOR_RESTRICT dst, const KorUint8* KOR_RESTRICT c, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        dst[i] = ExpandChroma(c[i]);
    }
}

// Deliberate: with an odd width every row pair starts one luma sample and half a group earlier than the pitches say, in
// source and destination alike.
KorSizeT Drift(KorSizeT row, KorSizeT width) {
    return IsOdd(width) ? row / 2 : 0;
}

// Deliberate: an odd height writes the row below the picture as well.
void Yuv2ToI420(Plane y, Plane u, Plane v, SourceRows rows, KorSizeT width, KorSizeT height) {
    const KorSizeT widthC = width >> 1;
    for (KorSizeT row = 0; row < height; row += 2) {
        const KorSizeT drift = Drift(row, width);
        const KorUint8* x0 = rows.Row(row) - 2 * drift;
        const KorUint8* x1 = LowerRow(rows, row, height) - 2 * drift;
        ExtractYuv2Luma(y.Row(row) - drift, x0, 2 * widthC);
        ExtractYuv2Luma(y.Row(row + 1) - drift, x1, 2 * widthC);
        AverageYuv2Chroma(u.Row(row / 2), v.Row(row / 2), x0, x1, widthC);
    }
}

// Deliberate: luma stays limited-range, although the opposite direction expects full-range luma.
void I420ToYuv2(SourceRows y, SourceRows u, SourceRows v, Plane yuy2, KorSizeT width, KorSizeT height) {
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT height2 = height & ~KorSizeT{1};
    // At cache lines, as RgbRun.
    alignas(64) Run uRun, vRun, chroma;
    for (KorSizeT row = 0; row < height2; row += 2) {
        const KorSizeT drift = Drift(row, width);
        for (KorSizeT start = 0; start < width2; start += kRun) {
            const KorSizeT n = Min(kRun, width2 - start);
            ExpandChromaRow(uRun, u.Row(row / 2) + start / 2, n / 2);
            ExpandChromaRow(vRun, v.Row(row / 2) + start / 2, n / 2);
            JoinRow(chroma, uRun, vRun, n / 2);
            JoinRow(yuy2.Row(row) + 2 * start - 2 * drift, y.Row(row) + start - drift, chroma, n);
            JoinRow(yuy2.Row(row + 1) + 2 * start - 2 * drift, y.Row(row + 1) + start - drift, chroma, n);
        }
    }
}

void M420ToI420(Plane y, Plane u, Plane v, SourceRows blocks, KorSizeT width, KorSizeT height) {
    const KorSizeT widthC = width >> 1;
    const KorSizeT heightC = height >> 1;
    for (KorSizeT i = 0; i < heightC; ++i) {
        const KorUint8* block = blocks.Row(i);
        const KorUint8* m420C = block + 2 * width;
        KorMemCpy(y.Row(2 * i), block, width);
        KorMemCpy(y.Row(2 * i + 1), block + width, width);
        if (widthC != 0) {
            SplitRow(u.Row(i), v.Row(i), m420C, widthC);
        }
    }
}

}  // namespace

void KorYUY2ToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width < 2 || height == 0) {
        return;
    }
    PackedToI420<kYuy2>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height);
}

void KorUYVYToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width < 2 || height == 0) {
        return;
    }
    PackedToI420<kUyvy>({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(x, pitchX, height, flip), width, height);
}

void KorYUY2ToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY,
                                  KorUint8* u, KorSizeT pitchU,
                                  KorUint8* v, KorSizeT pitchV,
                                  const KorUint8* x, KorSizeT pitchX,
                                  KorSizeT widthSrc, KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree) {
    PackedToI420WithRotation<kYuy2>({y, pitchY}, {u, pitchU}, {v, pitchV}, x, pitchX, widthSrc, heightSrc, flip, rotationDegree);
}

void KorUYVYToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY,
                                  KorUint8* u, KorSizeT pitchU,
                                  KorUint8* v, KorSizeT pitchV,
                                  const KorUint8* x, KorSizeT pitchX,
                                  KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree) {
    PackedToI420WithRotation<kUyvy>({y, pitchY}, {u, pitchU}, {v, pitchV}, x, pitchX, width, height, flip, rotationDegree);
}

void KorI420ToYUY2_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, PackedWalk(width));
    I420ToPacked<kYuy2>(planes, {x, pitchX}, width, height);
}

void KorI420ToUYVY_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* x, KorSizeT pitchX,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    const SourcePlanes planes = Source({y, pitchY}, {u, pitchU}, {v, pitchV}, ditherLevel, PackedWalk(width));
    I420ToPacked<kUyvy>(planes, {x, pitchX}, width, height);
}

void KorYuv2ToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* yuv2, KorSizeT pitchYuv2,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width < 2 || height == 0) {
        return;
    }
    Yuv2ToI420({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(yuv2, pitchYuv2, height, flip), width, height);
}

void KorI420toYuv2_C_(const KorUint8* y, KorSizeT pitchY,
                      const KorUint8* u, KorSizeT pitchU,
                      const KorUint8* v, KorSizeT pitchV,
                      KorUint8* yuy2, KorSizeT pitchYuy2,
                      KorSizeT width, KorSizeT height) {
    if (width < 2 || height < 2) {
        return;
    }
    I420ToYuv2(TopDown({y, pitchY}), TopDown({u, pitchU}), TopDown({v, pitchV}), {yuy2, pitchYuy2}, width, height);
}

void KorM420ToI420_C_(KorUint8* y, KorSizeT pitchY,
                      KorUint8* u, KorSizeT pitchU,
                      KorUint8* v, KorSizeT pitchV,
                      const KorUint8* m420, KorSizeT pitchM420,
                      KorSizeT width, KorSizeT height, KorBool flip) {
    if (width == 0 || height < 2) {
        return;
    }
    // Deliberate: the rows here are blocks of three, yet a set flip starts height - 1 pitches down, counted in luma rows.
    // It reverses the order of the blocks but not of the two luma rows in each.
    M420ToI420({y, pitchY}, {u, pitchU}, {v, pitchV}, ReadingOrder(m420, pitchM420, height, flip), width, height);
}

// ---------------------------------------------------------------------------------------------------------------------
// 6  Compositing and noise
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// Adds noise to one row of a plane that may be filtered in place. A run on the stack keeps overlapping rows from the
// kernel.
void DitherRow(KorUint8* out, const KorUint8* in, KorSizeT index, KorUint rsBits, KorSizeT n) {
    Run noisy;
    for (KorSizeT start = 0; start < n; start += kRun) {
        const KorSizeT run = Min(kRun, n - start);
        AddNoise(noisy, in + start, index + start, rsBits, run);
        KorMemCpy(out + start, noisy, run);
    }
}

// Deliberate: a row pair advances the noise by one row only, so the lower row of a pair and the upper row of the next get
// the same noise.
void DitherLuma(Plane out, SourceRows in, KorSizeT noiseIndex, KorUint rsBits, KorSizeT width, KorSizeT height) {
    const KorSizeT width2 = width & ~KorSizeT{1};
    const KorSizeT height2 = height & ~KorSizeT{1};
    for (KorSizeT row = 0; row < height2; ++row) {
        DitherRow(out.Row(row), in.Row(row), noiseIndex + (row + 1) / 2 * width, rsBits, width2);
    }
}

// Deliberate: chroma rows are as far apart in the noise as luma rows.
void DitherChroma(Plane out, SourceRows in, KorSizeT noiseIndex, KorUint rsBits, KorSizeT width, KorSizeT height) {
    const KorSizeT cWidth = width >> 1;
    const KorSizeT cHeight = height >> 1;
    for (KorSizeT row = 0; row < cHeight; ++row) {
        DitherRow(out.Row(row), in.Row(row), noiseIndex + row * width, rsBits, cWidth);
    }
}

// Two samples by weights that sum to 255, in 16-bit lanes: the sum is at most 65025. Up to that bound the quotient by 255
// equals (result + (result >> 8) + 1) >> 8, and compilers divide by a multiplication that is cheaper still. Deliberate:
// the quotient is rounded down, not to nearest; weights of 0 and 255 return one side unchanged.
constexpr KorUint8 Blend(KorUint16 background, KorUint16 foreground, KorUint16 alpha, KorUint16 oneMinusAlpha) {
    const KorUint16 result = static_cast<KorUint16>(background * oneMinusAlpha + foreground * alpha);
    return static_cast<KorUint8>(result / 255);
}

static_assert(Blend(255, 0, 0, 255) == 255 && Blend(0, 255, 255, 0) == 255, "the ends are exact");
static_assert(Blend(0, 255, 128, 127) == 128 && Blend(255, 0, 128, 127) == 127 && Blend(100, 200, 128, 127) == 150,
              "the middle");
static_assert(Blend(128, 0, 254, 1) == 0, "not rounded to nearest");

KOR_KERNEL void BlendRow(KorUint8* KOR_RESTRICT background,
                         const KorUint8* KOR_RESTRICT foreground, KorUint16 alpha, KorUint16 oneMinusAlpha, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        background[i] = Blend(background[i], foreground[i], alpha, oneMinusAlpha);
    }
}

KOR_KERNEL void BlendRowAlphaArray(KorUint8* KOR_RESTRICT background,
                                   const KorUint8* KOR_RESTRICT foreground, const KorUint8* KOR_RESTRICT alpha, KorSizeT n) {
    for (KorSizeT i = 0; i < n; ++i) {
        background[i] = Blend(background[i], foreground[i], alpha[i], static_cast<KorUint16>(255 - alpha[i]));
    }
}

// The samples of a plane from (column, row) on.
Plane Region(Plane plane, KorSizeT column, KorSizeT row) {
    return {plane.Row(row) + column, plane.pitch};
}

void BlendBuffer(Plane background, SourceRows foreground, KorSizeT width, KorSizeT height, KorUint8 alpha) {
    const KorUint8 oneMinusAlpha = static_cast<KorUint8>(255 - alpha);
    for (KorSizeT h = 0; h < height; ++h) {
        BlendRow(background.Row(h), foreground.Row(h), alpha, oneMinusAlpha, width);
    }
}

void BlendBufferAlphaArray(Plane background, SourceRows foreground, SourceRows alpha, KorSizeT width, KorSizeT height) {
    for (KorSizeT h = 0; h < height; ++h) {
        BlendRowAlphaArray(background.Row(h), foreground.Row(h), alpha.Row(h), width);
    }
}

}  // namespace

void KorI420Dither_C_(const KorUint8* yIn, KorSizeT yInPitch,
                      const KorUint8* uIn, KorSizeT uInPitch,
                      const KorUint8* vIn, KorSizeT vInPitch,
                      KorUint8* yOut, KorSizeT yOutPitch,
                      KorUint8* uOut, KorSizeT uOutPitch,
                      KorUint8* vOut, KorSizeT vOutPitch,
                      KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets) {
    // Deliberate: there is no Off here; its value, 0, is a level one step weaker than the converters' weakest.
    if (ditherLevel > KOR_VIDEOFRAMEDITHERLEVEL_2) {
        return;
    }
    // The fixed offsets are those of one stream of noise that runs through Y, then U, then V.
    KorSizeT yNoiseIndex = 0;
    KorSizeT uNoiseIndex = height * width;
    KorSizeT vNoiseIndex = (height >> 1) * (width >> 1) + height * width;
    if (randomizeNoiseOffsets) {
        yNoiseIndex = DrawShortIndex();
        uNoiseIndex = DrawShortIndex();
        vNoiseIndex = DrawShortIndex();
    }
    if (width < 2 || height < 2) {
        return;
    }
    DitherLuma({yOut, yOutPitch}, TopDown({yIn, yInPitch}), yNoiseIndex, LumaShift(ditherLevel), width, height);
    DitherChroma({uOut, uOutPitch}, TopDown({uIn, uInPitch}), uNoiseIndex, ChromaShift(ditherLevel), width, height);
    DitherChroma({vOut, vOutPitch}, TopDown({vIn, vInPitch}), vNoiseIndex, ChromaShift(ditherLevel), width, height);
}

void KorI420AlphaBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                          KorUint8* uBackground, KorSizeT uBackgroundPitch,
                          KorUint8* vBackground, KorSizeT vBackgroundPitch,
                          const KorUint8* yForeground, KorSizeT yForegroundPitch,
                          const KorUint8* uForeground, KorSizeT uForegroundPitch,
                          const KorUint8* vForeground, KorSizeT vForegroundPitch,
                          KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha) {
    if (width == 0 || height == 0) {
        return;
    }
    // Deliberate: the chroma position is rounded down while the chroma size is rounded up.
    const KorSizeT widthChroma = (width + 1) / 2;
    const KorSizeT heightChroma = (height + 1) / 2;
    const KorSizeT xPositionChroma = xPosition / 2;
    const KorSizeT yPositionChroma = yPosition / 2;
    BlendBuffer(Region({yBackground, yBackgroundPitch}, xPosition, yPosition),
                TopDown({yForeground, yForegroundPitch}), width, height, alpha);
    BlendBuffer(Region({uBackground, uBackgroundPitch}, xPositionChroma, yPositionChroma),
                TopDown({uForeground, uForegroundPitch}), widthChroma, heightChroma, alpha);
    BlendBuffer(Region({vBackground, vBackgroundPitch}, xPositionChroma, yPositionChroma),
                TopDown({vForeground, vForegroundPitch}), widthChroma, heightChroma, alpha);
}

void KorI420AlphaArrayBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                               KorUint8* uBackground, KorSizeT uBackgroundPitch,
                               KorUint8* vBackground, KorSizeT vBackgroundPitch,
                               const KorUint8* yForeground, KorSizeT yForegroundPitch,
                               const KorUint8* uForeground, KorSizeT uForegroundPitch,
                               const KorUint8* vForeground, KorSizeT vForegroundPitch,
                               KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                               KorUint8* yAlpha, KorSizeT yAlphaPitch,
                               KorUint8* uAlpha, KorSizeT uAlphaPitch,
                               KorUint8* vAlpha, KorSizeT vAlphaPitch) {
    if (width == 0 || height == 0) {
        return;
    }
    // Deliberate: the chroma position is rounded down while the chroma size is rounded up.
    const KorSizeT widthChroma = (width + 1) / 2;
    const KorSizeT heightChroma = (height + 1) / 2;
    const KorSizeT xPositionChroma = xPosition / 2;
    const KorSizeT yPositionChroma = yPosition / 2;
    BlendBufferAlphaArray(Region({yBackground, yBackgroundPitch}, xPosition, yPosition),
                          TopDown({yForeground, yForegroundPitch}), TopDown({yAlpha, yAlphaPitch}), width, height);
    BlendBufferAlphaArray(Region({uBackground, uBackgroundPitch}, xPositionChroma, yPositionChroma),
                          TopDown({uForeground, uForegroundPitch}), TopDown({uAlpha, uAlphaPitch}), widthChroma, heightChroma);
    BlendBufferAlphaArray(Region({vBackground, vBackgroundPitch}, xPositionChroma, yPositionChroma),
                          TopDown({vForeground, vForegroundPitch}), TopDown({vAlpha, vAlphaPitch}), widthChroma, heightChroma);
}
