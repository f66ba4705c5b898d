// The public functions of the kit: options in, reports and a status out.
#include "conformance/KorConformance.h"

#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/NoiseTable.h"
#include "conformance/kit/Run.h"
#include "Kor/Os/KorRandom.h"

namespace kit {

namespace {

// What is wrong before anything was tried.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

constexpr const char* kSuffix = "_C_";

bool IsNameOf(const Entry& entry, const std::string& name) {
    return name == entry.name || name + kSuffix == entry.name;
}

std::vector<const Entry*> ChooseEntries(const KorConformanceOptions& options) {
    std::vector<const Entry*> chosen;
    if (options.functions == nullptr) {
        for (const Entry& entry : Catalogue()) {
            chosen.push_back(&entry);
        }
        return chosen;
    }
    for (std::size_t i = 0; i < options.functionCount; ++i) {
        const std::size_t before = chosen.size();
        for (const Entry& entry : Catalogue()) {
            if (IsNameOf(entry, options.functions[i])) {
                chosen.push_back(&entry);
            }
        }
        if (chosen.size() == before) {
            throw UsageError(std::string("there is no function ") + options.functions[i] + "; --list tells all names");
        }
    }
    return chosen;
}

// Draws that are served by somebody else cannot be compared.
void RequireOwnServices() {
    char byte[1];
    ScriptedRandom::ServeSeed(0);
    const bool drawn = KorRandomGetBytes(byte, sizeof byte) != 0 && ScriptedRandom::Draws().size() == 1;
    if (!drawn || KorTblDitherStd4[kNoiseRamp] != NoiseEntry(kNoiseRamp)) {
        throw UsageError(
            "another KorRandomGetBytes or KorTblDitherStd4 is linked in place of the kit's own; link the kit instead "
            "of "
            "Kor::Platform");
    }
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Opened before anything is tried, so that a bad name shows at once.
File OpenReport(const char* path) {
    File file(path == nullptr ? nullptr : std::fopen(path, "w"), &std::fclose);
    if (path != nullptr && file == nullptr) {
        throw UsageError(std::string("cannot write ") + path + ": " + std::strerror(errno));
    }
    return file;
}

void Say(std::FILE* stream, const std::string& text) {
    if (stream != nullptr) {
        std::fputs(text.c_str(), stream);
        std::fflush(stream);
    }
}

std::uint64_t DrawSeed() {
    std::random_device device;
    return ((static_cast<std::uint64_t>(device()) << 32) | device()) | 1;
}

// What a case may take in a plain build on an ordinary machine.
constexpr double kSecondsWithoutProgress = 10;

bool IsWanted(const Target& target, const KorConformanceOptions& options) {
    return options.targets == nullptr || std::any_of(options.targets, options.targets + options.targetCount,
                                                     [&](const char* name) { return target.name == name; });
}

// All targets of the set, or those that are asked for.
std::vector<Target> ChooseTargets(const KorConformanceOptions& options) {
    if ((options.listTargets == nullptr) != (options.selectTarget == nullptr)) {
        throw UsageError("a set with targets has to both list and select them");
    }
    std::vector<Target> all = ListTargets(options.listTargets);
    for (std::size_t i = 0; options.targets != nullptr && i < options.targetCount; ++i) {
        const std::string name = options.targets[i];
        if (std::none_of(all.begin(), all.end(), [&](const Target& target) { return target.name == name; })) {
            std::string names;
            for (const Target& target : all) {
                names += " " + target.name;
            }
            throw UsageError("there is no target " + name +
                             (options.listTargets == nullptr ? "; the set names none" : "; there are:" + names));
        }
    }
    if (options.targets != nullptr && options.targetCount == 0) {
        throw UsageError("the list of targets is empty");
    }
    all.erase(std::remove_if(all.begin(), all.end(), [&](const Target& target) { return !IsWanted(target, options); }),
              all.end());
    return all;
}

Request MakeRequest(const KorConformanceTable& table, const KorConformanceOptions& options) {
    Request request;
    request.name = options.name == nullptr ? "variant" : options.name;
    request.table = &table;
    request.model = options.model == nullptr ? KorConformancePortable() : options.model;
    request.entries = ChooseEntries(options);
    request.targets = ChooseTargets(options);
    request.select = options.selectTarget;
#if defined(__EMSCRIPTEN__)
    request.oneProcess = true;  // there is no other
#else
    request.oneProcess = options.oneProcess != 0;
#endif
    request.timeLimit = options.timeLimit;
    request.secondsWithoutProgress =
        options.timeLimit != 0 ? static_cast<double>(options.timeLimit) : kSecondsWithoutProgress * Slowness();
    request.plan.seed = options.seed == 0 ? KOR_CONFORMANCE_USUAL_SEED : options.seed;
    request.plan.randomSeed = options.seed == 0 ? DrawSeed() : options.seed;
    request.plan.quick = options.quick != 0;
    request.plan.random = options.randomCases == 0 ? UsualRandom(request.plan.quick) : options.randomCases;
    request.onlyCase = options.caseNumber;
    request.program = options.programName == nullptr ? "PROGRAM" : options.programName;
    std::size_t offered = 0;
    for (const Entry* entry : request.entries) {
        const bool inTable = !IsNull(entry->of(table));
        if (!inTable && options.functions != nullptr) {
            throw UsageError(std::string("the table has no ") + entry->name);
        }
        if (inTable && IsNull(entry->of(*request.model))) {
            throw UsageError(std::string("the model has no ") + entry->name);
        }
        offered += inTable ? 1 : 0;
    }
    if (offered == 0) {
        throw UsageError("the table has none of the functions that are to be tried");
    }
    return request;
}

// With everything in one process nobody is left to report a function that calls exit, but what runs at the exit.
class ExitWatch {
  public:
    explicit ExitWatch(const Progress* progress) {
        static const bool registered = std::atexit(&Tell) == 0;
        static_cast<void>(registered);
        watched_ = progress;
    }
    ~ExitWatch() { watched_ = nullptr; }
    ExitWatch(const ExitWatch&) = delete;
    ExitWatch& operator=(const ExitWatch&) = delete;

  private:
    static void Tell() {
        if (watched_ != nullptr && watched_->stage != Stage::Kit) {
            std::printf("DIFFERS: ended the process with exit() in case %" PRIu32 "\n", watched_->number.load());
            std::fflush(nullptr);
            _exit(KOR_CONFORMANCE_DIFFERS);
        }
    }

    static const Progress* watched_;
};

const Progress* ExitWatch::watched_ = nullptr;

KorConformanceStatus Run(const KorConformanceTable& table, const KorConformanceOptions& options) {
    const Request request = MakeRequest(table, options);
    RequireOwnServices();
    const File junit = OpenReport(options.junitPath);
    // Found out once, for all children.
    const std::string notFar = WhyNotFar();

    const SharedProgress progress;
    const ExitWatch exitWatch(request.oneProcess ? progress.get() : nullptr);
    std::vector<Outcome> outcomes;
    bool same = true;
    std::size_t cases = 0;
    for (const Target& target : request.targets) {
        Say(options.text, TextHeading(target));
        bool refused = false;
        for (const Entry* entry : request.entries) {
            const bool offered = !IsNull(entry->of(table));
            if (offered && !refused) {
                Say(options.text, TextName(*entry));
            }
            Outcome outcome;
            if (refused) {
                outcome = outcomes.back();
                outcome.entry = entry;
                outcome.offered = offered;
            } else {
                outcome = TryFunction(request, *entry, target, *progress.get());
            }
            if (offered && !refused) {
                Say(options.text, TextResult(request, outcome));
            }
            same = same && outcome.verdict.Same();
            cases += outcome.verdict.cases;
            refused = outcome.refused;
            outcomes.push_back(outcome);
        }
    }
    if (request.oneProcess && request.select != nullptr) {
        request.select(nullptr);
    }
    if (cases == 0 && outcomes.back().refused) {
        throw UsageError("this machine cannot run any of the targets");
    }
    if (cases == 0) {
        throw UsageError("there is no case " + std::to_string(request.onlyCase));
    }
    Say(options.text, TextSummary(request, outcomes));
    if (!notFar.empty()) {
        Say(options.text, request.name + ": " + notFar + "\n");
    }
    Say(junit.get(), JUnitXml(request, outcomes));
    if (junit != nullptr && std::ferror(junit.get()) != 0) {
        throw UsageError(std::string("cannot write ") + options.junitPath);
    }
    return same ? KOR_CONFORMANCE_SAME : KOR_CONFORMANCE_DIFFERS;
}

// ---- The command line --------------------------------------------------------------------------------------------

std::string Usage(const std::string& program, const std::string& name) {
    return "usage: " + program +
           " [OPTION]...\n"
           "Holds \"" +
           name +
           "\" against what is expected: every byte of every plane, and every random draw.\n"
           "\n"
           "  --function NAME   try this function only, named with or without its suffix; may be repeated\n"
           "  --quick           fewer sizes, about a tenth of the time\n"
           "  --seed N          where contents and draws come from, 1 to 2^64 - 1, or \"random\"; the usual one is " +
           std::to_string(KOR_CONFORMANCE_USUAL_SEED) +
           "\n"
           "  --random N        try N random cases of each function; their seed is drawn unless --seed gives it\n"
           "  --case N          try only case N of each function, as a report numbers it\n"
           "  --target NAME     try this processor target only, \"automatic\" for the automatic choice; may be "
           "repeated\n"
           "  --time-limit N    a call that takes more than N seconds never returns; 10 unless this machine is slow\n"
           "  --no-fork         try all functions in this process, for a debugger\n"
           "  --junit FILE      also write the results to FILE as JUnit XML\n"
           "  --list            print the names of all functions and whether the table has them\n"
           "  --help            print this\n"
           "\n"
           "Exit status: 0 no difference, 1 a function differs, 2 wrong usage or nothing could be tried.\n";
}

std::uint64_t ParseNumber(const char* option, const char* text) {
    char* end = nullptr;
    errno = 0;
    const std::uint64_t number = std::strtoull(text, &end, 10);
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || number == 0) {
        throw UsageError(std::string(option) + " takes a number from 1 on, not \"" + text + "\"");
    }
    return number;
}

std::uint64_t ParseSeed(const char* text) {
    if (std::strcmp(text, "random") == 0) {
        return DrawSeed();
    }
    return ParseNumber("--seed", text);
}

std::string List(const KorConformanceTable& table, const KorConformanceOptions& options) {
    std::string text;
    for (const Entry& entry : Catalogue()) {
        text += std::string(entry.name) + (IsNull(entry.of(table)) ? "  (not in the table)" : "") + "\n";
    }
    for (const Target& target : ListTargets(options.listTargets)) {
        text += TextHeading(target);
    }
    return text;
}

// Runs what the command line asks for; returns nothing after a wrong option, of which getopt has told.
std::optional<int> RunCommandLine(int argc, char** argv, const KorConformanceTable& table,
                                  KorConformanceOptions& options) {
    // clang-format off
    const option known[] = {
        {"function",   required_argument, nullptr, 'f'},
        {"quick",      no_argument,       nullptr, 'q'},
        {"seed",       required_argument, nullptr, 's'},
        {"case",       required_argument, nullptr, 'c'},
        {"random",     required_argument, nullptr, 'r'},
        {"target",     required_argument, nullptr, 't'},
        {"time-limit", required_argument, nullptr, 'w'},
        {"no-fork",    no_argument,       nullptr, 'n'},
        {"junit",      required_argument, nullptr, 'j'},
        {"list",       no_argument,       nullptr, 'l'},
        {"help",       no_argument,       nullptr, 'h'},
        {nullptr,      0,                 nullptr, 0},
    };
    // clang-format on
    std::vector<const char*> functions;
    std::vector<const char*> targets;
    optind = 1;
    for (int found = 0; (found = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (found) {
            case 'f':
                functions.push_back(optarg);
                break;
            case 'q':
                options.quick = 1;
                break;
            case 's':
                options.seed = ParseSeed(optarg);
                break;
            case 'r':
                options.randomCases = static_cast<size_t>(ParseNumber("--random", optarg));
                break;
            case 'c':
                options.caseNumber = static_cast<size_t>(ParseNumber("--case", optarg));
                break;
            case 't':
                targets.push_back(optarg);
                break;
            case 'w':
                options.timeLimit = static_cast<size_t>(ParseNumber("--time-limit", optarg));
                break;
            case 'n':
                options.oneProcess = 1;
                break;
            case 'j':
                options.junitPath = optarg;
                break;
            case 'l':
                Say(stdout, List(table, options));
                return KOR_CONFORMANCE_SAME;
            case 'h':
                Say(stdout, Usage(options.programName, options.name));
                return KOR_CONFORMANCE_SAME;
            default:
                return std::nullopt;
        }
    }
    if (optind < argc) {
        throw UsageError(std::string("unexpected argument '") + argv[optind] + "'");
    }
    if (!functions.empty()) {
        options.functions = functions.data();
        options.functionCount = functions.size();
    }
    if (!targets.empty()) {
        options.targets = targets.data();
        options.targetCount = targets.size();
    }
    return Run(table, options);
}

}  // namespace

}  // namespace kit

KorConformanceStatus KorConformanceRun(const KorConformanceTable* table, const KorConformanceOptions* options) {
    const KorConformanceOptions defaults = {};
    const KorConformanceOptions& chosen = options == nullptr ? defaults : *options;
    try {
        return kit::Run(*table, chosen);
    } catch (const std::exception& error) {
        kit::Say(chosen.text, std::string(error.what()) + "\n");
        return KOR_CONFORMANCE_USAGE;
    }
}

int KorConformanceMain(int argc, char** argv, const char* name, const KorConformanceTable* table,
                       const KorConformanceTable* model) {
    return KorConformanceMainWithTargets(argc, argv, name, table, model, nullptr, nullptr);
}

int KorConformanceMainWithTargets(int argc, char** argv, const char* name, const KorConformanceTable* table,
                                  const KorConformanceTable* model, KorConformanceListTargets list,
                                  KorConformanceSelectTarget select) {
    KorConformanceOptions options = {};
    options.name = name == nullptr ? "variant" : name;
    options.model = model;
    options.listTargets = list;
    options.selectTarget = select;
    options.text = stdout;
    options.programName = argc > 0 ? argv[0] : "PROGRAM";
    try {
        const std::optional<int> status = kit::RunCommandLine(argc, argv, *table, options);
        if (status) {
            return *status;
        }
    } catch (const std::exception& error) {
        kit::Say(stderr, std::string(options.programName) + ": " + error.what() + "\n");
    }
    kit::Say(stderr, "see " + std::string(options.programName) + " --help\n");
    return KOR_CONFORMANCE_USAGE;
}
