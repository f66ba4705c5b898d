// korframe compare: whether two files hold the same frames, and how much they differ.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "commands/Options.h"
#include "commands/Values.h"
#include "io/Errors.h"

namespace korframe {

namespace {

struct CompareOptions {
    std::string first;
    std::string second;
    RawOptions raw;
    std::optional<double> minPsnr;
};

struct Difference {
    std::uint64_t frame;  // counted from 1
    char component;
    std::size_t x;
    std::size_t y;
    unsigned first;
    unsigned second;
};

// A component that both layouts have on the same grid. Its bytes may lie anywhere: planar and interleaved chroma can be
// compared, and RGB in any order.
struct Pair {
    Component first;
    Component second;
};

// Empty if one has components that the other lacks, apart from alpha.
std::vector<Pair> PairUp(const PixelFormat& first, const PixelFormat& second) {
    const std::vector<Component> firsts = first.Components();
    const std::vector<Component> seconds = second.Components();
    std::vector<Pair> pairs;
    for (const Component& a : firsts) {
        for (const Component& b : seconds) {
            if (a.name == b.name && a.widthShift == b.widthShift && a.heightShift == b.heightShift) {
                pairs.push_back({a, b});
            }
        }
    }
    return pairs.size() >= 3 ? pairs : std::vector<Pair>();
}

class Comparison {
  public:
    Comparison(const StreamInfo& info, std::vector<Pair> pairs)
        : info_(info), pairs_(std::move(pairs)), squares_(pairs_.size()) {}

    void Add(const Frame& first, const Frame& second) {
        ++frames_;
        for (std::size_t i = 0; i < pairs_.size(); ++i) {
            AddComponent(i, first, second);
        }
    }

    const std::optional<Difference>& First() const { return first_; }

    // Over all frames; infinite if nothing differs.
    double Psnr(std::size_t pair) const {
        const Component& component = pairs_[pair].first;
        const double samples = static_cast<double>(component.Columns(info_.width)) *
                               static_cast<double>(component.Rows(info_.height)) * static_cast<double>(frames_);
        const double mean = static_cast<double>(squares_[pair]) / samples;
        return mean > 0 ? 10 * std::log10(255.0 * 255.0 / mean) : std::numeric_limits<double>::infinity();
    }

    double LowestPsnr() const {
        double lowest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < pairs_.size(); ++i) {
            lowest = std::min(lowest, Psnr(i));
        }
        return lowest;
    }

    void PrintPsnr() const {
        std::printf("PSNR in dB:");
        for (std::size_t i = 0; i < pairs_.size(); ++i) {
            std::printf(" %c %.2f", pairs_[i].first.name, Psnr(i));
        }
        std::printf("\n");
    }

  private:
    void AddComponent(std::size_t pair, const Frame& first, const Frame& second) {
        const Component& a = pairs_[pair].first;
        const Component& b = pairs_[pair].second;
        for (std::size_t y = 0; y < a.Rows(info_.height); ++y) {
            const std::uint8_t* rowA = first.Data() + first.Format().OffsetOf(a, 0, y, info_.width, info_.height);
            const std::uint8_t* rowB = second.Data() + second.Format().OffsetOf(b, 0, y, info_.width, info_.height);
            for (std::size_t x = 0; x < a.Columns(info_.width); ++x) {
                const int sampleA = rowA[x * a.step];
                const int sampleB = rowB[x * b.step];
                if (sampleA != sampleB) {
                    Note(a.name, x, y, sampleA, sampleB);
                    squares_[pair] += static_cast<std::uint64_t>((sampleA - sampleB) * (sampleA - sampleB));
                }
            }
        }
    }

    void Note(char component, std::size_t x, std::size_t y, int first, int second) {
        if (!first_) {
            first_ = {frames_, component, x, y, static_cast<unsigned>(first), static_cast<unsigned>(second)};
        }
    }

    StreamInfo info_;
    std::vector<Pair> pairs_;
    std::vector<std::uint64_t> squares_;
    std::uint64_t frames_ = 0;
    std::optional<Difference> first_;
};

[[noreturn]] void EndDifferent() {
    FlushStandardOutput();
    throw Verdict{ExitStatus::Failure};
}

std::unique_ptr<FrameSource> Open(const CompareOptions& options, const std::string& path) {
    InputRequest request = options.raw.Request(path);
    request.rawOnlyIfNeeded = true;
    request.keepAlpha = true;
    return OpenSource(request);
}

void Compare(const CompareOptions& options) {
    if (options.first == "-" && options.second == "-") {
        FailUsage("-: only one of the two files can come from standard input");
    }
    const std::unique_ptr<FrameSource> sourceA = Open(options, options.first);
    const std::unique_ptr<FrameSource> sourceB = Open(options, options.second);
    const StreamInfo& a = sourceA->Info();
    const StreamInfo& b = sourceB->Info();
    if (a.width != b.width || a.height != b.height) {
        std::printf("%s %s differ: %s and %s pixels\n", Printable(a.name).c_str(), Printable(b.name).c_str(),
                    SizeText(a.width, a.height).c_str(), SizeText(b.width, b.height).c_str());
        EndDifferent();
    }
    const std::vector<Pair> pairs = PairUp(*a.format, *b.format);
    if (pairs.empty()) {
        std::printf("%s %s differ: %s and %s cannot be compared sample by sample\n", Printable(a.name).c_str(),
                    Printable(b.name).c_str(), a.format->name, b.format->name);
        EndDifferent();
    }

    Comparison comparison(a, pairs);
    Frame frameA;
    Frame frameB;
    std::uint64_t frames = 0;
    bool moreA = sourceA->Read(frameA);
    bool moreB = sourceB->Read(frameB);
    for (; moreA && moreB; moreA = sourceA->Read(frameA), moreB = sourceB->Read(frameB)) {
        comparison.Add(frameA, frameB);
        ++frames;
    }
    if (const std::optional<Difference>& first = comparison.First()) {
        std::printf("%s %s differ: frame %llu, plane %c, x %zu, y %zu: %u and %u\n", Printable(a.name).c_str(),
                    Printable(b.name).c_str(), static_cast<unsigned long long>(first->frame), first->component,
                    first->x, first->y, first->first, first->second);
        comparison.PrintPsnr();
    }
    if (moreA != moreB) {
        std::printf("%s ends after frame %llu, but %s goes on\n", Printable((moreA ? b : a).name).c_str(),
                    static_cast<unsigned long long>(frames), Printable((moreA ? a : b).name).c_str());
    }
    const bool alike = options.minPsnr ? comparison.LowestPsnr() >= *options.minPsnr : !comparison.First();
    if (!alike || moreA != moreB) {
        EndDifferent();
    }
}

// As with cmp, 1 means that the files differ, so any error must be 2.
void RunCompare(const CompareOptions& options) {
    try {
        Compare(options);
    } catch (const Error& error) {
        throw Error(ExitStatus::Usage, error.what());
    } catch (const std::bad_alloc&) {
        throw Error(ExitStatus::Usage, kOutOfMemory);
    } catch (const std::exception& error) {
        throw Error(ExitStatus::Usage, error.what());
    }
}

}  // namespace

void AddCompare(CLI::App& app) {
    const auto options = std::make_shared<CompareOptions>();
    CLI::App* command =
        app.add_subcommand("compare", "Compare two files: first difference, PSNR, exit status as for cmp");
    command->add_option("A", options->first, kInputHelp)->required()->type_name("");
    command->add_option("B", options->second, "what to compare it with")->required()->type_name("");
    options->raw.Add(*command);
    command->add_option("--min-psnr", options->minPsnr, "call files the same if each plane has at least this PSNR")
        ->check(IsDecibels())
        ->type_name("DB");
    command->footer(
        "If both files hold the same frames, nothing is printed and the exit status is 0. Otherwise the first\n"
        "difference is printed (frame from 1, x and y from 0 on the plane's own grid, both values) with the PSNR\n"
        "of each plane over all frames, and the exit status is 1. Errors give 2. Layouts that differ only in the\n"
        "positions of their samples, such as i420 and nv12, or bgra and rgb24, can be compared. --from, --size\n"
        "and --stride apply to raw frames in either file. With --min-psnr, differences are printed as well, but the\n"
        "exit status is 0 unless the PSNR of some plane falls short or one file ends early.");
    command->callback([options] { RunCompare(*options); });
}

}  // namespace korframe
