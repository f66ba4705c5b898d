// The two forms of a picture in the program: a Frame, bytes in the layout of a PixelFormat, as read and written; and a
// YuvImage, the planes that the library works on.
#ifndef KORFRAME_IMAGE_H
#define KORFRAME_IMAGE_H

#include <cstddef>
#include <cstdint>

#include "image/Buffer.h"
#include "image/PixelFormat.h"

namespace korframe {

class Frame {
  public:
    Frame() = default;
    Frame(const PixelFormat& format, std::size_t width, std::size_t height) { Reset(format, width, height); }

    // Reuses its memory if the size in bytes stays the same. The content is unspecified afterwards.
    void Reset(const PixelFormat& format, std::size_t width, std::size_t height);

    const PixelFormat& Format() const { return *format_; }
    std::size_t Width() const { return width_; }
    std::size_t Height() const { return height_; }
    std::size_t Size() const { return bytes_.Size(); }
    std::uint8_t* Data() { return bytes_.Data(); }
    const std::uint8_t* Data() const { return bytes_.Data(); }

    std::uint8_t* Plane(std::size_t plane) { return Data() + Offset(plane); }
    const std::uint8_t* Plane(std::size_t plane) const { return Data() + Offset(plane); }
    std::size_t Pitch(std::size_t plane = 0) const { return format_->planes[plane].Pitch(width_); }

    // The bytes of one pixel, for RGB layouts only.
    std::uint8_t* Pixel(std::size_t x, std::size_t y) { return Data() + y * Pitch() + x * format_->rgb.bytes; }
    const std::uint8_t* Pixel(std::size_t x, std::size_t y) const {
        return Data() + y * Pitch() + x * format_->rgb.bytes;
    }

  private:
    friend class YuvImage;  // which changes bytes with frames

    std::size_t Offset(std::size_t plane) const;

    const PixelFormat* format_ = nullptr;
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    Buffer bytes_;
};

void CopyFrame(const Frame& from, Frame& to);

// The part of a frame from column x and row y on, which must begin and end between chroma samples.
void CropFrame(const Frame& from, std::size_t x, std::size_t y, std::size_t width, std::size_t height, Frame& part);

// Whether two layouts hold the same samples in other places: RGB in any order, and YUV with as many chroma samples.
bool HoldSameSamples(const PixelFormat& first, const PixelFormat& second);
// Puts the samples of a frame into their places in another layout that holds the same.
void MoveSamples(const Frame& from, const PixelFormat& format, Frame& to);

// Converts an RGB picture to another byte order. Alpha is kept if both have it and set to 255 otherwise.
void Reorder(const Frame& from, const PixelFormat& format, Frame& to);

// A view of a part of an image.
struct Plane {
    std::uint8_t* bytes = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t pitch = 0;

    std::uint8_t* Data() { return bytes; }
    const std::uint8_t* Data() const { return bytes; }
    std::uint8_t* Row(std::size_t row) { return bytes + row * pitch; }
    const std::uint8_t* Row(std::size_t row) const { return bytes + row * pitch; }
};

// I420, I422 or I444. Luma of 4:2:0 has room for an even width and height: the library's converters may write that
// spare column and row for odd sizes, and EvenOut fills them for the renderers to read. Without spare ones, the planes
// lie in memory as in a frame of the layout, so that the two change places without a copy.
class YuvImage {
  public:
    YuvImage() = default;
    YuvImage(Layout layout, std::size_t width, std::size_t height) { Reset(layout, width, height); }

    // Reuses its memory if the size in bytes stays the same. The content is unspecified afterwards.
    void Reset(Layout layout, std::size_t width, std::size_t height);
    // From a frame of planes, and to one; takes the frame's memory if it can, and leaves its own there.
    void Take(Frame& frame);
    void Give(Frame& frame);
    // Repeats the last column and row of luma in the spare ones, so that the size can be treated as even.
    void EvenOut();

    Layout GetLayout() const { return layout_; }
    std::size_t Width() const { return width_; }
    std::size_t Height() const { return height_; }
    std::size_t EvenWidth() const { return width_ + width_ % 2; }
    std::size_t EvenHeight() const { return height_ + height_ % 2; }

    Plane y;
    Plane u;
    Plane v;

  private:
    bool HasSpare() const { return layout_ == Layout::I420 && (width_ % 2 != 0 || height_ % 2 != 0); }
    // Points the planes to their places in memory; returns the bytes that they need.
    std::size_t PlacePlanes();

    Layout layout_ = Layout::I420;
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    Buffer bytes_;
};

}  // namespace korframe

#endif
