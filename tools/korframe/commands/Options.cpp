#include "commands/Options.h"

#include "commands/Values.h"
#include "io/Errors.h"

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
    command
        .add_option("--stride", strides,
                    "bytes from row to row of raw frames with padded rows, one number a plane; xROWS behind it if a "
                    "plane has spare rows")
        ->check(IsStrides())
        ->type_name("BYTES[xROWS],...");
}

InputRequest RawOptions::Request(const std::string& path) const {
    InputRequest request;
    request.path = path;
    request.from = from ? &FormatOf(*from) : nullptr;
    request.size = size;
    request.maxPixels = maxPixels;
    request.strides = strides;
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
    command.add_option("--rate", rate, "frames per second for Y4M, for example 25 (default), 30000:1001 or 29.97")
        ->transform(IsRate())
        ->type_name("N[:D]");
    command.add_option("--range", fullRange, "range of YUV input, full or limited; default: what it says, or limited")
        ->transform(IsRange())
        ->type_name("full|limited");
    command.add_option("--crop", crop, "of each frame, take this part; before any step, between chroma samples")
        ->check(IsCrop())
        ->type_name("WxH+X+Y");
    command.add_option("--frames", frames, "take only these frames, counted from 1, both included")
        ->check(IsFrameRange())
        ->type_name("A-B");
}

void InputOptions::Fill(ChainRequest& request, const std::string& path) const {
    request.input = raw.Request(path);
    if (order) {
        request.input.pictureOrder = &FormatOf(*order);
        request.input.pictureOnly = true;
    }
    request.input.rate = rate;
    request.fullRange = fullRange;
    request.crop = crop;
    request.frames = frames;
}

void OutputOptions::Add(CLI::App& command) {
    command
        .add_option("--to", to,
                    "y4m, y4m:i422, y4m:i444, png, ppm or a raw layout (see korframe formats); default: by the suffix "
                    "of OUTPUT, "
                    "y4m for -")
        ->check(IsOutput())
        ->type_name("KIND");
    AddForceOption(command, policy.force);
    command.add_flag("--keep-partial", policy.keepPartial,
                     "if the input breaks off, put the frames before the break under the name of OUTPUT");
    AddSeedOption(command, seed);
    command
        .add_option("--jobs", jobs,
                    "threads to work with: 1 to " + std::to_string(kMaxJobs) +
                        ", or 0 for one per processor (default); the output does not depend on it")
        ->transform(IsWholeNumber(0, kMaxJobs))
        ->type_name("N");
    AddQuietOption(command, quiet, "print errors only: no notes, no warnings, no progress");
    command.add_flag("--verbose", verbose, "print the path that the frames take");
}

void OutputOptions::Fill(ChainRequest& request, const std::string& output) const {
    request.output = output;
    request.to = to;
    request.policy = policy;
    request.seed = seed;
    request.jobs = jobs;
    request.verbose = verbose;
    if (quiet) {
        SayErrorsOnly();
    }
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

void AddQuietOption(CLI::App& command, bool& quiet, const char* help) {
    command.add_flag("--quiet", quiet, help);
}

void AddSeedOption(CLI::App& command, std::optional<std::uint64_t>& seed) {
    command.add_option("--seed", seed, "a number that makes the noise the same in every run")
        ->transform(IsWholeNumber(0, 999999999999999999u))
        ->type_name("N");
}

}  // namespace korframe
