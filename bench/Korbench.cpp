// korbench: the speed of every function of the library, as a table and as JSON.
#include <unistd.h>

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/Cases.h"
#include "bench/Floors.h"
#include "bench/Measure.h"
#include "bench/Results.h"
#include "bench/Table.h"

namespace {

using bench::Case;
using bench::FrameSize;
using bench::Table;

const std::vector<FrameSize> kStandardSizes = {{64, 64}, {1280, 720}, {3840, 2160}};

// Small to large; wide and tall; pitches that map every row to the same few cache sets, and similar pitches that do
// not.
const std::vector<FrameSize> kScalingSizes = {{16, 16},          {64, 64},         {256, 256}, {1280, 720},
                                              {3840, 2160},      {7680, 4320},     {4096, 16}, {16, 4096},
                                              {1280, 720, 4096}, {1280, 720, 4160}};

// Tables with more sizes show only pixels per second.
constexpr std::size_t kMostFullSizes = 3;

struct Options {
    std::vector<std::string> sizes;
    std::string sizeSet = "standard";
    std::vector<std::string> patterns;
    bool brief = false;
    bool list = false;
    bool once = false;
    bench::Effort effort;
    int passes = 1;
    std::string json;
    std::string note;
    std::string compare;
    std::string floors;
};

FrameSize ParseSize(const std::string& text) {
    FrameSize size = {0, 0};
    int end = 0;
    const int parts =
        std::sscanf(text.c_str(), "%zux%zu%n@%zu%n", &size.width, &size.height, &end, &size.pitchMultiple, &end);
    constexpr KorSizeT kMost = 65536;
    const bool isWhole = parts >= 2 && static_cast<std::size_t>(end) == text.size();
    const bool isEven = size.width % 2 == 0 && size.height % 2 == 0;
    if (!isWhole || !isEven || size.width - 1 >= kMost || size.height - 1 >= kMost || size.pitchMultiple - 1 >= kMost) {
        throw std::runtime_error("--size " + text +
                                 ": expected even sides of 2 to 65536, for example 1280x720, or 1280x720@4096 for "
                                 "pitches that are multiples of 4096");
    }
    return size;
}

std::vector<FrameSize> Sizes(const Options& options) {
    if (options.sizes.empty()) {
        return options.sizeSet == "scaling" ? kScalingSizes : kStandardSizes;
    }
    std::vector<FrameSize> sizes;
    std::transform(options.sizes.begin(), options.sizes.end(), std::back_inserter(sizes), ParseSize);
    return sizes;
}

std::vector<Case> ChosenCases(const Options& options) {
    const auto isChosen = [&](const Case& subject) {
        const auto fits = [&](const std::string& pattern) { return bench::Matches(subject.Label(), pattern); };
        return (subject.isBrief || !options.brief) &&
               (options.patterns.empty() || std::any_of(options.patterns.begin(), options.patterns.end(), fits));
    };
    std::vector<Case> all = bench::Cases(*KorConformancePortable(), "_C_");
    bench::AddBaselines(all);
    std::vector<Case> chosen;
    std::copy_if(all.begin(), all.end(), std::back_inserter(chosen), isChosen);
    if (chosen.empty()) {
        throw std::runtime_error("--filter " + options.patterns.front() +
                                 ": matches no case; --list shows all of them");
    }
    return chosen;
}

void Run(const Options& options) {
    const std::vector<FrameSize> sizes = Sizes(options);
    const std::vector<Case> cases = ChosenCases(options);
    if (options.list) {
        for (const Case& subject : cases) {
            std::puts(subject.Label().c_str());
        }
        return;
    }
    if (options.once) {
        for (const Case& subject : cases) {
            bench::Planes planes(sizes.front());
            subject.prepare(planes)();
        }
        return;
    }
    const bench::Results before = options.compare.empty() ? bench::Results() : bench::Results::Read(options.compare);
    const bench::Floors floors = options.floors.empty() ? bench::Floors() : bench::Floors(options.floors);
    const Table::Columns columns = !options.compare.empty()        ? Table::Columns::Compared
                                   : sizes.size() > kMostFullSizes ? Table::Columns::Speed
                                                                   : Table::Columns::Full;
    Table table(stdout, sizes, columns, !options.floors.empty());
    bench::Results results;
    // Several passes spread the rounds of a figure over time, so that a disturbance affects few of them. The last pass
    // prints.
    std::map<std::pair<std::size_t, std::size_t>, bench::Samples> samples;
    bench::Effort effort = options.effort;
    if (options.passes >= 3) {
        effort.runs = 1;
    }
    const bool showProgress = isatty(STDERR_FILENO) == 1;
    for (int pass = 1; pass <= options.passes; ++pass) {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            std::vector<Table::Cell> cells;
            for (std::size_t k = 0; k < sizes.size(); ++k) {
                if (showProgress) {
                    std::fprintf(stderr, "\r\033[Kpass %d of %d, %zu of %zu: %s, %s", pass, options.passes, i + 1,
                                 cases.size(), cases[i].Label().c_str(), sizes[k].Label().c_str());
                }
                cells.push_back(
                    {bench::Measure(cases[i], sizes[k], effort, samples[{i, k}]), before.Find(cases[i], sizes[k])});
            }
            if (showProgress) {
                std::fputs("\r\033[K", stderr);
            }
            if (pass == options.passes) {
                table.Row(cases[i], cells, floors.Find(cases[i].Label()));
                for (const Table::Cell& cell : cells) {
                    results.Add(cases[i], cell.now);
                }
            }
        }
    }
    table.Finish();
    if (!options.json.empty()) {
        results.Write(options.json, options.note);
    }
}

int RunCommandLine(int argc, char** argv) {
    Options options;
    CLI::App app("Measures every function of the library against memcpy.", "korbench");
    app.add_option(
           "--size", options.sizes,
           "frame size, for example 1280x720, or 1280x720@4096 for pitches that are multiples of 4096; can be repeated")
        ->type_name("WxH[@N]")
        ->allow_extra_args(false);
    app.add_option("--sizes", options.sizeSet,
                   "standard (64x64, 1280x720, 3840x2160) or scaling (16x16 to 7680x4320, wide, tall, awkward pitches)")
        ->check(CLI::IsMember({"standard", "scaling"}))
        ->type_name("SET");
    app.add_option("--filter", options.patterns,
                   "only cases whose label contains this; * matches anything, a final $ the end; can be repeated")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    app.add_flag("--brief", options.brief, "one or two cases for each function");
    app.add_flag("--list", options.list, "list the cases and measure nothing");
    app.add_flag("--once", options.once,
                 "call every case once, at the first size, and measure nothing; for instrumentation tools");
    app.add_option("--repeat", options.effort.rounds, "minimum number of rounds per figure and pass")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--min-time", options.effort.seconds, "minimum time per figure and pass")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str()
        ->type_name("SECONDS");
    app.add_option("--passes", options.passes, "number of passes through all cases")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->type_name("N");
    app.add_option("--json", options.json, "also write the figures to this file")->type_name("FILE");
    app.add_option("--note", options.note, "a note for that file, for example what was measured")->type_name("TEXT");
    app.add_option("--compare", options.compare, "show the figures of an older --json file for comparison")
        ->type_name("FILE");
    app.add_option("--floors", options.floors, "show the target ratios in this file for comparison")->type_name("FILE");
    CLI11_PARSE(app, argc, argv);
    Run(options);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return RunCommandLine(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korbench: %s\n", error.what());
        return 1;
    }
}
