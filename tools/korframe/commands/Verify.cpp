// korframe verify: checks the library that this program runs with against the digests of its version.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands/Commands.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "conformance/digest/Manifest.h"
#include "io/Errors.h"
#include "io/InputFile.h"
#include "pipeline/Random.h"

namespace korframe {

namespace {

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
    std::vector<kit::Digest> digests = kit::MakeDigests(*KorConformancePortable());
    ServeRandomFrom(nullptr);
    return digests;
}

void RunVerify(const std::string& manifest) {
    const std::vector<kit::Digest> expected = LoadManifest(manifest);
    const std::vector<kit::Digest> found = MakeDigestsHere();
    const std::vector<std::string> differences = kit::CompareDigests(expected, found);
    for (const std::string& difference : differences) {
        std::printf("%s\n", difference.c_str());
    }
    if (!differences.empty()) {
        throw Error(ExitStatus::Failure, std::to_string(differences.size()) + " of " + std::to_string(expected.size()) +
                                             " digests differ: the library does not write the bytes it should");
    }
    std::printf("%zu digests of %zu functions agree\n", found.size(), kit::CountFunctions(found));
}

}  // namespace

void AddVerify(CLI::App& app) {
    const auto manifest = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("verify", "Check that the library writes the promised bytes on this machine");
    command
        ->add_option("--manifest", *manifest,
                     "digests to compare with, a file or - for standard input; default: those of this version")
        ->type_name("FILE");
    command->footer(
        "Runs every function of the library with every option on a fixed set of small pictures and compares\n"
        "digests of all output with the digests of this version, which are the same for every compiler and\n"
        "machine. Prints one line if all agree. Otherwise it prints a line for each function and option that\n"
        "differs and exits with 1. A noise table other than the library's own shows as differences in the\n"
        "functions that dither.");
    command->callback([manifest] { RunVerify(*manifest); });
}

}  // namespace korframe
