// The size of a plane and what around it belongs to it.
#ifndef KOR_CONFORMANCE_CORE_PLANESHAPE_H
#define KOR_CONFORMANCE_CORE_PLANESHAPE_H

#include <cstddef>
#include <cstdint>

namespace kit {

// The last row carries no padding: the plane ends with its last writable byte, so that an unmapped page can follow at
// once.
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
    // Bytes in front of the first row that may be used; an empty plane has none.
    std::size_t Front() const { return Empty() ? 0 : margin; }
};

enum class Placement {
    Rear,   // the plane's last byte is the last before the unmapped page
    Front,  // the plane's first byte is the first after the unmapped page
};

// A plane as a function is given it.
struct PlaneView {
    std::uint8_t* data = nullptr;
    std::size_t pitch = 0;
    std::size_t rows = 0;
};

}  // namespace kit

#endif
