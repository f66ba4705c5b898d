// A whole run: every function of a table, one after the other, and what came of it.
#ifndef KOR_CONFORMANCE_KIT_RUN_H
#define KOR_CONFORMANCE_KIT_RUN_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/kit/Differential.h"
#include "conformance/kit/Plan.h"

namespace kit {

struct Request {
    std::string name;  // of the variant
    const KorConformanceTable* table = nullptr;
    const KorConformanceTable* model = nullptr;
    std::vector<const Entry*> entries;
    PlanOptions plan;
    std::size_t onlyCase = 0;
    std::string program;  // for the command that repeats a failure
};

struct Outcome {
    const Entry* entry = nullptr;
    bool offered = false;
    Verdict verdict;
    double seconds = 0;

    // A function without a case is neither the same nor different.
    bool Tried() const { return offered && verdict.cases > 0; }
};

Outcome TryFunction(const Request& request, const Entry& entry);

// The command line that tries the failing case again, and nothing else.
std::string RepeatCommand(const Request& request, const Outcome& outcome);

// ---- Reports -----------------------------------------------------------------------------------------------------

std::string TextLine(const Request& request, const Outcome& outcome);
std::string TextSummary(const Request& request, const std::vector<Outcome>& outcomes);
std::string JUnitXml(const Request& request, const std::vector<Outcome>& outcomes);

}  // namespace kit

#endif
