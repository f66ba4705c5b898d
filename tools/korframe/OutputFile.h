// An output that appears under its name only when it is complete.
//
// It is written under a temporary name in the same directory and renamed by Commit. Without Commit, and on SIGINT,
// SIGTERM and SIGHUP, the temporary file is removed, and what stood under the name before is still there. Hence a file
// may also be its own output: it is read to the end before it is replaced. Standard output ("-") and what is no
// regular file (a device, a named pipe) cannot be renamed into place and are written directly.
#ifndef KORFRAME_OUTPUTFILE_H
#define KORFRAME_OUTPUTFILE_H

#include <csignal>
#include <cstddef>
#include <string>

namespace korframe {

class OutputFile {
  public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const void* bytes, std::size_t count);
    void Commit();

  private:
    [[noreturn]] void Fail(const std::string& action) const;
    void OpenTemporary();
    void Synchronize() const;
    void RemoveTemporary();

    std::string name_;       // as it stands in messages
    std::string path_;       // symbolic links followed, so that the link stays and its target is replaced
    std::string temporary_;  // empty when written directly
    bool isStandardOutput_;
    int descriptor_ = -1;
};

// Holds off the signals that end the program, for this thread and for those that it starts, so that a file and what the
// handler knows of it change as one.
class SignalsHeldOff {
  public:
    SignalsHeldOff();
    ~SignalsHeldOff();
    SignalsHeldOff(const SignalsHeldOff&) = delete;
    SignalsHeldOff& operator=(const SignalsHeldOff&) = delete;

  private:
    sigset_t before_;
};

// Sets up the removal of temporary files on signals. To be called once, before the first OutputFile.
void RemoveTemporariesOnSignals();

}  // namespace korframe

#endif
