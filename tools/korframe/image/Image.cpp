#include "image/Image.h"

#include <cstring>
#include <utility>
#include <vector>

namespace korframe {

namespace {

// `Step` bytes from one sample to the next, fixed so that the compiler can vectorise the loop.
template <std::size_t stepTo, std::size_t stepFrom>
void MoveRow(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i * stepTo] = from[i * stepFrom];
    }
}

template <std::size_t stepTo>
void MoveRowFrom(std::uint8_t* to, const std::uint8_t* from, std::size_t stepFrom, std::size_t count) {
    switch (stepFrom) {
        case 1:
            return MoveRow<stepTo, 1>(to, from, count);
        case 2:
            return MoveRow<stepTo, 2>(to, from, count);
        default:
            return MoveRow<stepTo, 4>(to, from, count);
    }
}

// Steps of YUV layouts are 1, 2 or 4 bytes.
void MoveRowAny(std::uint8_t* to, std::size_t stepTo, const std::uint8_t* from, std::size_t stepFrom,
                std::size_t count) {
    switch (stepTo) {
        case 1:
            return MoveRowFrom<1>(to, from, stepFrom, count);
        case 2:
            return MoveRowFrom<2>(to, from, stepFrom, count);
        default:
            return MoveRowFrom<4>(to, from, stepFrom, count);
    }
}

void CopyRows(const std::uint8_t* from, std::size_t pitchFrom, const Plane& to) {
    for (std::size_t row = 0; row < to.height; ++row) {
        std::memcpy(to.bytes + row * to.pitch, from + row * pitchFrom, to.width);
    }
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

void CropFrame(const Frame& from, std::size_t x, std::size_t y, std::size_t width, std::size_t height, Frame& part) {
    part.Reset(from.Format(), width, height);
    if (from.Format().layout == Layout::M420) {
        // Blocks of three rows, all as wide as luma.
        for (std::size_t row = 0; row < height / 2 * 3; ++row) {
            std::memcpy(part.Data() + row * width, from.Data() + (y / 2 * 3 + row) * from.Width() + x, width);
        }
        return;
    }
    for (std::size_t plane = 0; plane < from.Format().planeCount; ++plane) {
        const PlaneShape& shape = from.Format().planes[plane];
        const std::uint8_t* first = from.Plane(plane) + shape.Rows(y) * from.Pitch(plane) + shape.Pitch(x);
        CopyRows(first, from.Pitch(plane),
                 {part.Plane(plane), part.Pitch(plane), shape.Rows(height), part.Pitch(plane)});
    }
}

bool HoldSameSamples(const PixelFormat& first, const PixelFormat& second) {
    if (first.IsRgb() || second.IsRgb()) {
        return first.IsRgb() && second.IsRgb();
    }
    // The values of Yuv2 are others.
    if (first.layout == Layout::Yuv2 || second.layout == Layout::Yuv2) {
        return first.layout == second.layout;
    }
    const Component chroma = first.Components()[1];
    const Component other = second.Components()[1];
    return chroma.widthShift == other.widthShift && chroma.heightShift == other.heightShift;
}

void MoveSamples(const Frame& from, const PixelFormat& format, Frame& to) {
    if (format.IsRgb()) {
        Reorder(from, format, to);
        return;
    }
    const std::size_t width = from.Width();
    const std::size_t height = from.Height();
    to.Reset(format, width, height);
    const std::vector<Component> sources = from.Format().Components();
    const std::vector<Component> targets = format.Components();
    for (std::size_t i = 0; i < targets.size(); ++i) {  // Y, U and V, in this order in all layouts
        for (std::size_t row = 0; row < targets[i].Rows(height); ++row) {
            MoveRowAny(to.Data() + format.OffsetOf(targets[i], 0, row, width, height), targets[i].step,
                       from.Data() + from.Format().OffsetOf(sources[i], 0, row, width, height), sources[i].step,
                       targets[i].Columns(width));
        }
    }
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

std::size_t YuvImage::PlacePlanes() {
    const PlaneShape chroma = FormatOf(layout_).planes[1];
    const std::size_t widthC = chroma.Pitch(width_);
    const std::size_t heightC = chroma.Rows(height_);
    const std::size_t pitch = HasSpare() ? EvenWidth() : width_;
    const std::size_t luma = pitch * (HasSpare() ? EvenHeight() : height_);
    y = {bytes_.Data(), width_, height_, pitch};
    u = {bytes_.Data() + luma, widthC, heightC, widthC};
    v = {bytes_.Data() + luma + widthC * heightC, widthC, heightC, widthC};
    return luma + 2 * widthC * heightC;
}

void YuvImage::Reset(Layout layout, std::size_t width, std::size_t height) {
    layout_ = layout;
    width_ = width;
    height_ = height;
    const std::size_t size = PlacePlanes();
    if (bytes_.Size() != size) {
        bytes_ = Buffer(size);
        PlacePlanes();
    }
}

void YuvImage::Take(Frame& frame) {
    layout_ = frame.Format().layout;
    width_ = frame.Width();
    height_ = frame.Height();
    if (!HasSpare()) {
        std::swap(bytes_, frame.bytes_);
        PlacePlanes();
        return;
    }
    Reset(layout_, width_, height_);
    CopyRows(frame.Plane(0), frame.Pitch(0), y);
    CopyRows(frame.Plane(1), frame.Pitch(1), u);
    CopyRows(frame.Plane(2), frame.Pitch(2), v);
}

void YuvImage::Give(Frame& frame) {
    frame.Reset(FormatOf(layout_), width_, height_);
    if (!HasSpare()) {
        std::swap(bytes_, frame.bytes_);
        PlacePlanes();
        return;
    }
    CopyRows(y.bytes, y.pitch, {frame.Plane(0), y.width, y.height, frame.Pitch(0)});
    CopyRows(u.bytes, u.pitch, {frame.Plane(1), u.width, u.height, frame.Pitch(1)});
    CopyRows(v.bytes, v.pitch, {frame.Plane(2), v.width, v.height, frame.Pitch(2)});
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
