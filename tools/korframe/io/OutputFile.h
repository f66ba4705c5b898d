// An output that appears under its name only when it is complete.
//
// It is written under a temporary name in the same directory, and Commit renames it. Without Commit, and on SIGINT,
// SIGTERM and SIGHUP, the temporary file is removed and any previous file remains. A file can therefore be its own
// output: it is read to the end before it is replaced. Standard output ("-") and anything but a regular file (a device,
// a named pipe) cannot be renamed into place and are written directly.
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

    std::string name_;       // as messages name it
    std::string path_;       // with symbolic links resolved, so that the target is replaced and the link stays
    std::string temporary_;  // empty when written directly
    bool isStandardOutput_;
    int descriptor_ = -1;
};

// Blocks the signals that end the program in this thread and in those that it starts, so that a file and what the
// handler knows about it change together.
class BlockSignals {
  public:
    BlockSignals();
    ~BlockSignals();
    BlockSignals(const BlockSignals&) = delete;
    BlockSignals& operator=(const BlockSignals&) = delete;

  private:
    sigset_t before_;
};

// Has temporary files removed on signals. Call it once, before the first OutputFile.
void RemoveTemporariesOnSignals();

}  // namespace korframe

#endif
