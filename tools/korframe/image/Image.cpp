#include "image/Image.h"

#include <cstring>

namespace korframe {

namespace {

void ResetPlane(Plane& plane, std::size_t width, std::size_t height, std::size_t pitch, std::size_t rows) {
    if (plane.bytes.Size() != pitch * rows) {
        plane.bytes = Buffer(pitch * rows);
    }
    plane.width = width;
    plane.height = height;
    plane.pitch = pitch;
}

}  // namespace

void Frame::Reset(const PixelFormat& format, std::size_t width, std::size_t height) {
    const std::size_t size = format.FrameBytes(width, height);
    if (bytes_.Size() != size) {
        bytes_ = Buffer(size);
    }
    format_ = &format;
    width_ = width;
    height_ = height;
}

std::size_t Frame::Offset(std::size_t plane) const {
    std::size_t offset = 0;
    for (std::size_t before = 0; before < plane; ++before) {
        offset += format_->PlaneBytes(before, width_, height_);
    }
    return offset;
}

void CopyFrame(const Frame& from, Frame& to) {
    to.Reset(from.Format(), from.Width(), from.Height());
    std::memcpy(to.Data(), from.Data(), from.Size());
}

void Reorder(const Frame& from, const PixelFormat& format, Frame& to) {
    to.Reset(format, from.Width(), from.Height());
    const Channels in = from.Format().rgb;
    const Channels out = format.rgb;
    const bool alphaIn = from.Format().HasAlpha();
    const bool alphaOut = format.HasAlpha();
    const std::uint8_t* source = from.Data();
    std::uint8_t* destination = to.Data();
    for (std::size_t pixels = from.Width() * from.Height(); pixels > 0;
         --pixels, source += in.bytes, destination += out.bytes) {
        destination[out.red] = source[in.red];
        destination[out.green] = source[in.green];
        destination[out.blue] = source[in.blue];
        if (alphaOut) {
            destination[out.alpha] = alphaIn ? source[in.alpha] : 255;
        }
    }
}

void YuvImage::Reset(Layout layout, std::size_t width, std::size_t height) {
    layout_ = layout;
    width_ = width;
    height_ = height;
    const PlaneShape chroma = FormatOf(layout).planes[1];
    const std::size_t widthC = chroma.Pitch(width);
    const std::size_t heightC = chroma.Rows(height);
    ResetPlane(y, width, height, EvenWidth(), EvenHeight());
    ResetPlane(u, widthC, heightC, widthC, heightC);
    ResetPlane(v, widthC, heightC, widthC, heightC);
}

void YuvImage::EvenOut() {
    if (width_ % 2 != 0) {
        for (std::size_t row = 0; row < height_; ++row) {
            y.Row(row)[width_] = y.Row(row)[width_ - 1];
        }
    }
    if (height_ % 2 != 0) {
        std::memcpy(y.Row(height_), y.Row(height_ - 1), y.pitch);
    }
}

}  // namespace korframe
