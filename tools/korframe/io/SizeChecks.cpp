#include "io/SizeChecks.h"

#include "io/Errors.h"

namespace korframe {

void CheckSize(const std::string& file, std::size_t width, std::size_t height) {
    const std::string size = "size " + SizeText(width, height);
    if (width == 0 || height == 0) {
        FailFile(file, size + " is empty; each side must be at least 1");
    }
    if (width > kMaxSide || height > kMaxSide) {
        FailFile(file, size + " is too large; the limit is " + std::to_string(kMaxSide) + " on each side");
    }
    if (width * height > kMaxPixels) {
        FailFile(file, size + " is too large; the limit is " + std::to_string(kMaxPixels) + " pixels");
    }
}

void CheckParity(const std::string& file, const PixelFormat& format, std::size_t width, std::size_t height) {
    if (format.evenWidth && width % 2 != 0) {
        FailFile(file, "width " + std::to_string(width) + " is odd; " + format.name +
                           " stores pixels in pairs, so the width must be even");
    }
    if (format.evenHeight && height % 2 != 0) {
        FailFile(file, "height " + std::to_string(height) + " is odd; " + format.name +
                           " stores rows in pairs, so the height must be even");
    }
}

}  // namespace korframe
