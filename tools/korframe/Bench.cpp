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
#include "Commands.h"
#include "Errors.h"
#include "Parse.h"

namespace korframe {

namespace {

struct BenchOptions {
    std::string size = "1280x720";
    std::string function;
    std::string time = "0.1";
};

bench::FrameSize ParseFrameSize(const std::string& text) {
    const Size size = ParseSize("--size", text);
    if (size.width % 2 != 0 || size.height % 2 != 0) {
        FailUsage("--size " + text + ": both sides must be even, such as 1280x720");
    }
    return {size.width, size.height};
}

double ParseSeconds(const std::string& text) {
    double seconds = 0;
    int end = 0;
    constexpr double kMost = 60;
    if (std::sscanf(text.c_str(), "%lf%n", &seconds, &end) != 1 || text[static_cast<std::size_t>(end)] != 0 ||
        !(seconds >= 0 && seconds <= kMost)) {
        FailUsage("--time " + text + ": seconds between 0 and 60 are wanted, such as 0.5");
    }
    return seconds;
}

// All cases of the functions that are asked for; without such a wish, the few that stand for the rest.
std::vector<bench::Case> ChosenCases(const std::string& pattern) {
    std::vector<bench::Case> cases = bench::Cases();
    const auto isLeftOut = [&](const bench::Case& subject) {
        return pattern.empty() ? !subject.isBrief : !bench::Matches(subject.Label(), pattern);
    };
    cases.erase(std::remove_if(cases.begin(), cases.end(), isLeftOut), cases.end());
    if (cases.empty()) {
        FailUsage("--function " + pattern + ": no function or option is named so; part of a name is enough, such as " +
                  "BGRAToI420, and * stands for anything");
    }
    return cases;
}

void RunBench(const BenchOptions& options) {
    const bench::FrameSize size = ParseFrameSize(options.size);
    const std::vector<bench::Case> cases = ChosenCases(options.function);
    bench::Effort effort;
    effort.rounds = 5;
    effort.seconds = ParseSeconds(options.time);

    const bool showProgress = isatty(STDERR_FILENO) == 1;
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
    CLI::App* command = app.add_subcommand("bench", "Measures the library's functions on this machine");
    command->add_option("--size", options->size, "width and height of the frames, both even")
        ->capture_default_str()
        ->type_name("WxH");
    command
        ->add_option("--function", options->function,
                     "measure every case whose name or option contains this; * stands for anything, a last $ "
                     "for the end")
        ->type_name("PATTERN");
    command->add_option("--time", options->time, "least time for each case; more makes figures steadier")
        ->capture_default_str()
        ->type_name("SECONDS");
    command->callback([options] { RunBench(*options); });
}

}  // namespace korframe
