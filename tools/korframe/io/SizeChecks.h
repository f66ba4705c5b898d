// Refuses frames of sizes that cannot be; `file` is for the message.
#ifndef KORFRAME_SIZECHECKS_H
#define KORFRAME_SIZECHECKS_H

#include <cstddef>
#include <string>

#include "image/PixelFormat.h"

namespace korframe {

// Refuses sizes that are zero or absurd.
void CheckSize(const std::string& file, std::size_t width, std::size_t height);
// Refuses sizes that the layout cannot hold.
void CheckParity(const std::string& file, const PixelFormat& format, std::size_t width, std::size_t height);

}  // namespace korframe

#endif
