#include "bench/Measure.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>

namespace bench {

namespace {

// Bursts of the function and of memcpy alternate and are this short, or one call if that takes longer, so that a
// disturbance hits both, and only a few bursts.
constexpr double kBurstSeconds = 50e-6;

// The processor time of this thread. Unlike wall-clock time, it excludes what other programs take from the processor.
double Now() {
#if defined(CLOCK_THREAD_CPUTIME_ID)
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
#else
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
#endif
}

double SecondsOf(const std::function<void()>& call, int calls) {
    const double start = Now();
    for (int i = 0; i < calls; ++i) {
        call();
    }
    return Now() - start;
}

// The number of calls in a burst. The calls that determine it also warm up caches and predictors.
int CallsPerBurst(const std::function<void()>& call) {
    constexpr int kMost = 1 << 20;
    SecondsOf(call, 1);
    int calls = 1;
    while (calls < kMost && SecondsOf(call, calls) < kBurstSeconds / 2) {
        calls *= 2;
    }
    return calls;
}

}  // namespace

void Samples::Add(double functionSeconds, double memcpySeconds) {
    Best& lot = lots_[runs_ % lots_.size()];
    lot.function = std::min(lot.function, functionSeconds);
    lot.memcpy = std::min(lot.memcpy, memcpySeconds);
    ++rounds_;
}

Figure Samples::Summary(FrameSize size, double bytes) const {
    Best best;
    double least = std::numeric_limits<double>::infinity();
    double most = 0;
    for (const Best& lot : lots_) {
        if (std::isfinite(lot.function)) {
            best.function = std::min(best.function, lot.function);
            best.memcpy = std::min(best.memcpy, lot.memcpy);
            least = std::min(least, lot.memcpy / lot.function);
            most = std::max(most, lot.memcpy / lot.function);
        }
    }
    return {size, bytes, best.function, best.memcpy, (most - least) * best.function / best.memcpy, rounds_};
}

Figure Measure(const Case& subject, FrameSize size, Effort effort, Samples& samples) {
    Planes planes(size);
    const std::function<void()> function = subject.prepare(planes);

    const KorSizeT copied = static_cast<KorSizeT>(planes.Moved() / 2);
    const Memory from(copied);
    const Memory to(copied);
    from.FillWithNoise(copied, 1);
    to.FillWithNoise(copied, 2);
    // Volatile, so that no compiler notices that nothing reads the copy.
    void* (*volatile copy)(void*, const void*, std::size_t) = std::memcpy;
    const std::function<void()> memcpyOfAsMuch = [&] { copy(to.Data(), from.Data(), copied); };

    const int functionCalls = CallsPerBurst(function);
    const int memcpyCalls = CallsPerBurst(memcpyOfAsMuch);
    for (int run = 0; run < effort.runs; ++run) {
        samples.StartRun();
        double spent = 0;
        for (int round = 0; round * effort.runs < effort.rounds || spent * effort.runs < effort.seconds; ++round) {
            const double functionTime = SecondsOf(function, functionCalls);
            const double memcpyTime = SecondsOf(memcpyOfAsMuch, memcpyCalls);
            samples.Add(functionTime / functionCalls, memcpyTime / memcpyCalls);
            spent += functionTime + memcpyTime;
        }
    }
    return samples.Summary(size, planes.Moved());
}

}  // namespace bench
