// From planes to the bytes of a frame, by the library's renderers, packers and dither filter.
#ifndef KORFRAME_RENDER_H
#define KORFRAME_RENDER_H

#include <functional>

#include "image/Image.h"
#include "io/Stream.h"
#include "Kor/Video/Common/KorVideoFrame.h"
#include "pipeline/Matrix.h"

namespace korframe {

class Render {
  public:
    // `source` describes the planes. Throws, naming `output`, if they cannot become `target`.
    Render(const StreamInfo& source, const std::string& output, const PixelFormat& target, const Matrix& matrix,
           KorVideoFrameDitherLevel ditherLevel);
    // Consumes the image: noise and repeated edges may be written to it.
    void operator()(YuvImage& image, Frame& frame) const { run_(image, frame); }

  private:
    std::function<void(YuvImage&, Frame&)> run_;
};

// Adds noise to planes in place; I420 only, which CheckDither ensures.
void DitherImage(YuvImage& image, KorVideoFrameDitherLevel ditherLevel);
void CheckDither(const StreamInfo& planes);

}  // namespace korframe

#endif
