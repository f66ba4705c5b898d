// korframe info: what a file says about itself, and what reading it to the end adds.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <string>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "io/Errors.h"

namespace korframe {

namespace {

struct InfoOptions {
    std::string input;
    RawOptions raw;
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
    return IsFullRange(tags) ? "full" : "not given";
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
    return tag == "m" ? "m (given for each frame)" : tag + " (unknown)";
}

// Names the planes by their samples, in byte order: "Y", "UV", "BGRA".
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

// Only Y4M files give more than their layout and size.
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
    InputRequest request = options.raw.Request(options.input);
    request.pictureOrder = &FormatOf(Layout::Rgba);
    request.keepAlpha = true;
    request.discard = true;
    const std::unique_ptr<FrameSource> source = OpenSource(request);
    const StreamInfo& info = source->Info();
    PrintStream(info);
    if (info.hasTags) {
        PrintTags(info);
    }
    std::uint64_t frames = 0;
    Frame frame;
    try {
        while (source->Read(frame)) {
            ++frames;
        }
    } catch (const Error&) {
        PrintLine("frames", std::to_string(frames) + ", then the file breaks off");
        throw;
    }
    PrintLine("frames", std::to_string(frames));
}

}  // namespace

void AddInfo(CLI::App& app) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand("info", "Show what a file holds: layout, size, frames, rate, range, planes");
    command->add_option("FILE", options->input, kInputHelp)->required()->type_name("");
    options->raw.Add(*command);
    command->footer("The file is read to its end, so damage and truncation are reported, too.");
    command->callback([options] { RunInfo(*options); });
}

}  // namespace korframe
