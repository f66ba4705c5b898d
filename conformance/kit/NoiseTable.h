// The noise table of the test programs: regions of different character, reached by scripted start indices.
#ifndef KOR_CONFORMANCE_KIT_NOISETABLE_H
#define KOR_CONFORMANCE_KIT_NOISETABLE_H

#include <cstddef>
#include <cstdint>

namespace kit {

constexpr std::size_t kNoiseEntries = 16384;

// Where each region starts.
constexpr std::size_t kSmallNoise = 0;       // -8 to 8, as a product's table might have them
constexpr std::size_t kExtremeNoise = 2048;  // the limits of 16 bits and the values next to zero
constexpr std::size_t kNoiseRamp = 4096;   // -4096 to 4095 in order: every sum of a sample that is not saturated anyway
constexpr std::size_t kWideNoise = 12288;  // all 16 bits, up to the end of the table

// The entry that the table holds at an index below kNoiseEntries.
constexpr int NoiseEntry(std::size_t index) {
    constexpr int extremes[8] = {-32768, 32767, -1, 1, 32767, -32768, 0, -32767};
    // Distinct low bits from one entry to the next: a walk that is off by one shows at once.
    const std::uint32_t mixed = static_cast<std::uint32_t>(index + 1) * UINT32_C(2654435761);
    if (index < kExtremeNoise) {
        return static_cast<int>((mixed >> 16) % 17) - 8;
    }
    if (index < kNoiseRamp) {
        return extremes[(index ^ (index >> 3)) % 8];
    }
    if (index < kWideNoise) {
        return static_cast<int>(index - kNoiseRamp) - 4096;
    }
    return static_cast<int>(mixed >> 16) - 32768;
}

}  // namespace kit

#endif
