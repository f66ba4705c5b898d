/** @file
 * Inline helpers of the video code: clipping. */
#ifndef KOR_VIDEO_COMMON_KORVIDEOCOMMONUTILITYINLINE_H
#define KOR_VIDEO_COMMON_KORVIDEOCOMMONUTILITYINLINE_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"

/** Returns value limited to lo..hi; lo must not exceed hi. A nested conditional, because compilers vectorise it. */
static inline KorInt KorClip3(KorInt lo, KorInt hi, KorInt value) {
    return value < lo ? lo : (value > hi ? hi : value);
}

/** Returns value limited to 0..255: converts an intermediate to a sample with saturation. */
static inline KorUint8 KorByteClip(KorInt value) {
    return KOR_CAST(KorUint8, KorClip3(0, 255, value));
}

#endif
