// A plane of bytes placed against an unmapped page, with everything around its samples watched.
#ifndef KOR_TESTS_SUPPORT_PLANE_H
#define KOR_TESTS_SUPPORT_PLANE_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/GuardedBuffer.h"
#include "tests/support/Pattern.h"

namespace kit {

using Bytes = std::vector<std::uint8_t>;

// The size of a plane and what around it belongs to it. The last row carries no padding: the plane ends with its last
// writable byte, so that an unmapped page can follow at once.
struct PlaneShape {
    std::size_t rowBytes = 0;
    std::size_t rows = 0;
    std::size_t pitch = 0;
    std::size_t spareColumns = 0;  // bytes to the right of every row that may be written
    std::size_t spareRows = 0;     // rows below the last one that may be written
    std::size_t margin = 0;        // bytes in front of the first row that may be used
    bool drifts = false;           // rows do not keep to their columns: padding counts as part of the plane

    bool Empty() const { return rowBytes + spareColumns == 0 || rows + spareRows == 0; }
    // Bytes from the first row's start to the end of the last row.
    std::size_t Span() const { return Empty() ? 0 : (rows + spareRows - 1) * pitch + rowBytes + spareColumns; }
};

enum class Placement {
    Rear,   // the plane's last byte is the last before the unmapped page
    Front,  // the plane's first byte is the first after the unmapped page
};

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

    // Empty when the bytes equal the expected allocation, else the place, kind and values of the first difference.
    std::string Difference(const char* name, const std::uint8_t* expected) const;
    // The same for the bytes that no function may touch.
    std::string GapDifference(const char* name, const std::uint8_t* expected) const;

  private:
    std::string Describe(const char* name, const std::uint8_t* expected, std::size_t offset) const;

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
    const std::size_t front = shape_.Empty() ? 0 : shape_.margin;
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
