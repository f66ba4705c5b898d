#include "conformance/kit/CrashNote.h"

#include <signal.h>

#include <cstdio>

namespace kit {

namespace {

const char* currentFunction = nullptr;
const Case* currentCase = nullptr;
struct sigaction formerSegv;
struct sigaction formerBus;

// The process is about to die, so it may well allocate; the former handler gets the signal when the faulting
// instruction runs again.
void TellCase(int signalNumber) {
    if (currentCase != nullptr) {
        std::fprintf(stderr, "\nOutside of its planes: %s with %s\n", currentFunction, Describe(*currentCase).c_str());
        std::fflush(stderr);
    }
    sigaction(signalNumber, signalNumber == SIGSEGV ? &formerSegv : &formerBus, nullptr);
}

}  // namespace

CrashNote::CrashNote(const char* function, const Case& options) {
    currentFunction = function;
    currentCase = &options;
}

CrashNote::~CrashNote() {
    currentCase = nullptr;
}

void InstallCrashNote() {
    struct sigaction action = {};
    action.sa_handler = TellCase;
    sigaction(SIGSEGV, &action, &formerSegv);
    sigaction(SIGBUS, &action, &formerBus);
}

}  // namespace kit
