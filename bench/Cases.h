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

// All cases, family by family in the order of the header: of the functions of a table, or of the portable ones. Sizes
// must be even for what is compared with them.
std::vector<Case> Cases();
std::vector<Case> Cases(const KorConformanceTable& table);

// Whether a label contains a pattern, in which * matches anything and a final $ the end. Ignores case.
bool Matches(const std::string& label, const std::string& pattern);

}  // namespace bench

#endif
