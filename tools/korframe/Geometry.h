// Flips, mirrors and turns of planes.
#ifndef KORFRAME_GEOMETRY_H
#define KORFRAME_GEOMETRY_H

#include "Image.h"
#include "Step.h"
#include "Stream.h"

namespace korframe {

// What a flip, mirror or turn makes of a stream of the given description: size, shape of pixels, order of fields.
StreamInfo AfterTurning(StreamInfo info, const Step& step);

// Does a flip, mirror or turn; `spare` lends its memory.
void TurnImage(const Step& step, YuvImage& image, YuvImage& spare);

}  // namespace korframe

#endif
