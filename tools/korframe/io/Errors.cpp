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

std::string Printable(std::string text) {
    bool afterC2 = false;  // the first byte of the control characters from U+0080 to U+009F
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::iscntrl(byte) != 0 || (afterC2 && byte >= 0x80 && byte <= 0x9f)) {
            c = '?';
        }
        afterC2 = byte == 0xc2;
    }
    return text;
}

void SayLine(const std::string& message) {
    std::fprintf(stderr, "korframe: %s\n", Printable(message).c_str());
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
