// What the benchmark measures: one case for each function and for each option that takes another path through it.
#ifndef KOR_BENCH_CASES_H
#define KOR_BENCH_CASES_H

#include <functional>
#include <string>
#include <vector>

#include "bench/Planes.h"
#include "conformance/KorConformance.h"

namespace bench {

struct Case {
    std::string family;
    std::string function;
    // For example "90 flip"; empty for the most common call.
    std::string option;
    // One of the few that represent the rest in a short table.
    bool isBrief;
    // Lays out the planes and returns the call that works on them.
    std::function<std::function<void()>(Planes&)> prepare;

    // For example "KorPlanarRotation_C_ 90".
    std::string Label() const { return option.empty() ? function : function + " " + option; }
};

// All cases of a set of functions, whose names end with the suffix, family by family in the order of the header. Sizes
// must be even.
std::vector<Case> Cases(const KorConformanceTable& table, const std::string& suffix);

// What users would write or do without the library, on the planes of the function that it is compared with.
void AddBaselines(std::vector<Case>& cases);

// Whether a label contains a pattern, in which * matches anything and a final $ the end. Ignores case.
bool Matches(const std::string& label, const std::string& pattern);

}  // namespace bench

#endif
