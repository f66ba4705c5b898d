// A whole run: every function of a table, one after the other, and what came of it.
#ifndef KOR_CONFORMANCE_KIT_RUN_H
#define KOR_CONFORMANCE_KIT_RUN_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/kit/Child.h"
#include "conformance/kit/Differential.h"
#include "conformance/kit/Plan.h"
#include "conformance/kit/Targets.h"

namespace kit {

struct Request {
    std::string name;  // of the variant
    const KorConformanceTable* table = nullptr;
    const KorConformanceTable* model = nullptr;
    std::vector<const Entry*> entries;
    std::vector<Target> targets;
    KorConformanceSelectTarget select = nullptr;
    PlanOptions plan;
    std::size_t onlyCase = 0;
    bool oneProcess = false;
    std::size_t timeLimit = 0;          // as it was asked for; zero: the usual one
    double secondsWithoutProgress = 0;  // after which a child is stuck
    std::string program;                // for the command that repeats a failure
};

// How the failing case is found again.
enum class Again {
    Alone,
    AloneInAChild,  // as it takes the process with it
    WithTheOthers,  // as it does not fail alone
};

struct Outcome {
    const Entry* entry = nullptr;
    const Target* target = nullptr;
    bool offered = false;
    bool refused = false;  // this machine cannot run the target
    Verdict verdict;
    Again again = Again::Alone;
    double seconds = 0;

    // A function without a case is neither the same nor different.
    bool Tried() const { return offered && !refused && verdict.cases > 0; }
};

Outcome TryFunction(const Request& request, const Entry& entry, const Target& target, Progress& progress);

// The command line that tries the failing case again.
std::string RepeatCommand(const Request& request, const Outcome& outcome);

// What this build cannot find out on this machine, in words.
std::vector<std::string> NotChecked(const Request& request);

// ---- Reports -----------------------------------------------------------------------------------------------------

std::string TextHeading(const Target& target);
std::string TextName(const Entry& entry);
// What follows the name.
std::string TextResult(const Request& request, const Outcome& outcome);
std::string TextSummary(const Request& request, const std::vector<Outcome>& outcomes);
std::string JUnitXml(const Request& request, const std::vector<Outcome>& outcomes);

}  // namespace kit

#endif
