#include "pipeline/Resample.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace korframe {

namespace {

void CopyPlane(const Plane& from, Plane& to) {
    for (std::size_t row = 0; row < to.height; ++row) {
        std::memcpy(to.Row(row), from.Row(row), to.width);
    }
}

// The mean of four samples, of which some may be the same.
std::uint8_t Mean(unsigned a, unsigned b, unsigned c, unsigned d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) / 4);
}

// Each sample covers two columns, or one if `step` is 1, of two rows, which may be the same.
template <std::size_t step>
void AverageRow(std::uint8_t* __restrict to, const std::uint8_t* upper, const std::uint8_t* lower, std::size_t width) {
    const std::size_t whole = width / step;
    for (std::size_t i = 0; i < whole; ++i) {
        const std::size_t left = step * i;
        const std::size_t right = left + step - 1;
        to[i] = Mean(upper[left], upper[right], lower[left], lower[right]);
    }
    if (whole * step < width) {
        to[whole] = Mean(upper[width - 1], upper[width - 1], lower[width - 1], lower[width - 1]);
    }
}

void AveragePlane(const Plane& from, Plane& to) {
    const std::size_t rows = from.height > to.height ? 2 : 1;
    const auto average = from.width > to.width ? AverageRow<2> : AverageRow<1>;
    for (std::size_t row = 0; row < to.height; ++row) {
        average(to.Row(row), from.Row(rows * row), from.Row(std::min(rows * row + rows - 1, from.height - 1)),
                from.width);
    }
}

void RepeatPlane(const Plane& from, Plane& to) {
    const std::size_t columns = to.width > from.width ? 2 : 1;
    const std::size_t rows = to.height > from.height ? 2 : 1;
    for (std::size_t row = 0; row < to.height; ++row) {
        const std::uint8_t* source = from.Row(row / rows);
        std::uint8_t* target = to.Row(row);
        if (row % rows != 0) {
            std::memcpy(target, to.Row(row - 1), to.width);
        } else if (columns == 1) {
            std::memcpy(target, source, to.width);
        } else {
            for (std::size_t column = 0; column < to.width; ++column) {
                target[column] = source[column / 2];
            }
        }
    }
}

// Between 4:2:2 and the others one axis changes, and no two layouts change one each way.
void ResamplePlane(const Plane& from, Plane& to) {
    if (to.width < from.width || to.height < from.height) {
        AveragePlane(from, to);
    } else {
        RepeatPlane(from, to);
    }
}

using Table = std::array<std::uint8_t, 256>;

// 255 steps around `zero`, which stays, become `steps` around `limitedZero`.
constexpr Table MakeTable(int zero, int limitedZero, int steps) {
    Table table = {};
    for (int value = 0; value < 256; ++value) {
        const int scaled = (value - zero) * steps * 2 + 255;  // twice the exact value, and a half
        const int rounded = scaled >= 0 ? scaled / 510 : -((-scaled + 509) / 510);
        table[static_cast<std::size_t>(value)] = static_cast<std::uint8_t>(limitedZero + rounded);
    }
    return table;
}

constexpr Table kLimitedLuma = MakeTable(0, 16, 219);
constexpr Table kLimitedChroma = MakeTable(128, 128, 224);
static_assert(kLimitedLuma[0] == 16 && kLimitedLuma[255] == 235, "black and white");
static_assert(kLimitedChroma[0] == 16 && kLimitedChroma[128] == 128 && kLimitedChroma[255] == 240,
              "no and full colour");

void Translate(Plane& plane, const Table& table) {
    for (std::size_t row = 0; row < plane.height; ++row) {
        std::uint8_t* samples = plane.Row(row);
        for (std::size_t column = 0; column < plane.width; ++column) {
            samples[column] = table[samples[column]];
        }
    }
}

}  // namespace

void ResampleChroma(Layout layout, YuvImage& image, YuvImage& spare) {
    if (layout == image.GetLayout()) {
        return;
    }
    spare.Reset(layout, image.Width(), image.Height());
    CopyPlane(image.y, spare.y);
    ResamplePlane(image.u, spare.u);
    ResamplePlane(image.v, spare.v);
    std::swap(image, spare);
}

void LimitRange(YuvImage& image) {
    Translate(image.y, kLimitedLuma);
    Translate(image.u, kLimitedChroma);
    Translate(image.v, kLimitedChroma);
}

}  // namespace korframe
