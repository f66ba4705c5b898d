// An output that appears under its name only when it is complete.
//
// It is written under a temporary name in the same directory, .korframe-XXXXXX.tmp, and Commit renames it. Without
// Commit, and on SIGINT, SIGTERM and SIGHUP, the temporary file is removed and any previous file remains. A file can
// therefore be its own output: it is read to the end before it is replaced. Standard output ("-", /dev/stdout) and
// anything but a regular file (a device, a named pipe) cannot be renamed into place and are written directly.
//
// A process that is killed leaves its temporary file behind. It held a lock on it, so a later run that writes to the
// same directory sees that nobody owns the file any more and removes it.
#ifndef KORFRAME_OUTPUTFILE_H
#define KORFRAME_OUTPUTFILE_H

#include <csignal>
#include <cstddef>
#include <string>

namespace korframe {

// What the user allows beyond what is safe.
struct OutputPolicy {
    bool force = false;        // replace a read-only file, write frames to a terminal
    bool keepPartial = false;  // put what there is of an incomplete output under its name
};

// Whether a path means the standard output, under any of its names.
bool IsStandardOutput(const std::string& path);
// As messages name it.
std::string NameOfOutput(const std::string& path);

class OutputFile {
  public:
    OutputFile(const std::string& path, const OutputPolicy& policy);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const void* bytes, std::size_t count);

    // Before a file is replaced, the new one is flushed to the disk, unless the caller does that for many files at
    // once.
    enum class Flush { Now, Later };
    void Commit(Flush flush = Flush::Now);
    // Commits an incomplete output, under a name of its own unless the policy says otherwise. Returns the name, which
    // is empty for what is written directly.
    std::string CommitPartial();

    // Whether a file of that name was there before.
    bool Replaces() const { return replaces_; }

  private:
    [[noreturn]] void Fail(const std::string& action) const;
    void OpenPath();
    void OpenTemporary();
    bool TryTemporary(const std::string& pattern);
    std::string ReservePartialName() const;
    void RemoveTemporary();

    std::string name_;       // as messages name it
    std::string path_;       // with symbolic links resolved, so that the target is replaced and the link stays
    std::string temporary_;  // empty when written directly
    OutputPolicy policy_;
    bool isStandardOutput_;
    bool replaces_ = false;
    std::size_t unwritten_ = 0;  // bytes that the disk has not been asked for yet
    int descriptor_ = -1;
    int lock_ = -1;  // holds the lock until the file has its name
};

// Flushes all files of the file system that holds a path.
void FlushFileSystemOf(const std::string& path);

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
