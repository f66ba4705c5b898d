#include "conformance/kit/Plane.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>

namespace kit {

namespace {

// Bytes watched on the side of a plane that does not touch an unmapped page.
constexpr std::size_t kApron = 192;

std::string HexLine(const char* title, const std::uint8_t* bytes, std::size_t count, std::size_t marked) {
    std::string line = title;
    char cell[8];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(cell, sizeof cell, i == marked ? "[%02x]" : " %02x ", static_cast<unsigned>(bytes[i]));
        line += cell;
    }
    return line + "\n";
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

std::string Plane::Difference(const char* name, const std::uint8_t* expected) const {
    if (std::memcmp(expected, allocation_, allocationSize_) == 0) {
        return {};
    }
    const auto place = std::mismatch(expected, expected + allocationSize_, allocation_);
    return Describe(name, expected, static_cast<std::size_t>(place.first - expected));
}

std::string Plane::GapDifference(const char* name, const std::uint8_t* expected) const {
    std::string found;
    ForEachGap([&](std::size_t offset, std::size_t size) {
        if (found.empty() && std::memcmp(expected + offset, allocation_ + offset, size) != 0) {
            const auto place = std::mismatch(expected + offset, expected + offset + size, allocation_ + offset);
            found = Describe(name, expected, static_cast<std::size_t>(place.first - expected));
        }
    });
    return found;
}

std::string Plane::Describe(const char* name, const std::uint8_t* expected, std::size_t offset) const {
    const std::ptrdiff_t fromData = allocation_ + offset - data_;
    std::string where;
    if (fromData < 0) {
        where = std::to_string(-fromData) + " bytes before the plane";
        if (!shape_.Empty() && static_cast<std::size_t>(-fromData) <= shape_.margin) {
            where += " (margin)";
        }
    } else if (static_cast<std::size_t>(fromData) >= shape_.Span()) {
        where = std::to_string(static_cast<std::size_t>(fromData) - shape_.Span()) + " bytes behind the plane's end";
    } else {
        const std::size_t row = static_cast<std::size_t>(fromData) / shape_.pitch;
        const std::size_t column = static_cast<std::size_t>(fromData) % shape_.pitch;
        where = "row " + std::to_string(row) + ", column " + std::to_string(column);
        if (column >= shape_.rowBytes + shape_.spareColumns) {
            where += " (padding)";
        } else if (column >= shape_.rowBytes) {
            where += " (spare column)";
        } else if (row >= shape_.rows) {
            where += " (spare row)";
        }
    }
    const std::size_t first = offset < 8 ? 0 : offset - 8;
    const std::size_t count = std::min<std::size_t>(20, allocationSize_ - first);
    std::string report = std::string("plane ") + name + ", " + where + ": expected " +
                         std::to_string(expected[offset]) + ", found " + std::to_string(allocation_[offset]) + "\n";
    report += HexLine("  expected ", expected + first, count, offset - first);
    report += HexLine("  found    ", allocation_ + first, count, offset - first);
    return report;
}

}  // namespace kit
