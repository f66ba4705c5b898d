// Contents for planes: seeded noise, and the regular patterns on which arithmetic tends to break. The same seeds make
// the same bytes on every machine.
#ifndef KOR_CONFORMANCE_CORE_PATTERN_H
#define KOR_CONFORMANCE_CORE_PATTERN_H

#include <cstddef>
#include <cstdint>

namespace kit {

// A small, fast, reproducible generator (xorshift with a multiplied output).
class Noise {
  public:
    explicit Noise(std::uint64_t seed);
    std::uint64_t Next();
    std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(Next() >> 32) % limit; }

  private:
    std::uint64_t state_;
};

// Derives an independent seed from a seed and a number.
std::uint64_t MixSeed(std::uint64_t seed, std::uint64_t number);

enum class Pattern {
    Noise,
    Zeros,
    Full,         // all 255
    Alternating,  // 0, 255, 0, ... and the other way round on odd rows
    Ramp,         // rises by one a byte, starts at a seeded value
    Extremes,     // only values at which limited range, sign or clipping turn
    // Pictures, of which a case has a number; see kit/Contents.h.
    Flat,     // one value all over
    Colours,  // all colours, or all samples of two planes and a weight
    Pairs,    // all pairs of samples that lie one below the other
};

const char* NameOf(Pattern pattern);

void FillNoise(std::uint64_t seed, std::uint8_t* bytes, std::size_t count);
void FillPattern(Pattern pattern, std::uint64_t seed, std::uint8_t* plane, std::size_t pitch, std::size_t rowBytes,
                 std::size_t rows);

}  // namespace kit

#endif
