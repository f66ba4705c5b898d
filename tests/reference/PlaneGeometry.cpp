/* Plane geometry: chroma reduction, chroma splitting, mirroring, rotating and flipping. */
#include "tests/reference/Reference.h"
#include "tests/reference/ReferenceDetail.h"

namespace reference {

using namespace detail;

void KorPlanarUV422To420_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                            KorSizeT width, KorSizeT height) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            const Number upper = At(src, pitchSrc, column, 2 * row);
            const Number lower = At(src, pitchSrc, column, 2 * row + 1);
            At(dst, pitchDst, column, row) = LowByte(Average(upper, lower));
        }
    }
}

void KorPlanarUVDeinterlace_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                               KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            At(uv1, pitchUv1, column, row) = At(src, pitchSrc, 2 * column, row);
            At(uv2, pitchUv2, column, row) = At(src, pitchSrc, 2 * column + 1, row);
        }
    }
}

void KorPlanarMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                        KorSizeT height) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            At(dst, pitchDst, column, row) = At(src, pitchSrc, Signed(width) - 1 - column, row);
        }
    }
}

void KorPlanarUVDeinterlaceMirror_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                                     KorUint8* uv2, KorSizeT pitchUv2, KorSizeT width, KorSizeT height) {
    for (Number row = 0; row < Signed(height); ++row) {
        for (Number column = 0; column < Signed(width); ++column) {
            const Number mirrored = Signed(width) - 1 - column;
            At(uv1, pitchUv1, column, row) = At(src, pitchSrc, 2 * mirrored, row);
            At(uv2, pitchUv2, column, row) = At(src, pitchSrc, 2 * mirrored + 1, row);
        }
    }
}

void KorPlanarRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                          KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree) {
    // Deliberate: any other angle leaves the destination as it is, unlike in the split below.
    if (rotationDegree != 0 && rotationDegree != 90 && rotationDegree != 180 && rotationDegree != 270) {
        return;
    }
    if (rotationDegree == 0 && src == dst) {
        return;
    }
    for (Number row = 0; row < Signed(heightSrc); ++row) {
        for (Number column = 0; column < Signed(widthSrc); ++column) {
            const Position to = Rotated({column, row}, Signed(widthSrc), Signed(heightSrc), rotationDegree);
            At(dst, pitchDst, to.column, to.row) = At(src, pitchSrc, column, row);
        }
    }
}

// Deliberate: any other angle rotates by 270.
void KorPlanarUVDeinterlaceRotation_C_(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* uv1, KorSizeT pitchUv1,
                                       KorUint8* uv2, KorSizeT pitchUv2, KorSizeT widthSrc, KorSizeT heightSrc,
                                       KorImageRotationDegree rotationDegree) {
    for (Number row = 0; row < Signed(heightSrc); ++row) {
        for (Number column = 0; column < Signed(widthSrc); ++column) {
            const Position to = Rotated({column, row}, Signed(widthSrc), Signed(heightSrc), rotationDegree);
            At(uv1, pitchUv1, to.column, to.row) = At(src, pitchSrc, 2 * column, row);
            At(uv2, pitchUv2, to.column, to.row) = At(src, pitchSrc, 2 * column + 1, row);
        }
    }
}

namespace {

void FlipPlane(KorUint8* plane, KorSizeT pitch, Number width, Number height) {
    for (Number top = 0; top < height - 1 - top; ++top) {
        const Number bottom = height - 1 - top;
        for (Number column = 0; column < width; ++column) {
            const KorUint8 sample = At(plane, pitch, column, top);
            At(plane, pitch, column, top) = At(plane, pitch, column, bottom);
            At(plane, pitch, column, bottom) = sample;
        }
    }
}

}  // namespace

void KorI420FlipVertical_C_(KorUint8* srcY, KorSizeT srcPitchY, KorUint8* srcU, KorSizeT srcPitchU, KorUint8* srcV,
                            KorSizeT srcPitchV, KorSizeT width, KorSizeT height) {
    // Deliberate: chroma sizes are rounded down, so the last chroma row or column of an odd size stays in place.
    FlipPlane(srcU, srcPitchU, Signed(width / 2), Signed(height / 2));
    FlipPlane(srcV, srcPitchV, Signed(width / 2), Signed(height / 2));
    FlipPlane(srcY, srcPitchY, Signed(width), Signed(height));
}

}  // namespace reference
