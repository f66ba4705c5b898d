// One picture over another: where it lies, and the frames of it, ready to be laid on.
#ifndef KORFRAME_OVERLAY_H
#define KORFRAME_OVERLAY_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Capture.h"
#include "Image.h"
#include "Matrix.h"
#include "Parse.h"
#include "Stream.h"

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

struct OverlayRequest {
    std::string option;  // as it stands on the command line, for messages
    InputRequest input;
    Position at;
    std::uint8_t alpha = 255;
    bool ownAlpha = false;  // the overlay's alpha channel instead
};

// "OVERLAY[:X,Y[,ALPHA]]", where ALPHA is a number or "own".
OverlayRequest ParseOverlay(const std::string& option, const std::string& text);

// A frame of an overlay, cut to its place. It is not changed any more, so that frames of several threads may use it.
struct OverlayFrame {
    Placement placement;
    YuvImage part;
    YuvImage alphaPart;  // where the overlay's own alpha counts
    bool ownAlpha = false;
    std::uint8_t alpha = 255;
};

void LayOn(YuvImage& background, OverlayFrame& overlay);

// The frames of an overlay, one after another.
class Overlay {
  public:
    Overlay(const OverlayRequest& request, std::unique_ptr<FrameSource> source, const Matrix& matrix);

    const StreamInfo& Info() const { return info_; }
    // Settles the place; throws where the overlay would not be seen. To be called before the first Advance.
    void PlaceOn(const StreamInfo& background);
    // Goes on to the next frame. At the end it returns false, and the last frame stays.
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

// Opens the file and refuses what has no alpha channel where that is to count.
std::unique_ptr<FrameSource> OpenOverlay(const OverlayRequest& request);

}  // namespace korframe

#endif
