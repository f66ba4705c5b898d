#include "commands/Options.h"

#include <algorithm>
#include <thread>

#include "commands/Values.h"

namespace korframe {

namespace {

bool IsRgb(const PixelFormat& format) {
    return format.IsRgb();
}

}  // namespace

const char* const kInputHelp = "PNG, JPEG, PPM or Y4M file or raw frames; - for standard input";

const char* const kDitherHelp =
    "noise: off (default), 0 (weakest), 1 or 2 (strongest); added by the renderer or packer, or by the filter if planes"
    " are written";

void RawOptions::Add(CLI::App& command) {
    command
        .add_option("--from", from, "layout of raw frames (see korframe formats); default: by the suffix of the name")
        ->transform(IsLayout())
        ->type_name("LAYOUT");
    command.add_option("--size", size, "width and height of raw frames, for example 1280x720")
        ->check(IsSize())
        ->type_name("WxH");
    command
        .add_option("--max-pixels", maxPixels,
                    "the most pixels that a picture may have (default " + std::to_string(kDefaultMaxPixels) + ")")
        ->transform(IsWholeNumber(1, kMaxPixels))
        ->type_name("N");
}

InputRequest RawOptions::Request(const std::string& path) const {
    InputRequest request;
    request.path = path;
    request.from = from ? &FormatOf(*from) : nullptr;
    request.size = size;
    request.maxPixels = maxPixels;
    request.pictureOrder = &FormatOf(Layout::Bgra);
    return request;
}

void InputOptions::Add(CLI::App& command) {
    raw.Add(command);
    command
        .add_option(
            "--order", order,
            "byte order in which the pixels of a picture are passed to the library: bgra (default), rgba, argb, "
            "abgr, rgb24, bgr24")
        ->transform(IsLayout(IsRgb))
        ->type_name("LAYOUT");
    command.add_option("--rate", rate, "frames per second for Y4M, for example 25 (default) or 30000:1001")
        ->transform(IsRate())
        ->type_name("N[:D]");
}

InputRequest InputOptions::Request(const std::string& path) const {
    InputRequest request = raw.Request(path);
    if (order) {
        request.pictureOrder = &FormatOf(*order);
        request.pictureOnly = true;
    }
    request.rate = rate;
    return request;
}

void OutputOptions::Add(CLI::App& command) {
    command
        .add_option("--to", to,
                    "y4m, y4m:i444, png, ppm or a raw layout (see korframe formats); default: by the suffix of OUTPUT, "
                    "y4m for -")
        ->check(IsOutput())
        ->type_name("KIND");
    AddForceOption(command, policy.force);
    command.add_flag("--keep-partial", policy.keepPartial,
                     "if the input breaks off, put the frames before the break under the name of OUTPUT");
    AddSeedOption(command, seed);
    command
        .add_option("--jobs", jobs,
                    "frames to process at a time: 1 (default) to " + std::to_string(kMaxJobs) +
                        ", 0 for one per processor; the output does not change if noise has a seed")
        ->transform(IsWholeNumber(0, kMaxJobs))
        ->type_name("N");
}

void OutputOptions::Fill(ChainRequest& request, const std::string& output) const {
    request.output = output;
    request.to = to;
    request.policy = policy;
    request.seed = seed;
    request.jobs = jobs > 0 ? jobs : std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMaxJobs);
}

void AddOutputArgument(CLI::App& command, std::string& output) {
    command.add_option("OUTPUT", output, "file to write; - for standard output; out-%04d.png for numbered pictures")
        ->required()
        ->type_name("");
}

void AddForceOption(CLI::App& command, bool& force) {
    command.add_flag("--force", force, "replace read-only files, and write to a terminal");
}

void AddMatrixOption(CLI::App& command, std::string& matrix) {
    command
        .add_option("--matrix", matrix, "between RGB and YUV: 601 (default), 709 or a file of coefficients (see below)")
        ->type_name("601|709|FILE");
}

void AddSeedOption(CLI::App& command, std::optional<std::uint64_t>& seed) {
    command.add_option("--seed", seed, "a number that makes the noise the same in every run")
        ->transform(IsWholeNumber(0, 999999999999999999u))
        ->type_name("N");
}

}  // namespace korframe
