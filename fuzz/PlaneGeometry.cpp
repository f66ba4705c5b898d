// Planes split, mirrored, turned, halved and flipped.
#include "fuzz/Harness.h"

KOR_FUZZ_FAMILY("KorPlanarUV422To420_C_", "KorPlanarUVDeinterlace_C_", "KorPlanarMirror_C_",
                "KorPlanarUVDeinterlaceMirror_C_", "KorPlanarRotation_C_", "KorPlanarUVDeinterlaceRotation_C_",
                "KorI420FlipVertical_C_")
