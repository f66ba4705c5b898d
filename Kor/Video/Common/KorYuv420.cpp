// The dispatched conversions: 38 functions of one line, which call what a table names, and the choice of the table.
//
//   - There is one table a target, made when the library is compiled. Its functions go to the portable ones for pictures that
//     they are not made for, such as narrow ones.
//   - The first call chooses a table, unless KorYuv420SelectTarget() has done so before. Nothing runs before main(),
//     nothing is allocated, and nothing waits: the choice is one pointer, and all that is kept.
//   - Without Highway, or compiled by hand, the portable table is the only one. The build defines KOR_WITH_AVX2 and so on
//     for each target that it adds.

#include "Kor/Video/Common/KorYuv420.h"

#include <atomic>
#include <cstdlib>
#if defined(KOR_WITH_SVE)
#include <sys/auxv.h>
#endif

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420Shapes_.h"

namespace kor {

// For the kernels: the size in bytes from which they are to write destinations past the caches.
KorSizeT StreamingSize();

struct Functions {
#define KOR_FUNCTION(name, shape, family, frames) decltype(&name##_C_) name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"
};

namespace portable {

constexpr Functions kFunctions = {
#define KOR_FUNCTION(name, shape, family, frames) &name##_C_,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
};

}  // namespace portable
}  // namespace kor

#if defined(KOR_WITH_SSSE3)
#define KOR_TARGET_NAMESPACE ssse3
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_SSE4)
#define KOR_TARGET_NAMESPACE sse4
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_AVX2)
#define KOR_TARGET_NAMESPACE avx2
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_AVX512)
#define KOR_TARGET_NAMESPACE avx512
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_NEON)
#define KOR_TARGET_NAMESPACE neon
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_SVE)
#define KOR_TARGET_NAMESPACE sve
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_SVE2)
#define KOR_TARGET_NAMESPACE sve2
#include "Kor/Video/Common/Vector/Target_.inc"
#endif
#if defined(KOR_WITH_WASM)
#define KOR_TARGET_NAMESPACE wasm
#include "Kor/Video/Common/Vector/Target_.inc"
#endif

// By shape, the extent of a picture that has to fill a vector: that of its chroma where each plane has kernels of its own, and of
// both sides where they may be exchanged.
#define KOR_EXTENT_Plane width
#define KOR_EXTENT_Split width
#define KOR_EXTENT_PlaneRotation (widthSrc < heightSrc ? widthSrc : heightSrc)
#define KOR_EXTENT_SplitRotation KOR_EXTENT_PlaneRotation
#define KOR_EXTENT_FlipVertical (width / 2)
#define KOR_EXTENT_Capture width
#define KOR_EXTENT_CaptureGeneral width
#define KOR_EXTENT_Render width
#define KOR_EXTENT_RenderGeneral width
#define KOR_EXTENT_CaptureRotation (width < height ? width : height)
#define KOR_EXTENT_Pack width
#define KOR_EXTENT_Dither (width / 2)
#define KOR_EXTENT_Blend (width / 2)
#define KOR_EXTENT_BlendArray (width / 2)

#if defined(KOR_WITH_AVX2)
#define KOR_TARGET_NAMESPACE avx2
#define KOR_VECTOR_BYTES 32
#define KOR_NARROWER sse4
#include "Kor/Video/Common/Vector/Automatic_.inc"
#endif
#if defined(KOR_WITH_AVX512)
#define KOR_TARGET_NAMESPACE avx512
#define KOR_VECTOR_BYTES 64
#define KOR_NARROWER avx2::automatic
#include "Kor/Video/Common/Vector/Automatic_.inc"
#endif

namespace {

using kor::Functions;

// Whether this processor, and its operating system, can run a target: one test for every flag that the target's units are
// compiled with, and for what the compilers add to these of their own accord.
bool RunsAlways() {
    return true;
}

#if defined(__x86_64__) || defined(__i386__)
#define KOR_CPU_HAS(feature) (__builtin_cpu_supports(feature) != 0)

[[maybe_unused]] bool RunsSsse3() {
    __builtin_cpu_init();
    return KOR_CPU_HAS("sse3") && KOR_CPU_HAS("ssse3");
}

[[maybe_unused]] bool RunsSse4() {
    return RunsSsse3() && KOR_CPU_HAS("sse4.1") && KOR_CPU_HAS("sse4.2") && KOR_CPU_HAS("popcnt");
}

[[maybe_unused]] bool RunsAvx2() {
    return RunsSse4() && KOR_CPU_HAS("avx") && KOR_CPU_HAS("avx2");
}

[[maybe_unused]] bool RunsAvx512() {
    return RunsAvx2() && KOR_CPU_HAS("avx512f") && KOR_CPU_HAS("avx512bw") && KOR_CPU_HAS("avx512dq") && KOR_CPU_HAS("avx512vl") &&
           KOR_CPU_HAS("avx512vbmi") && KOR_CPU_HAS("avx512vnni");
}
#endif

#if defined(KOR_WITH_SVE)
// What Linux calls HWCAP_SVE and HWCAP2_SVE2, which its older headers lack. SVE comes with all else that its flag stands for.
bool RunsSve() {
    return (getauxval(AT_HWCAP) & 1UL << 22) != 0;
}

bool RunsSve2() {
    return RunsSve() && (getauxval(AT_HWCAP2) & 1UL << 1) != 0;
}
#endif

// What the environment variable KOR_STREAMING says about destinations that are written past the caches.
enum Streaming {
    kBySize,
    kNever,
    kAlways,
    kStreamings,
};

constexpr KorSizeT kStreamingSizes[kStreamings] = {KorSizeT{12000000}, ~KorSizeT{0}, 0};

// What a choice consists of: the functions, and the size in bytes from which they stream their destinations.
struct Table {
    Functions functions;
    KorSizeT streamingSize;
};

// A target: a name, its tables, and those of the automatic choice on a machine whose best target this is. The two are to differ
// where measurement finds another target's function faster.
struct Target {
    const char* name;
    bool (*runs)();
    Table strict[kStreamings], automatic[kStreamings];

    constexpr Target(const char* targetName, bool (*targetRuns)(), const Functions& own, const Functions& fastest)
        : name(targetName),
          runs(targetRuns),
          strict{{own, kStreamingSizes[kBySize]}, {own, kStreamingSizes[kNever]}, {own, kStreamingSizes[kAlways]}},
          automatic{{fastest, kStreamingSizes[kBySize]}, {fastest, kStreamingSizes[kNever]}, {fastest, kStreamingSizes[kAlways]}} {}

    bool Has(const Table* table) const {
        for (KorUint streaming = 0; streaming < kStreamings; ++streaming) {
            if (table == &strict[streaming] || table == &automatic[streaming]) {
                return true;
            }
        }
        return false;
    }
};

// Best first.
constexpr Target kTargets[] = {
#if defined(KOR_WITH_AVX512)
    {"avx512", &RunsAvx512, kor::avx512::kFunctions, kor::avx512::automatic::kFunctions},
#endif
#if defined(KOR_WITH_AVX2)
    {"avx2", &RunsAvx2, kor::avx2::kFunctions, kor::avx2::automatic::kFunctions},
#endif
#if defined(KOR_WITH_SSE4)
    {"sse4", &RunsSse4, kor::sse4::kFunctions, kor::sse4::kFunctions},
#endif
#if defined(KOR_WITH_SSSE3)
    {"ssse3", &RunsSsse3, kor::ssse3::kFunctions, kor::ssse3::kFunctions},
#endif
#if defined(KOR_WITH_NEON)
    {"neon", &RunsAlways, kor::neon::kFunctions, kor::neon::kFunctions},
#endif
#if defined(KOR_WITH_SVE)
    // Behind NEON until a processor has been measured: the same bytes have been seen on emulated ones alone.
    {"sve2", &RunsSve2, kor::sve2::kFunctions, kor::sve2::kFunctions},
    {"sve", &RunsSve, kor::sve::kFunctions, kor::sve::kFunctions},
#endif
#if defined(KOR_WITH_WASM)
    {"wasm", &RunsAlways, kor::wasm::kFunctions, kor::wasm::kFunctions},
#endif
    {"portable", &RunsAlways, kor::portable::kFunctions, kor::portable::kFunctions},
};

// The chosen table; null until the first call. Tables are constants, so that no order of memory needs to be kept.
std::atomic<const Table*> chosen = {nullptr};

const Table* AutomaticChoice(Streaming streaming) {
    const Target* target = kTargets;
    while (!target->runs()) {
        ++target;
    }
    return &target->automatic[streaming];
}

bool IsSame(const char* a, const char* b) {
    while (*a != 0 && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b;
}

// Null if the name is unknown or this machine cannot run the target.
const Table* NamedChoice(const char* name, Streaming streaming) {
    for (const Target& target : kTargets) {
        if (IsSame(target.name, name)) {
            return target.runs() ? &target.strict[streaming] : nullptr;
        }
    }
    return nullptr;
}

Streaming StreamingOfEnvironment() {
    const char* value = std::getenv("KOR_STREAMING");
    if (value == nullptr) {
        return kBySize;
    }
    return IsSame(value, "0") ? kNever : IsSame(value, "always") ? kAlways
                                                                 : kBySize;
}

// What the environment names or, if that is nothing that can run, the automatic choice.
const Table* FirstChoice() {
    const Streaming streaming = StreamingOfEnvironment();
    const char* name = std::getenv("KOR_TARGET");
    const Table* named = name != nullptr ? NamedChoice(name, streaming) : nullptr;
    return named != nullptr ? named : AutomaticChoice(streaming);
}

// Threads that come here at once choose the same. A selection that another thread has made in the meantime stands.
[[gnu::noinline, gnu::cold]] const Table* ChooseFirst() {
    const Table* current = nullptr;
    const Table* first = FirstChoice();
    return chosen.compare_exchange_strong(current, first, std::memory_order_relaxed) ? first : current;
}

inline const Table* Chosen() {
    const Table* table = chosen.load(std::memory_order_relaxed);
    return table != nullptr ? table : ChooseFirst();
}

// As it was chosen first: a later selection asks the environment no more.
Streaming ChosenStreaming() {
    const KorSizeT size = Chosen()->streamingSize;
    return size == kStreamingSizes[kNever] ? kNever : size == kStreamingSizes[kAlways] ? kAlways
                                                                                       : kBySize;
}

}  // namespace

KorSizeT kor::StreamingSize() {
    return Chosen()->streamingSize;
}

// ---------------------------------------------------------------------------------------------------------------------
// Targets
// ---------------------------------------------------------------------------------------------------------------------

const char* KorYuv420Target(void) {
    const Table* table = Chosen();
    const Target* target = kTargets;
    while (!target->Has(table)) {
        ++target;
    }
    return target->name;
}

KorSizeT KorYuv420Targets(const char** names, KorSizeT count) {
    KorSizeT all = 0;
    for (const Target& target : kTargets) {
        if (all < count) {
            names[all] = target.name;
        }
        ++all;
    }
    return all;
}

KorBool KorYuv420SelectTarget(const char* name) {
    const Streaming streaming = ChosenStreaming();
    const Table* table = name != nullptr ? NamedChoice(name, streaming) : AutomaticChoice(streaming);
    if (table == nullptr) {
        return 0;
    }
    chosen.store(table, std::memory_order_relaxed);
    return 1;
}

// ---------------------------------------------------------------------------------------------------------------------
// The 38 functions
// ---------------------------------------------------------------------------------------------------------------------

#define KOR_FUNCTION(name, shape, family, frames)       \
    void name KOR_PARAMETERS_##shape {                  \
        Chosen()->functions.name KOR_ARGUMENTS_##shape; \
    }
#include "Kor/Video/Common/KorYuv420Functions_.inc"
