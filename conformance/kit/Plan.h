// Which cases are tried with a function: sweeps that follow each other, their cases numbered through.
#ifndef KOR_CONFORMANCE_KIT_PLAN_H
#define KOR_CONFORMANCE_KIT_PLAN_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "conformance/core/Case.h"
#include "conformance/core/Catalogue.h"

namespace kit {

struct Part {
    Sweep sweep;
    std::uint64_t seed = 0;
};

using Plan = std::vector<Part>;

struct PlanOptions {
    std::uint64_t seed = 0;        // of what every run tries
    std::uint64_t randomSeed = 0;  // of the random cases, which come last
    std::size_t random = 0;        // how many
    bool quick = false;
};

// The random cases that a function is tried with unless another number is asked for.
constexpr std::size_t UsualRandom(bool quick) {
    return quick ? 3 : 24;
}

Plan MakePlan(const Entry& entry, const PlanOptions& options);

// Visits the cases of all parts until the visitor returns false.
void ForEachCase(const Plan& plan, const std::function<bool(const Part&, const Case&)>& visit);

}  // namespace kit

#endif
