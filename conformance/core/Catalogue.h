// What is known of each function of the library: its planes for given arguments, and the values its options take.
#ifndef KOR_CONFORMANCE_CORE_CATALOGUE_H
#define KOR_CONFORMANCE_CORE_CATALOGUE_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "conformance/core/Case.h"
#include "conformance/core/Functions.h"

namespace kit {

constexpr std::size_t kMaximumPlanes = 9;

enum class Access {
    Read,
    Write,
    ReadWrite,
};

// A plane as the function may use it. Source planes are as large as the bytes that are read, so that one byte more
// meets the unmapped page; nominalRowBytes is what a row of the image has, and the least that a pitch can be.
struct PlaneUse {
    const char* name = "";
    Access access = Access::Read;
    PlaneShape shape;
    std::size_t nominalRowBytes = 0;
    std::size_t marginRows = 0;  // whole rows in front of the plane that may be used
};

struct Layout {
    std::array<PlaneUse, kMaximumPlanes> planes;
    std::size_t count = 0;

    PlaneUse& Add(const char* name, Access access, std::size_t rowBytes, std::size_t rows,
                  std::size_t nominalRowBytes = 0);
};

enum class Family {
    PlaneGeometry,
    RgbToYuv,
    YuvToRgb,
    PackedYuv,
    Compositing,
};

struct Entry {
    const char* name;
    Family family;
    void (*describe)(const Case&, Layout&);  // all but the pitches
    Sweep (*options)();                      // without sizes
    AnyFunction (*of)(const KorConformanceTable&);
};

// All functions in the order of the public header.
const std::vector<Entry>& Catalogue();
// The planes of a case, with their pitches.
Layout LayOut(const Entry& entry, const Case& options);
// The entry of a function; ends the program for an unknown name.
const Entry& Find(const std::string& name);

}  // namespace kit

#endif
