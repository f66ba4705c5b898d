// Options that several subcommands share, each declared once.
#ifndef KORFRAME_OPTIONS_H
#define KORFRAME_OPTIONS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "image/PixelFormat.h"
#include "io/Open.h"
#include "pipeline/Pipeline.h"

namespace korframe {

// What raw frames need and other files carry themselves, and how large a picture may be.
struct RawOptions {
    std::optional<Layout> from;
    Size size;
    std::size_t maxPixels = kDefaultMaxPixels;
    Strides strides;

    void Add(CLI::App& command);
    InputRequest Request(const std::string& path) const;
};

// How to read an input.
struct InputOptions {
    RawOptions raw;
    std::optional<Layout> order;
    std::string rate;
    std::optional<bool> fullRange;
    CropRequest crop;
    FrameRange frames;

    void Add(CLI::App& command);
    void Fill(ChainRequest& request, const std::string& path) const;
};

// What to write, and how to process.
struct OutputOptions {
    OutputRequest to;
    std::optional<std::uint64_t> seed;
    std::size_t jobs = 0;
    bool quiet = false;
    bool verbose = false;
    OutputPolicy policy;

    void Add(CLI::App& command);
    void Fill(ChainRequest& request, const std::string& output) const;
};

extern const char* const kInputHelp;
extern const char* const kDitherHelp;

void AddOutputArgument(CLI::App& command, std::string& output);
void AddForceOption(CLI::App& command, bool& force);
void AddMatrixOption(CLI::App& command, std::string& matrix);
void AddQuietOption(CLI::App& command, bool& quiet, const char* help);
void AddSeedOption(CLI::App& command, std::optional<std::uint64_t>& seed);

}  // namespace korframe

#endif
