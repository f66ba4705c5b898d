// What the kernels do differently for pictures that the caches do not hold: the policy stands here and nowhere else.
#ifndef KOR_VIDEO_COMMON_VECTOR_MEMORY_H
#define KOR_VIDEO_COMMON_VECTOR_MEMORY_H

#include "Kor/Video/Common/Vector/Target.h"

namespace kor {
namespace KOR_TARGET_NAMESPACE {
namespace {

// Sources of this size and more come from memory. Smaller ones may lie in a cache, where fetching ahead costs and gains nothing.
constexpr KorSizeT kBeyondCaches = KorSizeT{8} << 20;

// Kernels are compiled for both, because even the question would cost the light ones a fifth.
enum class Source {
    Cached,
    BeyondCaches,
};

[[maybe_unused]] Source SourceOf(KorSizeT rowBytes, KorSizeT height) {
    return rowBytes * height >= kBeyondCaches ? Source::BeyondCaches : Source::Cached;
}

// Fetches bytes, which are whole cache lines, ahead of their use. Processors foresee a row by themselves, but only as far as its
// page goes, and would wait for memory at the start of every page. What lies behind the picture may be fetched, too, and need not
// exist.
template <Source source>
KOR_INLINE inline void FetchAhead(const KorUint8* x, KorSizeT bytes) {
    if constexpr (source == Source::BeyondCaches) {
        constexpr KorSizeT kDistance = 2048;
        const uintptr_t ahead = reinterpret_cast<uintptr_t>(x) + kDistance;
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
