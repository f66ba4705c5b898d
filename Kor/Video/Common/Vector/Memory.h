// What the kernels do differently for pictures that the caches do not hold: the policy stands here and nowhere else.
#ifndef KOR_VIDEO_COMMON_VECTOR_MEMORY_H
#define KOR_VIDEO_COMMON_VECTOR_MEMORY_H

#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// Sources of this size and more come from memory. Smaller ones may lie in a cache, where fetching ahead costs and gains nothing.
constexpr KorSizeT kBeyondCaches = KorSizeT{8} << 20;

// How many bytes ahead of its use a source is fetched; 0 for none. Processors foresee a row by themselves, but only as far as
// its page goes, and would wait for memory at the start of every page.
[[maybe_unused]] KorSizeT FetchDistance(KorSizeT rowBytes, KorSizeT height) {
    return rowBytes * height >= kBeyondCaches ? 2048 : 0;
}

// Fetches bytes, which are whole cache lines, at a distance from x. What lies behind the picture may be fetched, too, and need
// not exist.
KOR_INLINE inline void FetchAhead(const KorUint8* x, KorSizeT bytes, KorSizeT distance) {
    if (distance != 0) {
        const uintptr_t ahead = reinterpret_cast<uintptr_t>(x) + distance;
        for (KorSizeT line = 0; line < bytes; line += 64) {
            __builtin_prefetch(reinterpret_cast<const void*>(ahead + line));
        }
    }
}

// Stores a vector of a destination.
template <class V>
KOR_INLINE inline void Store(V x, KorUint8* to) {
    hn::StoreU(x, hn::DFromV<V>(), to);
}

}  // namespace
}  // namespace KOR_TARGET_NAMESPACE
}  // namespace kor

#endif
