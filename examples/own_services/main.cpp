// Own services: a program that provides its own random bytes and noise table instead of linking Kor::Platform.
//
// These services (services.cpp) make dithering repeatable: the same seed gives the same bytes.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"
#include "services.h"

namespace {

void Expect(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "own_services: %s\n", what);
        std::exit(EXIT_FAILURE);
    }
}

constexpr KorSizeT kWidth = 64;
constexpr KorSizeT kHeight = 64;
constexpr KorUint8 kGrey = 128;

// A grey picture, packed as UYVY (U, Y0, V, Y1) with the strongest dither.
std::vector<KorUint8> DitheredGrey(uint64_t seed) {
    const std::vector<KorUint8> grey(kWidth * kHeight, kGrey);
    std::vector<KorUint8> uyvy(2 * kWidth * kHeight);
    SeedNoise(seed);
    KorI420ToUYVY(grey.data(), kWidth, grey.data(), kWidth / 2, grey.data(), kWidth / 2, uyvy.data(), 2 * kWidth,
                  kWidth, kHeight, KOR_VIDEOFRAMEDITHERLEVEL_2);
    return uyvy;
}

// At the strongest level, luma gets unscaled entries of the table, starting at a multiple of eight.
bool FirstRowHasNoiseFrom(KorSizeT start, const std::vector<KorUint8>& uyvy) {
    for (KorSizeT column = 0; column < kWidth; ++column) {
        if (uyvy[2 * column + 1] != kGrey + KorTblDitherStd4[(start + column) % 16384])
            return false;
    }
    return true;
}

bool FirstRowHasNoiseOfTheTable(const std::vector<KorUint8>& uyvy) {
    for (KorSizeT start = 0; start < 16384; start += 8) {
        if (FirstRowHasNoiseFrom(start, uyvy))
            return true;
    }
    return false;
}

}  // namespace

int main() {
    const std::vector<KorUint8> first = DitheredGrey(1);
    Expect(FirstRowHasNoiseOfTheTable(first), "the noise is not from the program's table");
    Expect(DitheredGrey(2) != first, "a different seed gave the same noise");
    Expect(DitheredGrey(1) == first, "the same seed gave different noise");
    std::printf("Dithered twice with the program's own noise, to the same bytes.\n");
    return 0;
}
