/*
 * broken CRIME [OPTION]...: a vendor's program whose mirror and whose renderer are right but for one crime, at one size.
 * The kit has to see each.
 */
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include "Kor/Os/KorRandom.h"
#include "KorConformance.h"

static const char* crime;

static int Commits(const char* name) {
    return strcmp(crime, name) == 0;
}

static void Mirror(const KorUint8* src, KorDistanceT pitchSrc,
                   KorUint8* dst, KorSizeT pitchDst,
                   KorSizeT width, KorSizeT height) {
    KorPlanarMirror_C_(src, pitchSrc, dst, pitchDst, width, height);
    if (width != 19 || height != 3) {
        return;
    }
    if (Commits("sample")) {
        dst[pitchDst + 4] ^= 1;
    } else if (Commits("padding") && pitchDst > width) {
        dst[pitchDst + width] ^= 1;
    } else if (Commits("behind")) {
        dst[2 * pitchDst + width] ^= 1;
    } else if (Commits("before")) {
        dst[-1] ^= 1;
    } else if (Commits("read") && pitchSrc > 0) {
        /* Volatile, so that it is read although nothing comes of it. */
        const volatile KorUint8* end = src + 2 * pitchSrc + width;
        dst[0] = (KorUint8)(dst[0] + (*end & 0));
    } else if (Commits("source")) {
        ((KorUint8*)(size_t)src)[2] ^= 1;
    } else if (Commits("abroad")) {
        *(volatile KorUint8*)(size_t)((size_t)1 << 20) = 1;
    } else if (Commits("trap")) {
        (void)raise(SIGTRAP);
    }
}

static void Render(const KorUint8* y, KorSizeT pitchY,
                   const KorUint8* u, KorSizeT pitchU,
                   const KorUint8* v, KorSizeT pitchV,
                   KorUint8* x, KorSizeT pitchX,
                   KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel) {
    char byte[1];
    /* Volatile, so that no compiler knows what is touched. */
    KorUint8* volatile place = x;
    KorI420ToBGRA_C_(y, pitchY, u, pitchU, v, pitchV, x, pitchX, width, height, ditherLevel);
    if (width == 4 && height == 2 && Commits("draw")) {
        (void)KorRandomGetBytes(byte, 1);
    }
    if (x == NULL ? Commits("null") : (width == 0 || height == 0) && Commits("empty")) {
        *place = 1;
    }
}

int main(int argc, char** argv) {
    KorConformanceTable table = {0};
    if (argc < 2) {
        fprintf(stderr, "usage: broken CRIME [OPTION]...\n");
        return 2;
    }
    crime = argv[1];
    argv[1] = argv[0];
    if (!Commits("absence")) {
        table.KorPlanarMirror = &Mirror;
        table.KorI420ToBGRA = &Render;
    }
    return KorConformanceMain(argc - 1, argv + 1, "broken <by \"design\">", &table, NULL);
}
