// korframe formats: every layout, what it can be captured to and what it can be rendered from.
#include <cstdio>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "image/PixelFormat.h"
#include "pipeline/Capture.h"
#include "pipeline/Render.h"

namespace korframe {

namespace {

// The bytes of 2x2 pixels in memory order, as names of samples, with a bar between planes.
std::string BytesOfFourPixels(const PixelFormat& format) {
    constexpr std::size_t kSide = 2;
    std::vector<std::string> bytes(format.FrameBytes(kSide, kSide));
    for (const Component& component : format.Components()) {
        for (std::size_t row = 0; row < component.Rows(kSide); ++row) {
            for (std::size_t column = 0; column < component.Columns(kSide); ++column) {
                const std::size_t pixel = (row << component.heightShift) * kSide + (column << component.widthShift);
                bytes[format.OffsetOf(component, column, row, kSide, kSide)] =
                    component.name + std::to_string(pixel + 1);
            }
        }
    }
    std::string text;
    std::size_t next = 0;
    for (std::size_t plane = 0; plane < format.planeCount; ++plane) {
        text += plane == 0 ? "" : " |";
        for (const std::size_t end = next + format.PlaneBytes(plane, kSide, kSide); next < end; ++next) {
            text += " " + bytes[next];
        }
    }
    return text.substr(1);
}

std::string Join(const char* first, bool hasFirst, const char* second, bool hasSecond) {
    if (hasFirst && hasSecond) {
        return std::string(first) + " " + second;
    }
    return hasFirst ? first : hasSecond ? second : "-";
}

void RunFormats() {
    std::printf("%-8s%-11s%-11s%-14s%-44s%s\n", "LAYOUT", "SUFFIXES", "READ INTO", "WRITTEN FROM", "WHAT IT IS",
                "BYTES OF PIXELS 1 2 OVER 3 4");
    for (const PixelFormat* format : AllFormats()) {
        const Layout layout = format->layout;
        const std::string into =
            Join("i420", Capture::Reaches(layout, Layout::I420), "i444", Capture::Reaches(layout, Layout::I444));
        const std::string from =
            Join("i420", Render::Reaches(Layout::I420, layout), "i444", Render::Reaches(Layout::I444, layout));
        std::printf("%-8s%-11s%-11s%-14s%-44s%s\n", format->name, format->suffixes, into.c_str(), from.c_str(),
                    format->description, BytesOfFourPixels(*format).c_str());
    }
    std::printf(
        "\n"
        "Y4M     read (8 bits, C420 of any siting, C422, C444) and written (C420, C444)\n"
        "PNG     read and written\n"
        "PPM     read (P2, P3, P5, P6) and written (P6)\n"
        "JPEG    read\n"
        "\n"
        "A sample has the number of the first pixel that it covers. Layouts are read into planes and written from\n"
        "them; a matrix file works only from RGB to i420 and from i420 to RGB.\n");
}

}  // namespace

void AddFormats(CLI::App& app) {
    CLI::App* command = app.add_subcommand("formats", "List the layouts: names, suffixes, bytes in memory, directions");
    command->callback([] { RunFormats(); });
}

}  // namespace korframe
