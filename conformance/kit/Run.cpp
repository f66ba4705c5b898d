#include "conformance/kit/Run.h"

#include <chrono>

namespace kit {

namespace {

using SizeList = std::vector<std::pair<std::size_t, std::size_t>>;

SizeList AllSizes() {
    SizeList sizes = SmallSizes();
    const SizeList awkward = AwkwardSizes();
    sizes.insert(sizes.end(), awkward.begin(), awkward.end());
    return sizes;
}

// A width or height on either side of every power of two up to 16, and one size for each kind of run and tile.
SizeList FewSizes() {
    SizeList sizes;
    for (const std::size_t height : {0u, 1u, 2u, 3u, 4u, 5u}) {
        for (const std::size_t width : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 18u}) {
            sizes.emplace_back(width, height);
        }
    }
    const SizeList larger{{33, 17}, {17, 33}, {34, 2}, {64, 3}, {128, 3}, {129, 4}, {258, 2}, {641, 3}, {3, 301}};
    sizes.insert(sizes.end(), larger.begin(), larger.end());
    return sizes;
}

}  // namespace

Sweep FullSweep(const Entry& entry, bool quick) {
    Sweep sweep = entry.options();
    sweep.sizes = quick ? FewSizes() : AllSizes();
    return sweep;
}

Outcome TryFunction(const Request& request, const Entry& entry) {
    Outcome outcome;
    outcome.entry = &entry;
    const AnyFunction subject = entry.of(*request.table);
    outcome.offered = !IsNull(subject);
    if (outcome.offered) {
        const auto start = std::chrono::steady_clock::now();
        Differential differential(entry, subject, entry.of(*request.model));
        outcome.verdict = differential.Run(FullSweep(entry, request.quick), request.seed, request.onlyCase);
        outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    return outcome;
}

std::string RepeatCommand(const Request& request, const Outcome& outcome) {
    return request.program + " --function " + outcome.entry->name + " --seed " + std::to_string(request.seed) +
           (request.quick ? " --quick" : "") + " --case " + std::to_string(outcome.verdict.failing);
}

}  // namespace kit
