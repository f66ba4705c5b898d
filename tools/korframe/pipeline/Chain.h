// The path of a frame: captured into planes, taken through the steps and rendered, again for every step that renders.
#ifndef KORFRAME_CHAIN_H
#define KORFRAME_CHAIN_H

#include <memory>
#include <string>
#include <vector>

#include "io/Stream.h"
#include "pipeline/Capture.h"
#include "pipeline/Matrix.h"
#include "pipeline/Overlay.h"
#include "pipeline/Render.h"
#include "pipeline/Step.h"

namespace korframe {

// What comes out: the layout of the final frames, or null for the planes as they are.
struct ChainEnd {
    const PixelFormat* target = nullptr;
    std::string name;  // of the output, for messages
};

// A chain serves one thread, because its stages keep memory between frames.
class Chain {
  public:
    // Throws if the library has no conversion for it.
    Chain(const StreamInfo& source, const std::vector<Step>& steps, const ChainEnd& end, const Matrix& matrix);

    // Describes the frames that come out.
    const StreamInfo& Info() const { return info_; }
    // The planes under each overlay, in the order of their steps.
    const std::vector<StreamInfo>& Backgrounds() const { return backgrounds_; }
    // Whether full-range samples would be rendered as limited range.
    bool RendersFullRange() const { return rendersFullRange_; }

    // Replaces a frame of the source with what the chain makes of it.
    void Run(Frame& frame, const std::vector<std::shared_ptr<OverlayFrame>>& overlays);

  private:
    // From one form of frame to the next, by way of planes.
    struct Link {
        Capture capture;
        std::vector<Step> steps;
        Render render;
    };

    void AddLink(std::vector<Step> steps, const ChainEnd& end, const Matrix& matrix);
    StreamInfo Follow(StreamInfo planes, const Step& step);

    StreamInfo info_;
    std::vector<Link> links_;
    std::vector<StreamInfo> backgrounds_;
    bool rendersFullRange_ = false;
    YuvImage image_;
    YuvImage spare_;
    Frame made_;
};

}  // namespace korframe

#endif
