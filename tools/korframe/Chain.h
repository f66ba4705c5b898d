// The way of a frame: captured into planes, taken through the steps, rendered, and again as often as a step renders.
#ifndef KORFRAME_CHAIN_H
#define KORFRAME_CHAIN_H

#include <memory>
#include <string>
#include <vector>

#include "Capture.h"
#include "Matrix.h"
#include "Overlay.h"
#include "Render.h"
#include "Step.h"
#include "Stream.h"

namespace korframe {

// What comes out at the end: the layout of the last frames, or null for the planes as they are.
struct ChainEnd {
    const PixelFormat* target = nullptr;
    std::string name;  // of the output, for messages
};

// One chain serves one thread: its stages keep memory between frames.
class Chain {
  public:
    // Throws where no road of the library's leads.
    Chain(const StreamInfo& source, const std::vector<Step>& steps, const ChainEnd& end, const Matrix& matrix);

    // The frames that come out.
    const StreamInfo& Info() const { return info_; }
    // The planes that each overlay is laid on, in the order of the overlays' steps.
    const std::vector<StreamInfo>& Backgrounds() const { return backgrounds_; }
    // Whether samples of full range would be rendered as limited range.
    bool RendersFullRange() const { return rendersFullRange_; }

    // Replaces a frame of the source by what the chain makes of it.
    void Run(Frame& frame, const std::vector<std::shared_ptr<OverlayFrame>>& overlays);

  private:
    // From one form of frames to the next: by way of planes.
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
