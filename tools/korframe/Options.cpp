#include "Options.h"

#include <algorithm>
#include <thread>

#include "Errors.h"
#include "Parse.h"

namespace korframe {

namespace {

bool IsRgb(const PixelFormat& format) {
    return format.IsRgb();
}

}  // namespace

const char* const kDitherHelp =
    "noise: off (default), 0 (weakest), 1 or 2 (strongest), added while rendering or packing, or by the filter if planes "
    "are written";

void AddRawOptions(CLI::App& command, std::string& from, std::string& size) {
    command.add_option("--from", from, "layout of raw frames (korframe formats lists them); by default as the file is named")
        ->type_name("LAYOUT");
    command.add_option("--size", size, "width and height of raw frames, such as 1280x720")->type_name("WxH");
}

void InputOptions::Add(CLI::App& command) {
    AddRawOptions(command, from, size);
    command
        .add_option("--order", order,
                    "order of the bytes in which pixels of a picture go to the library: bgra (default), rgba, argb, "
                    "abgr, rgb24, bgr24")
        ->type_name("LAYOUT");
    command.add_option("--rate", rate, "frames per second for Y4M, such as 25 (default) or 30000:1001")
        ->type_name("N[:D]");
}

InputRequest InputOptions::Request(const std::string& path) const {
    InputRequest request;
    request.path = path;
    if (!from.empty()) {
        request.from = &ParseFormat("--from", from);
    }
    if (!size.empty()) {
        const Size parsed = ParseSize("--size", size);
        request.width = parsed.width;
        request.height = parsed.height;
    }
    request.pictureOrder = &FormatOf(Layout::Bgra);
    if (!order.empty()) {
        request.pictureOrder = &ParseFormat("--order", order, IsRgb);
        request.pictureOnly = true;
    }
    if (!rate.empty()) {
        request.rate = ParseRate("--rate", rate);
    }
    return request;
}

void OutputOptions::Add(CLI::App& command) {
    command
        .add_option("--to", to,
                    "y4m, y4m:i444, png, ppm or a raw layout (see korframe formats); by default as OUTPUT is named, y4m for -")
        ->type_name("KIND");
    command.add_option("--seed", seed, "a number that makes the noise the same in every run")->type_name("N");
    command
        .add_option("--jobs", jobs,
                    "frames that are made at the same time: 1 (default) to " + std::to_string(kMostJobs) +
                        ", 0 for one a processor; the same output, if noise has a seed")
        ->type_name("N");
}

void OutputOptions::Fill(ChainRequest& request, const std::string& output) const {
    request.output = output;
    request.to = to;
    if (!seed.empty()) {
        request.seed = ParseUnsigned("--seed", seed, 999999999999999999u);
    }
    request.jobs = static_cast<std::size_t>(ParseUnsigned("--jobs", jobs, kMostJobs));
    if (request.jobs == 0) {
        request.jobs = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostJobs);
    }
}

void AddOutputArgument(CLI::App& command, std::string& output) {
    command
        .add_option("OUTPUT", output, "file to write; - for standard output; out-%04d.png for numbered pictures")
        ->required()
        ->type_name("");
}

void AddMatrixOption(CLI::App& command, std::string& matrix) {
    command
        .add_option("--matrix", matrix,
                    "between RGB and YUV: 601 (default), 709, or a file of coefficients (told below)")
        ->type_name("601|709|FILE");
}

Matrix RequestMatrix(const std::string& text, bool fromRgb, bool toRgb) {
    if (text.empty()) {
        return Matrix();
    }
    if (!fromRgb && !toRgb) {
        FailUsage("--matrix " + text + ": neither input nor output is RGB, so no matrix is used");
    }
    const Matrix matrix = ParseMatrix(text);
    if (matrix.kind == MatrixKind::Own && fromRgb && toRgb) {
        FailUsage("--matrix " + text +
                  ": a file serves one direction, and this goes from RGB to YUV and back; do it in two runs, with a "
                  "y4m file between");
    }
    return matrix;
}

bool WritesRgb(const OutputKind& kind) {
    return kind.container == Container::Pictures || (kind.layout != nullptr && kind.layout->IsRgb());
}

}  // namespace korframe
