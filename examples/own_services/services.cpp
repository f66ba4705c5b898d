// The two services of this program: repeatable noise, for tests and for encoders that compare runs.
//
// The library asks for random bytes three times per dithered frame, to choose where in the noise table to start. Both
// symbols get C linkage from the headers that declare them, so they could just as well be written in C.
#include "services.h"

#include <atomic>

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace {

// Maps a counter to random numbers.
constexpr uint64_t Mix(uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9u;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebu;
    return x ^ (x >> 31);
}

// Two dice with faces 0 to 7, minus their mean: -7 to 7, the middle more often than the ends.
constexpr KorInt16 Noise(uint64_t index) {
    return static_cast<KorInt16>(static_cast<int>(Mix(index) % 8 + (Mix(index) >> 32) % 8) - 7);
}

// Several threads may call the service at the same time, so its state is one atomic counter.
std::atomic<uint64_t> counter{0};

}  // namespace

void SeedNoise(uint64_t seed) {
    counter = Mix(seed);
}

// Fills the buffer and returns true; a service that fails returns false.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    for (KorSizeT i = 0; i < count; ++i)
        buffer[i] = static_cast<char>(Mix(++counter) & 0xff);
    return 1;
}

// The table: 16384 values around zero. Plain noise is enough here; the default table of Kor::Platform is shaped to be
// less visible.
#define NOISE_4(i) Noise(i), Noise((i) + 1), Noise((i) + 2), Noise((i) + 3)
#define NOISE_16(i) NOISE_4(i), NOISE_4((i) + 4), NOISE_4((i) + 8), NOISE_4((i) + 12)
#define NOISE_64(i) NOISE_16(i), NOISE_16((i) + 16), NOISE_16((i) + 32), NOISE_16((i) + 48)
#define NOISE_256(i) NOISE_64(i), NOISE_64((i) + 64), NOISE_64((i) + 128), NOISE_64((i) + 192)
#define NOISE_1024(i) NOISE_256(i), NOISE_256((i) + 256), NOISE_256((i) + 512), NOISE_256((i) + 768)
#define NOISE_4096(i) NOISE_1024(i), NOISE_1024((i) + 1024), NOISE_1024((i) + 2048), NOISE_1024((i) + 3072)

const KorInt16 KorTblDitherStd4[16384] = {NOISE_4096(0), NOISE_4096(4096), NOISE_4096(8192), NOISE_4096(12288)};
