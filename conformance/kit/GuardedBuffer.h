// Memory between two unmapped pages: one byte too many on either side ends the process.
#ifndef KOR_CONFORMANCE_KIT_GUARDEDBUFFER_H
#define KOR_CONFORMANCE_KIT_GUARDEDBUFFER_H

#include <cstddef>
#include <cstdint>

namespace kit {

// Bytes of a page, the smallest piece of memory that can be protected.
std::size_t PageBytes();

class GuardedBuffer {
  public:
    explicit GuardedBuffer(std::size_t minimumBytes);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // The first byte after the front guard, and the first byte of the rear guard.
    std::uint8_t* begin() const { return begin_; }
    std::uint8_t* end() const { return begin_ + size_; }
    std::size_t size() const { return size_; }
    // Bytes of each guard.
    std::size_t guard() const { return guard_; }

  private:
    std::uint8_t* begin_;
    std::size_t size_;
    std::size_t guard_;
};

}  // namespace kit

#endif
