/*
 * The default random-bytes service: random bytes from the operating system.
 *
 * Where it takes a system call to get any, which costs more than a small frame, each thread asks for a block of them
 * and keeps what is left. That is the only state, so any number of threads may call the service at once. A product that
 * wants another source defines KorRandomGetBytes itself and leaves this file out.
 */
#include "Kor/Os/KorRandom.h"

#include <string.h>

#if defined(__APPLE__) || defined(__FreeBSD__) || defined(__OpenBSD__) || defined(__NetBSD__)
#define KOR_HAS_ARC4RANDOM
#endif
#if !defined(_WIN32) && !defined(KOR_HAS_ARC4RANDOM)
// The others make their bytes in the process, and heed forks themselves.
#define KOR_KEEPS_BYTES
#endif

#if defined(_WIN32)
#include <windows.h>
// bcrypt.h needs the types of windows.h.
#include <bcrypt.h>
#elif defined(__linux__)
#include <errno.h>
#include <sys/random.h>
#include <unistd.h>
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

// Fails at once if the system does, whatever it has given before.
bool GetFromSystem(char* buffer, KorSizeT count) {
    while (count > 0) {
        const KorSizeT got = SomeBytes(buffer, count);
        if (got == 0)
            return false;
        buffer += got;
        count -= got;
    }
    return true;
}

#if defined(KOR_KEEPS_BYTES)

// A dithered frame takes three indices: one system call for some twenty frames.
constexpr KorSizeT kBlockBytes = 512;

struct Block {
    char bytes[kBlockBytes];
    KorSizeT left;  // from the first byte on
    long process;   // that has asked for them
};

// Zeros, so that nothing runs when a thread starts or ends.
thread_local Block block;

// A child has a copy of its parent's block and must not use it. The number of the process tells them apart without a
// handler, which code that clones processes itself would pass by, and without a page that the system empties, which a
// thread would have to give back. Asking for it is a system call as well, but the shortest of all.
long Process() {
#if defined(__EMSCRIPTEN__) || defined(__wasi__)
    return 0;  // there are no others
#else
    return static_cast<long>(getpid());
#endif
}

// Has at least count bytes in the block, all of them new.
bool Refill(KorSizeT count, long process) {
    KorSizeT filled = 0;
    while (filled < count) {
        const KorSizeT got = SomeBytes(block.bytes + filled, kBlockBytes - filled);
        if (got == 0)
            return false;
        filled += got;
    }
    block.left = filled;
    block.process = process;
    return true;
}

// Bytes that have been handed out are nowhere else.
bool GetFromBlock(char* buffer, KorSizeT count) {
    const long process = Process();
    if ((block.left < count || block.process != process) && !Refill(count, process))
        return false;
    block.left -= count;
    char* const taken = block.bytes + block.left;
    memcpy(buffer, taken, count);
    memset(taken, 0, count);
    return true;
}

#endif

}  // namespace

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    if (count == 0)
        return 1;
#if defined(KOR_KEEPS_BYTES)
    // Larger requests gain nothing by a copy.
    if (count <= kBlockBytes / 8)
        return GetFromBlock(buffer, count);
#endif
    return GetFromSystem(buffer, count);
}
