#include "conformance/kit/Contents.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace kit {

namespace {

constexpr std::uint8_t LowByte(std::size_t value) {
    return static_cast<std::uint8_t>(value & 0xff);
}

bool IsNamed(const PlaneUse& use, const char* name) {
    return std::strcmp(use.name, name) == 0;
}

// The bytes of a pixel in the packed picture of a layout; 0 where there is none.
std::size_t PixelBytes(const PlaneUse& use, std::size_t width) {
    return IsNamed(use, "x") && width > 0 ? use.shape.rowBytes / width : 0;
}

// The places of so many columns or rows, spread from 0 to 255.
std::vector<std::uint8_t> Spread(std::size_t count) {
    std::vector<std::uint8_t> places(count);
    for (std::size_t i = 0; i < count; ++i) {
        places[i] = LowByte(i * 256 / count);
    }
    return places;
}

// Blocks of one colour: a channel for the picture, one for the row, one for the column. The fourth byte is the first
// again, so that either end may be alpha.
void FillColours(const Plane& plane, std::size_t pixelBytes, std::size_t picture) {
    const std::vector<std::uint8_t> across = Spread(plane.shape().rowBytes / pixelBytes);
    const std::vector<std::uint8_t> down = Spread(plane.shape().rows);
    for (std::size_t row = 0; row < down.size(); ++row) {
        std::uint8_t* pixel = &plane.At(row, 0);
        for (std::size_t column = 0; column < across.size(); ++column, pixel += pixelBytes) {
            pixel[0] = LowByte(picture);
            pixel[1] = down[row];
            pixel[2] = across[column];
            pixel[pixelBytes - 1] = pixelBytes == 4 ? pixel[0] : pixel[2];
        }
    }
}

// Sets every sample to value(row, column, r, c), where r and c are the spread places.
template <class Value>
void FillByPlace(const Plane& plane, Value value) {
    const std::vector<std::uint8_t> across = Spread(plane.shape().rowBytes);
    const std::vector<std::uint8_t> down = Spread(plane.shape().rows);
    for (std::size_t row = 0; row < down.size(); ++row) {
        std::uint8_t* const line = &plane.At(row, 0);
        for (std::size_t column = 0; column < across.size(); ++column) {
            line[column] = LowByte(value(row, column, std::size_t{down[row]}, std::size_t{across[column]}));
        }
    }
}

using Place = std::size_t;

// Four values of luma in each block, all of U down and all of V across; backgrounds go down, foregrounds across, and
// weights meet each pair of them in one of the pictures.
void FillPart(const Plane& plane, const PlaneUse& use, std::size_t picture) {
    if (IsNamed(use, "y")) {
        FillByPlace(plane,
                    [&](Place row, Place column, Place, Place) { return 4 * picture + row % 2 * 2 + column % 2; });
    } else if (IsNamed(use, "u") || std::strstr(use.name, "Background") != nullptr) {
        FillByPlace(plane, [](Place, Place, Place r, Place) { return r; });
    } else if (IsNamed(use, "v") || std::strstr(use.name, "Foreground") != nullptr) {
        FillByPlace(plane, [](Place, Place, Place, Place c) { return c; });
    } else {
        FillByPlace(plane, [&](Place, Place, Place r, Place c) { return picture + 3 * r + 5 * c; });
    }
}

// Even rows count down, odd rows across: each pair of samples lies one below the other somewhere.
void FillPairs(const Plane& plane) {
    FillByPlace(plane, [](Place row, Place, Place r, Place c) { return row % 2 == 0 ? r : c; });
}

}  // namespace

void FillSource(const Plane& plane, const Layout& layout, std::size_t index, const Case& options) {
    const PlaneUse& use = layout.planes[index];
    const std::size_t pixelBytes = PixelBytes(use, options.width);
    if (options.pattern == Pattern::Flat) {
        plane.SetAll(LowByte(options.picture));
    } else if (options.pattern == Pattern::Pairs) {
        FillPairs(plane);
    } else if (options.pattern == Pattern::Colours && pixelBytes >= 3) {
        FillColours(plane, pixelBytes, options.picture);
    } else if (options.pattern == Pattern::Colours) {
        FillPart(plane, use, options.picture);
    } else {
        plane.Fill(options.pattern, MixSeed(options.seed, 100 + index));
    }
}

ColourPictures PicturesOf(const Entry& entry) {
    Case square;
    square.width = square.height = 512;
    const Layout layout = LayOut(entry, square);
    for (std::size_t i = 0; i < layout.count; ++i) {
        const PlaneUse& use = layout.planes[i];
        if (PixelBytes(use, square.width) >= 3) {
            return {Pattern::Colours, use.access == Access::Read ? 256u : 64u};
        }
        if (IsNamed(use, "yForeground")) {
            return {Pattern::Colours, 256};
        }
    }
    return {Pattern::Pairs, 1};
}

}  // namespace kit
