// A picture that shows what a conversion does: colours, greys, fine lines, and which way is up.
#ifndef KORFRAME_TESTCARD_H
#define KORFRAME_TESTCARD_H

#include "image/Image.h"

namespace korframe {

// If either side were shorter, the parts would overlap.
constexpr std::size_t kSmallestTestCard = 64;

Frame DrawTestCard(std::size_t width, std::size_t height);

}  // namespace korframe

#endif
