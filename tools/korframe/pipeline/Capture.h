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

// The planes that a source is captured into: its own if it is planar, otherwise those asked for, otherwise I420.
// `asked` is the layout of the output, null if any will do.
Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked);

class Capture {
  public:
    // Chooses the path from the layout of the source to `target`, I420 or I444; throws if there is none. Removes from
    // the front of `steps` those that the converter does in the same pass.
    Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps);
    void operator()(const Frame& frame, YuvImage& image) const { run_(frame, image); }

    // Whether some matrix leads from a layout to planes of another.
    static bool Reaches(Layout source, Layout target);

  private:
    std::function<void(const Frame&, YuvImage&)> run_;
};

}  // namespace korframe

#endif
