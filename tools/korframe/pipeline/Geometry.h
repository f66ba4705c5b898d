// Flips, mirrors and rotations of planes.
#ifndef KORFRAME_GEOMETRY_H
#define KORFRAME_GEOMETRY_H

#include "image/Image.h"
#include "io/Stream.h"
#include "pipeline/Step.h"

namespace korframe {

// What a stream is after a flip, mirror or rotation: its size, aspect of pixels and order of fields.
StreamInfo InfoAfter(StreamInfo info, const Step& step);

// Flips, mirrors or rotates; `spare` lends its memory.
void TransformImage(const Step& step, YuvImage& image, YuvImage& spare);

}  // namespace korframe

#endif
