// The eight directions of a picture, as the library rotates: rows read from the bottom first, or not, and then an
// angle.
#ifndef KOR_GSTREAMER_DIRECTION_H
#define KOR_GSTREAMER_DIRECTION_H

#include <gst/video/video.h>

#include "Kor/Video/Common/KorVideoFrame.h"

namespace korgst {

struct Direction {
    bool flip = false;
    KorImageRotationDegree angle = 0;

    bool IsIdentity() const { return !flip && angle == 0; }
    bool SwapsSides() const { return angle == 90 || angle == 270; }
    // By a flip or a half turn: the last row comes first.
    bool IsUpsideDown() const { return flip != (angle == 180); }
    bool operator==(const Direction& other) const { return flip == other.flip && angle == other.angle; }
};

struct Rectangle {
    guint x, y, width, height;
};

// Where a part of a picture of width by height is found in its new direction.
inline Rectangle Turned(Rectangle part, guint width, guint height, Direction direction) {
    const guint right = width - part.x - part.width;
    const guint top = direction.flip ? height - part.y - part.height : part.y;
    const guint bottom = height - top - part.height;
    switch (direction.angle) {
        case 90:
            return {bottom, part.x, part.height, part.width};
        case 180:
            return {right, bottom, part.width, part.height};
        case 270:
            return {top, right, part.height, part.width};
        default:
            return {part.x, top, part.width, part.height};
    }
}

// Any other method is the identity.
inline Direction DirectionOf(GstVideoOrientationMethod method) {
    switch (method) {
        case GST_VIDEO_ORIENTATION_90R:
            return {false, 90};
        case GST_VIDEO_ORIENTATION_180:
            return {false, 180};
        case GST_VIDEO_ORIENTATION_90L:
            return {false, 270};
        case GST_VIDEO_ORIENTATION_HORIZ:
            return {true, 180};
        case GST_VIDEO_ORIENTATION_VERT:
            return {true, 0};
        case GST_VIDEO_ORIENTATION_UL_LR:
            return {true, 90};
        case GST_VIDEO_ORIENTATION_UR_LL:
            return {true, 270};
        default:
            return {};
    }
}

}  // namespace korgst

#endif
