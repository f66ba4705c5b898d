#include "conformance/digest/DigestMain.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "conformance/digest/Dispatched.h"
#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace kit {

namespace {

constexpr const char* kUsage =
    "usage: kordigest                 makes the digests and prints the manifest\n"
    "       kordigest --check FILE    makes them and compares them with the manifest FILE\n"
    "       kordigest --write FILE    makes them and writes the manifest FILE\n";
constexpr const char* kUsageOfTargets =
    "Before these, of the dispatched functions:\n"
    "       --target NAME             of one target; by default of the one that KOR_TARGET names or the library "
    "chooses\n"
    "       --all-targets             of each in turn; only before --check\n";
constexpr const char* kUsageOfStatus =
    "Exit status: 0 success, 1 digests differ or a file cannot be read or written, 2 wrong usage.\n";

int Check(const std::vector<Digest>& found, const std::string& path, const std::string& title) {
    std::ifstream file(path);
    std::ostringstream text;
    if (!(text << file.rdbuf())) {
        throw std::runtime_error("cannot read it, or it is empty");
    }
    const std::vector<std::string> differences = CompareDigests(ReadManifest(text.str()), found);
    for (const std::string& difference : differences) {
        std::cout << title << difference << "\n";
    }
    if (!differences.empty()) {
        std::cout << title << differences.size() << " digests differ from " << path << "\n";
        return 1;
    }
    std::cout << title << found.size() << " digests of " << CountFunctions(found) << " functions agree with " << path
              << "\n";
    return 0;
}

void Write(const std::vector<Digest>& digests, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << WriteManifest(digests) << std::flush)) {
        throw std::runtime_error("cannot write it");
    }
}

// One run of the program, after the options for targets. Results begin with the title.
int Run(int argc, char** argv, const KorConformanceTable& table, const std::string& title, const std::string& usage) {
    const std::string option = argc > 1 ? argv[1] : "";
    if (option == "--help" && argc == 2) {
        std::cout << usage;
        return 0;
    }
    if (argc != 1 && !(argc == 3 && (option == "--check" || option == "--write"))) {
        std::cerr << usage;
        return 2;
    }
    try {
        const std::vector<Digest> digests = MakeDigests(table);
        if (argc == 1) {
            std::cout << WriteManifest(digests);
        } else if (option == "--check") {
            return Check(digests, argv[2], title);
        } else {
            Write(digests, argv[2]);
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "kordigest: " << (argc == 3 ? std::string(argv[2]) + ": " : "") << error.what() << "\n";
        return 1;
    }
}

int Refuse(const std::string& message) {
    std::cerr << "kordigest: " << message << "\n";
    return 2;
}

}  // namespace

int DigestMain(int argc, char** argv, const KorConformanceTable& table) {
    return Run(argc, argv, table, "", std::string(kUsage) + kUsageOfStatus);
}

int DispatchedDigestMain(int argc, char** argv) {
    const std::string usage = std::string(kUsage) + kUsageOfTargets + kUsageOfStatus;
    const auto run = [&](const std::string& title) { return Run(argc, argv, DispatchedTable(), title + ": ", usage); };
    if (const std::string complaint = ComplaintAboutEnvironment(); !complaint.empty()) {
        return Refuse(complaint);
    }
    const std::string option = argc > 1 ? argv[1] : "";
    if (option == "--target" && argc > 2) {
        const char* const name = argv[2];
        if (!KorYuv420SelectTarget(name)) {
            return Refuse(ExplainTarget(name));
        }
        argc -= 2;
        argv += 2;
    } else if (option == "--all-targets" && argc == 4 && std::string(argv[2]) == "--check") {
        argc -= 1;
        argv += 1;
        int status = 0;
        ForEachTarget([&](const std::string& name) { status = std::max(status, run(name)); },
                      [](const std::string& name) { std::cout << name << ": not run; this machine cannot run it\n"; });
        return status;
    }
    return run(KorYuv420Target());
}

}  // namespace kit

// The service of this program, in place of the platform's.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    return kit::ScriptedRandom::Draw(buffer, count) ? 1 : 0;
}
