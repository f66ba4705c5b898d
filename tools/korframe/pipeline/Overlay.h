// One picture over another: its position and its frames, ready to be composited.
#ifndef KORFRAME_OVERLAY_H
#define KORFRAME_OVERLAY_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "image/Image.h"
#include "io/Open.h"
#include "pipeline/Capture.h"
#include "pipeline/Matrix.h"

namespace korframe {

// The alpha of each sample of an I420 image, as planes of the same shape.
YuvImage AlphaOf(const Frame& rgb);

struct Position {
    long x = 0;
    long y = 0;
};

// The part of an overlay that lies on the background, and where it lies.
struct Placement {
    std::size_t overlayX = 0;
    std::size_t overlayY = 0;
    std::size_t x = 0;
    std::size_t y = 0;
    std::size_t width = 0;
    std::size_t height = 0;
};

// Nothing if the overlay lies outside the background.
std::optional<Placement> Place(const Position& at, const Size& overlay, const Size& background);

// Crops an I420 image to its placement. Chroma is cropped so that it lands where it would have landed otherwise: by the
// library's rule at half the luma position, rounded down, which left of or above the background means away from it.
void CropToPlacement(const YuvImage& whole, const Placement& placement, YuvImage& part);

struct OverlayRequest {
    std::string option;  // as given on the command line, for messages
    InputRequest input;
    Position at;
    std::uint8_t alpha = 255;
    bool ownAlpha = false;  // use the overlay's alpha channel instead
};

// A frame of an overlay, cropped to its placement. It never changes, so several threads may use it.
struct OverlayFrame {
    Placement placement;
    YuvImage part;
    YuvImage alphaPart;  // if the overlay's own alpha is used
    bool ownAlpha = false;
    std::uint8_t alpha = 255;
};

void Composite(YuvImage& background, OverlayFrame& overlay);

// The frames of an overlay, one after another.
class Overlay {
  public:
    Overlay(const OverlayRequest& request, std::unique_ptr<FrameSource> source, const Matrix& matrix);

    const StreamInfo& Info() const { return info_; }
    // Sets the placement; throws if the overlay would not be visible. Call it before the first Advance.
    void PlaceOn(const StreamInfo& background);
    // Moves to the next frame. At the end it returns false, and the last frame stays.
    bool Advance();
    const std::shared_ptr<OverlayFrame>& Current() const { return current_; }

  private:
    OverlayRequest request_;
    std::unique_ptr<FrameSource> source_;
    StreamInfo info_;
    std::optional<Capture> capture_;
    Placement placement_;
    Frame frame_;
    YuvImage whole_;
    std::shared_ptr<OverlayFrame> current_;
};

// Opens the overlay; refuses one without an alpha channel if that is to be used.
std::unique_ptr<FrameSource> OpenOverlay(const OverlayRequest& request);

}  // namespace korframe

#endif
