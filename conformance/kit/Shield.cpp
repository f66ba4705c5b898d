#include "conformance/kit/Shield.h"

#include <sys/mman.h>

#include <stdexcept>

namespace kit {

namespace {

void Protect(std::uint8_t* begin, const std::uint8_t* end, int protection) {
    if (begin < end && mprotect(begin, static_cast<std::size_t>(end - begin), protection) != 0) {
        throw std::runtime_error("mprotect failed");
    }
}

// The start of the page that holds the byte.
std::uint8_t* PageDown(std::uint8_t* byte) {
    return byte - reinterpret_cast<std::uintptr_t>(byte) % PageBytes();
}

std::uint8_t* PageUp(std::uint8_t* byte) {
    return PageDown(byte + PageBytes() - 1);
}

// Every page with a byte of the plane. A plane shares its buffer with nothing.
void ProtectAll(const Plane& plane, int protection) {
    std::uint8_t* const begin = plane.allocation();
    Protect(PageDown(begin), PageUp(begin + plane.allocationSize()), protection);
}

}  // namespace

void ForbidWriting(const Plane& plane) {
    ProtectAll(plane, PROT_READ);
}

void HideGaps(const Plane& plane) {
    plane.ForEachGap([&](std::size_t offset, std::size_t size) {
        std::uint8_t* const begin = plane.allocation() + offset;
        Protect(PageUp(begin), PageDown(begin + size), PROT_NONE);
    });
}

void AllowAll(const Plane& plane) {
    ProtectAll(plane, PROT_READ | PROT_WRITE);
}

}  // namespace kit
