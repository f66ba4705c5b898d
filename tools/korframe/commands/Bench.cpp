// korframe bench: how fast the library's functions are on this machine.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bench/Cases.h"
#include "bench/Measure.h"
#include "bench/Table.h"
#include "commands/Commands.h"
#include "commands/Values.h"
#include "conformance/digest/Dispatched.h"
#include "io/Errors.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace korframe {

namespace {

struct BenchOptions {
    Size size = {1280, 720};
    std::string function;
    double seconds = 0.1;
};

// The functions are measured on frames without odd edges.
CLI::Validator IsEvenSize() {
    return CLI::Validator(
        [](std::string& text) -> std::string {
            Size size;
            lexical_cast(text, size);
            return size.width % 2 == 0 && size.height % 2 == 0 ? ""
                                                               : Expected("two even sides, for example 1280x720", text);
        },
        "");
}

// All cases that match the pattern; without one, the few that represent the rest.
std::vector<bench::Case> ChosenCases(const std::string& pattern) {
    std::vector<bench::Case> cases = bench::Cases(kit::DispatchedTable(), "");
    bench::AddBaselines(cases);
    const auto isLeftOut = [&](const bench::Case& subject) {
        return pattern.empty() ? !subject.isBrief : !bench::Matches(subject.Label(), pattern);
    };
    cases.erase(std::remove_if(cases.begin(), cases.end(), isLeftOut), cases.end());
    if (cases.empty()) {
        FailUsage("--function " + pattern + ": matches no function or option; part of a name is enough, for example " +
                  "BGRAToI420, and * matches anything");
    }
    return cases;
}

void RunBench(const BenchOptions& options) {
    const bench::FrameSize size = {options.size.width, options.size.height};
    const std::vector<bench::Case> cases = ChosenCases(options.function);
    bench::Effort effort;
    effort.rounds = 5;
    effort.seconds = options.seconds;

    const bool showProgress = isatty(STDERR_FILENO) == 1;
    std::printf("target %s\n\n", KorYuv420Target());
    bench::Table table(stdout, {size}, bench::Table::Columns::Full, false);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (showProgress) {
            std::fprintf(stderr, "\r\033[K%zu of %zu: %s", i + 1, cases.size(), cases[i].Label().c_str());
        }
        bench::Samples samples;
        const bench::Figure figure = bench::Measure(cases[i], size, effort, samples);
        if (showProgress) {
            std::fputs("\r\033[K", stderr);
        }
        table.Row(cases[i], {{figure, std::nullopt}});
    }
    table.Finish();
    if (std::fflush(stdout) != 0) {
        FailFile("standard output", "cannot be written");
    }
}

}  // namespace

void AddBench(CLI::App& app) {
    const auto options = std::make_shared<BenchOptions>();
    CLI::App* command = app.add_subcommand("bench", "Measure the library's functions on this machine");
    command->add_option("--size", options->size, "width and height of the frames, both even")
        ->check(IsSize())
        ->check(IsEvenSize())
        ->default_str("1280x720")
        ->type_name("WxH");
    command
        ->add_option("--function", options->function,
                     "measure every case whose name or option contains this; * matches anything, a final $ "
                     "the end")
        ->type_name("PATTERN");
    command->add_option("--time", options->seconds, "minimum time for each case; more makes figures steadier")
        ->check(IsSeconds(60))
        ->capture_default_str()
        ->type_name("SECONDS");
    command->callback([options] { RunBench(*options); });
}

}  // namespace korframe
