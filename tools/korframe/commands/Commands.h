// Each subcommand adds itself and its options to the program. Main.cpp lists them.
#ifndef KORFRAME_COMMANDS_H
#define KORFRAME_COMMANDS_H

#include <CLI/CLI.hpp>

namespace korframe {

void AddConvert(CLI::App& app);
void AddBlend(CLI::App& app);
void AddCompare(CLI::App& app);
void AddDemo(CLI::App& app);
void AddFormats(CLI::App& app);
void AddInfo(CLI::App& app);
void AddTestCard(CLI::App& app);
void AddVerify(CLI::App& app);
void AddBench(CLI::App& app);

}  // namespace korframe

#endif
