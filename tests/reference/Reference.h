/*
 * The slow twin of the library: every exported function again, written to be read and checked rather than to be fast.
 *
 * Names and parameter lists equal those of the public header, so one function-pointer type fits both. Each function is
 * written sample by sample: a coordinate, a formula, an address. It shares no code with the library; it uses only the
 * base types, the dither levels, the noise table and the random-bytes service.
 *
 * The functions keep the library's promises to the letter: the same bytes read and written, spare rows and columns
 * included, and the same random draws in the same order.
 */
#ifndef KOR_TESTS_REFERENCE_REFERENCE_H
#define KOR_TESTS_REFERENCE_REFERENCE_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace reference {

// Plane geometry
void KorPlanarUV422To420_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                            KorSizeT width, KorSizeT height);
void KorPlanarUVDeinterlace_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                               KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height);
void KorPlanarMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                        KorSizeT height);
void KorPlanarUVDeinterlaceMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                                     KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height);
void KorPlanarRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                          KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
void KorPlanarUVDeinterlaceRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                                       KorUint8* uv2, KorSizeT pitchUv2, KorSizeT widthSrc, KorSizeT heightSrc,
                                       KorImageRotationDegree rotationDegree);
void KorI420FlipVertical_C_(KorUint8* srcY, KorSizeT srcPitchY, KorUint8* srcU, KorSizeT srcPitchU, KorUint8* srcV,
                            KorSizeT srcPitchV, KorSizeT width, KorSizeT height);

// RGB to YUV
void KorRGBAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorBGRAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorARGBToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorABGRToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorBGRAToI444_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorBGRAToI420UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                KorBool flip);
void KorBGRAToI444UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                KorBool flip);
void KorBGRAToI420General_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                             const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip,
                             const KorInt (*coeffs)[3]);
void KorRawToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                     const KorUint8* rgb, KorSizeT pitchRgb, KorSizeT width, KorSizeT height, KorBool flip);
void Kor24BGToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* bgr, KorSizeT pitchBgr, KorSizeT width, KorSizeT height, KorBool flip);

// YUV to RGB
void KorI420ToRGBA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI420ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI420ToARGB_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI420ToABGR_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI444ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI444ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width,
                                KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
void KorI420ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU,
                                const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width,
                                KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
void KorI420ToBGRAGeneral_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                             KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                             const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel);
void KorI420To24BG_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);

// Packed and semi-planar YUV
void KorYUY2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorUYVYToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
void KorI420ToYUY2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorI420ToUYVY_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel);
void KorYuv2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* yuv2, KorSizeT pitchYuv2, KorSizeT width, KorSizeT height, KorBool flip);
void KorI420toYuv2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                      KorSizeT pitchV, KorUint8* yuy2, KorSizeT pitchYuy2, KorSizeT width, KorSizeT height);
void KorM420ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                      const KorUint8* m420, KorSizeT pitchM420, KorSizeT width, KorSizeT height, KorBool flip);
void KorYUY2ToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                  KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT widthSrc,
                                  KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree);
void KorUYVYToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v,
                                  KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                                  KorBool flip, KorImageRotationDegree rotationDegree);

// Compositing and noise
void KorI420Dither_C_(const KorUint8* yIn, KorSizeT yInPitch, const KorUint8* uIn, KorSizeT uInPitch,
                      const KorUint8* vIn, KorSizeT vInPitch, KorUint8* yOut, KorSizeT yOutPitch, KorUint8* uOut,
                      KorSizeT uOutPitch, KorUint8* vOut, KorSizeT vOutPitch, KorSizeT width, KorSizeT height,
                      KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets);
void KorI420AlphaBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground,
                          KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch,
                          const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground,
                          KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch,
                          KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha);
void KorI420AlphaArrayBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground,
                               KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch,
                               const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground,
                               KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch,
                               KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                               KorUint8* yAlpha, KorSizeT yAlphaPitch, KorUint8* uAlpha, KorSizeT uAlphaPitch,
                               KorUint8* vAlpha, KorSizeT vAlphaPitch);

}  // namespace reference

#endif
