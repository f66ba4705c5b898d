/*
 * broken CRIME [OPTION]...: a vendor's program whose mirror and whose renderer are right but for one crime. The kit has
 * to see each. "broken crimes" lists those that this processor can commit.
 */
#include <fenv.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "Kor/Os/KorRandom.h"
#include "KorConformance.h"

static const char* crime;
static const char* target = "";
static pthread_t firstThread;

static int Commits(const char* name) {
    return strcmp(crime, name) == 0;
}

/* ---- The processor ----------------------------------------------------------------------------------------------- */

#if defined(__x86_64__) && defined(__LP64__)
#define COMMITS_WITH_REGISTERS 1
static const char* const processorCrimes[] = {"register", "flush", "direction", "x87", "mmx"};
/* The mirror, and then a register that belongs to the caller. */
__asm__(
    ".text\n"
    ".type MirrorAndClobber, @function\n"
    "MirrorAndClobber:\n"
    "    subq $8, %rsp\n"
    "    call MirrorOfAssembly\n"
    "    addq $8, %rsp\n"
    "    xorl %r13d, %r13d\n"
    "    ret\n");

static void ChangeProcessor(void) {
    unsigned mxcsr = 0x9fc0;
    unsigned short control = 0x027f;
    if (Commits("flush")) {
        __asm__ volatile("ldmxcsr %0" : : "m"(mxcsr));
    } else if (Commits("direction")) {
        __asm__ volatile("std");
    } else if (Commits("x87")) {
        __asm__ volatile("fldcw %0" : : "m"(control));
    } else if (Commits("mmx")) {
        __asm__ volatile("pxor %mm0, %mm0");
    }
}
#elif defined(__aarch64__)
#define COMMITS_WITH_REGISTERS 1
static const char* const processorCrimes[] = {"register", "flush"};
__asm__(
    ".text\n"
    ".type MirrorAndClobber, %function\n"
    "MirrorAndClobber:\n"
    "    stp x29, x30, [sp, #-16]!\n"
    "    bl MirrorOfAssembly\n"
    "    ldp x29, x30, [sp], #16\n"
    "    mov x21, #0\n"
    "    ret\n");

static void ChangeProcessor(void) {
    unsigned long long fpcr = 1 << 24;
    if (Commits("flush")) {
        __asm__ volatile("msr fpcr, %0" : : "r"(fpcr));
    }
}
#else
static const char* const processorCrimes[] = {"none"};
static void ChangeProcessor(void) {}
#endif

/* Whether arithmetic goes on as a program expects that never changed the mode. Volatile, so that it goes on here. */
static int RoundsToNearest(void) {
    volatile double one = 1;
    volatile double little = 1e-30;
    return one + little == 1 && -one - little == -1 && one - little == 1;
}

static int KeepsDenormals(void) {
    volatile float denormal = 1e-40f;
    volatile float one = 1;
    return denormal * one != 0;
}

/* ---- The crimes -------------------------------------------------------------------------------------------------- */

/* Not inlined: only this crime is to need it. */
__attribute__((noinline)) static void NeedStack(void) {
    char much[4 << 20];
    char* volatile lowest = much;
    *lowest = 1;
}

/* Mirrors through a scratch row that all threads share. */
static void MirrorByScratch(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                            KorSizeT width, KorSizeT height) {
    static KorUint8 scratch[65536];
    KorSizeT j;
    for (j = 0; j < height; ++j, src += pitchSrc, dst += pitchDst) {
        KorPlanarMirror_C_(src, 0, scratch, 0, width, 1);
        memcpy(dst, scratch, width);
    }
}

static void CrimeAtOneSize(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                           KorSizeT width) {
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
    } else if (Commits("abort")) {
        abort();
    } else if (Commits("exit")) {
        exit(0);
    } else if (Commits("_exit")) {
        _exit(0);
    } else if (Commits("kill")) {
        (void)raise(SIGKILL);
    } else if (Commits("loop")) {
        volatile int forever = 1;
        while (forever) {
        }
    } else if (Commits("rounding")) {
        (void)fesetround(FE_UPWARD);
    } else {
        ChangeProcessor();
    }
}

static void CrimeAtEverySize(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst,
                             KorSizeT width, KorSizeT height) {
    static unsigned long calls;
    static unsigned long lastSum;
    const volatile KorUint8* byte;
    if (Commits("stack")) {
        NeedStack();
    } else if (Commits("leak")) {
        void* volatile lost = malloc(24);
        (void)lost;
    } else if (Commits("rareleak") && ++calls % 1000 == 0) {
        void* volatile lost = malloc(24);
        (void)lost;
    } else if (Commits("thread") && !pthread_equal(pthread_self(), firstThread)) {
        dst[0] ^= 1;
    } else if (Commits("nth") && ++calls % 100000 == 0) {
        dst[0] ^= 1;
    } else if (Commits("again")) {
        unsigned long sum = (unsigned long)(size_t)dst + height;
        KorSizeT i;
        for (i = 0; i < width; ++i) {
            sum = 31 * sum + src[i];
        }
        dst[0] ^= sum == lastSum;
        lastSum = sum;
    } else if (Commits("floats") && !RoundsToNearest()) {
        dst[0] ^= 1;
    } else if (Commits("denormals") && !KeepsDenormals()) {
        dst[0] ^= 1;
    } else if (Commits("restored")) {
        volatile KorUint8* changed = (KorUint8*)(size_t)src;
        changed[2] ^= 1;
        changed[2] ^= 1;
    } else if (Commits("padread") && pitchSrc > (KorDistanceT)width) {
        byte = src + width;
        (void)*byte;
    } else if (Commits("padrewrite") && pitchDst > width) {
        volatile KorUint8* same = dst + width;
        *same = *same;
    }
}

static void Mirror(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                   KorSizeT height) {
    if (Commits("scratch") && width > 0 && width <= 65536) {
        MirrorByScratch(src, pitchSrc, dst, pitchDst, width, height);
        return;
    }
    KorPlanarMirror_C_(src, pitchSrc, dst, pitchDst, width, height);
    if (width == 18 && height == 3) {
        CrimeAtOneSize(src, pitchSrc, dst, pitchDst, width);
    }
    if (width >= 4 && height >= 2) {
        CrimeAtEverySize(src, pitchSrc, dst, pitchDst, width, height);
    }
    if (strcmp(target, "wrong") == 0 && width == 18 && height == 3) {
        dst[0] ^= 1;
    }
}

#if defined(COMMITS_WITH_REGISTERS)
void MirrorAndClobber(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                      KorSizeT height);
/* What the assembly calls. */
void MirrorOfAssembly(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                      KorSizeT height);
void MirrorOfAssembly(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                      KorSizeT height) {
    KorPlanarMirror_C_(src, pitchSrc, dst, pitchDst, width, height);
}
#endif

static void Render(const KorUint8* y, KorSizeT pitchY, const KorUint8* u, KorSizeT pitchU, const KorUint8* v,
                   KorSizeT pitchV, KorUint8* x, KorSizeT pitchX, KorSizeT width, KorSizeT height,
                   KorVideoFrameDitherLevel ditherLevel) {
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

/* ---- Targets ----------------------------------------------------------------------------------------------------- */

static KorSizeT ListTargets(const char** names, KorSizeT count) {
    static const char* const all[] = {"future", "wrong", "right"};
    KorSizeT i;
    for (i = 0; i < 3 && i < count; ++i) {
        names[i] = all[i];
    }
    return 3;
}

static KorBool SelectTarget(const char* name) {
    if (name != NULL && strcmp(name, "future") == 0) {
        return 0;
    }
    target = name == NULL ? "right" : name;
    return 1;
}

int main(int argc, char** argv) {
    KorConformanceTable table = {0};
    size_t i;
    if (argc < 2) {
        fprintf(stderr, "usage: broken CRIME [OPTION]...\n");
        return 2;
    }
    crime = argv[1];
    argv[1] = argv[0];
    firstThread = pthread_self();
    if (Commits("crimes")) {
        for (i = 0; i < sizeof processorCrimes / sizeof processorCrimes[0]; ++i) {
            puts(processorCrimes[i]);
        }
        return 0;
    }
    if (!Commits("absence")) {
        table.KorPlanarMirror = &Mirror;
        table.KorI420ToBGRA = &Render;
    }
#if defined(COMMITS_WITH_REGISTERS)
    if (Commits("register")) {
        table.KorPlanarMirror = &MirrorAndClobber;
    }
#endif
    if (Commits("targets")) {
        return KorConformanceMainWithTargets(argc - 1, argv + 1, "broken", &table, NULL, &ListTargets, &SelectTarget);
    }
    return KorConformanceMain(argc - 1, argv + 1, "broken <by \"design\">", &table, NULL);
}
