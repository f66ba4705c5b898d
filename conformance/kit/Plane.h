// A plane of bytes placed against an unmapped page, with everything around its samples watched.
#ifndef KOR_CONFORMANCE_KIT_PLANE_H
#define KOR_CONFORMANCE_KIT_PLANE_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "conformance/core/Pattern.h"
#include "conformance/core/PlaneShape.h"
#include "conformance/kit/GuardedBuffer.h"

namespace kit {

using Bytes = std::vector<std::uint8_t>;

class Plane {
  public:
    Plane() = default;
    // Places the plane in a buffer of its own, filled with noise so that every untouched byte can be told.
    explicit Plane(const PlaneShape& shape, Placement placement = Placement::Rear);
    // Places the plane in a buffer that is used again and again; its content stays as it was.
    Plane(const PlaneShape& shape, Placement placement, std::shared_ptr<GuardedBuffer> buffer);

    // The size of the buffer that such a plane needs.
    static std::size_t BytesFor(const PlaneShape& shape);

    const PlaneShape& shape() const { return shape_; }
    std::uint8_t* data() const { return data_; }
    std::size_t pitch() const { return shape_.pitch; }
    PlaneView View() const { return {data_, shape_.pitch, shape_.rows}; }

    // All bytes that are watched: the plane, its padding, and an apron on the side that has no unmapped page.
    std::uint8_t* allocation() const { return allocation_; }
    std::size_t allocationSize() const { return allocationSize_; }

    // One sample; row and column may lead into the spare parts and the padding.
    std::uint8_t& At(std::size_t row, std::size_t column) const { return data_[row * shape_.pitch + column]; }
    // The samples of a row without padding and spare columns.
    Bytes Row(std::size_t row) const;
    // The samples of all rows, one after the other.
    Bytes Samples() const;
    // Sets the samples row by row.
    void SetSamples(const Bytes& samples) const;
    void SetSamples(std::initializer_list<std::uint8_t> samples) const { SetSamples(Bytes(samples)); }
    void SetAll(std::uint8_t value) const;
    void Fill(Pattern pattern, std::uint64_t seed) const;

    // A copy of every watched byte, to compare with later.
    Bytes Snapshot() const { return Bytes(allocation_, allocation_ + allocationSize_); }

    // Calls visit(offset, size) for each run of watched bytes that no function may touch; offsets count from the
    // start of the allocation.
    template <class Visitor>
    void ForEachGap(Visitor visit) const;

    // How the watched bytes differ from an expected allocation.
    struct Differences {
        std::size_t inside = 0;   // bytes of the plane and its spare parts
        std::size_t outside = 0;  // bytes that no function may touch
        std::size_t firstInside = 0;
        std::size_t firstOutside = 0;

        bool None() const { return inside + outside == 0; }
    };
    Differences Compare(const std::uint8_t* expected) const;
    // The first of all differing bytes in words, as Describe has it; empty where there is none.
    std::string Difference(const char* name, const std::uint8_t* expected) const;
    // The same for the bytes that no function may touch.
    std::string GapDifference(const char* name, const std::uint8_t* expected) const;

    // The byte at an offset of the allocation in words: its place, what was expected there and what was found, and a
    // hexadecimal picture of the rows around it.
    std::string Describe(const char* name, const std::uint8_t* expected, std::size_t offset) const;
    // A place that is counted from the first byte of the first row, in words.
    std::string Where(std::ptrdiff_t place) const;

    // Whether the address lies in the plane's memory or in the unmapped pages around it.
    bool IsNear(std::uintptr_t address) const;

  private:
    std::string Picture(const std::uint8_t* expected, std::ptrdiff_t place) const;

    PlaneShape shape_;
    std::shared_ptr<GuardedBuffer> buffer_;
    std::uint8_t* data_ = nullptr;
    std::uint8_t* allocation_ = nullptr;
    std::size_t allocationSize_ = 0;
};

template <class Visitor>
void Plane::ForEachGap(Visitor visit) const {
    const std::size_t first = static_cast<std::size_t>(data_ - allocation_);
    const std::size_t span = shape_.Span();
    const std::size_t used = shape_.rowBytes + shape_.spareColumns;
    const std::size_t front = shape_.Front();
    visit(std::size_t{0}, first - front);
    if (!shape_.drifts && !shape_.Empty()) {
        for (std::size_t row = 0; row + 1 < shape_.rows + shape_.spareRows; ++row) {
            visit(first + row * shape_.pitch + used, shape_.pitch - used);
        }
    }
    visit(first + span, allocationSize_ - first - span);
}

}  // namespace kit

#endif
