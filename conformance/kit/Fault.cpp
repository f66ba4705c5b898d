#include "conformance/kit/Fault.h"

#include <setjmp.h>

#include <cstddef>
#include <iterator>

#include "conformance/kit/ProcessorState.h"

namespace kit {

namespace {

struct Caught {
    int number;
    const char* name;
};

// A trap that a compiler put in raises SIGILL on x86 and SIGTRAP on AArch64. SIGABRT is what abort() and a failed
// assertion raise.
constexpr Caught kCaught[] = {{SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"},   {SIGILL, "SIGILL"}, {SIGTRAP, "SIGTRAP"},
                              {SIGFPE, "SIGFPE"},   {SIGABRT, "SIGABRT"}, {SIGSYS, "SIGSYS"}};

thread_local sigjmp_buf wayOut;
thread_local volatile sig_atomic_t calling = 0;
thread_local volatile sig_atomic_t signalNumber = 0;
thread_local void* volatile faultAddress = nullptr;

// A fault of anything but the work belongs to the program: the default action takes it when the instruction runs again.
void LeaveWork(int number, siginfo_t* info, void*) {
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

#if defined(__EMSCRIPTEN__)
// There are no signals: a fault is the end of the program.
SignalStack::SignalStack() = default;
SignalStack::~SignalStack() = default;
#else
SignalStack::SignalStack() {
    constexpr std::size_t kSignalStackBytes = std::size_t{1} << 16;
    stack_t present = {};
    if (sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE) != 0) {
        memory_.resize(kSignalStackBytes);
        stack_t stack = {};
        stack.ss_sp = memory_.data();
        stack.ss_size = memory_.size();
        sigaltstack(&stack, nullptr);
    }
}

SignalStack::~SignalStack() {
    if (!memory_.empty()) {
        stack_t none = {};
        none.ss_flags = SS_DISABLE;
        sigaltstack(&none, nullptr);
    }
}
#endif

FaultCatcher::FaultCatcher() : former_(std::size(kCaught)) {
    struct sigaction action = {};
    action.sa_sigaction = LeaveWork;
    // The handler does not return, so that the signal must not stay blocked.
    action.sa_flags = SA_SIGINFO | SA_NODEFER | SA_ONSTACK;
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
std::optional<Fault> FaultCatcher::Catch(void (*run)(void*), void* work) {
    if (sigsetjmp(wayOut, 0) == 0) {
        calling = 1;
        run(work);
        calling = 0;
        return std::nullopt;
    }
    ResetProcessor();
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
