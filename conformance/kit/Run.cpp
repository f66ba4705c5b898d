#include "conformance/kit/Run.h"

#include <chrono>
#include <sstream>
#include <stdexcept>

#include "conformance/kit/Allocation.h"
#include "conformance/kit/ProcessorState.h"
#include "conformance/kit/Trials.h"

namespace kit {

namespace {

// Tries the function, or only describes one of its cases under the given title.
Outcome TryHere(const Request& request, const Entry& entry, const Target& target, Progress* progress,
                const std::string& onlyTitle = "") {
    Outcome outcome;
    outcome.entry = &entry;
    outcome.target = &target;
    outcome.offered = true;
    const auto start = std::chrono::steady_clock::now();
    if (target.Named() && onlyTitle.empty()) {
        progress->number = 0;
        progress->Enter(Stage::Selecting);
        outcome.refused = request.select(target.selection) == 0;
        progress->Enter(Stage::Kit);
    }
    if (!outcome.refused) {
        const AnyFunction subject = entry.of(*request.table);
        const AnyFunction model = entry.of(*request.model);
        Differential differential(entry, subject, model, progress);
        differential.OnlyDescribe(onlyTitle);
        Verdict& verdict = outcome.verdict;
        verdict = differential.Run(MakePlan(entry, request.plan), request.onlyCase);
        if (verdict.Same() && (request.onlyCase == 0 || request.onlyCase > verdict.last)) {
            Trials trials(entry, subject, model, progress);
            trials.OnlyDescribe(onlyTitle);
            const Verdict tried = trials.Run(request.plan.quick, request.plan.seed, verdict.last + 1, request.onlyCase);
            const std::size_t cases = verdict.cases + tried.cases;
            verdict = tried.Same() ? verdict : tried;
            verdict.cases = cases;
        }
    }
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

// An outcome as a child sends it: numbers, the title, and then everything else is the report.
std::string Pack(const Outcome& outcome) {
    const Verdict& verdict = outcome.verdict;
    std::ostringstream text;
    text << outcome.refused << ' ' << outcome.seconds << ' ' << verdict.cases << ' ' << verdict.failing << ' '
         << verdict.seed << '\n'
         << verdict.finding.title << '\n'
         << verdict.finding.report;
    return text.str();
}

void Unpack(const std::string& message, Outcome& outcome) {
    const std::size_t numbersEnd = message.find('\n');
    const std::size_t titleEnd = message.find('\n', numbersEnd + 1);
    std::istringstream numbers(message.substr(0, numbersEnd));
    Verdict& verdict = outcome.verdict;
    numbers >> outcome.refused >> outcome.seconds >> verdict.cases >> verdict.failing >> verdict.seed;
    verdict.finding.title = message.substr(numbersEnd + 1, titleEnd - numbersEnd - 1);
    verdict.finding.report = message.substr(titleEnd + 1);
}

// What to say of a child that ended without an outcome.
std::string TitleOf(const Ending& ending, Stage stage) {
    switch (stage) {
        case Stage::Selecting:
            return ending.how + ", while its target was being selected";
        case Stage::Model:
            return "the model " + ending.how;
        case Stage::Subject:
            return ending.how;
        case Stage::Kit:
            break;
    }
    return ending.how + ", after its last call had returned";
}

constexpr char kDone = 'd';
constexpr char kFailed = 'f';

Outcome TryInChild(const Request& request, const Entry& entry, const Target& target, Progress& progress) {
    progress.number = 0;
    const auto start = std::chrono::steady_clock::now();
    const auto work = [&] {
        try {
            return kDone + Pack(TryHere(request, entry, target, &progress));
        } catch (const std::exception& error) {
            return kFailed + std::string(error.what());
        }
    };
    const Ending ending = RunInChild(work, progress, request.secondsWithoutProgress);
    if (ending.delivered && ending.message[0] == kFailed) {
        throw std::runtime_error(ending.message.substr(1));
    }
    Outcome outcome;
    if (!ending.delivered) {
        const Stage stage = progress.stage;
        const std::string title = TitleOf(ending, stage);
        Request describing = request;
        describing.onlyCase = progress.number;
        if (stage == Stage::Selecting || describing.onlyCase == 0) {
            outcome.verdict.cases = 1;
            outcome.verdict.finding = {title, title + "\n"};
        } else {
            Progress none;
            outcome = TryHere(describing, entry, target, &none, title);
            outcome.verdict.cases = request.onlyCase == 0 ? describing.onlyCase : 1;
        }
        outcome.again = Again::AloneInAChild;
        outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    outcome.entry = &entry;
    outcome.target = &target;
    outcome.offered = true;
    if (ending.delivered) {
        Unpack(ending.message.substr(1), outcome);
    }
    return outcome;
}

}  // namespace

Outcome TryFunction(const Request& request, const Entry& entry, const Target& target, Progress& progress) {
    if (IsNull(entry.of(*request.table))) {
        Outcome outcome;
        outcome.entry = &entry;
        outcome.target = &target;
        return outcome;
    }
    if (request.oneProcess) {
        return TryHere(request, entry, target, &progress);
    }
    Outcome outcome = TryInChild(request, entry, target, progress);
    // A command that does not find the difference again is worse than none.
    if (!outcome.verdict.Same() && request.onlyCase == 0 && outcome.verdict.failing != 0) {
        Request alone = request;
        alone.onlyCase = outcome.verdict.failing;
        if (TryInChild(alone, entry, target, progress).verdict.Same()) {
            outcome.again = Again::WithTheOthers;
        }
    }
    return outcome;
}

std::string RepeatCommand(const Request& request, const Outcome& outcome) {
    std::string command = request.program + " --function " + outcome.entry->name;
    if (outcome.target->Named()) {
        command += " --target " + outcome.target->name;
    }
    command += " --seed " + std::to_string(outcome.verdict.seed != 0 ? outcome.verdict.seed : request.plan.seed);
    if (request.plan.quick) {
        command += " --quick";
    }
    if (request.plan.random != UsualRandom(request.plan.quick)) {
        command += " --random " + std::to_string(request.plan.random);
    }
    if (request.timeLimit != 0) {
        command += " --time-limit " + std::to_string(request.timeLimit);
    }
    if (outcome.again != Again::WithTheOthers && outcome.verdict.failing != 0) {
        command += " --case " + std::to_string(outcome.verdict.failing);
    }
    return command + (outcome.again == Again::Alone ? " --no-fork" : "");
}

std::vector<std::string> NotChecked(const Request& request) {
    std::vector<std::string> list;
    if (!WatchesRegisters()) {
        list.emplace_back("registers and flags that a function has to preserve");
    }
    if (!kCountsAllocation) {
        list.emplace_back("leaks of memory");
    }
    if (request.oneProcess) {
        list.emplace_back("whether functions return");
    }
#if defined(__EMSCRIPTEN__)
    list.emplace_back("reads outside of planes");
#endif
    return list;
}

}  // namespace kit
