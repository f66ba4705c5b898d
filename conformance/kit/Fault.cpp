#include "conformance/kit/Fault.h"

#include <setjmp.h>

#include <cstddef>
#include <iterator>

namespace kit {

namespace {

struct Caught {
    int number;
    const char* name;
};

// A trap that a compiler put in raises SIGILL on x86 and SIGTRAP on AArch64.
constexpr Caught kCaught[] = {
    {SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"}, {SIGILL, "SIGILL"}, {SIGTRAP, "SIGTRAP"}, {SIGFPE, "SIGFPE"}};

sigjmp_buf wayOut;
volatile sig_atomic_t calling = 0;
volatile sig_atomic_t signalNumber = 0;
void* volatile faultAddress = nullptr;

// A fault of anything but the function under test belongs to the program: the default action takes it when the
// instruction runs again.
void LeaveCall(int number, siginfo_t* info, void*) {
    if (calling == 0) {
        signal(number, SIG_DFL);
        return;
    }
    calling = 0;
    signalNumber = number;
    faultAddress = info->si_addr;
    siglongjmp(wayOut, 1);
}

}  // namespace

FaultCatcher::FaultCatcher()
    : former_(std::size(kCaught)) {
    struct sigaction action = {};
    action.sa_sigaction = LeaveCall;
    // The handler does not return, so that the signal must not stay blocked.
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    for (std::size_t i = 0; i < former_.size(); ++i) {
        sigaction(kCaught[i].number, &action, &former_[i]);
    }
}

FaultCatcher::~FaultCatcher() {
    for (std::size_t i = 0; i < former_.size(); ++i) {
        sigaction(kCaught[i].number, &former_[i], nullptr);
    }
}

// Nothing between the jump and its target has a destructor.
std::optional<Fault> FaultCatcher::Call(const AnyFunction& function, const PlaneView* planes,
                                        const Case& options) const {
    if (sigsetjmp(wayOut, 0) == 0) {
        calling = 1;
        kit::Call(function, planes, options);
        calling = 0;
        return std::nullopt;
    }
    Fault fault;
    for (const Caught& caught : kCaught) {
        if (caught.number == signalNumber) {
            fault.signal = caught.name;
        }
    }
    fault.address = reinterpret_cast<std::uintptr_t>(faultAddress);
    fault.memory = signalNumber == SIGSEGV || signalNumber == SIGBUS;
    return fault;
}

}  // namespace kit
