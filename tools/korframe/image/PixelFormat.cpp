#include "image/PixelFormat.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace korframe {

namespace {

// Chroma averaged from 2x2 blocks sits at their centre. Packed 4:2:2 has it on the left pixel of a pair, and averaging
// two rows leaves it there.
constexpr const char* kCentre = "420jpeg";
constexpr const char* kLeft = "420mpeg2";

constexpr Channels kYuv = {0, 0, 0, 0, 0};

// Shapes of planes: a sample for every pixel, samples or pairs of samples for every 2x2, and packed groups.
constexpr PlaneShape kNone = {0, 0, 0};
constexpr PlaneShape kFull = {1, 0, 0};
constexpr PlaneShape kHalfWidth = {1, 1, 0};
constexpr PlaneShape kHalf = {1, 1, 1};
constexpr PlaneShape kPairs = {2, 1, 1};
constexpr PlaneShape kGroups = {4, 1, 0};
constexpr PlaneShape kBlocks = {6, 1, 1};
constexpr PlaneShape kBytes4 = {4, 0, 0};
constexpr PlaneShape kBytes3 = {3, 0, 0};

using Planes = std::array<PlaneShape, 3>;
constexpr Planes kPlanar420 = {{kFull, kHalf, kHalf}};
constexpr Planes kPlanar422 = {{kFull, kHalfWidth, kHalfWidth}};
constexpr Planes kPlanar444 = {{kFull, kFull, kFull}};
constexpr Planes kSemiPlanar = {{kFull, kPairs, kNone}};
constexpr Planes kPacked422 = {{kGroups, kNone, kNone}};
constexpr Planes kRowBlocks = {{kBlocks, kNone, kNone}};
constexpr Planes kPixels4 = {{kBytes4, kNone, kNone}};
constexpr Planes kPixels3 = {{kBytes3, kNone, kNone}};

// clang-format off
constexpr PixelFormat kFormats[] = {
    // Whether width and height must be even. Bytes of a pixel and the positions of red, green, blue, alpha.
    {Layout::I420,  "i420",  "i420 yuv",  "yuv420p",         "planar 4:2:0: luma, U, V",                    false, false, kCentre, kYuv, 3, kPlanar420},
    {Layout::I422,  "i422",  "i422",      "yuv422p y42b",    "planar 4:2:2: luma, U, V",                    false, false, kLeft,   kYuv, 3, kPlanar422},
    {Layout::I444,  "i444",  "i444",      "yuv444p y444",    "planar 4:4:4: luma, U, V",                    false, false, kCentre, kYuv, 3, kPlanar444},
    {Layout::Nv12,  "nv12",  "nv12",      "",                "luma plane, then pairs U V for 2x2 pixels",   false, false, kCentre, kYuv, 2, kSemiPlanar},
    {Layout::Nv21,  "nv21",  "nv21",      "",                "luma plane, then pairs V U for 2x2 pixels",   false, false, kCentre, kYuv, 2, kSemiPlanar},
    {Layout::Yuy2,  "yuy2",  "yuy2 yuyv", "yuyv422 yuyv",    "packed 4:2:2: Y0 U Y1 V",                     true,  false, kLeft,   kYuv, 1, kPacked422},
    {Layout::Uyvy,  "uyvy",  "uyvy",      "uyvy422",         "packed 4:2:2: U Y0 V Y1",                     true,  false, kLeft,   kYuv, 1, kPacked422},
    {Layout::Yuv2,  "yuv2",  "yuv2",      "",                "as yuy2, but full-range luma, signed chroma", true,  false, kLeft,   kYuv, 1, kPacked422},
    {Layout::M420,  "m420",  "m420",      "",                "two luma rows, then their row of pairs U V",  true,  true,  kCentre, kYuv, 1, kRowBlocks},
    {Layout::Bgra,  "bgra",  "bgra",      "",                "32-bit RGB, bytes B G R A", false, false, kCentre, {4, 2, 1, 0, 3}, 1, kPixels4},
    {Layout::Rgba,  "rgba",  "rgba",      "",                "32-bit RGB, bytes R G B A", false, false, kCentre, {4, 0, 1, 2, 3}, 1, kPixels4},
    {Layout::Argb,  "argb",  "argb",      "",                "32-bit RGB, bytes A R G B", false, false, kCentre, {4, 1, 2, 3, 0}, 1, kPixels4},
    {Layout::Abgr,  "abgr",  "abgr",      "",                "32-bit RGB, bytes A B G R", false, false, kCentre, {4, 3, 2, 1, 0}, 1, kPixels4},
    {Layout::Rgb24, "rgb24", "rgb rgb24", "rgb",             "24-bit RGB, bytes R G B",   false, false, kCentre, {3, 0, 1, 2, 3}, 1, kPixels3},
    {Layout::Bgr24, "bgr24", "bgr bgr24", "bgr",             "24-bit RGB, bytes B G R",   false, false, kCentre, {3, 2, 1, 0, 3}, 1, kPixels3},
};
// clang-format on

bool IsWordOf(const std::string& word, const char* words) {
    std::istringstream candidates(words);
    for (std::string candidate; candidates >> candidate;) {
        if (candidate == word) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::size_t PixelFormat::PlaneBytes(std::size_t plane, std::size_t width, std::size_t height) const {
    return planes[plane].Pitch(width) * planes[plane].Rows(height);
}

std::size_t PixelFormat::FrameBytes(std::size_t width, std::size_t height) const {
    std::size_t bytes = 0;
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        bytes += PlaneBytes(plane, width, height);
    }
    return bytes;
}

std::vector<Component> PixelFormat::Components() const {
    if (IsRgb()) {
        std::vector<Component> components = {{'R', 0, rgb.red, rgb.bytes, 0, 0},
                                             {'G', 0, rgb.green, rgb.bytes, 0, 0},
                                             {'B', 0, rgb.blue, rgb.bytes, 0, 0}};
        if (HasAlpha()) {
            components.push_back({'A', 0, rgb.alpha, rgb.bytes, 0, 0});
        }
        return components;
    }
    switch (layout) {
        case Layout::Nv12:
            return {{'Y', 0, 0, 1, 0, 0}, {'U', 1, 0, 2, 1, 1}, {'V', 1, 1, 2, 1, 1}};
        case Layout::Nv21:
            return {{'Y', 0, 0, 1, 0, 0}, {'U', 1, 1, 2, 1, 1}, {'V', 1, 0, 2, 1, 1}};
        case Layout::Yuy2:
        case Layout::Yuv2:
            return {{'Y', 0, 0, 2, 0, 0}, {'U', 0, 1, 4, 1, 0}, {'V', 0, 3, 4, 1, 0}};
        case Layout::Uyvy:
            return {{'Y', 0, 1, 2, 0, 0}, {'U', 0, 0, 4, 1, 0}, {'V', 0, 2, 4, 1, 0}};
        case Layout::M420:
            return {{'Y', 0, 0, 1, 0, 0}, {'U', 0, 0, 2, 1, 1}, {'V', 0, 1, 2, 1, 1}};
        default:
            return {{'Y', 0, 0, 1, 0, 0},
                    {'U', 1, 0, 1, planes[1].widthShift, planes[1].heightShift},
                    {'V', 2, 0, 1, planes[2].widthShift, planes[2].heightShift}};
    }
}

std::size_t PixelFormat::OffsetOf(const Component& component, std::size_t column, std::size_t row, std::size_t width,
                                  std::size_t height) const {
    if (layout == Layout::M420) {
        // A block of three rows: two of luma, then one of chroma.
        const std::size_t block = component.name == 'Y' ? row / 2 : row;
        const std::size_t rowOfBlock = component.name == 'Y' ? row % 2 : 2;
        return block * planes[0].Pitch(width) + rowOfBlock * width + component.first + column * component.step;
    }
    std::size_t offset = 0;
    for (std::size_t before = 0; before < component.plane; ++before) {
        offset += PlaneBytes(before, width, height);
    }
    return offset + row * planes[component.plane].Pitch(width) + component.first + column * component.step;
}

const PixelFormat& FormatOf(Layout layout) {
    return *std::find_if(std::begin(kFormats), std::end(kFormats),
                         [layout](const PixelFormat& f) { return f.layout == layout; });
}

const PixelFormat* FindFormat(const std::string& name) {
    const std::string small = SmallLetters(name);
    for (const PixelFormat& format : kFormats) {
        if (small == format.name || IsWordOf(small, format.otherNames)) {
            return &format;
        }
    }
    return nullptr;
}

const PixelFormat* FindFormatBySuffix(const std::string& fileName) {
    const std::string suffix = Suffix(fileName);
    for (const PixelFormat& format : kFormats) {
        if (IsWordOf(suffix, format.suffixes)) {
            return &format;
        }
    }
    return nullptr;
}

const std::vector<const PixelFormat*>& AllFormats() {
    static const std::vector<const PixelFormat*> all = [] {
        std::vector<const PixelFormat*> pointers;
        for (const PixelFormat& format : kFormats) {
            pointers.push_back(&format);
        }
        return pointers;
    }();
    return all;
}

std::string FormatTable() {
    std::string table;
    for (const PixelFormat& format : kFormats) {
        std::string name = format.name;
        name.resize(8, ' ');
        table += "  " + name + format.description + "\n";
    }
    return table;
}

std::string Suffix(const std::string& fileName) {
    const std::size_t dot = fileName.find_last_of("./");
    if (dot == std::string::npos || fileName[dot] == '/') {
        return "";
    }
    return SmallLetters(fileName.substr(dot + 1));
}

std::string SmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string SizeText(std::size_t width, std::size_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

}  // namespace korframe
