// The plain main program of a fuzzer, for every compiler: runs stored or random inputs.
//
//   FUZZER FILE...                     the content of each file
//   FUZZER --stored FILE...            each line of a file in fuzz/corpus
//   FUZZER --random COUNT [SEED]       COUNT random inputs
#include <signal.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "conformance/core/Pattern.h"
#include "fuzz/Harness.h"

namespace {

using Input = std::vector<std::uint8_t>;

// Long enough for all decisions and a fair number of pixels.
constexpr std::size_t kLongest = 512;

// The current input, for the signal handler.
char current[4096] = "a random input";

void TellInput(int number) {
    std::fprintf(stderr, "\nfuzz: ended by signal %d at %s\n", number, current);
    signal(number, SIG_DFL);
    raise(number);
}

void Try(const Input& input) {
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

// The whole file, through C's functions: MemorySanitizer does not see what the C++ library's compiled part writes.
bool Read(const char* path, Input& bytes) {
    std::FILE* const file = std::fopen(path, "rb");
    if (file == nullptr) {
        return false;
    }
    std::uint8_t piece[4096];
    for (std::size_t count = 0; (count = std::fread(piece, 1, sizeof piece, file)) > 0;) {
        bytes.insert(bytes.end(), piece, piece + count);
    }
    const bool complete = std::ferror(file) == 0;
    std::fclose(file);
    return complete;
}

// Reads bytes from hexadecimal digits. Returns whether the text is valid and holds at least one byte.
bool ParseLine(const Input& line, Input& input) {
    input.clear();
    for (std::size_t i = 0; i + 1 < line.size(); i += 2) {
        const char digits[3] = {static_cast<char>(line[i]), static_cast<char>(line[i + 1]), 0};
        char* end = nullptr;
        input.push_back(static_cast<std::uint8_t>(std::strtoul(digits, &end, 16)));
        if (end != digits + 2) {
            return false;
        }
    }
    return !line.empty() && line.size() % 2 == 0;
}

// These return the number of inputs tried, or 0 after reporting a failure.

long TryFile(const char* path) {
    Input input;
    if (!Read(path, input)) {
        std::perror(path);
        return 0;
    }
    std::snprintf(current, sizeof current, "%s", path);
    Try(input);
    return 1;
}

long TryStored(const char* path) {
    Input text;
    if (!Read(path, text)) {
        std::perror(path);
        return 0;
    }
    long tried = 0;
    Input input;
    for (auto begin = text.begin(); begin != text.end(); ++tried) {
        const auto end = std::find(begin, text.end(), '\n');
        std::snprintf(current, sizeof current, "%s:%ld", path, tried + 1);
        if (!ParseLine(Input(begin, end), input)) {
            std::fprintf(stderr, "%s: not an input in hexadecimal digits\n", current);
            return 0;
        }
        Try(input);
        begin = end == text.end() ? end : end + 1;
    }
    if (tried == 0) {
        std::fprintf(stderr, "%s: no inputs\n", path);
    }
    return tried;
}

int TryRandom(unsigned long count, std::uint64_t seed) {
    kit::Noise noise(seed);
    Input input;
    for (unsigned long i = 0; i < count; ++i) {
        input.resize(noise.Below(kLongest));
        kit::FillNoise(noise.Next(), input.data(), input.size());
        Try(input);
    }
    std::printf("%lu random inputs, seed %" PRIu64 "\n", count, seed);
    return EXIT_SUCCESS;
}

int TryFiles(char** paths, long (*tryOne)(const char*)) {
    long tried = 0;
    for (; *paths != nullptr; ++paths) {
        const long more = tryOne(*paths);
        if (more == 0) {
            return EXIT_FAILURE;
        }
        tried += more;
    }
    std::printf("%ld inputs\n", tried);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT}) {
        struct sigaction former = {};
        if (sigaction(number, nullptr, &former) == 0 && former.sa_handler == SIG_DFL) {  // sanitizers install their own
            signal(number, TellInput);
        }
    }
    if (argc >= 3 && std::strcmp(argv[1], "--random") == 0) {
        return TryRandom(std::strtoul(argv[2], nullptr, 10), argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 420);
    }
    if (argc >= 3 && std::strcmp(argv[1], "--stored") == 0) {
        return TryFiles(argv + 2, TryStored);
    }
    if (argc >= 2 && argv[1][0] != '-') {
        return TryFiles(argv + 1, TryFile);
    }
    std::fprintf(stderr, "usage: %s FILE... | --stored FILE... | --random COUNT [SEED]\n", argv[0]);
    return EXIT_FAILURE;
}
