// Small conveniences for hand-written tests.
#ifndef KOR_TESTS_SUPPORT_FRAMES_H
#define KOR_TESTS_SUPPORT_FRAMES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "conformance/kit/Plane.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace kit {

constexpr KorBool kFlips[] = {0, 1};

// A list of sizes to loop over.
using Sizes = std::initializer_list<std::size_t>;

// Rows of rowBytes, each followed by padding; the spare rows and columns may be written.
inline PlaneShape Shape(std::size_t rowBytes, std::size_t rows, std::size_t padding = 0) {
    PlaneShape shape;
    shape.rowBytes = rowBytes;
    shape.rows = rows;
    shape.pitch = rowBytes + padding;
    return shape;
}

inline PlaneShape ShapeWithSpares(std::size_t rowBytes, std::size_t rows, std::size_t spareColumns,
                                  std::size_t spareRows) {
    PlaneShape shape = Shape(rowBytes, rows, spareColumns);
    shape.spareColumns = spareColumns;
    shape.spareRows = spareRows;
    return shape;
}

// A plane at the very end of the address space. None of its bytes can be accessed, and because a second row would lie
// beyond the end, UndefinedBehaviorSanitizer reports any code that forms its address.
inline PlaneView OutOfReach() {
    return {reinterpret_cast<KorUint8*>(~std::uintptr_t{0} - 7), 16, 0};
}

// The three planes of an image of width by height, chroma rounded up.
struct I420Frame {
    Plane y, u, v;

    I420Frame(std::size_t width, std::size_t height, std::size_t padding = 0, Placement placement = Placement::Rear)
        : I420Frame(width, height, Shape(width, height, padding), placement) {}

    // With spare columns or rows in the luma plane.
    I420Frame(std::size_t width, std::size_t height, const PlaneShape& luma, Placement placement = Placement::Rear)
        : y(luma, placement),
          u(Shape((width + 1) / 2, (height + 1) / 2, luma.pitch - width), placement),
          v(Shape((width + 1) / 2, (height + 1) / 2, luma.pitch - width), placement) {}

    Bytes Samples() const {
        Bytes all = y.Samples();
        for (const Plane* plane : {&u, &v}) {
            const Bytes samples = plane->Samples();
            all.insert(all.end(), samples.begin(), samples.end());
        }
        return all;
    }
};

// The three planes of an I444 image.
struct I444Frame {
    Plane y, u, v;

    I444Frame(std::size_t width, std::size_t height, std::size_t padding = 0)
        : y(Shape(width, height, padding)), u(Shape(width, height, padding)), v(Shape(width, height, padding)) {}
};

}  // namespace kit

#endif
