#ifndef KOR_VIDEO_COMMON_C_KORYUV420_C_H
#define KOR_VIDEO_COMMON_C_KORYUV420_C_H

#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

KOR_EXTERN_C_BEGIN

/* ---- Plane geometry ---- */
KOR_API void KorPlanarUV422To420_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width, KorSizeT height);
KOR_API void KorPlanarUVDeinterlace_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1, KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height);
KOR_API void KorPlanarMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width, KorSizeT height);
KOR_API void KorPlanarUVDeinterlaceMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1, KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height);
KOR_API void KorPlanarRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
KOR_API void KorPlanarUVDeinterlaceRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1, KorUint8* uv2, KorSizeT pitchUv2, KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
KOR_API void KorI420FlipVertical_C_(KorUint8* srcY, KorSizeT srcPitchY, KorUint8* srcU, KorSizeT srcPitchU, KorUint8* srcV, KorSizeT srcPitchV, KorSizeT width, KorSizeT height);

/* ---- RGB to YUV ---- */
KOR_API void KorRGBAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorBGRAToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorARGBToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorABGRToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorBGRAToI444_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorBGRAToI420UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorBGRAToI444UsingBT709_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorBGRAToI420General_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3]);
KOR_API void KorRawToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* rgb, KorSizeT pitchRgb, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void Kor24BGToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* bgr, KorSizeT pitchBgr, KorSizeT width, KorSizeT height, KorBool flip);

/* ---- YUV to RGB ---- */
KOR_API void KorI420ToRGBA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToARGB_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToABGR_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI444ToBGRA_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI444ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToBGRAUsingBT709_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToBGRAGeneral_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420To24BG_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);

/* ---- Packed and semi-planar YUV ---- */
KOR_API void KorYUY2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorUYVYToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorI420ToYUY2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorI420ToUYVY_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
KOR_API void KorYuv2ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* yuv2, KorSizeT pitchYuv2, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorI420toYuv2_C_(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v, KorSizeT pitchV, KorUint8* yuy2, KorSizeT pitchYuy2, KorSizeT width, KorSizeT height);
KOR_API void KorM420ToI420_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* m420, KorSizeT pitchM420, KorSizeT width, KorSizeT height, KorBool flip);
KOR_API void KorYUY2ToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT widthSrc, KorSizeT heightSrc, KorBool flip, KorImageRotationDegree rotationDegree);
KOR_API void KorUYVYToI420WithRotation_C_(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV, const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree);

/* ---- Compositing and noise ---- */
KOR_API void KorI420Dither_C_(const KorUint8* yIn, KorSizeT yInPitch, const KorUint8* uIn, KorSizeT uInPitch, const KorUint8* vIn, KorSizeT vInPitch, KorUint8* yOut, KorSizeT yOutPitch, KorUint8* uOut, KorSizeT uOutPitch, KorUint8* vOut, KorSizeT vOutPitch, KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets);
KOR_API void KorI420AlphaBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground, KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch, const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground, KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch, KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha);
KOR_API void KorI420AlphaArrayBlend_C_(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground, KorSizeT uBackgroundPitch, KorUint8* vBackground, KorSizeT vBackgroundPitch, const KorUint8* yForeground, KorSizeT yForegroundPitch, const KorUint8* uForeground, KorSizeT uForegroundPitch, const KorUint8* vForeground, KorSizeT vForegroundPitch, KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8* yAlpha, KorSizeT yAlphaPitch, KorUint8* uAlpha, KorSizeT uAlphaPitch, KorUint8* vAlpha, KorSizeT vAlphaPitch);

KOR_EXTERN_C_END

#endif
