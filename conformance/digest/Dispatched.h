// The dispatched functions and their targets, as this project's own programs use them. The library ignores a target
// that it cannot run; these programs refuse it.
#ifndef KOR_CONFORMANCE_DIGEST_DISPATCHED_H
#define KOR_CONFORMANCE_DIGEST_DISPATCHED_H

#include <functional>
#include <string>

#include "conformance/KorConformance.h"

namespace kit {

// The 38 functions without suffix, under the target that is selected when they are called.
const KorConformanceTable& DispatchedTable();

// Why a target cannot be selected, and which ones can: "unknown target 'avx'; expected avx2, sse4, ssse3 or portable".
// Returns to the automatic choice.
std::string ExplainTarget(const std::string& name);

// What is wrong with the target that KOR_TARGET names; empty if it is one, or there is none.
std::string ComplaintAboutEnvironment();

// Calls use(name) under every target that this machine can run and under the automatic choice, which it keeps, and
// skip(name) for every other target that was compiled in.
void ForEachTarget(const std::function<void(const std::string&)>& use,
                   const std::function<void(const std::string&)>& skip);

}  // namespace kit

#endif
