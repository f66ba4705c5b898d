// Runs work so that a touch on an unmapped page, or another signal of the processor, ends the work and not the process.
#ifndef KOR_CONFORMANCE_KIT_FAULT_H
#define KOR_CONFORMANCE_KIT_FAULT_H

#include <signal.h>

#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

namespace kit {

struct Fault {
    const char* signal = "";
    std::uintptr_t address = 0;  // what was touched, or where the instruction stands
    bool memory = false;         // a touch on memory
};

// A stack for the handlers of this thread's signals, so that a thread that has used up its own can be caught. Leaves a
// stack that is there already.
class SignalStack {
  public:
    SignalStack();
    ~SignalStack();
    SignalStack(const SignalStack&) = delete;
    SignalStack& operator=(const SignalStack&) = delete;

  private:
    std::vector<char> memory_;
};

// Catches faults on every thread for as long as it lives; handlers that were there before come back afterwards.
class FaultCatcher {
  public:
    FaultCatcher();
    ~FaultCatcher();
    FaultCatcher(const FaultCatcher&) = delete;
    FaultCatcher& operator=(const FaultCatcher&) = delete;

    // Does the work and returns the fault that ended it, if one did. A fault leaves the work by a jump: no destructors
    // run, so the work must not need any. An exception that leaves the work is a fault too, SIGABRT.
    template <class Work>
    std::optional<Fault> Run(Work&& work) const {
        return Catch([](void* it) noexcept { (*static_cast<std::remove_reference_t<Work>*>(it))(); }, &work);
    }

  private:
    static std::optional<Fault> Catch(void (*run)(void*), void* work);

    SignalStack stack_;
    std::vector<struct sigaction> former_;
};

}  // namespace kit

#endif
