// korframe info: what a file says about itself, and what reading it to the end adds.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "io/Errors.h"

namespace korframe {

namespace {

struct InfoOptions {
    std::string input;
    RawOptions raw;
    bool json = false;
};

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

// A plane and its samples in byte order: "Y", "UV", "BGRA".
struct PlaneFacts {
    std::string samples;
    std::size_t rows;
    std::size_t bytes;
};

std::vector<PlaneFacts> PlanesOf(const StreamInfo& info) {
    std::vector<Component> components = info.format->Components();
    std::stable_sort(components.begin(), components.end(),
                     [](const Component& a, const Component& b) { return a.first < b.first; });
    std::vector<PlaneFacts> planes;
    for (std::size_t plane = 0; plane < info.format->planeCount; ++plane) {
        const PlaneShape& shape = info.format->planes[plane];
        planes.push_back({"", shape.Rows(info.height), shape.Pitch(info.width)});
        for (const Component& component : components) {
            if (component.plane == plane) {
                planes.back().samples += component.name;
            }
        }
    }
    return planes;
}

// ---- For people ----

void PrintLine(const char* what, const std::string& value) {
    std::printf("%-13s%s\n", what, Printable(value).c_str());
}

void PrintStream(const StreamInfo& info) {
    const PixelFormat& format = *info.format;
    PrintLine("file", info.name);
    PrintLine("container", info.container);
    PrintLine("layout", std::string(format.name) + " (" + format.description + ")");
    PrintLine("size", SizeText(info.width, info.height));
    PrintLine("frame", std::to_string(format.FrameBytes(info.width, info.height)) + " bytes");
    std::string planes;
    for (const PlaneFacts& plane : PlanesOf(info)) {
        planes += (planes.empty() ? "" : ", ") + plane.samples + " " + std::to_string(plane.rows) + " rows of " +
                  std::to_string(plane.bytes) + " bytes";
    }
    PrintLine("planes", planes);
}

// Only Y4M files give more than their layout and size.
void PrintTags(const StreamInfo& info) {
    const ClipTags& tags = info.tags;
    PrintLine("rate", tags.rate + (tags.rate == "0:0" ? " (unknown)" : " frames/s"));
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

void PrintFrames(std::uint64_t frames, bool complete) {
    PrintLine("frames", std::to_string(frames) + (complete ? "" : ", then the file breaks off"));
}

// ---- For programs ----

// The length of the UTF-8 sequence at a position, 0 if there is no valid one.
std::size_t Utf8Length(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
    };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xc2 ? 0
                               : first < 0xe0 ? 2
                               : first < 0xf0 ? 3
                               : first < 0xf5 ? 4
                                              : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xbf) {
            return 0;
        }
    }
    // Longer than needed, a surrogate, or beyond the last code point.
    const bool wrong = (first == 0xe0 && byte(1) < 0xa0) || (first == 0xed && byte(1) > 0x9f) ||
                       (first == 0xf0 && byte(1) < 0x90) || (first == 0xf4 && byte(1) > 0x8f);
    return wrong ? 0 : length;
}

// What is no UTF-8 becomes the replacement character.
std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = Utf8Length(text, at);
        if (length == 0) {
            quoted += "\\ufffd";
        } else if (text[at] == '"' || text[at] == '\\') {
            quoted += std::string("\\") + text[at];
        } else if (length == 1 && std::iscntrl(static_cast<unsigned char>(text[at])) != 0) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(text[at]));
            quoted += escape;
        } else {
            quoted += text.substr(at, length);
        }
        at += std::max<std::size_t>(length, 1);
    }
    return quoted + "\"";
}

void PrintMember(const char* name, const std::string& value) {
    std::printf("  \"%s\": %s,\n", name, value.c_str());
}

std::string ListOf(const std::vector<std::string>& values) {
    std::string list;
    for (const std::string& value : values) {
        list += (list.empty() ? "" : ", ") + value;
    }
    return "[" + list + "]";
}

void PrintJsonStream(const StreamInfo& info) {
    std::printf("{\n");
    PrintMember("file", Quoted(info.name));
    PrintMember("container", Quoted(info.container));
    PrintMember("layout", Quoted(info.format->name));
    PrintMember("width", std::to_string(info.width));
    PrintMember("height", std::to_string(info.height));
    PrintMember("frame_bytes", std::to_string(info.format->FrameBytes(info.width, info.height)));
    std::vector<std::string> planes;
    for (const PlaneFacts& plane : PlanesOf(info)) {
        planes.push_back("{\"samples\": " + Quoted(plane.samples) + ", \"rows\": " + std::to_string(plane.rows) +
                         ", \"row_bytes\": " + std::to_string(plane.bytes) + "}");
    }
    PrintMember("planes", ListOf(planes));
}

void PrintJsonTags(const StreamInfo& info) {
    const ClipTags& tags = info.tags;
    PrintMember("rate", Quoted(tags.rate));
    PrintMember("aspect", Quoted(tags.aspect));
    PrintMember("interlacing", Quoted(tags.interlacing));
    PrintMember("range", Quoted(RangeOf(tags)));
    PrintMember("chroma", Quoted(tags.siting));
    std::vector<std::string> fields;
    for (const std::string& extension : tags.extensions) {
        fields.push_back(Quoted("X" + extension));
    }
    PrintMember("fields", ListOf(fields));
}

void PrintJsonFrames(std::uint64_t frames, bool complete) {
    PrintMember("frames", std::to_string(frames));
    std::printf("  \"complete\": %s\n}\n", complete ? "true" : "false");
}

// ---- Both ----

void RunInfo(const InfoOptions& options) {
    InputRequest request = options.raw.Request(options.input);
    request.pictureOrder = &FormatOf(Layout::Rgba);
    request.keepAlpha = true;
    request.discard = true;
    const std::unique_ptr<FrameSource> source = OpenSource(request);
    const StreamInfo& info = source->Info();
    (options.json ? PrintJsonStream : PrintStream)(info);
    if (info.hasTags) {
        (options.json ? PrintJsonTags : PrintTags)(info);
    }
    const auto printFrames = options.json ? PrintJsonFrames : PrintFrames;
    std::uint64_t frames = 0;
    Frame frame;
    try {
        while (source->Read(frame)) {
            ++frames;
        }
    } catch (const Error&) {
        printFrames(frames, false);
        throw;
    }
    printFrames(frames, true);
}

}  // namespace

void AddInfo(CLI::App& app) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* command = app.add_subcommand("info", "Show what a file holds: layout, size, frames, rate, range, planes");
    command->add_option("FILE", options->input, kInputHelp)->required()->type_name("");
    options->raw.Add(*command);
    command->add_flag("--json", options->json, "print JSON");
    command->footer("The file is read to its end, so damage and truncation are reported, too.");
    command->callback([options] { RunInfo(*options); });
}

}  // namespace korframe
