#include "io/Errors.h"

#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace korframe {

namespace {

bool errorsOnly = false;
std::atomic<bool> lineOpen = false;  // a signal handler reads it

}  // namespace

const char* const kOutOfMemory = "not enough memory for frames of this size; use smaller ones";

void FlushStandardOutput() {
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        FailFile("standard output", std::string("cannot be written: ") + std::strerror(errno));
    }
}

void SayLine(const std::string& message) {
    std::string line = "korframe: " + message;
    for (char& c : line) {
        if (std::iscntrl(static_cast<unsigned char>(c)) != 0) {
            c = '?';
        }
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

void SayNote(const std::string& message) {
    if (!errorsOnly) {
        SayLine(message);
    }
}

void SayErrorsOnly() {
    errorsOnly = true;
}

bool SaysErrorsOnly() {
    return errorsOnly;
}

void SetLineOpen(bool isOpen) {
    lineOpen = isOpen;
}

bool IsLineOpen() {
    return lineOpen;
}

}  // namespace korframe
