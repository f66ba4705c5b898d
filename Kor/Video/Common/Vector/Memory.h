// What the kernels do differently for pictures that the caches do not hold: the policy stands here and nowhere else.
#ifndef KOR_VIDEO_COMMON_VECTOR_MEMORY_H
#define KOR_VIDEO_COMMON_VECTOR_MEMORY_H

#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// How a kernel deals with memory. Each is compiled for all that it needs, because even the question would cost a light one a fifth.
enum class Memory {
    Cached,
    FetchedAhead,
    // Fetched ahead, too, and stored past the caches.
    Streamed,
};

// Fetches bytes, which are whole cache lines, ahead of their use. Processors foresee a row by themselves, but only as far as its
// page goes, and would wait for memory at the start of every page. Rows are read backwards if direction is -1. What lies beyond the
// picture may be fetched, too, and need not exist.
template <Memory memory, int direction = 1>
KOR_INLINE inline void FetchAhead(const KorUint8* x, KorSizeT bytes) {
    if constexpr (memory != Memory::Cached) {
        constexpr KorDistanceT kDistance = 2048;
        const uintptr_t ahead = reinterpret_cast<uintptr_t>(x) + static_cast<uintptr_t>(direction * kDistance);
        for (KorSizeT line = 0; line < bytes; line += 64) {
            __builtin_prefetch(reinterpret_cast<const void*>(ahead + line));
        }
    }
}

// A plain store of a line that is in no cache reads the line first. A streaming store, of a whole vector at a multiple of its size,
// does not; but whoever reads the picture next finds it in memory.
struct PlainStores {
    template <class V>
    static KOR_INLINE inline void Store(V x, KorUint8* to) {
        hn::StoreU(x, hn::DFromV<V>(), to);
    }
};

struct StreamingStores {
    template <class V>
    static KOR_INLINE inline void Store(V x, KorUint8* to) {
        // Highway would store all of a register.
        if constexpr (hn::MaxLanes(hn::DFromV<V>()) < 16) {
            PlainStores::Store(x, to);
        } else {
            hn::Stream(x, hn::DFromV<V>(), to);
        }
    }
};

// Stores the two halves of a vector, such as U and V.
template <class Stores, class V>
KOR_INLINE inline void StoreHalves(Stores stores, V x, KorUint8* lower, KorUint8* upper) {
    const hn::Half<hn::DFromV<V>> half;
#if HWY_HAVE_SCALABLE
    // Halves are of the same type as whole vectors, so that the tag has to tell.
    static_cast<void>(stores);
    hn::StoreU(hn::LowerHalf(half, x), half, lower);
    hn::StoreU(hn::UpperHalf(half, x), half, upper);
#else
    stores.Store(hn::LowerHalf(half, x), lower);
    stores.Store(hn::UpperHalf(half, x), upper);
#endif
}

// Sources of this size and more come from memory. Smaller ones may lie in a cache, where fetching ahead costs and gains nothing.
constexpr KorSizeT kBeyondCaches = KorSizeT{8} << 20;

// The kernel for a picture, of those that are compiled for each kind of memory.
template <class Kernel>
[[maybe_unused]] Kernel ForMemory(KorSizeT sourceBytes, bool isStreamed, Kernel cached, Kernel fetchedAhead, Kernel streamed) {
    return isStreamed ? streamed : sourceBytes >= kBeyondCaches ? fetchedAhead
                                                                : cached;
}

// Whether a plane that is written as part of some bytes is to be streamed, and can be: all of its rows have their whole vectors in
// the same columns, and these are reached in steps of some bytes.
[[maybe_unused]] bool IsStreamed(Plane dst, KorSizeT bytes, KorSizeT stepBytes) {
    return HWY_ARCH_X86 && bytes >= StreamingSize() && dst.pitch % hn::Lanes(hn::ScalableTag<KorUint8>()) == 0 &&
           reinterpret_cast<uintptr_t>(dst.samples) % stepBytes == 0;
}

// The same of three planes whose vectors, or parts of them, are to begin at column 0. Chroma samples stand for some columns.
[[maybe_unused]] bool AreStreamed(Plane y, Plane u, Plane v, KorSizeT bytes, KorSizeT chromaSize) {
    const KorSizeT size = hn::Lanes(hn::ScalableTag<KorUint8>());
    return IsStreamed(y, bytes, size) && IsStreamed(u, bytes, size / chromaSize) && IsStreamed(v, bytes, size / chromaSize);
}

// Ends a picture: what was streamed is in order with all stores that follow.
[[maybe_unused]] void FinishStores(bool isStreamed) {
    if (isStreamed) {
        hwy::FlushStream();
    }
}

// The first pixel of a row, of some bytes each, that begins at a multiple of a vector's size.
template <KorSizeT pixelBytes>
KOR_INLINE inline KorSizeT FirstAligned(const KorUint8* x) {
    const KorSizeT size = hn::Lanes(hn::ScalableTag<KorUint8>());
    const KorSizeT missing = (0 - reinterpret_cast<uintptr_t>(x)) % size;
    // 43 is the inverse of 3 modulo 128.
    return pixelBytes == 3 ? missing * 43 % size : missing / pixelBytes;
}

// Like ForEachBlock, calls block(start, stores), and the blocks that begin at first and at multiples of size from there may be
// streamed. Those at both ends lie anywhere and are stored first, so that streams are not interrupted.
template <Memory memory, class Block>
KOR_INLINE inline void ForEachStoredBlock(KorSizeT n, KorSizeT size, KorSizeT first, Block block) {
    if constexpr (memory != Memory::Streamed) {
        ForEachBlock(n, size, [&](KorSizeT start) KOR_INLINE { block(start, PlainStores()); });
    } else {
        block(0, PlainStores());
        block(n - size, PlainStores());
        for (KorSizeT start = first; start + size <= n; start += size) {
            block(start, StreamingStores());
        }
    }
}

// Stores a vector of a destination.
template <class V>
KOR_INLINE inline void Store(V x, KorUint8* to) {
    PlainStores::Store(x, to);
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
