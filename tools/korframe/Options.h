// Options that several subcommands have, each declared once.
#ifndef KORFRAME_OPTIONS_H
#define KORFRAME_OPTIONS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "Pipeline.h"
#include "Stream.h"

namespace korframe {

// How to read frames that do not describe themselves.
struct InputOptions {
    std::string from;
    std::string size;
    std::string order;
    std::string rate;

    void Add(CLI::App& command);
    InputRequest Request(const std::string& path) const;
};

extern const char* const kDitherHelp;

// What to write, and how to work.
struct OutputOptions {
    std::string to;
    std::string seed;
    std::string jobs = "1";

    void Add(CLI::App& command);
    void Fill(ChainRequest& request, const std::string& output) const;
};

void AddOutputArgument(CLI::App& command, std::string& output);
// What raw frames need and other files tell themselves.
void AddRawOptions(CLI::App& command, std::string& from, std::string& size);
void AddMatrixOption(CLI::App& command, std::string& matrix);
// Refuses a matrix that nothing would use, or a file that would have to serve in both directions. The source is RGB or
// not, and so is the target.
Matrix RequestMatrix(const std::string& text, bool fromRgb, bool toRgb);
bool WritesRgb(const OutputKind& kind);

}  // namespace korframe

#endif
