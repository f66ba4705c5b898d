// The shapes of the 38 functions: what stands behind a function's name where it is defined, and what it passes on. The list
// in KorYuv420Functions_.inc names the shape of every function.
//
//     void KorBGRAToI420 KOR_PARAMETERS_Capture { return KorBGRAToI420_C_ KOR_ARGUMENTS_Capture; }
#ifndef KOR_VIDEO_COMMON_KORYUV420SHAPES_H
#define KOR_VIDEO_COMMON_KORYUV420SHAPES_H

// clang-format off
#define KOR_PARAMETERS_Plane \
    (const KorUint8* src, KorDistanceT pitchSrc, \
     KorUint8* dst, KorSizeT pitchDst, \
     KorSizeT width, KorSizeT height)

#define KOR_ARGUMENTS_Plane \
    (src, pitchSrc, dst, pitchDst, width, height)

#define KOR_PARAMETERS_Split \
    (const KorUint8* src, KorDistanceT pitchSrc, \
     KorUint8* uv1, KorSizeT pitchUv1, \
     KorUint8* uv2, KorSizeT pitchUv2, \
     KorSizeT width, KorSizeT height)

#define KOR_ARGUMENTS_Split \
    (src, pitchSrc, uv1, pitchUv1, uv2, pitchUv2, width, height)

#define KOR_PARAMETERS_PlaneRotation \
    (const KorUint8* src, KorDistanceT pitchSrc, \
     KorUint8* dst, KorSizeT pitchDst, \
     KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree)

#define KOR_ARGUMENTS_PlaneRotation \
    (src, pitchSrc, dst, pitchDst, widthSrc, heightSrc, rotationDegree)

#define KOR_PARAMETERS_SplitRotation \
    (const KorUint8* src, KorDistanceT pitchSrc, \
     KorUint8* uv1, KorSizeT pitchUv1, \
     KorUint8* uv2, KorSizeT pitchUv2, \
     KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree)

#define KOR_ARGUMENTS_SplitRotation \
    (src, pitchSrc, uv1, pitchUv1, uv2, pitchUv2, widthSrc, heightSrc, rotationDegree)

#define KOR_PARAMETERS_FlipVertical \
    (KorUint8* srcY, KorSizeT srcPitchY, \
     KorUint8* srcU, KorSizeT srcPitchU, \
     KorUint8* srcV, KorSizeT srcPitchV, \
     KorSizeT width, KorSizeT height)

#define KOR_ARGUMENTS_FlipVertical \
    (srcY, srcPitchY, srcU, srcPitchU, srcV, srcPitchV, width, height)

#define KOR_PARAMETERS_Capture \
    (KorUint8* y, KorSizeT pitchY, \
     KorUint8* u, KorSizeT pitchU, \
     KorUint8* v, KorSizeT pitchV, \
     const KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height, KorBool flip)

#define KOR_ARGUMENTS_Capture \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip)

#define KOR_PARAMETERS_CaptureGeneral \
    (KorUint8* y, KorSizeT pitchY, \
     KorUint8* u, KorSizeT pitchU, \
     KorUint8* v, KorSizeT pitchV, \
     const KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3])

#define KOR_ARGUMENTS_CaptureGeneral \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip, coeffs)

#define KOR_PARAMETERS_Render \
    (const KorUint8* y, KorSizeT pitchY, \
     const KorUint8* u, KorSizeT pitchU, \
     const KorUint8* v, KorSizeT pitchV, \
     KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel)

#define KOR_ARGUMENTS_Render \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, ditherLevel)

#define KOR_PARAMETERS_RenderGeneral \
    (const KorUint8* y, KorSizeT pitchY, \
     const KorUint8* u, KorSizeT pitchU, \
     const KorUint8* v, KorSizeT pitchV, \
     KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel)

#define KOR_ARGUMENTS_RenderGeneral \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, coeffs, ditherLevel)

#define KOR_PARAMETERS_CaptureRotation \
    (KorUint8* y, KorSizeT pitchY, \
     KorUint8* u, KorSizeT pitchU, \
     KorUint8* v, KorSizeT pitchV, \
     const KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree)

#define KOR_ARGUMENTS_CaptureRotation \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip, rotationDegree)

#define KOR_PARAMETERS_Pack \
    (const KorUint8* y, KorSizeT pitchY, \
     const KorUint8* u, KorSizeT pitchU, \
     const KorUint8* v, KorSizeT pitchV, \
     KorUint8* x, KorSizeT pitchX, \
     KorSizeT width, KorSizeT height)

#define KOR_ARGUMENTS_Pack \
    (y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height)

#define KOR_PARAMETERS_Dither \
    (const KorUint8* yIn, KorSizeT yInPitch, \
     const KorUint8* uIn, KorSizeT uInPitch, \
     const KorUint8* vIn, KorSizeT vInPitch, \
     KorUint8* yOut, KorSizeT yOutPitch, \
     KorUint8* uOut, KorSizeT uOutPitch, \
     KorUint8* vOut, KorSizeT vOutPitch, \
     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets)

#define KOR_ARGUMENTS_Dither \
    (yIn, yInPitch, uIn, uInPitch, vIn, vInPitch, yOut, yOutPitch, uOut, uOutPitch, vOut, vOutPitch, \
     width, height, ditherLevel, randomizeNoiseOffsets)

#define KOR_PARAMETERS_Blend \
    (KorUint8* yBackground, KorSizeT yBackgroundPitch, \
     KorUint8* uBackground, KorSizeT uBackgroundPitch, \
     KorUint8* vBackground, KorSizeT vBackgroundPitch, \
     const KorUint8* yForeground, KorSizeT yForegroundPitch, \
     const KorUint8* uForeground, KorSizeT uForegroundPitch, \
     const KorUint8* vForeground, KorSizeT vForegroundPitch, \
     KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha)

#define KOR_ARGUMENTS_Blend \
    (yBackground, yBackgroundPitch, uBackground, uBackgroundPitch, vBackground, vBackgroundPitch, \
     yForeground, yForegroundPitch, uForeground, uForegroundPitch, vForeground, vForegroundPitch, \
     width, height, xPosition, yPosition, alpha)

#define KOR_PARAMETERS_BlendArray \
    (KorUint8* yBackground, KorSizeT yBackgroundPitch, \
     KorUint8* uBackground, KorSizeT uBackgroundPitch, \
     KorUint8* vBackground, KorSizeT vBackgroundPitch, \
     const KorUint8* yForeground, KorSizeT yForegroundPitch, \
     const KorUint8* uForeground, KorSizeT uForegroundPitch, \
     const KorUint8* vForeground, KorSizeT vForegroundPitch, \
     KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, \
     KorUint8* yAlpha, KorSizeT yAlphaPitch, \
     KorUint8* uAlpha, KorSizeT uAlphaPitch, \
     KorUint8* vAlpha, KorSizeT vAlphaPitch)

#define KOR_ARGUMENTS_BlendArray \
    (yBackground, yBackgroundPitch, uBackground, uBackgroundPitch, vBackground, vBackgroundPitch, \
     yForeground, yForegroundPitch, uForeground, uForegroundPitch, vForeground, vForegroundPitch, \
     width, height, xPosition, yPosition, yAlpha, yAlphaPitch, uAlpha, uAlphaPitch, vAlpha, vAlphaPitch)
// clang-format on

#endif
