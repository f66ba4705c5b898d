// A picture in which conversions show what they do: colour, grey, fine lines, and which side is up.
#ifndef KORFRAME_TESTCARD_H
#define KORFRAME_TESTCARD_H

#include "Image.h"

namespace korframe {

// Below this, on either side, the parts would fall together.
constexpr std::size_t kSmallestTestCard = 64;

Frame DrawTestCard(std::size_t width, std::size_t height);

}  // namespace korframe

#endif
