#include "conformance/digest/Dispatched.h"

#include <cstdlib>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace kit {

namespace {

std::vector<const char*> TargetNames() {
    std::vector<const char*> names(KorYuv420Targets(nullptr, 0));
    KorYuv420Targets(names.data(), names.size());
    return names;
}

}  // namespace

const KorConformanceTable& DispatchedTable() {
    static const KorConformanceTable table = {
#define KOR_FUNCTION(name, shape, family, frames) &::name,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    return table;
}

std::string ExplainTarget(const std::string& name) {
    bool isKnown = false;
    std::string expected;
    for (const char* target : TargetNames()) {
        isKnown = isKnown || name == target;
        if (KorYuv420SelectTarget(target)) {
            expected += (expected.empty() ? "" : ", ") + std::string(target);
        }
    }
    KorYuv420SelectTarget(nullptr);
    // The last one is the portable target, which runs everywhere.
    if (const std::size_t comma = expected.rfind(", "); comma != std::string::npos) {
        expected.replace(comma, 2, " or ");
    }
    return (isKnown ? "this machine cannot run the target '" : "unknown target '") + name + "'; expected " + expected;
}

std::string ComplaintAboutEnvironment() {
    const char* const name = std::getenv("KOR_TARGET");
    const bool isFine = name == nullptr || *name == 0 || KorYuv420SelectTarget(name);
    return isFine ? "" : "KOR_TARGET: " + ExplainTarget(name);
}

void ForEachTarget(const std::function<void(const std::string&)>& use,
                   const std::function<void(const std::string&)>& skip) {
    for (const char* name : TargetNames()) {
        if (KorYuv420SelectTarget(name)) {
            use(name);
        } else {
            skip(name);
        }
    }
    KorYuv420SelectTarget(nullptr);
    use("automatic");
}

}  // namespace kit
