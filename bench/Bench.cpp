// Measures each function against memcpy.
//
// The unit is the roofline ratio: the time in which memcpy reads and writes as many bytes as the function reads and
// writes, divided by the function's time. A function that only moved its bytes would come to about 1. Both are timed in
// turn, in every iteration, so that a noisy machine disturbs them alike; the ratio is that of their medians.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "bench/Cases.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Size {
    KorSizeT width, height;
};

constexpr Size kSizes[] = {{64, 64}, {1280, 720}, {3840, 2160}};

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Measure(benchmark::State& state, const bench::Case& subject, Size size) {
    bench::Planes planes(size.width, size.height);
    const double pixels = static_cast<double>(size.width * size.height);
    const double bytes = subject.bytesPerPixel * pixels;
    // memcpy reads a byte for every byte it writes.
    const std::size_t moved = static_cast<std::size_t>(bytes / 2);
    std::vector<KorUint8> from(moved, 1);
    std::vector<KorUint8> to(moved, 2);

    // Small frames are repeated until the clock can tell them.
    const int repeats = std::max(1, static_cast<int>(200000 / pixels));
    std::vector<double> functionTimes;
    std::vector<double> memcpyTimes;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < repeats; ++i) {
            subject.run(planes);
            benchmark::ClobberMemory();
        }
        const Clock::time_point middle = Clock::now();
        for (int i = 0; i < repeats; ++i) {
            std::memcpy(to.data(), from.data(), moved);
            benchmark::DoNotOptimize(to.data());
            benchmark::ClobberMemory();
        }
        const Clock::time_point end = Clock::now();
        functionTimes.push_back(Seconds(middle - start) / repeats);
        memcpyTimes.push_back(Seconds(end - middle) / repeats);
        state.SetIterationTime(functionTimes.back());
    }

    const double time = Median(functionTimes);
    state.counters["roofline"] = Median(memcpyTimes) / time;
    state.counters["frames/s"] = 1 / time;
    state.counters["pixels/s"] = pixels / time;
    state.counters["bytes/s"] = bytes / time;
}

}  // namespace

int main(int argc, char** argv) {
    for (const Size size : kSizes) {
        for (const bench::Case& subject : bench::Cases()) {
            const std::string name = subject.name + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
            benchmark::RegisterBenchmark(name.c_str(), Measure, subject, size)->UseManualTime()->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
