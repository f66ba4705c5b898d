// Every layout of a frame in memory or in a raw file, in one table. A new layout takes one line there, and a line in
// the tables of Capture.cpp and Render.cpp, which name the library's functions for it.
#ifndef KORFRAME_PIXELFORMAT_H
#define KORFRAME_PIXELFORMAT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace korframe {

// The longest side of a frame and the most pixels it may have: beyond any camera or screen, yet a frame of the widest
// layout still fits in a gigabyte.
constexpr std::size_t kMaxSide = 32768;
constexpr std::size_t kMaxPixels = std::size_t{1} << 28;

struct Size {
    std::size_t width = 0;
    std::size_t height = 0;
};

enum class Layout { I420, I422, I444, Nv12, Nv21, Yuy2, Uyvy, Yuv2, M420, Bgra, Rgba, Argb, Abgr, Rgb24, Bgr24 };

// The shape of a plane: `bytes` for every 2^widthShift by 2^heightShift pixels.
struct PlaneShape {
    std::size_t bytes;
    unsigned widthShift;
    unsigned heightShift;

    constexpr std::size_t Pitch(std::size_t width) const { return RoundUp(width, widthShift) * bytes; }
    constexpr std::size_t Rows(std::size_t height) const { return RoundUp(height, heightShift); }

  private:
    static constexpr std::size_t RoundUp(std::size_t value, unsigned shift) {
        return (value + (std::size_t{1} << shift) - 1) >> shift;
    }
};

// Byte positions within a pixel. `bytes` is 0 for layouts other than RGB; `alpha` equals `bytes` if there is none.
struct Channels {
    std::size_t bytes;
    std::size_t red;
    std::size_t green;
    std::size_t blue;
    std::size_t alpha;
};

// One kind of sample in a frame, such as luma or red. The first is at byte `first` of its plane, the next in the row
// `step` bytes later, and each covers 2^widthShift by 2^heightShift pixels.
struct Component {
    char name;
    std::size_t plane;
    std::size_t first;
    std::size_t step;
    unsigned widthShift;
    unsigned heightShift;

    std::size_t Columns(std::size_t width) const { return PlaneShape{1, widthShift, 0}.Pitch(width); }
    std::size_t Rows(std::size_t height) const { return PlaneShape{1, 0, heightShift}.Rows(height); }
};

struct PixelFormat {
    Layout layout;
    const char* name;
    const char* suffixes;    // of file names, separated by spaces, without the dot
    const char* otherNames;  // under which other programs know it, separated by spaces
    const char* description;
    bool evenWidth;  // an odd size would lose or shift pixels
    bool evenHeight;
    const char* siting;  // of chroma once it is 4:2:0, in Y4M's terms
    Channels rgb;
    std::size_t planeCount;
    std::array<PlaneShape, 3> planes;

    bool IsRgb() const { return rgb.bytes > 0; }
    bool IsPlanarYuv() const { return planeCount == 3; }
    bool HasAlpha() const { return rgb.alpha < rgb.bytes; }
    std::size_t PlaneBytes(std::size_t plane, std::size_t width, std::size_t height) const;
    std::size_t FrameBytes(std::size_t width, std::size_t height) const;

    std::vector<Component> Components() const;
    // The byte offset in the frame of a component's sample at a column and row of its own grid.
    std::size_t OffsetOf(const Component& component, std::size_t column, std::size_t row, std::size_t width,
                         std::size_t height) const;
};

using FormatTest = bool (*)(const PixelFormat&);

const PixelFormat& FormatOf(Layout layout);
// By any of its names, in small letters or capitals.
const PixelFormat* FindFormat(const std::string& name);
const PixelFormat* FindFormatBySuffix(const std::string& fileName);

const std::vector<const PixelFormat*>& AllFormats();
// A line for each layout, for --help.
std::string FormatTable();

// "1280x720"
std::string SizeText(std::size_t width, std::size_t height);

std::string SmallLetters(std::string text);

// The part of a file name after its last dot, in lower case; empty if there is none.
std::string Suffix(const std::string& fileName);

}  // namespace korframe

#endif
