// One picture over another.
#ifndef KORFRAME_BLEND_H
#define KORFRAME_BLEND_H

#include <cstdint>
#include <optional>

#include "Image.h"
#include "Parse.h"

namespace korframe {

// An opacity for each sample of an I420 image. Alpha planes have the shape of one.
YuvImage AlphaOf(const Frame& rgb);

// The part of an overlay that lies on the background, and where.
struct Placement {
    std::size_t overlayX = 0;
    std::size_t overlayY = 0;
    std::size_t x = 0;
    std::size_t y = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

// Empty where nothing of the overlay lies on the background.
std::optional<Placement> Place(const Position& at, const Size& overlay, const Size& background);

// Cuts an I420 image to what is placed. Chroma is cut so that it lands where it would have landed uncut: by the
// library's rule, half of the luma position, rounded down, which for positions left of or above the background means
// away from it.
void CutToPlacement(const YuvImage& whole, const Placement& placement, YuvImage& part);

void BlendConstant(YuvImage& background, const YuvImage& part, const Placement& placement, std::uint8_t alpha);
void BlendByAlpha(YuvImage& background, const YuvImage& part, YuvImage& alphaPart, const Placement& placement);

}  // namespace korframe

#endif
