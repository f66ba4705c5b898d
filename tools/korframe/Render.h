// From planes to the bytes of a frame, by the library's renderers, packers and dither filter.
#ifndef KORFRAME_RENDER_H
#define KORFRAME_RENDER_H

#include <functional>

#include "Image.h"
#include "Kor/Video/Common/KorVideoFrame.h"
#include "Matrix.h"
#include "Stream.h"

namespace korframe {

class Render {
  public:
    // `source` tells the planes that will come. Throws where no road leads from them to `target`, naming `output`.
    Render(const StreamInfo& source, const std::string& output, const PixelFormat& target, const Matrix& matrix,
           KorVideoFrameDitherLevel ditherLevel);
    // Uses the image up: noise and the repetition of edges may be written into it.
    void operator()(YuvImage& image, Frame& frame) const { run_(image, frame); }

    // Whether a road leads from planes of a layout to a target, by some matrix.
    static bool Reaches(Layout planes, Layout target);

  private:
    std::function<void(YuvImage&, Frame&)> run_;
};

// Adds noise to planes in place; I420 only, which CheckDither sees to.
void DitherImage(YuvImage& image, KorVideoFrameDitherLevel ditherLevel);
void CheckDither(const StreamInfo& planes);

}  // namespace korframe

#endif
