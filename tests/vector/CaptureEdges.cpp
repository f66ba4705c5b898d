// CaptureEdges TARGET: captures at the edges of their memory, against the portable functions. Sources begin after their
// first alpha (ARGB, ABGR) or end before their last (RGBA, BGRA), next to an unmapped page: a kernel that reads that
// alpha crashes. The caller's matrix shares some bytes with a destination, or just none.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

#include "conformance/kit/GuardedBuffer.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "tests/support/NamedTarget.h"

namespace {

// Up to two long vectors, with a rest.
constexpr KorSizeT kMostWidth = 150, kMostHeight = 4;
constexpr KorSizeT kPlaneBytes = (kMostWidth + 1) * (kMostHeight + 1);

struct Planes {
    KorUint8 y[kPlaneBytes], u[kPlaneBytes], v[kPlaneBytes];
};

enum class Alpha { First, Last };

using Matrix = KorInt[3][3];

// One for weights of a byte and one for larger ones.
constexpr Matrix kBytes = {{47, 157, 16}, {-26, -87, 112}, {112, -102, -10}};
constexpr Matrix kWords = {{470, 157, 16}, {-26, -870, 112}, {112, -102, -1000}};

int failures = 0;

void Report(const char* name, KorSizeT width, KorSizeT height, KorBool flip) {
    std::printf("%s differs: %zux%zu, flip %u\n", name, static_cast<size_t>(width), static_cast<size_t>(height),
                static_cast<unsigned>(flip));
    ++failures;
}

// The caller's matrix is the last argument of a function that has one.
template <class Function, class... Coeffs>
void TryAlpha(const char* name, Alpha alpha, Function dispatched, Function portable, const Coeffs&... coeffs) {
    static kit::GuardedBuffer source(4 * kMostWidth * 2 * kMostHeight);
    std::mt19937 generator(420);
    for (KorUint8* x = source.begin(); x < source.end(); ++x) {
        *x = static_cast<KorUint8>(generator());
    }
    for (KorSizeT width = 1; width <= kMostWidth; ++width) {
        for (KorSizeT height = 1; height <= kMostHeight; ++height) {
            for (const KorBool flip : {KorBool{0}, KorBool{1}}) {
                // This one reads on downwards from the last row.
                const bool isFollowed = flip && std::strcmp(name, "KorBGRAToI444UsingBT709") == 0;
                const KorSizeT pixels = width * (isFollowed ? 2 * height - 1 : height);
                const KorUint8* x = alpha == Alpha::First ? source.begin() - 1 : source.end() + 1 - 4 * pixels;
                Planes found = {}, expected = {};
                const auto run = [&](Function capture, Planes& to) {
                    capture(to.y, width + 1, to.u, width, to.v, width, x, 4 * width, width, height, flip, coeffs...);
                };
                run(dispatched, found);
                run(portable, expected);
                if (std::memcmp(&found, &expected, sizeof found) != 0) {
                    Report(name, width, height, flip);
                }
            }
        }
    }
}

// The matrix at every place from in front of three planes to behind them. What is written changes it.
void TryMatrix(const Matrix& matrix, KorSizeT width, KorSizeT height, KorSizeT shift) {
    constexpr KorSizeT kGap = 64;
    const KorSizeT pitchY = width + 6, pitchC = width / 2 + 9;
    const KorSizeT y = kGap + shift;
    const KorSizeT u = y + pitchY * (height + 1) + kGap;
    const KorSizeT v = u + pitchC * (height / 2 + 1) + kGap;
    const KorSizeT size = (v + pitchC * (height / 2 + 1) + kGap) / sizeof(KorInt);
    std::mt19937 generator(420);
    std::vector<KorUint> x(width * height);
    std::generate(x.begin(), x.end(), generator);
    for (KorSizeT at = 0; at + 9 <= size; ++at) {
        const auto run = [&](decltype(&KorBGRAToI420General) capture) {
            std::vector<KorInt> memory(size, 0x5a5a5a5a);
            std::memcpy(&memory[at], &matrix, sizeof matrix);
            KorUint8* const bytes = reinterpret_cast<KorUint8*>(memory.data());
            capture(bytes + y, pitchY, bytes + u, pitchC, bytes + v, pitchC,
                    reinterpret_cast<const KorUint8*>(x.data()), 4 * width, width, height, 0,
                    reinterpret_cast<const Matrix&>(memory[at]));
            return memory;
        };
        if (run(&KorBGRAToI420General) != run(&KorBGRAToI420General_C_)) {
            Report("KorBGRAToI420General beside its matrix", width, height, 0);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    SelectNamedTarget(argc, argv);
    TryAlpha("KorRGBAToI420", Alpha::Last, &KorRGBAToI420, &KorRGBAToI420_C_);
    TryAlpha("KorBGRAToI420", Alpha::Last, &KorBGRAToI420, &KorBGRAToI420_C_);
    TryAlpha("KorARGBToI420", Alpha::First, &KorARGBToI420, &KorARGBToI420_C_);
    TryAlpha("KorABGRToI420", Alpha::First, &KorABGRToI420, &KorABGRToI420_C_);
    TryAlpha("KorBGRAToI444", Alpha::Last, &KorBGRAToI444, &KorBGRAToI444_C_);
    TryAlpha("KorBGRAToI420UsingBT709", Alpha::Last, &KorBGRAToI420UsingBT709, &KorBGRAToI420UsingBT709_C_);
    TryAlpha("KorBGRAToI444UsingBT709", Alpha::Last, &KorBGRAToI444UsingBT709, &KorBGRAToI444UsingBT709_C_);
    TryAlpha("KorBGRAToI420General", Alpha::Last, &KorBGRAToI420General, &KorBGRAToI420General_C_, kBytes);
    TryAlpha("KorBGRAToI420General", Alpha::Last, &KorBGRAToI420General, &KorBGRAToI420General_C_, kWords);
    for (const Matrix* matrix : {&kBytes, &kWords}) {
        for (KorSizeT shift = 0; shift < sizeof(KorInt); ++shift) {
            TryMatrix(*matrix, 66, 4, shift);
            TryMatrix(*matrix, 67, 4, shift);
            TryMatrix(*matrix, 66, 5, shift);
            TryMatrix(*matrix, 67, 5, shift);
        }
    }
    std::printf("%s: %d differences\n", argv[1], failures);
    return failures != 0;
}
