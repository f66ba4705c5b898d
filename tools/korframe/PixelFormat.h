// Every layout of a frame in memory or in a raw file, as one table. A new layout is one line of it, and a line in the
// tables of Capture.cpp and Render.cpp that name the library's functions for it.
#ifndef KORFRAME_PIXELFORMAT_H
#define KORFRAME_PIXELFORMAT_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace korframe {

// Longest side of a frame, and most pixels: above any camera or screen, and low enough that a frame of the widest
// layout is a gigabyte.
constexpr std::size_t kMaxSide = 32768;
constexpr std::size_t kMaxPixels = std::size_t{1} << 28;

enum class Layout { I420,
                    I422,
                    I444,
                    Nv12,
                    Nv21,
                    Yuy2,
                    Uyvy,
                    Yuv2,
                    M420,
                    Bgra,
                    Rgba,
                    Argb,
                    Abgr,
                    Rgb24,
                    Bgr24 };

// One plane, told in groups: `bytes` for every 2^widthShift by 2^heightShift pixels.
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

// Byte positions inside a pixel; `bytes` is 0 for layouts that are not RGB, and alpha is `bytes` where there is none.
struct Channels {
    std::size_t bytes;
    std::size_t red;
    std::size_t green;
    std::size_t blue;
    std::size_t alpha;
};

// One kind of sample inside a frame, such as luma or red: the first lies at byte `first` of its plane, the next in a row
// `step` bytes on, and each stands for 2^widthShift by 2^heightShift pixels.
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
    const char* suffixes;  // of file names, space separated, without the dot
    const char* description;
    bool evenWidth;  // an odd size cannot be laid out without losing or shifting pixels
    bool evenHeight;
    const char* siting;  // where chroma lies once it is 4:2:0, as Y4M names it
    Channels rgb;
    std::size_t planeCount;
    std::array<PlaneShape, 3> planes;

    bool IsRgb() const { return rgb.bytes > 0; }
    bool IsPlanarYuv() const { return layout == Layout::I420 || layout == Layout::I444; }
    bool HasAlpha() const { return rgb.alpha < rgb.bytes; }
    std::size_t PlaneBytes(std::size_t plane, std::size_t width, std::size_t height) const;
    std::size_t FrameBytes(std::size_t width, std::size_t height) const;

    std::vector<Component> Components() const;
    // Where the sample of a component in the given column and row of its own grid lies, in bytes from the frame's first.
    std::size_t OffsetOf(const Component& component, std::size_t column, std::size_t row, std::size_t width,
                         std::size_t height) const;
};

using FormatTest = bool (*)(const PixelFormat&);

const PixelFormat& FormatOf(Layout layout);
const PixelFormat* FindFormat(const std::string& name);
const PixelFormat* FindFormatBySuffix(const std::string& fileName);

const std::vector<const PixelFormat*>& AllFormats();
// The names of all layouts, or of those that a predicate picks, for messages and for --help.
std::string FormatNames(FormatTest pick = nullptr);
std::string FormatTable();

// "1280x720"
std::string SizeText(std::size_t width, std::size_t height);

// The part of a file name after its last dot, in lower case; empty where there is none.
std::string Suffix(const std::string& fileName);

// Refuses sizes that are zero or absurd; `file` names the culprit.
void CheckSize(const std::string& file, std::size_t width, std::size_t height);
// Refuses sizes that the layout cannot hold.
void CheckParity(const std::string& file, const PixelFormat& format, std::size_t width, std::size_t height);

}  // namespace korframe

#endif
