#include "conformance/kit/FarPlane.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <new>
#include <utility>

#include "conformance/kit/Poison.h"

namespace kit {

namespace {

// What belongs to a row begins so many bytes before its first sample; walks that drift go less far.
constexpr std::ptrdiff_t kBeforeRow = 128;

// Zero where addresses have 32 bits, and nothing is that far apart.
constexpr std::size_t kGiB = sizeof(std::size_t) > 4 ? std::size_t{1} << 30 : 0;

void* Reserve(std::size_t bytes) {
    return mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
}

// Another one for each plane, odd and even, so that a pitch used for another plane shows.
std::size_t PitchOf(Pitches pitches, std::size_t index) {
    const std::size_t extra = 4096 + 1237 * index;
    switch (pitches) {
        case Pitches::Far:
            return 3 * kGiB / 4 + extra;
        case Pitches::Huge:
            return 4 * kGiB + extra;
        default:
            return 65536 + extra;
    }
}

// Sanitizers keep a shadow of all addresses, and emulators a record of every page.
#if defined(KOR_CONFORMANCE_POISON) || defined(__SANITIZE_THREAD__)
constexpr bool kShadowed = true;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kShadowed = true;
#else
constexpr bool kShadowed = false;
#endif
#else
constexpr bool kShadowed = false;
#endif

std::string FindHindrance() {
    if constexpr (sizeof(std::size_t) <= 4) {
        return "addresses have 32 bits";
    } else if constexpr (kShadowed) {
        return "the sanitizer shadows every address";
    } else {
        // An emulator that records pages takes its time for a million of them; others take microseconds.
        constexpr std::size_t kSample = 4 * kGiB;
        const std::clock_t start = std::clock();
        void* const sample = Reserve(kSample);
        if (sample != MAP_FAILED) {
            munmap(sample, kSample);
        }
        if (std::clock() - start > CLOCKS_PER_SEC / 500) {
            return "this system takes long to reserve addresses";
        }
        // All planes of a case together take less.
        constexpr std::size_t kMost = 8192 * kGiB;
        void* const most = Reserve(kMost);
        if (most == MAP_FAILED) {
            return "this system does not reserve eight terabytes of addresses";
        }
        munmap(most, kMost);
        return "";
    }
}

const std::string& Hindrance() {
    static const std::string hindrance = FindHindrance();
    return hindrance;
}

}  // namespace

FarPlane::FarPlane(const Plane& near, Pitches pitches, std::size_t index)
    : pitch_(PitchOf(pitches, index)), rows_(near.shape().rows) {
    const PlaneShape& shape = near.shape();
    const std::size_t rowsBefore = shape.pitch == 0 ? 1 : shape.Front() / shape.pitch + 1;
    const std::size_t rows = rowsBefore + shape.rows + shape.spareRows + 2;
    size_ = (rows * pitch_ / PageBytes() + 1) * PageBytes();
    void* const mapping = Reserve(size_);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    mapping_ = static_cast<std::uint8_t*>(mapping);
    data_ = mapping_ + rowsBefore * pitch_;
    ForEachWindow(near, [&](std::uint8_t* far, const std::uint8_t* bytes, std::size_t count) {
        std::uint8_t* const page = far - reinterpret_cast<std::uintptr_t>(far) % PageBytes();
        if (mprotect(page, static_cast<std::size_t>(far + count - page), PROT_READ | PROT_WRITE) != 0) {
            munmap(mapping_, size_);
            throw std::bad_alloc();
        }
        std::memcpy(far, bytes, count);
    });
}

FarPlane::~FarPlane() {
    if (mapping_ != nullptr) {
        munmap(mapping_, size_);
    }
}

FarPlane::FarPlane(FarPlane&& other) noexcept {
    *this = std::move(other);
}

FarPlane& FarPlane::operator=(FarPlane&& other) noexcept {
    std::swap(mapping_, other.mapping_);
    std::swap(size_, other.size_);
    std::swap(data_, other.data_);
    std::swap(pitch_, other.pitch_);
    std::swap(rows_, other.rows_);
    return *this;
}

// Calls visit(far, near, count) for the bytes of each row, those before the first row and those behind the last
// included.
template <class Visitor>
void FarPlane::ForEachWindow(const Plane& near, Visitor visit) const {
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(near.pitch());
    const std::ptrdiff_t begin = near.allocation() - near.data();
    const std::ptrdiff_t end = begin + static_cast<std::ptrdiff_t>(near.allocationSize());
    if (near.shape().Empty() || pitch == 0) {
        visit(data_ + begin, near.allocation(), near.allocationSize());
        return;
    }
    std::ptrdiff_t row = begin < 0 ? -((-begin + pitch - 1) / pitch) : 0;
    for (std::ptrdiff_t at = begin; at < end; ++row) {
        const std::ptrdiff_t next = std::min(end, (row + 1) * pitch - kBeforeRow);
        if (next > at) {
            visit(data_ + row * static_cast<std::ptrdiff_t>(pitch_) + (at - row * pitch), near.data() + at,
                  static_cast<std::size_t>(next - at));
            at = next;
        }
    }
}

void FarPlane::ReturnTo(const Plane& near) const {
    ForEachWindow(
        near, [&](const std::uint8_t* far, std::uint8_t* bytes, std::size_t count) { std::memcpy(bytes, far, count); });
}

bool FarPlane::IsNear(std::uintptr_t address) const {
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(mapping_);
    return mapping_ != nullptr && address >= begin && address - begin < size_;
}

std::vector<Pitches> FarPitches() {
    if (!Hindrance().empty()) {
        return {Pitches::Wide};
    }
    return {Pitches::Huge, Pitches::Wide, Pitches::Far};
}

std::string WhyNotFar() {
    return Hindrance().empty() ? "" : "pitches and offsets of more than 32 bits were not tried: " + Hindrance();
}

}  // namespace kit
