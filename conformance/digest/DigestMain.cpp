#include "conformance/digest/DigestMain.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "Kor/Os/KorRandom.h"

namespace kit {

namespace {

constexpr const char* kUsage =
    "usage: kordigest                 makes the digests and prints the manifest\n"
    "       kordigest --check FILE    makes them and compares them with the manifest FILE\n"
    "       kordigest --write FILE    makes them and writes the manifest FILE\n"
    "Exit status: 0 success, 1 digests differ or a file cannot be read or written, 2 wrong usage.\n";

int Check(const std::vector<Digest>& found, const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    if (!(text << file.rdbuf())) {
        throw std::runtime_error("cannot read it, or it is empty");
    }
    const std::vector<std::string> differences = CompareDigests(ReadManifest(text.str()), found);
    for (const std::string& difference : differences) {
        std::cout << difference << "\n";
    }
    if (!differences.empty()) {
        std::cout << differences.size() << " digests differ from " << path << "\n";
        return 1;
    }
    std::cout << found.size() << " digests of " << CountFunctions(found) << " functions agree with " << path << "\n";
    return 0;
}

void Write(const std::vector<Digest>& digests, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    if (!(file << WriteManifest(digests) << std::flush)) {
        throw std::runtime_error("cannot write it");
    }
}

}  // namespace

int DigestMain(int argc, char** argv, const KorConformanceTable& table) {
    const std::string option = argc > 1 ? argv[1] : "";
    if (option == "--help" && argc == 2) {
        std::cout << kUsage;
        return 0;
    }
    if (argc != 1 && !(argc == 3 && (option == "--check" || option == "--write"))) {
        std::cerr << kUsage;
        return 2;
    }
    try {
        const std::vector<Digest> digests = MakeDigests(table);
        if (argc == 1) {
            std::cout << WriteManifest(digests);
        } else if (option == "--check") {
            return Check(digests, argv[2]);
        } else {
            Write(digests, argv[2]);
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "kordigest: " << (argc == 3 ? std::string(argv[2]) + ": " : "") << error.what() << "\n";
        return 1;
    }
}

}  // namespace kit

// The service of this program, in place of the platform's.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    return kit::ScriptedRandom::Draw(buffer, count) ? 1 : 0;
}
