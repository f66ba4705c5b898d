// Targets [EXPECTED]: what the three functions about targets promise. EXPECTED is the target that must be in use at
// first.
#include <cstdio>
#include <cstring>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace {

int failures = 0;

void Check(bool holds, const char* promise) {
    if (!holds) {
        std::fprintf(stderr, "not so: %s (target in use: %s)\n", promise, KorYuv420Target());
        ++failures;
    }
}

bool IsInUse(const char* name) {
    return std::strcmp(KorYuv420Target(), name) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        Check(IsInUse(argv[1]), "the first call chooses what is expected");
    }

    const KorSizeT count = KorYuv420Targets(nullptr, 0);
    std::vector<const char*> names(count + 1, "untouched");
    Check(KorYuv420Targets(names.data(), count + 1) == count,
          "the number of targets does not depend on the room for them");
    Check(std::strcmp(names[count], "untouched") == 0, "no more names are written than there are");
    Check(std::strcmp(names[count - 1], "portable") == 0, "the last target is the portable one");
    names.assign(count + 1, "untouched");
    KorYuv420Targets(names.data(), 1);
    Check(std::strcmp(names[count > 1 ? 1 : count], "untouched") == 0,
          "no more names are written than there is room for");
    KorYuv420Targets(names.data(), count);

    const char* best = nullptr;
    for (KorSizeT i = 0; i < count; ++i) {
        const char* const before = KorYuv420Target();
        if (KorYuv420SelectTarget(names[i])) {
            Check(IsInUse(names[i]), "a selected target is in use");
            best = best != nullptr ? best : names[i];
        } else {
            Check(IsInUse(before), "a target that cannot run changes nothing");
        }
    }
    Check(best != nullptr, "the portable target always runs");
    Check(!KorYuv420SelectTarget("no such target") && IsInUse("portable"), "an unknown name changes nothing");
    Check(!KorYuv420SelectTarget("") && IsInUse("portable"), "an empty name is unknown");
    Check(KorYuv420SelectTarget(nullptr) && IsInUse(best), "the automatic choice is the best that runs");
    std::printf("%s of %zu targets; %d failures\n", best, count, failures);
    return failures != 0;
}
