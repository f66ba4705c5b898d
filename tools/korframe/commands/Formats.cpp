// korframe formats: every layout, what it can be captured to and what it can be rendered from.
#include <cstdio>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "image/PixelFormat.h"

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

void RunFormats() {
    std::printf("%-8s%-11s%-20s%-44s%s\n", "LAYOUT", "SUFFIXES", "OTHER NAMES", "WHAT IT IS",
                "BYTES OF PIXELS 1 2 OVER 3 4");
    for (const PixelFormat* format : AllFormats()) {
        std::printf("%-8s%-11s%-20s%-44s%s\n", format->name, format->suffixes, format->otherNames, format->description,
                    BytesOfFourPixels(*format).c_str());
    }
    std::printf(
        "\n"
        "Y4M     read (8 bits, C420 of any siting, C422, C444) and written (C420, C422, C444)\n"
        "PNG     read and written\n"
        "PPM     read (P2, P3, P5, P6) and written (P6)\n"
        "JPEG    read\n"
        "\n"
        "A sample has the number of the first pixel that it covers. Names may be written in capitals.\n"
        "\n"
        "Any layout becomes any other. Where samples only change places, as from rgba to bgr24 or from uyvy to yuy2,\n"
        "and there are no steps, they are moved and stay as they are. Everything else goes through planes of i420,\n"
        "or of i444 if both sides have that much chroma; --verbose shows the path. Chroma is averaged where there is\n"
        "less of it and repeated where there is more. A matrix file works only from RGB to i420 and from i420 to RGB.\n"
        "\n"
        "White comes back from YUV as 254: rendering scales 16 to 235 in whole numbers, rounded down, and 149 * 235 / "
        "128\n"
        "falls just short of 255 once black is taken off. A picture gets a little darker each time it goes there and "
        "back.\n");
}

}  // namespace

void AddFormats(CLI::App& app) {
    CLI::App* command = app.add_subcommand("formats", "List the layouts: names, suffixes, bytes in memory, directions");
    command->callback([] { RunFormats(); });
}

}  // namespace korframe
