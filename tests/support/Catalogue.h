// What is known of each function of the library: its planes for given arguments, and the values its options take.
#ifndef KOR_TESTS_SUPPORT_CATALOGUE_H
#define KOR_TESTS_SUPPORT_CATALOGUE_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/Case.h"

namespace kit {

constexpr std::size_t kMaximumPlanes = 9;

enum class Access {
    Read,
    Write,
    ReadWrite,
};

// A plane as the function may use it. Source planes are as large as the bytes that are read, so that one byte more
// meets the unmapped page; pixelBytes is what a row of the image has nominally, and the least that a pitch can be.
struct PlaneUse {
    const char* name = "";
    Access access = Access::Read;
    PlaneShape shape;  // its pitch is chosen later
    std::size_t nominalRowBytes = 0;
    std::size_t marginRows = 0;  // whole rows in front of the plane that may be used
};

struct Layout {
    std::array<PlaneUse, kMaximumPlanes> planes;
    std::size_t count = 0;

    PlaneUse& Add(const char* name, Access access, std::size_t rowBytes, std::size_t rows,
                  std::size_t nominalRowBytes = 0);
};

struct Entry {
    const char* name;
    void (*describe)(const Case&, Layout&);
    Sweep (*options)();  // without sizes
};

// All functions in the order of the public header.
const std::vector<Entry>& Catalogue();
// The entry of a function; ends the program for an unknown name.
const Entry& Find(const std::string& name);

}  // namespace kit

#endif
