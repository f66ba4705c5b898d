// The bytes of a fuzzer's input, consumed one decision at a time. Bytes past the end count as zero.
#ifndef KOR_FUZZ_INPUT_H
#define KOR_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::uint8_t Byte() {
        if (size_ == 0) {
            return 0;
        }
        --size_;
        return *bytes_++;
    }

    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            word |= std::uint32_t{Byte()} << shift;
        }
        return word;
    }

    std::uint32_t Below(std::uint32_t limit) { return (Byte() | std::uint32_t{Byte()} << 8) % limit; }

    // The remaining bytes.
    const std::uint8_t* Bytes() const { return bytes_; }
    std::size_t Size() const { return size_; }

  private:
    const std::uint8_t* bytes_;
    std::size_t size_;
};

}  // namespace fuzz

#endif
