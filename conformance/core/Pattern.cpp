#include "conformance/core/Pattern.h"

#include <cstring>

namespace kit {

namespace {

constexpr std::uint8_t kTurningPoints[16] = {0, 1, 2, 15, 16, 17, 127, 128, 129, 234, 235, 236, 240, 241, 254, 255};

void FillRow(Pattern pattern, Noise& noise, std::size_t start, std::size_t row, std::uint8_t* line, std::size_t count) {
    switch (pattern) {
        case Pattern::Zeros:
            std::memset(line, 0, count);
            break;
        case Pattern::Full:
            std::memset(line, 255, count);
            break;
        case Pattern::Alternating:
            for (std::size_t column = 0; column < count; ++column) {
                line[column] = static_cast<std::uint8_t>((row + column) % 2 * 255);
            }
            break;
        case Pattern::Ramp:
            for (std::size_t column = 0; column < count; ++column) {
                line[column] = static_cast<std::uint8_t>((start + row * 31 + column) & 0xff);
            }
            break;
        case Pattern::Extremes:
            for (std::size_t column = 0; column < count; ++column) {
                line[column] = kTurningPoints[noise.Below(16)];
            }
            break;
        case Pattern::Noise:
        case Pattern::Flat:
        case Pattern::Colours:
        case Pattern::Pairs:
            FillNoise(noise.Next(), line, count);
            break;
    }
}

}  // namespace

Noise::Noise(std::uint64_t seed) : state_(MixSeed(seed, 1) | 1) {}

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
        case Pattern::Flat:
            return "flat";
        case Pattern::Colours:
            return "colours";
        case Pattern::Pairs:
            return "pairs";
    }
    return "?";
}

// Low byte first, whatever the byte order of the machine.
void FillNoise(std::uint64_t seed, std::uint8_t* bytes, std::size_t count) {
    Noise noise(seed);
    // Whole words are stored at once by every compiler that is asked like this.
    for (; count >= 8; bytes += 8, count -= 8) {
        const std::uint64_t word = noise.Next();
        for (unsigned k = 0; k < 8; ++k) {
            bytes[k] = static_cast<std::uint8_t>(word >> 8 * k & 0xff);
        }
    }
    if (count > 0) {
        std::uint64_t word = noise.Next();
        for (std::size_t i = 0; i < count; ++i, word >>= 8) {
            bytes[i] = static_cast<std::uint8_t>(word & 0xff);
        }
    }
}

void FillPattern(Pattern pattern, std::uint64_t seed, std::uint8_t* plane, std::size_t pitch, std::size_t rowBytes,
                 std::size_t rows) {
    Noise noise(seed);
    const std::size_t start = noise.Below(256);
    for (std::size_t row = 0; row < rows; ++row) {
        FillRow(pattern, noise, start, row, plane + row * pitch, rowBytes);
    }
}

}  // namespace kit
