#include "io/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "io/Errors.h"

namespace korframe {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The path of the temporary file, within reach of the signal handler; empty if there is none. At most one exists at a
// time.
char pendingTemporary[PATH_MAX];

sigset_t HandledSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) {
        sigaddset(&set, signal);
    }
    return set;
}

extern "C" void RemoveTemporaryAndDie(int signal) {
    if (pendingTemporary[0] != '\0') {
        unlink(pendingTemporary);
    }
    // SA_RESETHAND has restored the default action, which the signal takes once we return.
    raise(signal);
}

mode_t ModeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The path with links resolved, or the path itself if nothing is there yet.
std::string Resolve(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : path;
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

}  // namespace

BlockSignals::BlockSignals() {
    const sigset_t set = HandledSignals();
    pthread_sigmask(SIG_BLOCK, &set, &before_);
}

BlockSignals::~BlockSignals() {
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void RemoveTemporariesOnSignals() {
    for (const int signal : kSignals) {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) {
            continue;  // ignored from the start, as under nohup: leave it so
        }
        action = {};
        action.sa_handler = RemoveTemporaryAndDie;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        action.sa_mask = HandledSignals();
        sigaction(signal, &action, nullptr);
    }
    // A reader that goes away shows as a failed write, which unwinds through the destructors.
    std::signal(SIGPIPE, SIG_IGN);
    // So does a file that outgrows the user's limit.
    std::signal(SIGXFSZ, SIG_IGN);
}

OutputFile::OutputFile(const std::string& path)
    : name_(path == "-" ? "standard output" : path), path_(path), isStandardOutput_(path == "-") {
    if (isStandardOutput_) {
        descriptor_ = STDOUT_FILENO;
        return;
    }
    path_ = Resolve(path);
    struct stat status = {};
    const bool exists = stat(path_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        FailFile(name_, "is a directory; expected the name of a file");
    }
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) {
            Fail("cannot be opened");
        }
        return;
    }
    OpenTemporary();
    fchmod(descriptor_, exists ? status.st_mode & 07777 : ModeOfNewFiles());
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0 && !isStandardOutput_) {
        close(descriptor_);
    }
    RemoveTemporary();
}

void OutputFile::Fail(const std::string& action) const {
    FailFile(name_, action + ": " + std::strerror(errno));
}

void OutputFile::OpenTemporary() {
    std::string pattern = DirectoryOf(path_) + ".korframe-XXXXXX";
    if (pattern.size() >= sizeof pendingTemporary) {
        errno = ENAMETOOLONG;
        Fail("cannot be created");
    }
    const BlockSignals blocked;
    descriptor_ = mkstemp(pattern.data());
    if (descriptor_ < 0) {
        Fail("cannot be created");
    }
    temporary_ = pattern;
    std::memcpy(pendingTemporary, pattern.c_str(), pattern.size() + 1);
}

void OutputFile::RemoveTemporary() {
    if (!temporary_.empty()) {
        const BlockSignals blocked;
        unlink(temporary_.c_str());
        pendingTemporary[0] = '\0';
        temporary_.clear();
    }
}

void OutputFile::Write(const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(descriptor_, next, count);
        if (written < 0 && errno != EINTR) {
            Fail("cannot be written");
        }
        if (written > 0) {
            next += written;
            count -= static_cast<std::size_t>(written);
        }
    }
}

void OutputFile::Synchronize() const {
    const bool done = fsync(descriptor_) == 0;
    const bool isUnsupported = errno == EINVAL || errno == EROFS || errno == ENOSYS || errno == ENOTSUP;
    if (!done && !isUnsupported) {
        Fail("cannot be written");
    }
}

void OutputFile::Commit() {
    if (descriptor_ < 0 || isStandardOutput_) {
        return;
    }
    // After a system crash the name must not refer to a file whose bytes never reached the disk.
    if (!temporary_.empty()) {
        Synchronize();
    }
    const int closing = descriptor_;
    descriptor_ = -1;
    // Some file systems only report a full disk now.
    if (close(closing) != 0) {
        Fail("cannot be written");
    }
    if (!temporary_.empty()) {
        const BlockSignals blocked;
        if (rename(temporary_.c_str(), path_.c_str()) != 0) {
            Fail("cannot be renamed into place");
        }
        pendingTemporary[0] = '\0';
        temporary_.clear();
    }
}

}  // namespace korframe
