// The path of a frame: captured into planes, taken through the steps and rendered, again for every step that renders.
// Where there is no step and only the places of samples differ, these are moved instead.
#ifndef KORFRAME_CHAIN_H
#define KORFRAME_CHAIN_H

#include <memory>
#include <optional>
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
    // Whether the matrix is used, from RGB to YUV and back.
    bool CapturesRgb() const { return capturesRgb_; }
    bool RendersRgb() const { return rendersRgb_; }
    // Whether the range of the source makes a difference.
    bool DependsOnRange() const { return dependsOnRange_; }
    // The forms that a frame takes, for people.
    const std::string& Path() const { return path_; }

    // Returns what becomes of a frame, until the next call, and leaves anything in the frame.
    Frame& Run(Frame& frame, const std::vector<std::shared_ptr<OverlayFrame>>& overlays);

  private:
    // From one form of frame to the next.
    struct Link {
        const PixelFormat* moveTo;  // null if by way of planes
        std::optional<Capture> capture;
        std::vector<Step> steps;
        std::optional<Render> render;
        Frame made;
    };

    void AddLink(std::vector<Step> steps, const ChainEnd& end, const Matrix& matrix);
    bool Arrives(const ChainEnd& end);
    StreamInfo Follow(StreamInfo planes, const Step& step);
    void Apply(const Step& step, const std::vector<std::shared_ptr<OverlayFrame>>& overlays);

    StreamInfo info_;
    std::vector<Link> links_;
    std::vector<StreamInfo> backgrounds_;
    std::string path_;
    bool capturesRgb_ = false;
    bool rendersRgb_ = false;
    bool dependsOnRange_ = false;
    YuvImage image_;
    YuvImage spare_;
};

}  // namespace korframe

#endif
