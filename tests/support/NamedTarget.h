// Of programs that try one target, which their one argument names.
#ifndef KOR_TESTS_SUPPORT_NAMED_TARGET_H
#define KOR_TESTS_SUPPORT_NAMED_TARGET_H

#include <cstdio>
#include <cstdlib>

#include "Kor/Video/Common/KorYuv420.h"

// Selects it, or ends the program: with 2 if none is named, and with 77, which CTest takes for skipped, if this machine
// or this build does not have it.
inline void SelectNamedTarget(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s TARGET\n", argv[0]);
        std::exit(2);
    }
    if (!KorYuv420SelectTarget(argv[1])) {
        std::printf("%s: not run; this machine or this build does not have it\n", argv[1]);
        std::exit(77);
    }
}

#endif
