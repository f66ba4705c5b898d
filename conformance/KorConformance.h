/*
 * KorConformance: holds a variant of the conversions against the portable ones, byte for byte. For whoever writes a
 * faster variant of one function or of all: a table of function pointers and a main program of three lines are enough.
 *
 *     #include "KorConformance.h"
 *
 *     int main(int argc, char** argv) {
 *         KorConformanceTable table = {0};                        // {} in C++
 *         table.KorBGRAToI420 = &MyBGRAToI420;
 *         return KorConformanceMain(argc, argv, "my variant", &table, NULL);
 *     }
 *
 * Link Kor::Conformance (CMake) or kor-conformance (pkg-config) and leave Kor::Platform out: the kit brings the two
 * services that the library needs, KorRandomGetBytes and KorTblDitherStd4, itself. A variant uses the same two. The
 * program started with --help tells its options.
 *
 * What is tried
 *
 *   Sizes      Every width from 0 to 40 by every height from 0 to 12; every width and height up to 140; then around the
 *              blocks that kernels have up to 512 in both directions, rows and columns longer than 65536, whole
 *              pictures up to 1921x1081, and random sizes up to 2000x2000 from a seed that is printed.
 *   Arguments  All combinations of flips, levels, angles (legal ones and others), directions of the source, positions,
 *              weights, matrices (of every magnitude, up to sums that wrap; in memory of their own and in planes
 *              that are written),
 *              work in place where it is allowed.
 *   Memory     Tight pitches, pitches of whole 16 bytes, odd ones that put every row on another alignment, tight ones
 *              beside others, and pitches of more than 16 and 32 bits; planes that end right before an unmapped page,
 *              and planes that begin right behind one. At sizes of zero also null pointers. A matrix that cannot be
 *              read where nothing is written.
 *   Content    Noise, and in turn all 0, all 255, alternating, ramps, and the values at which arithmetic turns. Every
 *              colour, and every sample with every weight.
 *   Noise      A table with regions of small, extreme, rising and wide 16-bit values; draws that follow from the seed.
 *   Calls      Some under another rounding mode with denormal numbers flushed to zero, on a second thread with a stack
 *              of 64 KiB, with sources that are mapped read-only, with unmapped pages between the rows, again with the
 *              same arguments; one case 110000 times, and a few on two threads at once.
 *
 * What is compared
 *
 *   Destinations   Every byte of the allocation: samples, the spare rows and columns that a function may write, and the
 *                  padding and the bytes around, which nothing may touch.
 *   Sources        Every byte must be as it was. The padding of sources differs between the two calls, so that a byte
 *                  that finds its way from there into a result shows.
 *   Draws          Their number, order and sizes.
 *   Reads          Sources and matrices end with the last byte that may be read, so that one more meets the unmapped
 *                  page.
 *   Processor      Registers that a function has to preserve, rounding mode and other controls of floating point, the
 *                  x87 unit, the direction flag: on x86-64 and AArch64, elsewhere the rounding mode alone.
 *   Memory         Bytes that the C library counts as allocated, where it counts.
 *
 * Each function is tried in a child process, which is watched. A touch on an unmapped page, any other signal, the end
 * of the process and a call that does not return are reported like any difference, with the case that was running.
 * After its first difference a function is left, and the next one is tried. What cannot be checked on a machine is
 * named at the end of the run.
 *
 * Valid C99 and C++17. For systems with mmap, fork, POSIX signals and threads.
 */
#ifndef KORCONFORMANCE_H
#define KORCONFORMANCE_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "Kor/Video/Common/C/KorYuv420_C_.h"

KOR_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------------------------------------------------
 * The table
 * ------------------------------------------------------------------------------------------------------------------ */

/* The fourteen shapes of the functions; the library's header names the arguments of each. */
/* clang-format off */
typedef void (*KorConformancePlane)(const KorUint8* src, KorDistanceT pitchSrc,
                                    KorUint8* dst, KorSizeT pitchDst,
                                    KorSizeT width, KorSizeT height);
typedef void (*KorConformanceSplit)(const KorUint8* src, KorDistanceT pitchSrc,
                                    KorUint8* uv1, KorSizeT pitchUv1,
                                    KorUint8* uv2, KorSizeT pitchUv2,
                                    KorSizeT width, KorSizeT height);
typedef void (*KorConformancePlaneRotation)(const KorUint8* src, KorDistanceT pitchSrc,
                                            KorUint8* dst, KorSizeT pitchDst,
                                            KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
typedef void (*KorConformanceSplitRotation)(const KorUint8* src, KorDistanceT pitchSrc,
                                            KorUint8* uv1, KorSizeT pitchUv1,
                                            KorUint8* uv2, KorSizeT pitchUv2,
                                            KorSizeT widthSrc, KorSizeT heightSrc, KorImageRotationDegree rotationDegree);
typedef void (*KorConformanceFlipVertical)(KorUint8* srcY, KorSizeT srcPitchY,
                                           KorUint8* srcU, KorSizeT srcPitchU,
                                           KorUint8* srcV, KorSizeT srcPitchV,
                                           KorSizeT width, KorSizeT height);
typedef void (*KorConformanceCapture)(KorUint8* y, KorSizeT pitchY,
                                      KorUint8* u, KorSizeT pitchU,
                                      KorUint8* v, KorSizeT pitchV,
                                      const KorUint8* x, KorSizeT pitchX,
                                      KorSizeT width, KorSizeT height, KorBool flip);
typedef void (*KorConformanceCaptureGeneral)(KorUint8* y, KorSizeT pitchY,
                                             KorUint8* u, KorSizeT pitchU,
                                             KorUint8* v, KorSizeT pitchV,
                                             const KorUint8* x, KorSizeT pitchX,
                                             KorSizeT width, KorSizeT height, KorBool flip, const KorInt (*coeffs)[3]);
typedef void (*KorConformanceCaptureRotation)(KorUint8* y, KorSizeT pitchY,
                                              KorUint8* u, KorSizeT pitchU,
                                              KorUint8* v, KorSizeT pitchV,
                                              const KorUint8* x, KorSizeT pitchX,
                                              KorSizeT width, KorSizeT height, KorBool flip, KorImageRotationDegree rotationDegree);
typedef void (*KorConformanceRender)(const KorUint8* y, KorSizeT pitchY,
                                     const KorUint8* u, KorSizeT pitchU,
                                     const KorUint8* v, KorSizeT pitchV,
                                     KorUint8* x, KorSizeT pitchX,
                                     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel);
typedef void (*KorConformanceRenderGeneral)(const KorUint8* y, KorSizeT pitchY,
                                            const KorUint8* u, KorSizeT pitchU,
                                            const KorUint8* v, KorSizeT pitchV,
                                            KorUint8* x, KorSizeT pitchX,
                                            KorSizeT width, KorSizeT height, const KorInt (*coeffs)[3], KorVideoFrameDitherLevel ditherLevel);
typedef void (*KorConformancePack)(const KorUint8* y, KorSizeT pitchY,
                                   const KorUint8* u, KorSizeT pitchU,
                                   const KorUint8* v, KorSizeT pitchV,
                                   KorUint8* x, KorSizeT pitchX,
                                   KorSizeT width, KorSizeT height);
typedef void (*KorConformanceDither)(const KorUint8* yIn, KorSizeT yInPitch,
                                     const KorUint8* uIn, KorSizeT uInPitch,
                                     const KorUint8* vIn, KorSizeT vInPitch,
                                     KorUint8* yOut, KorSizeT yOutPitch,
                                     KorUint8* uOut, KorSizeT uOutPitch,
                                     KorUint8* vOut, KorSizeT vOutPitch,
                                     KorSizeT width, KorSizeT height, KorVideoFrameDitherLevel ditherLevel, KorBool randomizeNoiseOffsets);
typedef void (*KorConformanceBlend)(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                                    KorUint8* uBackground, KorSizeT uBackgroundPitch,
                                    KorUint8* vBackground, KorSizeT vBackgroundPitch,
                                    const KorUint8* yForeground, KorSizeT yForegroundPitch,
                                    const KorUint8* uForeground, KorSizeT uForegroundPitch,
                                    const KorUint8* vForeground, KorSizeT vForegroundPitch,
                                    KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition, KorUint8 alpha);
typedef void (*KorConformanceBlendArray)(KorUint8* yBackground, KorSizeT yBackgroundPitch,
                                         KorUint8* uBackground, KorSizeT uBackgroundPitch,
                                         KorUint8* vBackground, KorSizeT vBackgroundPitch,
                                         const KorUint8* yForeground, KorSizeT yForegroundPitch,
                                         const KorUint8* uForeground, KorSizeT uForegroundPitch,
                                         const KorUint8* vForeground, KorSizeT vForegroundPitch,
                                         KorSizeT width, KorSizeT height, KorSizeT xPosition, KorSizeT yPosition,
                                         KorUint8* yAlpha, KorSizeT yAlphaPitch,
                                         KorUint8* uAlpha, KorSizeT uAlphaPitch,
                                         KorUint8* vAlpha, KorSizeT vAlphaPitch);
/* clang-format on */

/*
 * One pointer for each function, in the order of the library's header and named like it without the suffix. A null
 * pointer means that the variant does not have the function: it is skipped, and reported as such.
 */
typedef struct KorConformanceTable {
#define KOR_FUNCTION(name, shape, family, frames) KorConformance##shape name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"
} KorConformanceTable;

/* The portable functions of the library that is linked. A variant of a few may copy it and replace those. */
KOR_SERVICE const KorConformanceTable* KorConformancePortable(void);

/* ------------------------------------------------------------------------------------------------------------------
 * The run
 * ------------------------------------------------------------------------------------------------------------------ */

/* How a run ends, and the exit status of a program that is made of KorConformanceMain. */
typedef enum KorConformanceStatus {
    KOR_CONFORMANCE_SAME = 0,    /* no difference was found */
    KOR_CONFORMANCE_DIFFERS = 1, /* a function differs, crashes, or touches what is not its business */
    KOR_CONFORMANCE_USAGE = 2    /* nothing was tried: a bad option, an unwritable file, other services linked */
} KorConformanceStatus;

/*
 * How a set that chooses among processor targets names them to the kit: list stores up to count names and returns how
 * many there are; select makes one of them, or with null the automatic choice, the one that the functions use from then
 * on, and returns false if this machine cannot run it.
 */
typedef KorSizeT (*KorConformanceListTargets)(const char** names, KorSizeT count);
typedef KorBool (*KorConformanceSelectTarget)(const char* name);

/* Where contents and draws come from unless another seed is given. */
#define KOR_CONFORMANCE_USUAL_SEED 420

/* Set all to zero for the defaults, and then what differs. */
typedef struct KorConformanceOptions {
    const char* name;                 /* of the variant, for the reports; null: "variant" */
    const KorConformanceTable* model; /* what is expected; null: the portable functions */
    const char* const* functions;     /* names of those to try, with or without suffix; null: all in the table */
    size_t functionCount;
    uint64_t seed;                           /* zero: the usual one */
    size_t randomCases;                      /* of each function; zero: the usual number */
    KorBool quick;                           /* fewer sizes: a tenth of the time, for a first look and for emulators */
    size_t caseNumber;                       /* only this case of each function, as a report numbers it; zero: all */
    KorConformanceListTargets listTargets;   /* both, or null for a set without targets: every target that this */
    KorConformanceSelectTarget selectTarget; /* machine can run is tried, and the automatic choice */
    const char* const* targets;              /* names of those to try, "automatic" among them; null: all */
    size_t targetCount;
    KorBool oneProcess;      /* for a debugger; zero: each function in a child process */
    size_t timeLimit;        /* seconds that a call may take; zero: 10, more on slow machines */
    FILE* text;              /* where to report; null: nowhere */
    const char* junitPath;   /* also write JUnit XML to this file; null: do not */
    const char* programName; /* for the command that repeats a failure; null: "PROGRAM" */
} KorConformanceOptions;

/* Tries every function that the table has. Not to be called on two threads at once. Options may be null. */
KOR_API KorConformanceStatus KorConformanceRun(const KorConformanceTable* table, const KorConformanceOptions* options);

/*
 * The same as a whole program: takes the options from the command line and reports to the standard output. The model is
 * what is expected, null for the portable functions. Returns the exit status.
 */
KOR_API int KorConformanceMain(int argc, char** argv, const char* name, const KorConformanceTable* table,
                               const KorConformanceTable* model);

/* The same for a set with targets. */
KOR_API int KorConformanceMainWithTargets(int argc, char** argv, const char* name, const KorConformanceTable* table,
                                          const KorConformanceTable* model, KorConformanceListTargets list,
                                          KorConformanceSelectTarget select);

KOR_EXTERN_C_END

#endif
