#include "conformance/kit/GuardedBuffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace kit {

namespace {

// Wider than a page, so that a step over a whole row of a large plane is caught too.
std::size_t GuardSize() {
    return 16 * PageBytes();
}

}  // namespace

std::size_t PageBytes() {
#if defined(__EMSCRIPTEN__)
    // Nothing protects memory there, and pages of 64 KiB would only be more to fill and to compare.
    return 4096;
#else
    static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
#endif
}

GuardedBuffer::GuardedBuffer(std::size_t minimumBytes) : begin_(nullptr), size_(0), guard_(GuardSize()) {
    size_ = (minimumBytes / PageBytes() + 1) * PageBytes();
    void* mapping = mmap(nullptr, size_ + 2 * guard_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    begin_ = static_cast<std::uint8_t*>(mapping) + guard_;
    if (mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) {
        munmap(mapping, size_ + 2 * guard_);
        throw std::bad_alloc();
    }
}

GuardedBuffer::~GuardedBuffer() {
    munmap(begin_ - guard_, size_ + 2 * guard_);
}

}  // namespace kit
