// Which caps become which: formats, sizes, and what the colours of both sides mean.
#ifndef KOR_GSTREAMER_CAPS_H
#define KOR_GSTREAMER_CAPS_H

#include <gst/video/video.h>

#include "Conversions.h"
#include "Direction.h"

namespace korgst {

// All formats that are read, and all that are written.
GstCaps* SinkTemplateCaps();
GstCaps* SrcTemplateCaps();

// The caps of the other side: only pairs of formats that have a function, and among RGB and YUV only the matrices that
// they have. Caps that are the same on both sides come first, where nothing is to be done.
GstCaps* TransformCaps(GstCaps* caps, GstPadDirection side, Direction direction, bool dithers);

// Takes ownership of othercaps. Prefers the same format, and the colours that are usual for the size.
GstCaps* FixateCaps(GstCaps* caps, GstPadDirection side, GstCaps* othercaps);

// The matrix between two sets of caps, or nothing known where this has to be refused.
bool FindMatrix(const GstVideoInfo& from, const GstVideoInfo& to, Matrix* matrix);

}  // namespace korgst

#endif
