// Bytes that must not even be read: under AddressSanitizer a touch ends the process, elsewhere nothing happens.
#ifndef KOR_CONFORMANCE_KIT_POISON_H
#define KOR_CONFORMANCE_KIT_POISON_H

#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define KOR_CONFORMANCE_POISON 1
#elif defined(__SANITIZE_THREAD__)
#define KOR_CONFORMANCE_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KOR_CONFORMANCE_POISON 1
#elif __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
#define KOR_CONFORMANCE_SANITIZED 1
#endif
#endif

#if defined(KOR_CONFORMANCE_POISON)
#include <sanitizer/asan_interface.h>
#endif

namespace kit {

#if defined(KOR_CONFORMANCE_POISON)
constexpr bool kPoisons = true;
inline void Poison(const std::uint8_t* bytes, std::size_t count) {
    __asan_poison_memory_region(bytes, count);
}
inline void Unpoison(const std::uint8_t* bytes, std::size_t count) {
    __asan_unpoison_memory_region(bytes, count);
}
#else
constexpr bool kPoisons = false;
inline void Poison(const std::uint8_t*, std::size_t) {}
inline void Unpoison(const std::uint8_t*, std::size_t) {}
#endif

// Whether a sanitizer brings an allocator and frames of its own.
#if defined(KOR_CONFORMANCE_POISON) || defined(KOR_CONFORMANCE_SANITIZED)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

}  // namespace kit

#endif
