// A mapped frame, or one of its fields, as the library takes it: pointers and pitches.
#ifndef KOR_GSTREAMER_FRAMEVIEW_H
#define KOR_GSTREAMER_FRAMEVIEW_H

#include <gst/video/video.h>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace korgst {

// width counts pixels, samples, or pairs of chroma samples.
struct Plane {
    KorUint8* data = nullptr;
    KorSizeT pitch = 0;
    KorSizeT width = 0;
    KorSizeT height = 0;

    KorUint8* Row(KorSizeT row) const { return data + row * pitch; }
};

// Packed pixels are one plane. Planar formats have Y, U and V in this order, whatever their order in memory is;
// semi-planar ones have Y and the pairs of chroma. A plane of opacity is left out.
struct FrameView {
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    KorSizeT width = 0;
    KorSizeT height = 0;
    Plane planes[3];
};

FrameView ViewOf(const GstVideoFrame& frame);

// The rows of one field: 0 is the upper one.
FrameView FieldOf(const FrameView& frame, unsigned field);

constexpr KorSizeT EvenUp(KorSizeT size) {
    return size + size % 2;
}

}  // namespace korgst

#endif
