// From the bytes of a frame to planes, by the library's converters.
#ifndef KORFRAME_CAPTURE_H
#define KORFRAME_CAPTURE_H

#include <functional>
#include <vector>

#include "image/Image.h"
#include "io/Stream.h"
#include "pipeline/Matrix.h"
#include "pipeline/Step.h"

namespace korframe {

// The planes that a source is captured into, I420 or I444, so that no chroma is lost that the output could hold.
// `asked` is the layout of the output, null if any will do.
Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked);

class Capture {
  public:
    // Chooses the path from the layout of the source to `target`, I420 or I444; throws if there is none. Removes from
    // the front of `steps` those that the converter does in the same pass.
    Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps);
    // Consumes the frame: the image may take its memory.
    void operator()(Frame& frame, YuvImage& image) const { run_(frame, image); }

  private:
    std::function<void(Frame&, YuvImage&)> run_;
};

}  // namespace korframe

#endif
