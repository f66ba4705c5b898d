#include "Picture.h"

#include <cstring>

#include "Conversions.h"

namespace korgst {

namespace {

bool IsPackedYuv(GstVideoFormat format) {
    return format == GST_VIDEO_FORMAT_YUY2 || format == GST_VIDEO_FORMAT_UYVY;
}
bool IsSemiPlanar(GstVideoFormat format) {
    return format == GST_VIDEO_FORMAT_NV12 || format == GST_VIDEO_FORMAT_NV21;
}

// The plane of a mapped frame that is plane i of a picture.
guint FramePlane(const GstVideoFrame& frame, int i) {
    return GST_VIDEO_FRAME_N_PLANES(&frame) == 3 ? GST_VIDEO_FORMAT_INFO_PLANE(frame.info.finfo, i)
                                                 : static_cast<guint>(i);
}

void CopyRows(const Picture& picture, const GstVideoFrame& frame) {
    for (int i = 0; i < picture.PlaneCount(); ++i) {
        const guint plane = FramePlane(frame, i);
        KorUint8* data = static_cast<KorUint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        for (KorSizeT row = 0; row < picture.Rows(i); ++row) {
            std::memcpy(data + static_cast<int>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane), picture.Row(i, row),
                        picture.RowBytes(i));
        }
    }
}

}  // namespace

Picture::Picture(GstVideoFormat f, KorSizeT w, KorSizeT h) : format(f), width(w), height(h) {
    for (int i = 0; i < PlaneCount(); ++i) {
        planes[i].resize(Pitch(i) * (Rows(i) + 1));
    }
}

int Picture::PlaneCount() const {
    return IsRgb(format) || IsPackedYuv(format) ? 1 : IsSemiPlanar(format) ? 2 : 3;
}

KorSizeT Picture::RowBytes(int plane) const {
    if (IsRgb(format)) {
        return width * static_cast<KorSizeT>(GST_VIDEO_FORMAT_INFO_PSTRIDE(gst_video_format_get_info(format), 0));
    }
    if (IsPackedYuv(format)) {
        return 2 * EvenUp(width);
    }
    return plane == 0 || format == GST_VIDEO_FORMAT_Y444 ? width
           : IsSemiPlanar(format)                        ? EvenUp(width)
                                                         : (width + 1) / 2;
}

KorSizeT Picture::Rows(int plane) const {
    return plane != 0 && Is420(format) ? (height + 1) / 2 : height;
}

FrameView Picture::View() {
    FrameView view = {format, width, height, {}};
    for (int i = 0; i < PlaneCount(); ++i) {
        const KorSizeT samples = i == 0 ? width : format == GST_VIDEO_FORMAT_Y444 ? width : (width + 1) / 2;
        view.planes[i] = {planes[i].data(), Pitch(i), samples, Rows(i)};
    }
    return view;
}

Picture RandomPicture(GstVideoFormat format, KorSizeT width, KorSizeT height, std::mt19937& random) {
    Picture picture(format, width, height);
    for (int i = 0; i < picture.PlaneCount(); ++i) {
        for (KorUint8& byte : picture.planes[i]) {
            byte = static_cast<KorUint8>(random());
        }
    }
    return picture;
}

std::string Difference(const Picture& got, const Picture& expected) {
    if (got.format != expected.format || got.width != expected.width || got.height != expected.height) {
        return "another format or size";
    }
    for (int i = 0; i < got.PlaneCount(); ++i) {
        for (KorSizeT row = 0; row < got.Rows(i); ++row) {
            for (KorSizeT column = 0; column < got.RowBytes(i); ++column) {
                const int byte = got.Row(i, row)[column];
                const int wanted = expected.Row(i, row)[column];
                if (byte != wanted) {
                    return "plane " + std::to_string(i) + ", row " + std::to_string(row) + ", byte " +
                           std::to_string(column) + " is " + std::to_string(byte) + ", expected " +
                           std::to_string(wanted);
                }
            }
        }
    }
    return "";
}

GstCaps* CapsOf(const Picture& picture, const char* colorimetry) {
    return gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, gst_video_format_to_string(picture.format),
                               "width", G_TYPE_INT, static_cast<int>(picture.width), "height", G_TYPE_INT,
                               static_cast<int>(picture.height), "framerate", GST_TYPE_FRACTION, 25, 1,
                               colorimetry != nullptr ? "colorimetry" : nullptr, G_TYPE_STRING, colorimetry, nullptr);
}

GstBuffer* BufferOf(const Picture& picture, KorSizeT padding) {
    GstVideoInfo info;
    gst_video_info_set_format(&info, picture.format, static_cast<guint>(picture.width),
                              static_cast<guint>(picture.height));
    gsize size = info.size;
    gsize offset[GST_VIDEO_MAX_PLANES];
    gint stride[GST_VIDEO_MAX_PLANES];
    if (padding != 0) {
        size = padding;
        for (guint i = 0; i < GST_VIDEO_INFO_N_PLANES(&info); ++i) {
            // An odd offset and stride, which nothing may rely on not to occur.
            offset[i] = size;
            stride[i] = GST_VIDEO_INFO_PLANE_STRIDE(&info, i) + static_cast<int>(padding);
            const gsize rows = i == 0 ? picture.height : static_cast<gsize>(GST_VIDEO_INFO_COMP_HEIGHT(&info, 1));
            size += static_cast<gsize>(stride[i]) * rows;
        }
    }
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_memset(buffer, 0, 0xa5, size);
    if (padding != 0) {
        gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, picture.format,
                                       static_cast<guint>(picture.width), static_cast<guint>(picture.height),
                                       GST_VIDEO_INFO_N_PLANES(&info), offset, stride);
    }
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE);
    CopyRows(picture, frame);
    gst_video_frame_unmap(&frame);
    return buffer;
}

Picture PictureOf(GstBuffer* buffer, GstCaps* caps) {
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps);
    GstVideoFrame frame;
    gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ);
    Picture picture(GST_VIDEO_INFO_FORMAT(&info), static_cast<KorSizeT>(GST_VIDEO_INFO_WIDTH(&info)),
                    static_cast<KorSizeT>(GST_VIDEO_INFO_HEIGHT(&info)));
    for (int i = 0; i < picture.PlaneCount(); ++i) {
        const guint plane = FramePlane(frame, i);
        const KorUint8* data = static_cast<const KorUint8*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        for (KorSizeT row = 0; row < picture.Rows(i); ++row) {
            std::memcpy(picture.Row(i, row), data + static_cast<int>(row) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane),
                        picture.RowBytes(i));
        }
    }
    gst_video_frame_unmap(&frame);
    return picture;
}

}  // namespace korgst
