/** @file
 * Inline wrappers of the standard-library calls that the library makes. */
#ifndef KOR_UTILS_KORSTDCLIBINLINE_H
#define KOR_UTILS_KORSTDCLIBINLINE_H

#include <string.h>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

/** Copies n bytes from s2 to s1 and returns s1. The two regions must not overlap. */
static inline void* KorMemCpy(void* s1, const void* s2, KorSizeT n) {
    return memcpy(s1, s2, n);
}

#endif
