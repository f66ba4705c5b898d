// Zero-filled bytes that the system provides only once they are touched, so that a file that merely claims to hold a
// huge picture costs nothing.
#ifndef KORFRAME_BUFFER_H
#define KORFRAME_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace korframe {

class Buffer {
  public:
    Buffer() = default;
    explicit Buffer(std::size_t size)
        : bytes_(static_cast<std::uint8_t*>(std::calloc(size > 0 ? size : 1, 1))), size_(size) {
        if (!bytes_) {
            throw std::bad_alloc();
        }
    }

    std::uint8_t* Data() { return bytes_.get(); }
    const std::uint8_t* Data() const { return bytes_.get(); }
    std::size_t Size() const { return size_; }

  private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::uint8_t, Free> bytes_;
    std::size_t size_ = 0;
};

}  // namespace korframe

#endif
