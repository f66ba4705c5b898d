#include "conformance/kit/Plane.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

namespace kit {

namespace {

// Bytes watched on the side of a plane that does not touch an unmapped page.
constexpr std::size_t kApron = 192;

// How much of a row a picture shows before the place and from it on.
constexpr std::ptrdiff_t kShownBefore = 6;
constexpr std::ptrdiff_t kShownBehind = 10;

std::string Hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02x", value);
    return text;
}

// Four places for a byte, or for the number of a column, with a mark around it if it is to be seen.
std::string ByteCell(unsigned value, bool marked) {
    char cell[16];
    std::snprintf(cell, sizeof cell, marked ? "[%02x]" : " %02x ", value);
    return cell;
}

std::string ColumnCell(std::ptrdiff_t column) {
    char cell[32];
    std::snprintf(cell, sizeof cell, "%3td ", column);
    return cell;
}

std::string CountBytes(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

// A line's title, flush with what follows.
std::string Padded(const std::string& title, std::size_t width) {
    return std::string(width > title.size() ? width - title.size() : 0, ' ') + title + " ";
}

// A quotient rounded toward minus infinity: rows in front of the plane have negative numbers.
std::ptrdiff_t FloorDivide(std::ptrdiff_t value, std::ptrdiff_t divisor) {
    return value >= 0 ? value / divisor : -((divisor - 1 - value) / divisor);
}

}  // namespace

Plane::Plane(const PlaneShape& shape, Placement placement)
    : Plane(shape, placement, std::make_shared<GuardedBuffer>(BytesFor(shape))) {
    FillNoise(0x5eed, allocation_, allocationSize_);
}

Plane::Plane(const PlaneShape& shape, Placement placement, std::shared_ptr<GuardedBuffer> buffer)
    : shape_(shape), buffer_(std::move(buffer)) {
    const std::size_t span = shape_.Span();
    allocationSize_ = BytesFor(shape_);
    assert(allocationSize_ <= buffer_->size());
    if (placement == Placement::Rear) {
        allocation_ = buffer_->end() - allocationSize_;
        data_ = buffer_->end() - span;
    } else {
        allocation_ = buffer_->begin();
        data_ = allocation_ + shape_.Front();
    }
}

std::size_t Plane::BytesFor(const PlaneShape& shape) {
    return shape.Front() + shape.Span() + kApron;
}

Bytes Plane::Row(std::size_t row) const {
    const std::uint8_t* first = data_ + row * shape_.pitch;
    return Bytes(first, first + shape_.rowBytes);
}

Bytes Plane::Samples() const {
    Bytes samples;
    for (std::size_t row = 0; row < shape_.rows; ++row) {
        const Bytes line = Row(row);
        samples.insert(samples.end(), line.begin(), line.end());
    }
    return samples;
}

void Plane::SetSamples(const Bytes& samples) const {
    assert(samples.size() == shape_.rows * shape_.rowBytes);
    for (std::size_t row = 0; row < shape_.rows; ++row) {
        std::copy_n(samples.data() + row * shape_.rowBytes, shape_.rowBytes, data_ + row * shape_.pitch);
    }
}

void Plane::SetAll(std::uint8_t value) const {
    for (std::size_t row = 0; row < shape_.rows; ++row) {
        std::fill_n(data_ + row * shape_.pitch, shape_.rowBytes, value);
    }
}

void Plane::Fill(Pattern pattern, std::uint64_t seed) const {
    FillPattern(pattern, seed, data_, shape_.pitch, shape_.rowBytes, shape_.rows);
}

// What is forbidden and what is not take turns; most of either is alike and told so at once.
Plane::Differences Plane::Compare(const std::uint8_t* expected) const {
    Differences differences;
    const auto compare = [&](std::size_t from, std::size_t to, std::size_t& count, std::size_t& first) {
        if (from >= to || std::memcmp(expected + from, allocation_ + from, to - from) == 0) {
            return;
        }
        if (count == 0) {
            first = static_cast<std::size_t>(std::mismatch(expected + from, expected + to, allocation_ + from).first -
                                             expected);
        }
        for (std::size_t i = from; i < to; ++i) {
            count += expected[i] != allocation_[i] ? 1 : 0;
        }
    };
    std::size_t behind = 0;
    ForEachGap([&](std::size_t offset, std::size_t size) {
        compare(behind, offset, differences.inside, differences.firstInside);
        compare(offset, offset + size, differences.outside, differences.firstOutside);
        behind = offset + size;
    });
    return differences;
}

std::string Plane::Difference(const char* name, const std::uint8_t* expected) const {
    const Differences found = Compare(expected);
    const bool inside = found.inside > 0 && (found.outside == 0 || found.firstInside < found.firstOutside);
    return found.None() ? "" : Describe(name, expected, inside ? found.firstInside : found.firstOutside);
}

std::string Plane::GapDifference(const char* name, const std::uint8_t* expected) const {
    const Differences found = Compare(expected);
    return found.outside == 0 ? "" : Describe(name, expected, found.firstOutside);
}

std::string Plane::Describe(const char* name, const std::uint8_t* expected, std::size_t offset) const {
    const std::ptrdiff_t place = allocation_ + offset - data_;
    return std::string("plane ") + name + ", " + Where(place) + ": expected " + Hex(expected[offset]) + ", found " +
           Hex(allocation_[offset]) + "\n" + Picture(expected, place);
}

std::string Plane::Where(std::ptrdiff_t place) const {
    if (shape_.Empty()) {
        return "which is empty";
    }
    if (place < 0) {
        const std::size_t distance = static_cast<std::size_t>(-place);
        return CountBytes(distance) + " before the plane" + (distance <= shape_.Front() ? " (margin)" : "");
    }
    const std::size_t offset = static_cast<std::size_t>(place);
    if (offset >= shape_.Span()) {
        return CountBytes(offset - shape_.Span() + 1) + " behind the plane's end";
    }
    const std::size_t row = offset / shape_.pitch;
    const std::size_t column = offset % shape_.pitch;
    std::string where = "row " + std::to_string(row) + ", column " + std::to_string(column);
    if (column >= shape_.rowBytes + shape_.spareColumns) {
        where += " (padding)";
    } else if (column >= shape_.rowBytes) {
        where += " (spare column)";
    } else if (row >= shape_.rows) {
        where += " (spare row)";
    }
    return where;
}

// The row of the place, the one above and the one below; differing bytes of a found row stand in brackets, and places
// outside of the allocation stay empty.
std::string Plane::Picture(const std::uint8_t* expected, std::ptrdiff_t place) const {
    const std::ptrdiff_t pitch = static_cast<std::ptrdiff_t>(shape_.pitch == 0 ? 16 : shape_.pitch);
    const std::ptrdiff_t row = FloorDivide(place, pitch);
    const std::ptrdiff_t column = place - row * pitch;
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(column - kShownBefore, 0);
    const std::ptrdiff_t end = std::min(column + kShownBehind, pitch);
    const std::size_t titleWidth = 16 + std::to_string(row + 1).size();
    std::string picture = Padded("column", titleWidth);
    for (std::ptrdiff_t c = first; c < end; ++c) {
        picture += ColumnCell(c);
    }
    picture += "\n";
    for (std::ptrdiff_t r = row - 1; r <= row + 1; ++r) {
        std::string wanted;
        std::string found;
        bool any = false;
        bool same = true;
        for (std::ptrdiff_t c = first; c < end; ++c) {
            const std::ptrdiff_t i = data_ + r * pitch + c - allocation_;
            const bool inside = i >= 0 && i < static_cast<std::ptrdiff_t>(allocationSize_);
            const bool equal = !inside || expected[i] == allocation_[i];
            wanted += inside ? ByteCell(expected[i], false) : "    ";
            found += inside ? ByteCell(allocation_[i], !equal) : "    ";
            any = any || inside;
            same = same && equal;
        }
        if (any) {
            const std::string title = "row " + std::to_string(r);
            picture += Padded(title + (same ? " both" : " expected"), titleWidth);
            picture += wanted + "\n";
            picture += same ? "" : Padded("found", titleWidth) + found + "\n";
        }
    }
    return picture;
}

bool Plane::IsNear(std::uintptr_t address) const {
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(buffer_->begin()) - buffer_->guard();
    return address >= begin && address - begin < buffer_->size() + 2 * buffer_->guard();
}

}  // namespace kit
