// What is allocated at a moment, as the C library counts it.
#ifndef KOR_CONFORMANCE_KIT_ALLOCATION_H
#define KOR_CONFORMANCE_KIT_ALLOCATION_H

#include <cstddef>

#include "conformance/kit/Poison.h"

#if defined(__GLIBC__)
#if __GLIBC_PREREQ(2, 33)
#include <malloc.h>
#define KOR_CONFORMANCE_COUNTS_ALLOCATION 1
#endif
#endif

namespace kit {

#if defined(KOR_CONFORMANCE_COUNTS_ALLOCATION)
// The sanitizers bring an allocator of their own, which is not counted.
constexpr bool kCountsAllocation = !kSanitized;
inline std::size_t AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
#else
constexpr bool kCountsAllocation = false;
inline std::size_t AllocatedBytes() {
    return 0;
}
#endif

}  // namespace kit

#endif
