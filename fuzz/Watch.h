// Bytes that the library must not use. Under AddressSanitizer an access ends the process; under MemorySanitizer they
// may be read, but nothing that is written may depend on them. Elsewhere nothing happens.
#ifndef KOR_FUZZ_WATCH_H
#define KOR_FUZZ_WATCH_H

#include <cstddef>
#include <cstdint>

#include "conformance/kit/Poison.h"

#if defined(__has_feature)
#if __has_feature(memory_sanitizer)
#define KOR_FUZZ_MEMORY_SANITIZER 1
#include <sanitizer/msan_interface.h>
#endif
#endif

namespace fuzz {

#if defined(KOR_FUZZ_MEMORY_SANITIZER)
inline void Forbid(const std::uint8_t* bytes, std::size_t count) {
    __msan_poison(bytes, count);
}
inline void Allow(const std::uint8_t* bytes, std::size_t count) {
    __msan_unpoison(bytes, count);
}
inline void CheckDefined(const std::uint8_t* bytes, std::size_t count) {
    __msan_check_mem_is_initialized(bytes, count);
}
#else
inline void Forbid(const std::uint8_t* bytes, std::size_t count) {
    kit::Poison(bytes, count);
}
inline void Allow(const std::uint8_t* bytes, std::size_t count) {
    kit::Unpoison(bytes, count);
}
inline void CheckDefined(const std::uint8_t*, std::size_t) {}
#endif

}  // namespace fuzz

#endif
