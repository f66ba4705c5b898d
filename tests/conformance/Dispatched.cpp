// The dispatched functions held against the portable ones, for one target. The name of the target, or "automatic", is the first
// argument; a target that this machine cannot run is said to be skipped, with the exit status 77, and so is one that was not built.
#include <cstdio>
#include <cstring>

#include "KorConformance.h"
#include "Kor/Video/Common/KorYuv420.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s TARGET [OPTION...]\n", argv[0]);
        return KOR_CONFORMANCE_USAGE;
    }
    const bool isAutomatic = std::strcmp(argv[1], "automatic") == 0;
    if (!KorYuv420SelectTarget(isAutomatic ? nullptr : argv[1])) {
        std::printf("%s: not run; this machine or this build does not have it\n", argv[1]);
        return 77;
    }
    const char* const target = KorYuv420Target();
    if (!isAutomatic && std::strcmp(target, argv[1]) != 0) {
        std::fprintf(stderr, "%s was selected, and the library names %s\n", argv[1], target);
        return KOR_CONFORMANCE_DIFFERS;
    }
    KorConformanceTable table = {};
#define KOR_FUNCTION(name, shape, family, frames) table.name = &name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    argv[1] = argv[0];
    return KorConformanceMain(argc - 1, argv + 1, target, &table, nullptr);
}
