/*
 * How a variant of one function is held against the portable one. The function stands here; usually it comes from a
 * library.
 */
#include "KorConformance.h"

/* Mirrors four samples at a time. */
static void MirrorByFours(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                          KorSizeT height) {
    KorSizeT i;
    KorSizeT j;
    if (width == 0) {
        return; /* the planes may be null pointers */
    }
    for (j = 0; j < height; ++j, src += pitchSrc, dst += pitchDst) {
        for (i = 0; i + 4 <= width; i += 4) {
            const KorUint8* s = src + (width - 4 - i);
            dst[i] = s[3];
            dst[i + 1] = s[2];
            dst[i + 2] = s[1];
            dst[i + 3] = s[0];
        }
        for (; i < width; ++i) {
            dst[i] = src[width - 1 - i];
        }
    }
}

int main(int argc, char** argv) {
    KorConformanceTable table = {0};
    table.KorPlanarMirror = &MirrorByFours;
    return KorConformanceMain(argc, argv, "by fours", &table, NULL);
}
