// Whatever goes wrong is thrown as an Error and printed once, as one line, by Main.cpp.
#ifndef KORFRAME_ERRORS_H
#define KORFRAME_ERRORS_H

#include <stdexcept>
#include <string>

namespace korframe {

enum class ExitStatus : int {
    Success = 0,
    Failure = 1,  // bad input, or reading or writing failed; from compare: the files differ
    Usage = 2     // the command line asks for the impossible; from compare: any error
};

class Error : public std::runtime_error {
  public:
    Error(ExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}
    ExitStatus Status() const { return status_; }

  private:
    ExitStatus status_;
};

// Ends the program with a status once everything has been printed.
struct Verdict {
    ExitStatus status;
};

extern const char* const kOutOfMemory;

// An input that breaks off. The frames before the break are good, and a writer keeps them before it reports the error.
class BrokenStream : public Error {
  public:
    explicit BrokenStream(const std::string& message) : Error(ExitStatus::Failure, message) {}
};

[[noreturn]] inline void FailFile(const std::string& file, const std::string& what) {
    throw Error(ExitStatus::Failure, file + ": " + what);
}

[[noreturn]] inline void FailUsage(const std::string& what) {
    throw Error(ExitStatus::Usage, what);
}

// Printed output may still be buffered; a full disk or a closed pipe only shows once it is written.
void FlushStandardOutput();

// Text from a file or a file name as a terminal may show it: control characters become question marks.
std::string Printable(std::string text);

// Prints one line to standard error, prefixed with the program's name.
void SayLine(const std::string& message);

// The same for what is no error, unless the user wants to hear of errors only.
void SayNote(const std::string& message);
void SayErrorsOnly();
bool SaysErrorsOnly();

// Whether a line on standard error waits for its end, which the program then owes it, whatever ends the program.
void SetLineOpen(bool isOpen);
bool IsLineOpen();

}  // namespace korframe

#endif
