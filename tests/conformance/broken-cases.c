/*
 * broken-cases FAULT [OPTION]...: variants that are right in most cases: each fault shows at certain sizes, pitches,
 * weights, positions, colours or places of the matrix only. The kit has to come across each.
 */
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "KorConformance.h"

static const char* fault;

static int Has(const char* name) {
    return strcmp(fault, name) == 0;
}

/* "width=93" is a fault at that width only. */
static int HasWidth(KorSizeT width) {
    return strncmp(fault, "width=", 6) == 0 && width == (KorSizeT)atoi(fault + 6);
}

static int IsBroken(KorSizeT width, KorSizeT height) {
    return HasWidth(width) || (Has("50 by 8") && width >= 50 && height >= 8) ||
           (Has("64 by 64") && width >= 64 && height >= 64) || (Has("wider than 4099") && width > 4099) ||
           (Has("higher than 512") && width >= 16 && height > 512) ||
           (Has("large and rare") && width > 1400 && width < 1900 && height > 700);
}

static void Capture(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                    const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip) {
    KorSizeT i;
    KorBGRAToI420_C_(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip);
    if (IsBroken(width, height)) {
        v[(width - 1) / 2] ^= 1;
    }
    for (i = 0; Has("one colour") && !flip && i < width * height; ++i) {
        const KorUint8* pixel = x + i / width * pitchX + 4 * (i % width);
        if (pixel[0] == 99 && pixel[1] == 201 && pixel[2] == 17) {
            y[i / width * pitchY + i % width] ^= 1;
        }
    }
}

/* Not inlined: only the long rows are to need it. */
__attribute__((noinline)) static void NeedStack(void) {
    char much[4 << 20];
    char* volatile lowest = much;
    *lowest = 1;
}

/* Row by row, so that offsets and pitches can be cut. */
static void Mirror(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                   KorSizeT height) {
    KorSizeT row;
    if (Has("stack of a long row") && width > 60000) {
        NeedStack();
    }
    if (Has("pitch of 16 bits")) {
        pitchDst = (uint16_t)pitchDst;
    } else if (Has("pitch of 32 bits")) {
        pitchDst = (uint32_t)pitchDst;
    }
    for (row = 0; width > 0 && row < height; ++row) {
        const KorDistanceT from = (KorDistanceT)row * pitchSrc;
        const KorSizeT to = row * pitchDst;
        KorPlanarMirror_C_(src + (Has("source offset of 32 bits") ? (int32_t)from : from), pitchSrc,
                           dst + (Has("offset of 32 bits") ? (uint32_t)to : to), pitchDst, width, 1);
    }
}

static void Rotate(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                   KorSizeT height, KorImageRotationDegree rotationDegree) {
    if (Has("angle of 16 bits")) {
        rotationDegree = (uint16_t)rotationDegree;
    }
    KorPlanarRotation_C_(src, pitchSrc, dst, pitchDst, width, height, rotationDegree);
}

static int LiesIn(const void* place, const KorUint8* plane, KorSizeT size) {
    return (uintptr_t)place >= (uintptr_t)plane && (uintptr_t)place < (uintptr_t)plane + size;
}

/* Copies a matrix first that is to be read anew for each sample. */
static void CaptureGeneral(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                           const KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height, KorBool flip,
                           const KorInt (*coeffs)[3]) {
    KorInt copy[3][3];
    const KorSizeT heightC = (height + 1) / 2;
    const int writes = width > 0 && height > 0;
    if (writes || Has("matrix of no size")) {
        memcpy(copy, coeffs, sizeof copy);
    }
    if (writes && ((Has("matrix in u") && LiesIn(coeffs, u, heightC * pitchU)) ||
                   (Has("matrix in v") && LiesIn(coeffs, v, heightC * pitchV)) ||
                   (Has("matrix in the spare row") && height % 2 == 1 && LiesIn(coeffs, y + height * pitchY, width)))) {
        coeffs = (const KorInt(*)[3])copy;
    }
    KorBGRAToI420General_C_(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, flip, coeffs);
    if (Has("coefficient of 16 bits") && writes && copy[0][0] > 5000 && copy[0][0] <= 32767) {
        y[0] ^= 1;
    }
}

static void Render(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                   KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                   KorVideoFrameDitherLevel ditherLevel) {
    KorSizeT i;
    KorI444ToBGRA_C_(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, ditherLevel);
    for (i = 0; Has("one triple") && ditherLevel == KOR_VIDEOFRAMEDITHERLEVEL_Off && i < width * height; ++i) {
        const KorSizeT row = i / width;
        const KorSizeT column = i % width;
        if (y[row * pitchY + column] == 100 && u[row * pitchU + column] == 50 && v[row * pitchV + column] == 200) {
            x[row * pitchX + 4 * column] ^= 1;
        }
    }
    if (Has("noise from row 600") && ditherLevel == KOR_VIDEOFRAMEDITHERLEVEL_1 && height > 600 && width > 0) {
        x[600 * pitchX] ^= 1;
    }
}

static void Blend(KorUint8* yBackground, KorSizeT yBackgroundPitch, KorUint8* uBackground, KorSizeT uBackgroundPitch,
                  KorUint8* vBackground, KorSizeT vBackgroundPitch, const KorUint8* yForeground,
                  KorSizeT yForegroundPitch, const KorUint8* uForeground, KorSizeT uForegroundPitch,
                  const KorUint8* vForeground, KorSizeT vForegroundPitch, KorSizeT width, KorSizeT height,
                  KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha) {
    if (Has("weight of 77") && alpha == 77) {
        alpha = 78;
    }
    if (Has("positions beyond 5") && xPosition > 5) {
        xPosition = 5;
    }
    if (Has("rows beyond 255")) {
        yPosition = (uint8_t)yPosition;
    }
    KorI420AlphaBlend_C_(yBackground, yBackgroundPitch, uBackground, uBackgroundPitch, vBackground, vBackgroundPitch,
                         yForeground, yForegroundPitch, uForeground, uForegroundPitch, vForeground, vForegroundPitch,
                         width, height, xPosition, yPosition, alpha);
}

int main(int argc, char** argv) {
    KorConformanceTable table = {0};
    if (argc < 2) {
        fprintf(stderr, "usage: broken-cases FAULT [OPTION]...\n");
        return 2;
    }
    fault = argv[1];
    argv[1] = argv[0];
    table.KorPlanarMirror = &Mirror;
    table.KorPlanarRotation = &Rotate;
    table.KorBGRAToI420 = &Capture;
    table.KorBGRAToI420General = &CaptureGeneral;
    table.KorI444ToBGRA = &Render;
    table.KorI420AlphaBlend = &Blend;
    return KorConformanceMain(argc - 1, argv + 1, "broken", &table, NULL);
}
