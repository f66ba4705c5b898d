/*
 * The default random-bytes service: random bytes straight from the operating system.
 *
 * It keeps no state, so any number of threads may call it at once. A product that wants another source defines
 * KorRandomGetBytes itself and leaves this file out.
 */
#include "Kor/Os/KorRandom.h"

#if defined(__APPLE__) || defined(__FreeBSD__) || defined(__OpenBSD__) || defined(__NetBSD__)
#define KOR_HAS_ARC4RANDOM
#endif

#if defined(_WIN32)
#include <windows.h>
// bcrypt.h needs the types of windows.h.
#include <bcrypt.h>
#elif defined(__linux__)
#include <errno.h>
#include <sys/random.h>
#elif defined(KOR_HAS_ARC4RANDOM)
#include <stdlib.h>
#elif defined(__EMSCRIPTEN__) || defined(__wasi__)
#include <unistd.h>
#else
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// Each system's SomeBytes writes at least one and at most count random bytes and returns how many, or 0 if the system
// cannot provide any. count is never 0.

#if defined(_WIN32)

KorSizeT SomeBytes(char* buffer, KorSizeT count) {
    const ULONG part = count < 0x10000000 ? static_cast<ULONG>(count) : 0x10000000;
    PUCHAR bytes = reinterpret_cast<PUCHAR>(buffer);
    const NTSTATUS status = BCryptGenRandom(nullptr, bytes, part, BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    return BCRYPT_SUCCESS(status) ? part : 0;
}

#elif defined(__linux__)

// A signal may interrupt a long request, even before its first byte.
KorSizeT SomeBytes(char* buffer, KorSizeT count) {
    ssize_t got;
    do {
        got = getrandom(buffer, count, 0);
    } while (got < 0 && errno == EINTR);
    return got > 0 ? static_cast<KorSizeT>(got) : 0;
}

#elif defined(KOR_HAS_ARC4RANDOM)

// Cannot fail by contract.
KorSizeT SomeBytes(char* buffer, KorSizeT count) {
    arc4random_buf(buffer, count);
    return count;
}

#elif defined(__EMSCRIPTEN__) || defined(__wasi__)

// Refuses more than 256 bytes at a time.
KorSizeT SomeBytes(char* buffer, KorSizeT count) {
    const KorSizeT part = count < 256 ? count : 256;
    return getentropy(buffer, part) == 0 ? part : 0;
}

#else

// Opened for each request: a descriptor kept open would be state, and other code could close it.
KorSizeT SomeBytes(char* buffer, KorSizeT count) {
    const KorSizeT part = count < 0x10000000 ? count : 0x10000000;
    int file;
    do {
        file = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    } while (file < 0 && errno == EINTR);
    if (file < 0)
        return 0;

    ssize_t got;
    do {
        got = read(file, buffer, part);
    } while (got < 0 && errno == EINTR);
    close(file);
    return got > 0 ? static_cast<KorSizeT>(got) : 0;
}

#endif

}  // namespace

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    while (count > 0) {
        const KorSizeT got = SomeBytes(buffer, count);
        if (got == 0)
            return 0;
        buffer += got;
        count -= got;
    }
    return 1;
}
