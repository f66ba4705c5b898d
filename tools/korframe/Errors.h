// What goes wrong is thrown as an Error and printed once, in Main.cpp, as one line.
#ifndef KORFRAME_ERRORS_H
#define KORFRAME_ERRORS_H

#include <stdexcept>
#include <string>

namespace korframe {

enum class ExitStatus : int {
    Success = 0,
    Failure = 1,  // bad input, or reading or writing failed; of a comparison: the files differ
    Usage = 2     // the command line asks for something that cannot be; of a comparison: any trouble
};

class Error : public std::runtime_error {
  public:
    Error(ExitStatus status, const std::string& message)
        : std::runtime_error(message), status_(status) {}
    ExitStatus Status() const { return status_; }

  private:
    ExitStatus status_;
};

// Ends the program with a status when all has been said.
struct Verdict {
    ExitStatus status;
};

extern const char* const kOutOfMemory;

// A stream that breaks off: the frames before the break are good, and a writer keeps them before it reports.
class BrokenStream : public Error {
  public:
    explicit BrokenStream(const std::string& message)
        : Error(ExitStatus::Failure, message) {}
};

[[noreturn]] inline void FailFile(const std::string& file, const std::string& what) {
    throw Error(ExitStatus::Failure, file + ": " + what);
}

[[noreturn]] inline void FailUsage(const std::string& what) {
    throw Error(ExitStatus::Usage, what);
}

// What was printed may still have to be written, and a full disk or a closed pipe shows only then.
void FlushStandardOutput();

// Says one line on standard error, after the program's name; control characters of file names become question marks.
void SayLine(const std::string& message);

}  // namespace korframe

#endif
