#include "pipeline/Random.h"

#include <cstddef>
#include <exception>
#include <optional>
#include <random>

#include "Kor/Os/KorRandom.h"

namespace korframe {

namespace {

// SplitMix64: a counter and a mixing function. Good enough to start a walk through a noise table, and the same on every
// machine.
class SplitMix {
  public:
    explicit SplitMix(std::uint64_t state) : state_(state) {}

    std::uint64_t Next() {
        state_ += 0x9e3779b97f4a7c15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebu;
        return mixed ^ (mixed >> 31);
    }

  private:
    std::uint64_t state_;
};

thread_local std::optional<SplitMix> seeded;
thread_local RandomSource otherSource = nullptr;

// Each draw fills four bytes, or what is left.
template <typename Draw>
void Fill(char* buffer, std::size_t count, Draw draw) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < count; ++i, bits >>= 8) {
        if (i % 4 == 0) {
            bits = draw();
        }
        buffer[i] = static_cast<char>(bits & 0xff);
    }
}

}  // namespace

void SeedRandom(std::uint64_t seed, std::uint64_t frameNumber) {
    seeded.emplace(SplitMix(seed).Next() ^ frameNumber);
}

void ServeRandomFrom(RandomSource source) {
    otherSource = source;
}

}  // namespace korframe

extern "C" KOR_API KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    if (korframe::otherSource != nullptr) {
        return korframe::otherSource(buffer, count) ? 1 : 0;
    }
    try {
        if (korframe::seeded) {
            korframe::Fill(buffer, count, [] { return korframe::seeded->Next(); });
        } else {
            thread_local std::random_device system;
            korframe::Fill(buffer, count, [] { return system(); });
        }
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}
