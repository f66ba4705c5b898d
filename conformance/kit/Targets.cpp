#include "conformance/kit/Targets.h"

namespace kit {

std::vector<Target> ListTargets(KorConformanceListTargets list) {
    if (list == nullptr) {
        return {Target{}};
    }
    std::vector<const char*> names(list(nullptr, 0));
    names.resize(list(names.data(), names.size()) < names.size() ? 0 : names.size());
    std::vector<Target> targets;
    targets.reserve(names.size() + 1);
    for (const char* name : names) {
        targets.push_back({name, name});
    }
    targets.push_back({kAutomatic, nullptr});
    return targets;
}

}  // namespace kit
