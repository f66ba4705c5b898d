// A picture in the tests' own memory: tight planes, in the order Y, U, V, or packed, or Y and pairs of chroma.
#ifndef KOR_GSTREAMER_TESTS_PICTURE_H
#define KOR_GSTREAMER_TESTS_PICTURE_H

#include <gst/video/video.h>

#include <random>
#include <string>
#include <vector>

#include "FrameView.h"

namespace korgst {

struct Picture {
    Picture(GstVideoFormat format, KorSizeT width, KorSizeT height);

    KorSizeT RowBytes(int plane) const;
    KorSizeT Rows(int plane) const;
    int PlaneCount() const;
    KorUint8* Row(int plane, KorSizeT row) { return planes[plane].data() + row * Pitch(plane); }
    const KorUint8* Row(int plane, KorSizeT row) const { return planes[plane].data() + row * Pitch(plane); }
    // With room for the spare column and row that captures of odd sizes write.
    KorSizeT Pitch(int plane) const { return RowBytes(plane) + kSpareBytes; }
    FrameView View();

    GstVideoFormat format;
    KorSizeT width, height;
    std::vector<KorUint8> planes[3];

    static constexpr KorSizeT kSpareBytes = 8;
};

Picture RandomPicture(GstVideoFormat format, KorSizeT width, KorSizeT height, std::mt19937& random);

// The first difference of the visible bytes, or an empty string.
std::string Difference(const Picture& got, const Picture& expected);

GstCaps* CapsOf(const Picture& picture, const char* colorimetry);

// A buffer with the default strides, or with rows that are this much longer and a GstVideoMeta that says so.
GstBuffer* BufferOf(const Picture& picture, KorSizeT padding);
Picture PictureOf(GstBuffer* buffer, GstCaps* caps);

}  // namespace korgst

#endif
