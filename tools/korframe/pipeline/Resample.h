// Changes of planes for which the library has no function: another chroma grid, another range. Luma is not filtered.
#ifndef KORFRAME_RESAMPLE_H
#define KORFRAME_RESAMPLE_H

#include "image/Image.h"

namespace korframe {

// Gives an image another chroma grid; `spare` lends its memory. Where the grid gets coarser, the samples are averaged,
// rounded half up, and the last column or row of an odd size stands for itself. Where it gets finer, they are repeated.
void ResampleChroma(Layout layout, YuvImage& image, YuvImage& spare);

// From full range, 0 to 255, to limited range, 16 to 235 for luma and 16 to 240 for chroma, rounded to nearest.
void LimitRange(YuvImage& image);

}  // namespace korframe

#endif
