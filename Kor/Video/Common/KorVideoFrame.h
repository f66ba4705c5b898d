/** @file
 * Declarations about video frames that appear in the signatures of the conversions, and the noise table. */
#ifndef KOR_VIDEO_COMMON_KORVIDEOFRAME_H
#define KOR_VIDEO_COMMON_KORVIDEOFRAME_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"

/**
 * How much dither noise a conversion adds to its input samples. The value is used in the arithmetic: luma noise is
 * a table entry shifted right by 3 minus the level, chroma noise one bit further, so chroma gets half the amplitude.
 *
 *     level                           value   luma noise   chroma noise
 *     KOR_VIDEOFRAMEDITHERLEVEL_Off     0     none         none
 *     KOR_VIDEOFRAMEDITHERLEVEL_0       1     entry / 4    entry / 8
 *     KOR_VIDEOFRAMEDITHERLEVEL_1       2     entry / 2    entry / 4
 *     KOR_VIDEOFRAMEDITHERLEVEL_2       3     entry        entry / 2
 *
 * Off adds none in the conversions; in the dither filter, which has no Off, it means entry / 8 and entry / 16.
 *
 * C cannot choose the width of an enumeration, so there the type is the integer itself.
 */
#if defined(__cplusplus)
enum KorVideoFrameDitherLevel : KorUint {
#else
typedef KorUint KorVideoFrameDitherLevel;
enum {
#endif
    KOR_VIDEOFRAMEDITHERLEVEL_Off = 0,
    KOR_VIDEOFRAMEDITHERLEVEL_0 = 1,
    KOR_VIDEOFRAMEDITHERLEVEL_1 = 2,
    KOR_VIDEOFRAMEDITHERLEVEL_2 = 3
};

KOR_STATIC_ASSERT(KorVideoFrameDitherLevel_is_32_bits, sizeof(KorVideoFrameDitherLevel) == 4);

/** A clockwise rotation in degrees: 0, 90, 180 or 270. Each function that takes one says what other values do. */
typedef KorUint KorImageRotationDegree;

KOR_EXTERN_C_BEGIN

/**
 * The noise that dithering adds: at least 16384 signed values around zero, read at any index modulo 16384. The library
 * refers to the table but does not contain it: a product links its own, or the default one of the platform target.
 */
extern KOR_SERVICE const KorInt16 KorTblDitherStd4[];

KOR_EXTERN_C_END

#endif
