// Alignments TARGET: destinations at every distance from an aligned address, all planes alike or one alone, against the
// portable functions. With KOR_STREAMING=always a kernel that streams to an unaligned address crashes.
#include <cstdio>
#include <cstring>
#include <random>
#include <type_traits>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "tests/support/NamedTarget.h"

namespace {

// As wide as two long vectors, with a rest, and a pitch that keeps the alignment of the first row. The planes lie a
// multiple of 3, 5 and 7 apart as well, so that a check for the wrong alignment passes for several of them at once.
constexpr KorSizeT kWidths[] = {150, 151};
constexpr KorSizeT kHeight = 5, kAlignment = 64, kPitch = 5 * 128;
constexpr KorSizeT kPlaneBytes = 64 * 3 * 5 * 7;
static_assert(kPlaneBytes >= kPitch * (kHeight + 1) + kAlignment, "a plane and the row below it");

struct Planes {
    alignas(kAlignment) KorUint8 samples[3][kPlaneBytes];
};

constexpr KorInt kCaptureMatrix[3][3] = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr KorInt kRenderMatrix[3][3] = {{298, 0, 459}, {298, -55, -136}, {298, 541, 0}};

Planes source, result, expected;
int failures = 0;

// Where the first row of each plane begins, and how wide the picture is.
struct Place {
    KorSizeT width;
    KorSizeT of[3];
};

template <class Call>
void Compare(const char* name, const Place& at, Call call) {
    std::memset(&result, 0x5a, sizeof result);
    std::memset(&expected, 0x5a, sizeof expected);
    call(result, false);
    call(expected, true);
    if (std::memcmp(&result, &expected, sizeof result) != 0) {
        std::printf("%s differs: %zu columns, planes begin at %zu, %zu, %zu\n", name, static_cast<size_t>(at.width),
                    static_cast<size_t>(at.of[0]), static_cast<size_t>(at.of[1]), static_cast<size_t>(at.of[2]));
        ++failures;
    }
}

// What follows the size differs from shape to shape.
template <class Function, class... Rest>
void TryCapture(const char* name, const Place& at, Function dispatched, Function portable, Rest... rest) {
    Compare(name, at, [&](Planes& to, bool isPortable) {
        const Planes& from = source;
        (isPortable ? portable : dispatched)(to.samples[0] + at.of[0], kPitch, to.samples[1] + at.of[1], kPitch,
                                             to.samples[2] + at.of[2], kPitch, from.samples[0], kPitch, at.width,
                                             kHeight, rest...);
    });
}

template <class Function, class... Rest>
void TryRender(const char* name, const Place& at, Function dispatched, Function portable, Rest... rest) {
    Compare(name, at, [&](Planes& to, bool isPortable) {
        const Planes& from = source;
        (isPortable ? portable : dispatched)(from.samples[0], kPitch, from.samples[1], kPitch, from.samples[2], kPitch,
                                             to.samples[0] + at.of[0], kPitch, at.width, kHeight, rest...);
    });
}

template <class Function>
void Try(const char* name, const Place& at, Function dispatched, Function portable) {
    constexpr KorBool kFlip = 0;
    constexpr KorVideoFrameDitherLevel kOff = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    if constexpr (std::is_same_v<Function, decltype(&KorBGRAToI420)>) {
        TryCapture(name, at, dispatched, portable, kFlip);
    } else if constexpr (std::is_same_v<Function, decltype(&KorBGRAToI420General)>) {
        TryCapture(name, at, dispatched, portable, kFlip, kCaptureMatrix);
    } else if constexpr (std::is_same_v<Function, decltype(&KorYUY2ToI420WithRotation)>) {
        // Quarters do not stream.
        TryCapture(name, at, dispatched, portable, kFlip, KorImageRotationDegree{180});
    } else if constexpr (std::is_same_v<Function, decltype(&KorI420ToBGRA)>) {
        TryRender(name, at, dispatched, portable, kOff);
    } else if constexpr (std::is_same_v<Function, decltype(&KorI420ToBGRAGeneral)>) {
        TryRender(name, at, dispatched, portable, kRenderMatrix, kOff);
    } else if constexpr (std::is_same_v<Function, decltype(&KorI420toYuv2)>) {
        TryRender(name, at, dispatched, portable);
    }
    // The others do not stream.
}

void TryAll(const Place& at) {
#define KOR_FUNCTION(name, shape, family, frames) Try(#name, at, &name, &name##_C_);
#include "Kor/Video/Common/KorYuv420Functions_.inc"
}

}  // namespace

int main(int argc, char** argv) {
    SelectNamedTarget(argc, argv);
    std::mt19937 generator(420);
    for (auto& plane : source.samples) {
        for (KorUint8& sample : plane) {
            sample = static_cast<KorUint8>(generator());
        }
    }
    for (const KorSizeT width : kWidths) {
        for (KorSizeT offset = 0; offset < kAlignment; ++offset) {
            TryAll({width, {offset, offset, offset}});
            TryAll({width, {0, offset, offset}});
            for (KorSizeT plane = 0; plane < 3; ++plane) {
                Place at = {width, {}};
                at.of[plane] = offset;
                TryAll(at);
            }
        }
    }
    std::printf("%s: %d differences\n", argv[1], failures);
    return failures != 0;
}
