/**
 * @file
 * The contract of the random-bytes service.
 *
 * The library calls this function but does not contain it: a product links its own, or the default one of the platform
 * target. It must be safe to call from every thread that converts frames.
 */
#ifndef KOR_OS_KORRANDOM_H
#define KOR_OS_KORRANDOM_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"

KOR_EXTERN_C_BEGIN

/**
 * Fills count bytes at buffer with random bytes. Returns whether it succeeded; on failure the content of the buffer is
 * unspecified.
 *
 * The library ignores the result: after a failure, noise starts wherever the content of the buffer says, which is the
 * first entry of the table if the buffer was left alone.
 */
KOR_SERVICE KorBool KorRandomGetBytes(char* buffer, KorSizeT count);

KOR_EXTERN_C_END

#endif
