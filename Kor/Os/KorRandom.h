/**
 * @file
 * The contract of the random-bytes service.
 *
 * The library calls this function and does not contain it: a product links its own, or the default one of the
 * platform target. It must be safe to call from every thread that converts frames.
 */
#ifndef KOR_OS_KORRANDOM_H
#define KOR_OS_KORRANDOM_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"

KOR_EXTERN_C_BEGIN

/**
 * Fills count bytes at buffer with random bytes. Returns whether it could; on false the buffer's content is open.
 *
 * The library does not look at the answer: noise then starts where the buffer's content says, at the first entry of the
 * table if the buffer was left alone.
 */
KOR_SERVICE KorBool KorRandomGetBytes(char* buffer, KorSizeT count);

KOR_EXTERN_C_END

#endif
