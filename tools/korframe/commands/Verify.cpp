// korframe verify: checks the library that this program runs with against the digests of its version.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "conformance/digest/Dispatched.h"
#include "conformance/digest/Manifest.h"
#include "io/Errors.h"
#include "io/InputFile.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/Random.h"

namespace korframe {

namespace {

struct VerifyOptions {
    std::string manifest;
    bool allTargets = false;
};

constexpr std::size_t kLargestManifest = std::size_t{1} << 24;

// The manifest from a file, or the built-in one.
std::vector<kit::Digest> LoadManifest(const std::string& path) {
    if (path.empty()) {
        return kit::ReadManifest(kit::kDigestManifest);
    }
    InputFile file(path);
    const std::vector<std::uint8_t> bytes = file.ReadAll(kLargestManifest, "a manifest of digests");
    std::vector<kit::Digest> digests;
    try {
        digests = kit::ReadManifest(std::string(bytes.begin(), bytes.end()));
    } catch (const std::runtime_error& error) {
        FailFile(file.Name(), error.what());
    }
    if (digests.empty()) {
        FailFile(file.Name(), "has no digests; expected lines of a function, an option and 16 hexadecimal digits");
    }
    return digests;
}

std::vector<kit::Digest> MakeDigestsHere() {
    ServeRandomFrom(&kit::ScriptedRandom::Draw);
    std::vector<kit::Digest> digests = kit::MakeDigests(kit::DispatchedTable());
    ServeRandomFrom(nullptr);
    return digests;
}

// How many digests differ under the selected target.
std::size_t VerifyTarget(const std::string& target, const std::vector<kit::Digest>& expected) {
    const std::vector<kit::Digest> found = MakeDigestsHere();
    const std::vector<std::string> differences = kit::CompareDigests(expected, found);
    for (const std::string& difference : differences) {
        std::printf("%s: %s\n", target.c_str(), difference.c_str());
    }
    if (differences.empty()) {
        std::printf("%s: %zu digests of %zu functions agree\n", target.c_str(), found.size(),
                    kit::CountFunctions(found));
    }
    return differences.size();
}

void RunVerify(const VerifyOptions& options) {
    const std::vector<kit::Digest> expected = LoadManifest(options.manifest);
    std::size_t differences = 0;
    std::size_t targets = 0;
    const auto verify = [&](const std::string& target) {
        differences += VerifyTarget(target, expected);
        ++targets;
    };
    const auto skip = [](const std::string& target) {
        std::printf("%s: not run; this machine cannot run it\n", target.c_str());
    };
    if (options.allTargets) {
        kit::ForEachTarget(verify, skip);
    } else {
        verify(KorYuv420Target());
    }
    if (differences != 0) {
        throw Error(ExitStatus::Failure, std::to_string(differences) + " of " +
                                             std::to_string(targets * expected.size()) +
                                             " digests differ: the library does not write the bytes it should");
    }
}

}  // namespace

void AddVerify(CLI::App& app) {
    const auto options = std::make_shared<VerifyOptions>();
    CLI::App* command =
        app.add_subcommand("verify", "Check that the library writes the promised bytes on this machine");
    command
        ->add_option("--manifest", options->manifest,
                     "digests to compare with, a file or - for standard input; default: those of this version")
        ->type_name("FILE");
    command->add_flag("--all-targets", options->allTargets,
                      "check every target that this machine can run, and the automatic choice");
    command->footer(
        "Runs every function of the library with every option on a fixed set of small pictures and compares\n"
        "digests of all output with the digests of this version, which are the same for every compiler and\n"
        "machine. Prints one line for a target if all agree. Otherwise it prints a line for each function and\n"
        "option that differs and exits with 1. Targets that this machine cannot run are named. A noise table other "
        "than the library's own shows as differences in the\n"
        "functions that dither.");
    command->callback([options] { RunVerify(*options); });
}

}  // namespace korframe
