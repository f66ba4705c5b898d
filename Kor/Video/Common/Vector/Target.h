// What every file of kernels includes first: Highway for the one target that the file is being compiled for, and the words
// that the families share.
//
// Such a file is compiled once a target, with KOR_TARGET_NAMESPACE as that target's name and with the compiler's flags for
// it; the list is in Kor/CMakeLists.txt. Its functions for the table stand in kor::KOR_TARGET_NAMESPACE, and everything else
// has internal linkage: a weak symbol with the same name in two targets would be linked once, for both.
#ifndef KOR_VIDEO_COMMON_VECTOR_TARGET_H
#define KOR_VIDEO_COMMON_VECTOR_TARGET_H

// The flags alone say what the unit may use. They leave out what no kernel needs, so that fewer processors are excluded.
#define HWY_COMPILE_ONLY_STATIC
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C
#define TOOLCHAIN_MISS_SYS_AUXV_H  // Highway would ask for AES on ARM
// Highway's own assertions would need its library.
#define HWY_IS_DEBUG_BUILD 0
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "Kor/Utils/KorStdCLibInline.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420Shapes_.h"

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
#error "Without vectors the portable set is faster; leave this target out."
#endif

// For the functions that a driver is to be specialised by, and for kernels, which stay functions of their own: a driver that
// inlines several of them is compiled worse.
#define KOR_INLINE __attribute__((always_inline))
#define KOR_KERNEL __attribute__((noinline))

namespace kor {

// The size in bytes from which destinations are written past the caches.
KorSizeT StreamingSize();

namespace KOR_TARGET_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// The functions of this target's table, each of which stands in the file of its family.
#define KOR_FUNCTION(name, shape, family, frames) decltype(name##_C_) name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"

namespace {

constexpr KorSizeT Min(KorSizeT a, KorSizeT b) {
    return a < b ? a : b;
}

constexpr bool IsOdd(KorSizeT size) {
    return size % 2 != 0;
}

// A plane that is written: its rows run downwards.
struct Plane {
    KorUint8* samples;
    KorSizeT pitch;

    KorUint8* Row(KorSizeT row) const { return samples + row * pitch; }
    Plane From(KorSizeT row) const { return {Row(row), pitch}; }
};

// The rows of a source in reading order: downwards from the first row in memory or, with a negative pitch, upwards.
struct SourceRows {
    const KorUint8* first;
    KorDistanceT pitch;

    const KorUint8* Row(KorSizeT row) const { return first + static_cast<KorDistanceT>(row) * pitch; }
    SourceRows From(KorSizeT row) const { return {Row(row), pitch}; }
};

[[maybe_unused]] SourceRows TopDown(const KorUint8* samples, KorSizeT pitch) {
    return {samples, static_cast<KorDistanceT>(pitch)};
}

// The flip convention of the captures: bottom row first when flip is set. The height must not be 0.
[[maybe_unused]] SourceRows ReadingOrder(const KorUint8* x, KorSizeT pitchX, KorSizeT height, KorBool flip) {
    const SourceRows rows = TopDown(x, pitchX);
    return flip ? SourceRows{rows.Row(height - 1), -rows.pitch} : rows;
}

// Calls block(start) for blocks of a fixed size that cover 0 to n; the last one moves back so that it ends with n, and does
// some of the work of the one before again. n must be at least a block, and what a block reads must not have been written by
// another.
template <class Block>
KOR_INLINE inline void ForEachBlock(KorSizeT n, KorSizeT size, Block block) {
    KorSizeT start = 0;
    for (; start + size <= n; start += size) {
        block(start);
    }
    if (start != n) {
        block(n - size);
    }
}

// The same for blocks that do little, two a step: the loop itself would cost as much.
template <class Block>
KOR_INLINE inline void ForEachLightBlock(KorSizeT n, KorSizeT size, Block block) {
    KorSizeT start = 0;
    for (; start + 2 * size <= n; start += 2 * size) {
        block(start);
        block(start + size);
    }
    if (start + size <= n) {
        block(start);
        start += size;
    }
    if (start != n) {
        block(n - size);
    }
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
