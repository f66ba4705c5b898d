// The processor targets among which a set chooses, as it names them to the kit.
#ifndef KOR_CONFORMANCE_KIT_TARGETS_H
#define KOR_CONFORMANCE_KIT_TARGETS_H

#include <string>
#include <vector>

#include "conformance/KorConformance.h"

namespace kit {

// A set without targets is tried as one target without a name.
struct Target {
    std::string name;
    const char* selection = nullptr;  // null: the automatic choice

    bool Named() const { return !name.empty(); }
};

// The name under which the automatic choice goes.
constexpr const char* kAutomatic = "automatic";

// All targets of the set in its order, and then the automatic choice.
std::vector<Target> ListTargets(KorConformanceListTargets list);

}  // namespace kit

#endif
