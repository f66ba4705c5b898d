#include "bench/Baselines.h"

#include <vector>

#include "Kor/Video/Common/KorVideoCommonUtilityInline_.h"

namespace bench {

namespace {

void StorePixel(KorUint8* x, KorInt yY, KorInt rR, KorInt gG, KorInt bB) {
    x[0] = KorByteClip(yY + bB);
    x[1] = KorByteClip(yY + gG);
    x[2] = KorByteClip(yY + rR);
    x[3] = 255;
}

}  // namespace

void RenderWithByteStores(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                          KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height) {
    for (KorSizeT i = 0; i < height / 2; ++i) {
        const KorUint8* y0 = y + 2 * i * pitchY;
        const KorUint8* y1 = y0 + pitchY;
        KorUint8* x0 = x + 2 * i * pitchX;
        KorUint8* x1 = x0 + pitchX;
        for (KorSizeT j = 0; j < width / 2; ++j) {
            const KorInt uValue = u[i * pitchU + j];
            const KorInt vValue = v[i * pitchV + j];
            const KorInt rR = ((vValue * 204) >> 7) - 223;
            const KorInt gG = 135 - ((uValue * 25 + vValue * 52) >> 6);
            const KorInt bB = ((uValue * 129) >> 6) - 277;
            StorePixel(x0 + 8 * j, (y0[2 * j] * 149) >> 7, rR, gG, bB);
            StorePixel(x1 + 8 * j, (y1[2 * j] * 149) >> 7, rR, gG, bB);
            StorePixel(x0 + 8 * j + 4, (y0[2 * j + 1] * 149) >> 7, rR, gG, bB);
            StorePixel(x1 + 8 * j + 4, (y1[2 * j + 1] * 149) >> 7, rR, gG, bB);
        }
    }
}

void ConvertThenRotate(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                       const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip,
                       KorImageRotationDegree rotationDegree) {
    // Kept between calls, as in a program that converts a stream.
    static std::vector<KorUint8> scratch;
    const KorSizeT widthC = width / 2;
    const KorSizeT heightC = height / 2;
    scratch.resize(width * height + 2 * widthC * heightC);
    KorUint8* const scratchY = scratch.data();
    KorUint8* const scratchU = scratchY + width * height;
    KorUint8* const scratchV = scratchU + widthC * heightC;
    KorUYVYToI420_C_(scratchY, width, scratchU, widthC, scratchV, widthC, x, pitchX, width, height, flip);
    KorPlanarRotation_C_(scratchY, static_cast<KorDistanceT>(width), y, pitchY, width, height, rotationDegree);
    KorPlanarRotation_C_(scratchU, static_cast<KorDistanceT>(widthC), u, pitchU, widthC, heightC, rotationDegree);
    KorPlanarRotation_C_(scratchV, static_cast<KorDistanceT>(widthC), v, pitchV, widthC, heightC, rotationDegree);
}

}  // namespace bench
