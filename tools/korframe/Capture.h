// From the bytes of a frame to planes, by the library's converters.
#ifndef KORFRAME_CAPTURE_H
#define KORFRAME_CAPTURE_H

#include <functional>
#include <vector>

#include "Image.h"
#include "Matrix.h"
#include "Step.h"
#include "Stream.h"

namespace korframe {

// The planes that a source is captured into: its own if it is planar, else those that are asked for, else I420.
// `asked` is the layout that the output is to have, null where any will do.
Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked);

class Capture {
  public:
    // Chooses the road from the layout of the source to `target`, I420 or I444; throws where there is none. Takes from
    // the front of `steps` those that the road does on its way, without a pass of their own.
    Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps);
    void operator()(const Frame& frame, YuvImage& image) const { run_(frame, image); }

    // Whether a road leads from a layout to planes of another, by some matrix.
    static bool Reaches(Layout source, Layout target);

  private:
    std::function<void(const Frame&, YuvImage&)> run_;
};

}  // namespace korframe

#endif
