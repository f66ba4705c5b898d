// Calls a function so that a touch on an unmapped page, or another signal of the processor, ends the call and not the
// process.
#ifndef KOR_CONFORMANCE_KIT_FAULT_H
#define KOR_CONFORMANCE_KIT_FAULT_H

#include <signal.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "conformance/core/Functions.h"

namespace kit {

struct Fault {
    const char* signal = "";
    std::uintptr_t address = 0;  // what was touched, or where the instruction stands
    bool memory = false;         // a touch on memory
};

// Catches faults for as long as it lives; handlers that were there before come back afterwards.
class FaultCatcher {
  public:
    FaultCatcher();
    ~FaultCatcher();
    FaultCatcher(const FaultCatcher&) = delete;
    FaultCatcher& operator=(const FaultCatcher&) = delete;

    // Calls the function and tells the fault that ended the call, if one did.
    std::optional<Fault> Call(const AnyFunction& function, const PlaneView* planes, const Case& options) const;

  private:
    std::vector<struct sigaction> former_;
};

}  // namespace kit

#endif
