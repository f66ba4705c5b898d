// kortargets [--size WxH] [--ms N] [--json FILE] [PATTERN]: how many times as fast as the portable functions every
// target is, and the automatic choice, for every function and option. What is slower is marked.
//
// The contestants take turns, so that what slows the machine for a while slows all of them.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/Cases.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace {

using Clock = std::chrono::steady_clock;

// Null: the automatic choice.
std::vector<const char*> Contestants() {
    const char* names[16];
    const KorSizeT count = std::min<KorSizeT>(KorYuv420Targets(names, 16), 16);
    std::vector<const char*> contestants;
    for (KorSizeT i = count; i-- > 0;) {
        if (KorYuv420SelectTarget(names[i])) {
            contestants.push_back(names[i]);
        }
    }
    contestants.push_back(nullptr);
    return contestants;
}

const char* NameOf(const char* contestant) {
    return contestant != nullptr ? contestant : "automatic";
}

double Seconds(const std::function<void()>& call, int calls) {
    const Clock::time_point begin = Clock::now();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return std::chrono::duration<double>(Clock::now() - begin).count() / calls;
}

// The best time of each contestant. Clocks are coarse: short calls are measured several at a time.
std::vector<double> Measure(const std::vector<const char*>& contestants, const std::function<void()>& call,
                            double seconds) {
    constexpr double kLeast = 1e-5;
    call();
    const int calls = static_cast<int>(std::ceil(kLeast / std::max(Seconds(call, 1), 1e-7)));
    std::vector<double> best(contestants.size(), 1e9);
    const Clock::time_point begin = Clock::now();
    do {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            KorYuv420SelectTarget(contestants[i]);
            best[i] = std::min(best[i], Seconds(call, calls));
        }
    } while (std::chrono::duration<double>(Clock::now() - begin).count() < seconds);
    return best;
}

int Run(int argc, char** argv) {
    bench::FrameSize size = {64, 64};
    double seconds = 0.1;
    const char* pattern = "";
    const char* json = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--size") == 0 && i + 1 < argc) {
            if (std::sscanf(argv[++i], "%zux%zu", &size.width, &size.height) != 2) {
                std::fprintf(stderr, "kortargets: '%s': expected WIDTHxHEIGHT, for example 64x64\n", argv[i]);
                return 2;
            }
        } else if (std::strcmp(argv[i], "--ms") == 0 && i + 1 < argc) {
            seconds = 1e-3 * std::atof(argv[++i]);
        } else if (std::strcmp(argv[i], "--json") == 0 && i + 1 < argc) {
            json = argv[++i];
        } else {
            pattern = argv[i];
        }
    }
    KorConformanceTable table = {};
#define KOR_FUNCTION(name, shape, family, frames) table.name = &name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    const std::vector<const char*> contestants = Contestants();
    nlohmann::ordered_json results;
    std::printf("%s, Mpix/s, and times as fast as the portable function; * marks what is slower\n",
                size.Label().c_str());
    for (const bench::Case& subject : bench::Cases(table, "")) {
        if (!bench::Matches(subject.Label(), pattern)) {
            continue;
        }
        bench::Planes planes(size);
        const std::vector<double> best = Measure(contestants, subject.prepare(planes), seconds);
        std::printf("%-46s %8.0f", subject.Label().c_str(), 1e-6 * size.Pixels() / best[0]);
        for (std::size_t i = 0; i < best.size(); ++i) {
            results[size.Label()][subject.Label()][NameOf(contestants[i])] = 1e-6 * size.Pixels() / best[i];
        }
        for (std::size_t i = 1; i < best.size(); ++i) {
            const double ratio = best[0] / best[i];
            std::printf("  %s %.2f%s", NameOf(contestants[i]), ratio, ratio < 0.97 ? "*" : "");
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    if (json != nullptr && !(std::ofstream(json) << results.dump(1) << "\n")) {
        std::fprintf(stderr, "kortargets: '%s' cannot be written\n", json);
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kortargets: %s\n", error.what());
        return 1;
    }
}
