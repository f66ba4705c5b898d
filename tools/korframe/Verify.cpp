// korframe verify: holds the library that this program runs with to the digests that belong to its version.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "conformance/digest/Manifest.h"
#include "Errors.h"
#include "InputFile.h"
#include "Random.h"

namespace korframe {

namespace {

// The manifest of a file, or the one that was built in.
std::vector<kit::Digest> LoadManifest(const std::string& path) {
    if (path.empty()) {
        return kit::ReadManifest(kit::kDigestManifest);
    }
    InputFile file(path);
    const std::vector<std::uint8_t> bytes = file.ReadAll();
    try {
        return kit::ReadManifest(std::string(bytes.begin(), bytes.end()));
    } catch (const std::runtime_error& error) {
        FailFile(file.Name(), error.what());
    }
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
        throw Error(ExitStatus::Failure, std::to_string(differences.size()) + " of " +
                                             std::to_string(expected.size()) +
                                             " digests differ: the library does not write the bytes that it should");
    }
    std::printf("%zu digests of %zu functions agree\n", found.size(), kit::CountFunctions(found));
}

}  // namespace

void AddVerify(CLI::App& app) {
    const auto manifest = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("verify", "Checks that the library writes the promised bytes on this machine");
    command
        ->add_option("--manifest", *manifest,
                     "digests to compare with, a file or - for standard input; those of this version by default")
        ->type_name("FILE");
    command->footer(
        "Runs every function of the library with every option over a fixed set of small pictures, and compares digests "
        "of\n"
        "all that was written with the digests that belong to this version. They are the same from every compiler and "
        "on\n"
        "every machine. Prints one line when all agree, else one line for each function and option that differs, and "
        "ends\n"
        "with 1. A noise table other than the library's own shows as differences of the functions that dither.");
    command->callback([manifest] { RunVerify(*manifest); });
}

}  // namespace korframe
