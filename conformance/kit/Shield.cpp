#include "conformance/kit/Shield.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace kit {

namespace {

void Protect(std::uintptr_t begin, std::uintptr_t end, int protection) {
    if (begin < end && mprotect(reinterpret_cast<void*>(begin), end - begin, protection) != 0) {
        throw std::runtime_error("mprotect failed");
    }
}

std::uintptr_t PageDown(std::uintptr_t address) {
    return address / PageBytes() * PageBytes();
}

std::uintptr_t PageUp(std::uintptr_t address) {
    return PageDown(address + PageBytes() - 1);
}

// Every page with a byte of the plane. A plane shares its buffer with nothing.
void ProtectAll(const Plane& plane, int protection) {
    const auto begin = reinterpret_cast<std::uintptr_t>(plane.allocation());
    Protect(PageDown(begin), PageUp(begin + plane.allocationSize()), protection);
}

}  // namespace

std::size_t PageBytes() {
    static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

void ForbidWriting(const Plane& plane) {
    ProtectAll(plane, PROT_READ);
}

void HideGaps(const Plane& plane) {
    plane.ForEachGap([&](std::size_t offset, std::size_t size) {
        const auto begin = reinterpret_cast<std::uintptr_t>(plane.allocation() + offset);
        Protect(PageUp(begin), PageDown(begin + size), PROT_NONE);
    });
}

void AllowAll(const Plane& plane) {
    ProtectAll(plane, PROT_READ | PROT_WRITE);
}

}  // namespace kit
