// Sizes that write nothing: functions return at once, without touching memory or forming the address of a row.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "conformance/core/Catalogue.h"
#include "tests/support/Frames.h"

namespace {

bool WritesNothing(const kit::Layout& layout) {
    return std::all_of(layout.planes.begin(), layout.planes.begin() + layout.count, [](const kit::PlaneUse& plane) {
        return plane.access == kit::Access::Read || plane.shape.Empty();
    });
}

TEST(EmptySizes, NoRowIsLocatedAndNoneIsCounted) {
    // A walk along the other side of such a picture would not end.
    constexpr std::size_t kEndless = ~std::size_t{0} - 1;
    std::array<kit::PlaneView, kit::kMaximumPlanes> planes;
    planes.fill(kit::OutOfReach());
    for (const kit::Entry& entry : kit::Catalogue()) {
        std::size_t calls = 0;
        for (const std::size_t width : kit::Sizes{0, 1, 8, kEndless}) {
            for (const std::size_t height : kit::Sizes{0, 1, 8, kEndless}) {
                kit::Case size;
                size.width = width;
                size.height = height;
                kit::ForEachOption(entry.options(), size, [&](const kit::Case& options) {
                    if (WritesNothing(kit::LayOut(entry, options))) {
                        kit::Call(entry.of(*KorConformancePortable()), planes.data(), options);
                        ++calls;
                    }
                    return true;
                });
            }
        }
        EXPECT_GE(calls, 7u) << entry.name;
    }
}

}  // namespace
