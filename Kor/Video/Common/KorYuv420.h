/**
 * @file
 * The conversions of raw video frames, with the fastest form that the processor has. Valid C99 and C++17.
 *
 * These are the 38 functions of Kor/Video/Common/C/KorYuv420_C_.h under their names without suffix, with the same
 * parameters. That header is their manual: what each reads and writes, odd sizes, spare rows and columns, overlap and
 * random draws are the same here, and so is every byte of every result, whatever the processor.
 *
 * What differs is how they get there. Each function has a form for several targets, that is, sets of instructions that
 * processors may have. The first call chooses the best one that this processor runs; the choice is the only thing that is
 * kept between calls, and it never changes a result.
 *
 * The environment variable KOR_TARGET names a target for the first call. Unset, empty or not to be had on this machine,
 * it changes nothing.
 *
 * Large destinations, of 12,000,000 bytes and more, are written past the caches where that is faster: whoever reads them next
 * would find little of them in a cache anyway. With KOR_STREAMING=0 in the environment of the first call none is. With
 * KOR_STREAMING=always all are, as far as their addresses allow, which is slower and made for tests.
 */
#ifndef KOR_VIDEO_COMMON_KORYUV420_H
#define KOR_VIDEO_COMMON_KORYUV420_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

KOR_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup targets Targets
 * Which form of the functions is used. All three may be called on any thread.
 * @{
 */

/**
 * The name of the target in use: "avx512", "avx2", "sse4", "ssse3", "neon", "sve2", "sve", "wasm" or "portable". Chooses
 * one if there was no call yet. Chosen automatically, it is the best of this machine; single functions may then use
 * another one that is faster.
 */
KOR_API const char* KorYuv420Target(void);

/**
 * Writes the names of the targets that were compiled in, best first, at most count of them, and returns how many there
 * are. The last one is "portable". Whether this machine can run them is not asked.
 */
KOR_API KorSizeT KorYuv420Targets(const char** names, KorSizeT count);

/**
 * Selects a target for all calls from now on; a call that runs meanwhile uses the old or the new one. Null returns to
 * the automatic choice. A selected target is used strictly: its own form of a function or, where it has none, the
 * portable one. Returns false, and changes nothing, if the name is unknown or this machine cannot run the target.
 */
KOR_API KorBool KorYuv420SelectTarget(const char* name);

/** @} */

/* ------------------------------------------------------------------------------------------------------------------ */
/**
 * @defgroup dispatched The 38 functions
 * Each is as the portable function that it names, whose family says what it does.
 * @{
 */

/* Plane geometry */

/** As KorPlanarUV422To420_C_(). */
KOR_API void KorPlanarUV422To420(const KorUint8* src, KorDistanceT pitchSrc,
                                 KorUint8* dst, KorSizeT pitchDst,
                                 KorSizeT width, KorSizeT height);

/** As KorPlanarUVDeinterlace_C_(). */
KOR_API void KorPlanarUVDeinterlace(const KorUint8* src, KorDistanceT pitchSrc,
                                    KorUint8* uv1, KorSizeT pitchUv1,
                                    KorUint8* uv2, KorSizeT pitchUv2,
                                    KorSizeT width, KorSizeT height);

/** As KorPlanarMirror_C_(). */
KOR_API void KorPlanarMirror(const KorUint8* src, KorDistanceT pitchSrc,
                             KorUint8* dst, KorSizeT pitchDst,
                             KorSizeT width, KorSizeT height);

/** As KorPlanarUVDeinterlaceMirror_C_(). */
KOR_API void KorPlanarUVDeinterlaceMirror(const KorUint8* src, KorDistanceT pitchSrc,
                                          KorUint8* uv1, KorSizeT pitchUv1,
                                          KorUint8* uv2, KorSizeT pitchUv2,
                                          KorSizeT width, KorSizeT height);

/** As KorPlanarRotation_C_(). */
KOR_API void KorPlanarRotation(const KorUint8* src, KorDistanceT pitchSrc,
                               KorUint8* dst, KorSizeT pitchDst,
                               KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);

/** As KorPlanarUVDeinterlaceRotation_C_(). */
KOR_API void KorPlanarUVDeinterlaceRotation(const KorUint8* src, KorDistanceT pitchSrc,
                                            KorUint8* uv1, KorSizeT pitchUv1,
                                            KorUint8* uv2, KorSizeT pitchUv2,
                                            KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);

/** As KorI420FlipVertical_C_(). */
KOR_API void KorI420FlipVertical(KorUint8* srcY, KorSizeT srcPitchY,
                                 KorUint8* srcU, KorSizeT srcPitchU,
                                 KorUint8* srcV, KorSizeT srcPitchV,
                                 KorSizeT width, KorSizeT height);

/* RGB to YUV */

/** As KorRGBAToI420_C_(). */
KOR_API void KorRGBAToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorBGRAToI420_C_(). */
KOR_API void KorBGRAToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorARGBToI420_C_(). */
KOR_API void KorARGBToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorABGRToI420_C_(). */
KOR_API void KorABGRToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorBGRAToI444_C_(). */
KOR_API void KorBGRAToI444(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorBGRAToI420UsingBT709_C_(). */
KOR_API void KorBGRAToI420UsingBT709(KorUint8* y, KorSizeT pitchY,
                                     KorUint8* u, KorSizeT pitchU,
                                     KorUint8* v, KorSizeT pitchV,
                                     const KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorBool flip);

/** As KorBGRAToI444UsingBT709_C_(). */
KOR_API void KorBGRAToI444UsingBT709(KorUint8* y, KorSizeT pitchY,
                                     KorUint8* u, KorSizeT pitchU,
                                     KorUint8* v, KorSizeT pitchV,
                                     const KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorBool flip);

/** As KorBGRAToI420General_C_(). */
KOR_API void KorBGRAToI420General(KorUint8* y, KorSizeT pitchY,
                                  KorUint8* u, KorSizeT pitchU,
                                  KorUint8* v, KorSizeT pitchV,
                                  const KorUint8* x, KorSizeT pitchX,
                                  KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3]);

/** As KorRawToI420_C_(). */
KOR_API void KorRawToI420(KorUint8* y, KorSizeT pitchY,
                          KorUint8* u, KorSizeT pitchU,
                          KorUint8* v, KorSizeT pitchV,
                          const KorUint8* rgb, KorSizeT pitchRgb,
                          KorSizeT width, KorSizeT height, KorBool flip);

/** As Kor24BGToI420_C_(). */
KOR_API void Kor24BGToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* bgr, KorSizeT pitchBgr,
                           KorSizeT width, KorSizeT height, KorBool flip);

/* YUV to RGB */

/** As KorI420ToRGBA_C_(). */
KOR_API void KorI420ToRGBA(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToBGRA_C_(). */
KOR_API void KorI420ToBGRA(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToARGB_C_(). */
KOR_API void KorI420ToARGB(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToABGR_C_(). */
KOR_API void KorI420ToABGR(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI444ToBGRA_C_(). */
KOR_API void KorI444ToBGRA(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI444ToBGRAUsingBT709_C_(). */
KOR_API void KorI444ToBGRAUsingBT709(const KorUint8* y, KorSizeT pitchY,
                                     const KorUint8* u, KorSizeT pitchU,
                                     const KorUint8* v, KorSizeT pitchV,
                                     KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToBGRAUsingBT709_C_(). */
KOR_API void KorI420ToBGRAUsingBT709(const KorUint8* y, KorSizeT pitchY,
                                     const KorUint8* u, KorSizeT pitchU,
                                     const KorUint8* v, KorSizeT pitchV,
                                     KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToBGRAGeneral_C_(). */
KOR_API void KorI420ToBGRAGeneral(const KorUint8* y, KorSizeT pitchY,
                                  const KorUint8* u, KorSizeT pitchU,
                                  const KorUint8* v, KorSizeT pitchV,
                                  KorUint8* x, KorSizeT pitchX,
                                  KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel);

/** As KorI420To24BG_C_(). */
KOR_API void KorI420To24BG(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/* Packed and semi-planar YUV */

/** As KorYUY2ToI420_C_(). */
KOR_API void KorYUY2ToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorUYVYToI420_C_(). */
KOR_API void KorUYVYToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorYUY2ToI420WithRotation_C_(). */
KOR_API void KorYUY2ToI420WithRotation(KorUint8* y, KorSizeT pitchY,
                                       KorUint8* u, KorSizeT pitchU,
                                       KorUint8* v, KorSizeT pitchV,
                                       const KorUint8* x, KorSizeT pitchX,
                                       KorSizeT widthSrc, KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree);

/** As KorUYVYToI420WithRotation_C_(). */
KOR_API void KorUYVYToI420WithRotation(KorUint8* y, KorSizeT pitchY,
                                       KorUint8* u, KorSizeT pitchU,
                                       KorUint8* v, KorSizeT pitchV,
                                       const KorUint8* x, KorSizeT pitchX,
                                       KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree);

/** As KorI420ToYUY2_C_(). */
KOR_API void KorI420ToYUY2(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorI420ToUYVY_C_(). */
KOR_API void KorI420ToUYVY(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* x, KorSizeT pitchX,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/** As KorYuv2ToI420_C_(). */
KOR_API void KorYuv2ToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* yuv2, KorSizeT pitchYuv2,
                           KorSizeT width, KorSizeT height, KorBool flip);

/** As KorI420toYuv2_C_(). */
KOR_API void KorI420toYuv2(const KorUint8* y, KorSizeT pitchY,
                           const KorUint8* u, KorSizeT pitchU,
                           const KorUint8* v, KorSizeT pitchV,
                           KorUint8* yuy2, KorSizeT pitchYuy2,
                           KorSizeT width, KorSizeT height);

/** As KorM420ToI420_C_(). */
KOR_API void KorM420ToI420(KorUint8* y, KorSizeT pitchY,
                           KorUint8* u, KorSizeT pitchU,
                           KorUint8* v, KorSizeT pitchV,
                           const KorUint8* m420, KorSizeT pitchM420,
                           KorSizeT width, KorSizeT height, KorBool flip);

/* Compositing and noise */

/** As KorI420Dither_C_(). */
KOR_API void KorI420Dither(const KorUint8* yIn, KorSizeT yInPitch,
                           const KorUint8* uIn, KorSizeT uInPitch,
                           const KorUint8* vIn, KorSizeT vInPitch,
                           KorUint8* yOut, KorSizeT yOutPitch,
                           KorUint8* uOut, KorSizeT uOutPitch,
                           KorUint8* vOut, KorSizeT vOutPitch,
                           KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets);

/** As KorI420AlphaBlend_C_(). */
KOR_API void KorI420AlphaBlend(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                               KorUint8* uBackground, KorSizeT uBackgroundPitch,
                               KorUint8* vBackground, KorSizeT vBackgroundPitch,
                               const KorUint8* yForeground, KorSizeT yForegroundPitch,
                               const KorUint8* uForeground, KorSizeT uForegroundPitch,
                               const KorUint8* vForeground, KorSizeT vForegroundPitch,
                               KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha);

/** As KorI420AlphaArrayBlend_C_(). */
KOR_API void KorI420AlphaArrayBlend(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                                    KorUint8* uBackground, KorSizeT uBackgroundPitch,
                                    KorUint8* vBackground, KorSizeT vBackgroundPitch,
                                    const KorUint8* yForeground, KorSizeT yForegroundPitch,
                                    const KorUint8* uForeground, KorSizeT uForegroundPitch,
                                    const KorUint8* vForeground, KorSizeT vForegroundPitch,
                                    KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                                    KorUint8* yAlpha, KorSizeT yAlphaPitch,
                                    KorUint8* uAlpha, KorSizeT uAlphaPitch,
                                    KorUint8* vAlpha, KorSizeT vAlphaPitch);

/** @} */

KOR_EXTERN_C_END

#endif
