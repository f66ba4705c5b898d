// Alignments TARGET: destinations at every distance from an aligned address, all planes alike or one alone, against the
// portable functions. With KOR_STREAMING=always a kernel that streams to an unaligned address crashes.
#include <cstdio>
#include <cstring>
#include <random>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

using Capture = decltype(&KorBGRAToI420);
using Render = decltype(&KorI420ToBGRA);

// As wide as two long vectors, with a rest, and a pitch that keeps the alignment of the first row.
constexpr KorSizeT kWidth = 150, kHeight = 5, kAlignment = 64, kPitch = 5 * 128;
constexpr KorSizeT kPlaneBytes = kPitch * (kHeight + 1) + kAlignment;

struct Planes {
    alignas(kAlignment) KorUint8 samples[3][kPlaneBytes];
};

Planes source, result, expected;
int failures = 0;

// Where the first row of each plane begins.
struct Offsets {
    KorSizeT of[3];
};

template <class Call>
void Compare(const char* name, const Offsets& at, Call call) {
    std::memset(&result, 0x5a, sizeof result);
    std::memset(&expected, 0x5a, sizeof expected);
    call(result, false);
    call(expected, true);
    if (std::memcmp(&result, &expected, sizeof result) != 0) {
        std::printf("%s differs: planes begin at %zu, %zu, %zu\n", name, static_cast<size_t>(at.of[0]),
                    static_cast<size_t>(at.of[1]), static_cast<size_t>(at.of[2]));
        ++failures;
    }
}

void Try(const char* name, const Offsets& at, Capture dispatched, Capture portable) {
    Compare(name, at, [&](Planes& to, bool isPortable) {
        (isPortable ? portable : dispatched)(source.samples[0], kPitch, to.samples[0] + at.of[0], kPitch,
                                             to.samples[1] + at.of[1], kPitch, to.samples[2] + at.of[2], kPitch, kWidth,
                                             kHeight, 0);
    });
}

void Try(const char* name, const Offsets& at, Render dispatched, Render portable) {
    Compare(name, at, [&](Planes& to, bool isPortable) {
        (isPortable ? portable : dispatched)(source.samples[0], kPitch, source.samples[1], kPitch, source.samples[2],
                                             kPitch, to.samples[0] + at.of[0], kPitch, kWidth, kHeight,
                                             KOR_VIDEOFRAMEDITHERLEVEL_Off);
    });
}

// The other functions do not stream, or do so with the kernels of these.
template <class Function>
void Try(const char*, const Offsets&, Function, Function) {}

void TryAll(const Offsets& at) {
#define KOR_FUNCTION(name, shape, family, frames) Try(#name, at, &name, &name##_C_);
#include "Kor/Video/Common/KorYuv420Functions_.inc"
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s TARGET\n", argv[0]);
        return 2;
    }
    if (!KorYuv420SelectTarget(argv[1])) {
        std::printf("%s: not run; this machine or this build does not have it\n", argv[1]);
        return 77;
    }
    std::mt19937 generator(420);
    for (auto& plane : source.samples) {
        for (KorUint8& sample : plane) {
            sample = static_cast<KorUint8>(generator());
        }
    }
    for (KorSizeT offset = 0; offset < kAlignment; ++offset) {
        TryAll({{offset, offset, offset}});
        for (KorSizeT plane = 0; plane < 3; ++plane) {
            Offsets at = {};
            at.of[plane] = offset;
            TryAll(at);
        }
    }
    std::printf("%s: %d differences\n", argv[1], failures);
    return failures != 0;
}
