// The pairs of formats that the library converts between, as data.
#ifndef KOR_GSTREAMER_CONVERSIONS_H
#define KOR_GSTREAMER_CONVERSIONS_H

#include <gst/video/video.h>

#include "Kor/Video/Common/KorYuv420.h"

namespace korgst {

using CaptureFunction = decltype(KorBGRAToI420);
using RotatingCaptureFunction = decltype(KorYUY2ToI420WithRotation);
using RenderFunction = decltype(KorI420ToBGRA);

// RGB to YUV and back needs one; from YUV to YUV there is none to choose.
enum class Matrix { None, Bt601, Bt709, Bt2020 };

// Packed pixels to planes.
struct Capture {
    GstVideoFormat from;
    GstVideoFormat to;
    Matrix matrix;
    CaptureFunction* run;
    bool flips;                       // reads a picture bottom row first
    RotatingCaptureFunction* rotate;  // rotates in the same pass, or null
};

// Planes to packed pixels.
struct Render {
    GstVideoFormat from;
    GstVideoFormat to;
    Matrix matrix;
    RenderFunction* run;
};

// The format with the same bytes that stands in the tables: alpha is ignored when read and always 255 when written, and
// YV12 is I420 with the chroma planes in the other order.
GstVideoFormat Representative(GstVideoFormat format);

bool IsRgb(GstVideoFormat format);
bool Is420(GstVideoFormat format);

// The exact function, or where only BGRA has one with this matrix, that. Null if there is none.
const Capture* FindCapture(GstVideoFormat from, GstVideoFormat to, Matrix matrix);
const Render* FindRender(GstVideoFormat from, GstVideoFormat to, Matrix matrix);

// Whether planes or semi-planar chroma become the planes of the other format by moving or averaging samples.
bool MovesPlanes(GstVideoFormat from, GstVideoFormat to);

// Whether the library has a function for this pair, with some matrix.
bool HasPair(GstVideoFormat from, GstVideoFormat to);
// The same, with this one, directly or through BGRA.
bool HasPair(GstVideoFormat from, GstVideoFormat to, Matrix matrix);

// Whether noise can be added on the way into this format.
bool CanDither(GstVideoFormat to);

}  // namespace korgst

#endif
