#include "conformance/kit/Trials.h"

#include <sched.h>
#include <time.h>

#include <atomic>
#include <functional>
#include <iterator>
#include <string>

#include "conformance/kit/Allocation.h"

namespace kit {

namespace {

// More than the hundred thousand calls after which a counter of a careless cache or a sampling profiler comes round.
constexpr std::size_t kManyCalls = 110000;
constexpr std::size_t kManyCallsQuick = 2000;

// So many calls come before what is allocated is counted: caches may fill.
constexpr std::size_t kFirstCalls = 64;

struct Size {
    std::size_t width;
    std::size_t height;
};

// Rows that end in the middle of a vector, few enough for many calls.
constexpr Size kOftenSize{35, 2};
// From rows that fit a small scratch memory to rows of a large one.
constexpr Size kAtOnceSizes[] = {{130, 18}, {514, 6}, {1922, 4}};
constexpr double kAtOnceSeconds = 0.02;
constexpr double kAtOnceSecondsQuick = 0.001;
constexpr double kAtOnceSecondsAlone = 0.4;  // a meeting is a matter of chance, and is to be had again
constexpr std::size_t kAtOnceCalls = 20;     // at least

// What this thread has worked. On a busy machine both threads need their share before they can have met. WebAssembly
// only knows the time.
double WorkedSeconds() {
    timespec time = {};
    if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) != 0) {
        clock_gettime(CLOCK_MONOTONIC, &time);
    }
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The values of the options in turn; the last ones where there are not as many.
Case ChooseCase(const Entry& entry, Size size, std::size_t option) {
    Case start;
    start.width = size.width;
    start.height = size.height;
    start.pitches = Pitches::Loose;
    Case chosen;
    std::size_t visited = 0;
    ForEachOption(entry.options(), start, [&](const Case& options) {
        chosen = options;
        return visited++ < option;
    });
    return chosen;
}

Finding Behind(const std::string& words, Finding finding) {
    if (!finding.None()) {
        finding.title = words + finding.title;
        finding.report = words + finding.report;
    }
    return finding;
}

}  // namespace

Trials::Trials(const Entry& entry, const AnyFunction& subject, const AnyFunction& model, Progress* progress)
    : entry_(entry), first_(entry, subject, model, progress), second_(entry, subject, model, progress) {}

void Trials::OnlyDescribe(const std::string& title) {
    onlyDescribes_ = !title.empty();
    first_.OnlyDescribe(title);
}

Verdict Trials::Run(bool quick, std::uint64_t seed, std::size_t firstNumber, std::size_t onlyCase) {
    Verdict verdict;
    std::size_t number = firstNumber;
    const auto run = [&](Case options, const std::function<Finding(const Case&)>& trial) {
        options.number = number++;
        options.seed = MixSeed(seed, options.number);
        if (verdict.Same() && (onlyCase == 0 || onlyCase == options.number)) {
            ++verdict.cases;
            verdict.failing = options.number;
            verdict.finding = trial(options);
        }
    };
    run(ChooseCase(entry_, kOftenSize, 0),
        [&](const Case& options) { return CallOften(options, quick ? kManyCallsQuick : kManyCalls); });
    const double seconds = onlyCase != 0 ? kAtOnceSecondsAlone : quick ? kAtOnceSecondsQuick : kAtOnceSeconds;
    for (std::size_t i = 0; i < std::size(kAtOnceSizes); ++i) {
        run(ChooseCase(entry_, kAtOnceSizes[i], 2 * i),
            [&](const Case& options) { return CallAtOnce(options, seconds); });
    }
    return verdict;
}

// Bytes that are allocated at every call, or at some of them, count the same.
Finding Trials::CallOften(const Case& options, std::size_t calls) {
    const std::string text = std::to_string(calls);
    Finding finding = first_.Prepare(options, {}, "called " + text + " times");
    std::size_t allocated = 0;
    for (std::size_t i = 0; i < calls && finding.None(); ++i) {
        allocated = i == kFirstCalls ? AllocatedBytes() : allocated;
        finding = Behind("differs in call " + std::to_string(i + 1) + " of " + text + ": ", first_.CallSubject());
    }
    const std::size_t now = AllocatedBytes();
    if (finding.None() && now > allocated) {
        return first_.Blame("leaks memory: " + std::to_string(now - allocated) + " bytes in " +
                            std::to_string(calls - kFirstCalls) + " calls");
    }
    return finding;
}

// Two threads with different content, for as long as neither finds a difference.
Finding Trials::CallAtOnce(const Case& options, double seconds) {
    Case others = options;
    others.seed = MixSeed(options.seed, 1);
    const std::string circumstance = "called on two threads at once";
    Finding finding = first_.Prepare(options, {}, circumstance);
    if (finding.None()) {
        finding = second_.Prepare(others, {}, circumstance);
    }
    if (!finding.None() || onlyDescribes_) {
        return finding;
    }
    std::atomic<int> begun{0};
    std::atomic<int> content{0};  // threads that have worked long enough
    std::atomic<bool> stop{false};
    const auto callUntilStop = [&](Differential& differential, Finding& found) {
        ++begun;
        while (begun < 2) {
            sched_yield();
        }
        const double start = WorkedSeconds();
        bool enough = false;
        for (std::size_t i = 0; !stop; ++i) {
            found = differential.CallSubject();
            if (!enough && i >= kAtOnceCalls && WorkedSeconds() - start > seconds) {
                enough = true;
                ++content;
            }
            if (!found.None() || content == 2) {
                stop = true;
            }
        }
    };
    Finding foundBySecond;
    const std::function<void()> second = [&] { callUntilStop(second_, foundBySecond); };
    SecondThread thread;
    thread.Start(second);
    callUntilStop(first_, finding);
    thread.Wait();
    return Behind("differs on two threads at once: ", finding.None() ? foundBySecond : finding);
}

}  // namespace kit
