// What users would write or do without the library, measured for comparison.
#ifndef KOR_BENCH_BASELINES_H
#define KOR_BENCH_BASELINES_H

#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace bench {

// I420 to BGRA as plain nested loops over blocks, with four byte stores per pixel.
void RenderWithByteStores(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                          KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height);

// UYVY to rotated I420 in two passes: the plain converter into scratch planes, then three plane rotations.
void ConvertThenRotate(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                       const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip,
                       KorImageRotationDegree rotationDegree);

}  // namespace bench

#endif
