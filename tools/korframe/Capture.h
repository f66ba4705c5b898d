// From the bytes of a frame to planes, by the library's converters.
#ifndef KORFRAME_CAPTURE_H
#define KORFRAME_CAPTURE_H

#include <functional>
#include <vector>

#include "Geometry.h"
#include "Image.h"
#include "Matrix.h"
#include "Stream.h"

namespace korframe {

class Capture {
  public:
    // Chooses the road from the layout of the source to `target`, I420 or I444; throws where there is none. Takes from
    // the front of `steps` those that the road does on its way, without a pass of their own.
    Capture(const StreamInfo& source, Layout target, const Matrix& matrix, std::vector<Step>& steps);
    void operator()(const Frame& frame, YuvImage& image) const { run_(frame, image); }

  private:
    std::function<void(const Frame&, YuvImage&)> run_;
};

}  // namespace korframe

#endif
