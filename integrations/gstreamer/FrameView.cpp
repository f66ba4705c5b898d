#include "FrameView.h"

namespace korgst {

FrameView ViewOf(const GstVideoFrame& frame) {
    FrameView view;
    view.format = GST_VIDEO_FRAME_FORMAT(&frame);
    view.width = static_cast<KorSizeT>(GST_VIDEO_FRAME_WIDTH(&frame));
    view.height = static_cast<KorSizeT>(GST_VIDEO_FRAME_HEIGHT(&frame));
    const guint count = GST_VIDEO_FRAME_N_PLANES(&frame);
    for (guint i = 0; i < count && i < 3; ++i) {
        // Planes of a planar format are asked for by component, which puts those of YV12 in order.
        const guint plane = count >= 3 ? GST_VIDEO_FORMAT_INFO_PLANE(frame.info.finfo, i) : i;
        view.planes[i] = {static_cast<KorUint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane)),
                          static_cast<KorSizeT>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane)),
                          static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_WIDTH(&frame, i)),
                          static_cast<KorSizeT>(GST_VIDEO_FRAME_COMP_HEIGHT(&frame, i))};
    }
    if (count == 1) {
        view.planes[0].width = view.width;
    }
    return view;
}

FrameView FieldOf(const FrameView& frame, unsigned field) {
    FrameView view = frame;
    view.height = (frame.height + 1 - field) / 2;
    for (Plane& plane : view.planes) {
        plane.data = plane.data != nullptr ? plane.Row(field) : nullptr;
        plane.height = (plane.height + 1 - field) / 2;
        plane.pitch *= 2;
    }
    return view;
}

}  // namespace korgst
