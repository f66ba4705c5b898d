/*
 * The default random-bytes service: it asks the operating system, keeps nothing between calls and holds no lock, so any
 * number of threads may call it at once.
 *
 * It stands in a file of its own, so that a program that links this target statically and defines its own
 * KorRandomGetBytes gets its own. Nothing of the C++ runtime is used: programs in C link it as it is.
 */
#include "Kor/Os/KorRandom.h"

// One source a system. The device file serves the systems that name none here, and Linux where the call is refused.
#if defined(_WIN32)
#define KOR_RANDOM_FROM_BCRYPT
#elif defined(__APPLE__) || defined(__ANDROID__) || defined(__FreeBSD__) || defined(__OpenBSD__) || \
    defined(__NetBSD__) || defined(__DragonFly__)
#define KOR_RANDOM_FROM_ARC4RANDOM
#elif defined(__linux__)
#define KOR_RANDOM_FROM_GETRANDOM
#define KOR_RANDOM_FROM_DEVICE
#else
#define KOR_RANDOM_FROM_DEVICE
#endif

#if defined(KOR_RANDOM_FROM_BCRYPT)
#include <windows.h>
// After windows.h, whose types it uses.
#include <bcrypt.h>
#endif
#if defined(KOR_RANDOM_FROM_ARC4RANDOM)
#include <stdlib.h>
#endif
#if defined(KOR_RANDOM_FROM_GETRANDOM)
#include <sys/random.h>
#endif
#if defined(KOR_RANDOM_FROM_DEVICE)
#include <errno.h>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// Each source has the same shape: it fills a first part of the buffer and returns its length, zero when it cannot.

#if defined(KOR_RANDOM_FROM_DEVICE)

// A signal may arrive before the first byte: that is no failure, the call is made again.
template <typename Call>
KorSizeT RetryInterrupted(Call call) {
    ssize_t got = 0;
    do {
        got = call();
    } while (got < 0 && errno == EINTR);
    return got > 0 ? static_cast<KorSizeT>(got) : 0;
}

KorSizeT DrawFromDevice(char* buffer, KorSizeT count) {
    const int device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (device < 0) {
        return 0;
    }
    const KorSizeT got = RetryInterrupted([=] { return read(device, buffer, count); });
    close(device);
    return got;
}

#endif

#if defined(KOR_RANDOM_FROM_BCRYPT)

KorSizeT Draw(char* buffer, KorSizeT count) {
    const KorSizeT most = 0x7fffffff;
    const KorSizeT part = count < most ? count : most;
    const NTSTATUS status = BCryptGenRandom(nullptr, reinterpret_cast<PUCHAR>(buffer), static_cast<ULONG>(part),
                                            BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    return BCRYPT_SUCCESS(status) ? part : 0;
}

#elif defined(KOR_RANDOM_FROM_ARC4RANDOM)

KorSizeT Draw(char* buffer, KorSizeT count) {
    arc4random_buf(buffer, count);
    return count;
}

#elif defined(KOR_RANDOM_FROM_GETRANDOM)

// An old kernel does not know the call and a sandbox may forbid it; the device may still be there.
KorSizeT Draw(char* buffer, KorSizeT count) {
    const KorSizeT got = RetryInterrupted([=] { return getrandom(buffer, count, 0); });
    return got > 0 ? got : DrawFromDevice(buffer, count);
}

#else

KorSizeT Draw(char* buffer, KorSizeT count) {
    return DrawFromDevice(buffer, count);
}

#endif

}  // namespace

// Sources may return less than asked for, so the rest is drawn until nothing is missing.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    while (count > 0) {
        const KorSizeT got = Draw(buffer, count);
        if (got == 0) {
            return 0;
        }
        buffer += got;
        count -= got;
    }
    return 1;
}
