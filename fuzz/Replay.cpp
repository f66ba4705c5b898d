// The plain main program of a fuzzer, for every compiler: tries stored inputs, or random ones.
//
//   FUZZER FILE|DIRECTORY...           each file once
//   FUZZER --random COUNT [SEED]       so many random inputs
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "conformance/core/Pattern.h"
#include "fuzz/Harness.h"

namespace {

// Long enough for every decision and a good many pixels.
constexpr std::size_t kLongest = 512;

// What is being tried, for the handler of a signal.
char current[4096] = "a random input";

void TellInput(int number) {
    std::fprintf(stderr, "\nfuzz: ended by signal %d at %s\n", number, current);
    signal(number, SIG_DFL);
    raise(number);
}

void Try(const std::vector<std::uint8_t>& input) {
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

bool TryFile(const char* path) {
    std::snprintf(current, sizeof current, "%s", path);
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0) {
        std::perror(path);
        return false;
    }
    std::vector<std::uint8_t> input(static_cast<std::size_t>(status.st_size));
    const ssize_t count = read(file, input.data(), input.size());
    close(file);
    if (count != status.st_size) {
        std::perror(path);
        return false;
    }
    Try(input);
    return true;
}

// The next entry; without one, errno tells the end (0) from a failure.
const dirent* NextEntry(DIR* directory) {
    errno = 0;
    return readdir(directory);
}

// The number of files tried; -1 after a failure.
long TryPath(const char* path) {
    DIR* const directory = opendir(path);
    if (directory == nullptr) {
        return TryFile(path) ? 1 : -1;
    }
    long tried = 0;
    bool good = true;
    while (const dirent* entry = NextEntry(directory)) {
        char name[4096];
        std::snprintf(name, sizeof name, "%s/%s", path, entry->d_name);
        if (entry->d_name[0] != '.') {
            good = good && TryFile(name);
            ++tried;
        }
    }
    if (errno != 0) {
        std::perror(path);
        good = false;
    }
    closedir(directory);
    return good ? tried : -1;
}

int TryRandom(unsigned long count, std::uint64_t seed) {
    kit::Noise noise(seed);
    std::vector<std::uint8_t> input;
    for (unsigned long i = 0; i < count; ++i) {
        input.resize(noise.Below(kLongest));
        kit::FillNoise(noise.Next(), input.data(), input.size());
        Try(input);
    }
    std::printf("%lu random inputs, seed %" PRIu64 "\n", count, seed);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    for (const int number : {SIGSEGV, SIGBUS, SIGABRT}) {
        struct sigaction former = {};
        if (sigaction(number, nullptr, &former) == 0 && former.sa_handler == SIG_DFL) {  // a sanitizer has its own
            signal(number, TellInput);
        }
    }
    if (argc >= 3 && std::strcmp(argv[1], "--random") == 0) {
        return TryRandom(std::strtoul(argv[2], nullptr, 10), argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 420);
    }
    long tried = 0;
    for (int i = 1; i < argc; ++i) {
        const long more = TryPath(argv[i]);
        if (more < 0) {
            return EXIT_FAILURE;
        }
        tried += more;
    }
    if (tried == 0) {
        std::fprintf(stderr, "%s: no inputs; name files or directories, or --random COUNT [SEED]\n", argv[0]);
        return EXIT_FAILURE;
    }
    std::printf("%ld stored inputs\n", tried);
    return EXIT_SUCCESS;
}
