#include "conformance/kit/Run.h"

#include <chrono>

namespace kit {

Outcome TryFunction(const Request& request, const Entry& entry) {
    Outcome outcome;
    outcome.entry = &entry;
    const AnyFunction subject = entry.of(*request.table);
    outcome.offered = !IsNull(subject);
    if (outcome.offered) {
        const auto start = std::chrono::steady_clock::now();
        Differential differential(entry, subject, entry.of(*request.model));
        outcome.verdict = differential.Run(MakePlan(entry, request.plan), request.onlyCase);
        outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    return outcome;
}

std::string RepeatCommand(const Request& request, const Outcome& outcome) {
    return request.program + " --function " + outcome.entry->name + " --seed " + std::to_string(outcome.verdict.seed) +
           (request.plan.quick ? " --quick" : "") +
           (request.plan.random != UsualRandom(request.plan.quick) ? " --random " + std::to_string(request.plan.random) : "") +
           " --case " + std::to_string(outcome.verdict.failing);
}

}  // namespace kit
