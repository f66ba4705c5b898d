// korframe info: what a file says of itself, and what reading it to its end adds.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <string>

#include "Commands.h"
#include "Errors.h"
#include "Options.h"

namespace korframe {

namespace {

struct InfoOptions {
    std::string input;
    std::string from;
    std::string size;
};

void PrintLine(const char* what, const std::string& value) {
    std::printf("%-13s%s\n", what, value.c_str());
}

std::string RangeOf(const ClipTags& tags) {
    for (const std::string& extension : tags.extensions) {
        if (extension == "COLORRANGE=LIMITED") {
            return "limited";
        }
    }
    return IsFullRange(tags) ? "full" : "not told";
}

std::string InterlacingOf(const std::string& tag) {
    if (tag == "p") {
        return "p (progressive)";
    }
    if (tag == "t") {
        return "t (upper field first)";
    }
    if (tag == "b") {
        return "b (lower field first)";
    }
    return tag == "m" ? "m (each frame tells its own)" : tag + " (unknown)";
}

// Names the planes by what they hold, in the order of the bytes: "Y", "UV", "BGRA".
std::string PlanesOf(const PixelFormat& format, std::size_t width, std::size_t height) {
    std::vector<Component> components = format.Components();
    std::stable_sort(components.begin(), components.end(),
                     [](const Component& a, const Component& b) { return a.first < b.first; });
    std::string text;
    for (std::size_t plane = 0; plane < format.planeCount; ++plane) {
        text += plane == 0 ? "" : ", ";
        for (const Component& component : components) {
            if (component.plane == plane) {
                text += component.name;
            }
        }
        const PlaneShape& shape = format.planes[plane];
        text += " " + std::to_string(shape.Rows(height)) + " rows of " + std::to_string(shape.Pitch(width)) + " bytes";
    }
    return text;
}

void PrintStream(const StreamInfo& info) {
    const PixelFormat& format = *info.format;
    PrintLine("file", info.name);
    PrintLine("container", info.container);
    PrintLine("layout", std::string(format.name) + " (" + format.description + ")");
    PrintLine("size", SizeText(info.width, info.height));
    PrintLine("frame", std::to_string(format.FrameBytes(info.width, info.height)) + " bytes");
    PrintLine("planes", PlanesOf(format, info.width, info.height));
}

// Only Y4M files say more than their layout and size.
void PrintTags(const StreamInfo& info) {
    const ClipTags& tags = info.tags;
    PrintLine("rate", tags.rate + " frames/s");
    PrintLine("aspect", tags.aspect + (tags.aspect == "0:0" ? " (unknown)" : ""));
    PrintLine("interlacing", InterlacingOf(tags.interlacing));
    PrintLine("range", RangeOf(tags));
    if (!tags.siting.empty()) {
        PrintLine("chroma", tags.siting);
    }
    for (const std::string& extension : tags.extensions) {
        PrintLine("field", "X" + extension);
    }
}

void RunInfo(const InfoOptions& options) {
    InputOptions raw;
    raw.from = options.from;
    raw.size = options.size;
    InputRequest request = raw.Request(options.input);
    request.pictureOrder = &FormatOf(Layout::Rgba);
    request.keepAlpha = true;
    const std::unique_ptr<FrameSource> source = OpenSource(request);
    const StreamInfo& info = source->Info();
    PrintStream(info);
    if (info.tellsTags) {
        PrintTags(info);
    }
    std::uint64_t frames = 0;
    Frame frame;
    try {
        while (source->Read(frame)) {
            ++frames;
        }
    } catch (const Error&) {
        PrintLine("frames", std::to_string(frames) + ", then it breaks off");
        throw;
    }
    PrintLine("frames", std::to_string(frames));
}

}  // namespace

void AddInfo(CLI::App& app) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand("info", "Tells what a file holds: layout, size, frames, rate, range, planes");
    command->add_option("FILE", options->input, "PNG, JPEG, PPM or Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    AddRawOptions(*command, options->from, options->size);
    command->footer("The file is read to its end, so a file that is damaged or breaks off is told as well.");
    command->callback([options] { RunInfo(*options); });
}

}  // namespace korframe
