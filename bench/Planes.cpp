#include "bench/Planes.h"

#include <cstring>
#include <new>

namespace bench {

namespace {

// A cache line.
constexpr KorSizeT kAlignment = 64;

constexpr KorSizeT RoundUp(KorSizeT value, KorSizeT multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

}  // namespace

std::string FrameSize::Label() const {
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    return pitchMultiple == 1 ? size : size + "@" + std::to_string(pitchMultiple);
}

Memory::Memory(KorSizeT bytes)
    : data_(static_cast<KorUint8*>(std::aligned_alloc(kAlignment, RoundUp(bytes, kAlignment)))) {
    if (!data_) {
        throw std::bad_alloc();
    }
}

void Memory::FillWithNoise(KorSizeT bytes, uint64_t seed) const {
    for (KorSizeT i = 0; i < bytes; i += sizeof seed) {
        seed ^= seed << 13;
        seed ^= seed >> 7;
        seed ^= seed << 17;
        std::memcpy(data_.get() + i, &seed, bytes - i < sizeof seed ? bytes - i : sizeof seed);
    }
}

kit::PlaneView Planes::Add(KorSizeT rowBytes, KorSizeT rows) {
    const KorSizeT pitch = RoundUp(rowBytes, size_.pitchMultiple);
    memory_.emplace_back(pitch * rows);
    memory_.back().FillWithNoise(pitch * rows, 0x9e3779b97f4a7c15u + memory_.size());
    return {memory_.back().Data(), pitch, rows};
}

}  // namespace bench
