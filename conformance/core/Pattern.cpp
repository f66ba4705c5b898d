#include "conformance/core/Pattern.h"

namespace kit {

namespace {

constexpr std::uint8_t kTurningPoints[16] = {0, 1, 2, 15, 16, 17, 127, 128, 129, 234, 235, 236, 240, 241, 254, 255};

std::uint8_t Sample(Pattern pattern, Noise& noise, std::size_t start, std::size_t row, std::size_t column) {
    switch (pattern) {
        case Pattern::Zeros:
            return 0;
        case Pattern::Full:
            return 255;
        case Pattern::Alternating:
            return (row + column) % 2 == 0 ? 0 : 255;
        case Pattern::Ramp:
            return static_cast<std::uint8_t>((start + row * 31 + column) & 0xff);
        case Pattern::Extremes:
            return kTurningPoints[noise.Below(16)];
        case Pattern::Noise:
            break;
    }
    return static_cast<std::uint8_t>(noise.Next() >> 56);
}

}  // namespace

Noise::Noise(std::uint64_t seed)
    : state_(MixSeed(seed, 1) | 1) {}

std::uint64_t Noise::Next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * UINT64_C(0x2545f4914f6cdd1d);
}

std::uint64_t MixSeed(std::uint64_t seed, std::uint64_t number) {
    std::uint64_t z = seed + (number + 1) * UINT64_C(0x9e3779b97f4a7c15);
    z = (z ^ (z >> 30)) * UINT64_C(0xbf58476d1ce4e5b9);
    z = (z ^ (z >> 27)) * UINT64_C(0x94d049bb133111eb);
    return z ^ (z >> 31);
}

const char* NameOf(Pattern pattern) {
    switch (pattern) {
        case Pattern::Noise:
            return "noise";
        case Pattern::Zeros:
            return "zeros";
        case Pattern::Full:
            return "full";
        case Pattern::Alternating:
            return "alternating";
        case Pattern::Ramp:
            return "ramp";
        case Pattern::Extremes:
            return "extremes";
    }
    return "?";
}

// Low byte first, whatever the byte order of the machine.
void FillNoise(std::uint64_t seed, std::uint8_t* bytes, std::size_t count) {
    Noise noise(seed);
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < count; ++i, word >>= 8) {
        if (i % 8 == 0) {
            word = noise.Next();
        }
        bytes[i] = static_cast<std::uint8_t>(word & 0xff);
    }
}

void FillPattern(Pattern pattern, std::uint64_t seed, std::uint8_t* plane, std::size_t pitch, std::size_t rowBytes,
                 std::size_t rows) {
    Noise noise(seed);
    const std::size_t start = noise.Below(256);
    for (std::size_t row = 0; row < rows; ++row) {
        std::uint8_t* line = plane + row * pitch;
        if (pattern == Pattern::Noise) {
            FillNoise(noise.Next(), line, rowBytes);
            continue;
        }
        for (std::size_t column = 0; column < rowBytes; ++column) {
            line[column] = Sample(pattern, noise, start, row, column);
        }
    }
}

}  // namespace kit
