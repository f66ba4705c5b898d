// A file of given bytes that has a path but is not on disk.
#ifndef KOR_FUZZ_MEMORYFILE_H
#define KOR_FUZZ_MEMORYFILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace fuzz {

class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
        if (descriptor_ < 0 || write(descriptor_, bytes, size) != static_cast<ssize_t>(size) ||
            lseek(descriptor_, 0, SEEK_SET) != 0) {
            std::abort();
        }
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  private:
    int descriptor_;
};

}  // namespace fuzz

#endif
