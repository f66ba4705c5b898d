#include "io/OutputFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "io/Errors.h"
#include "io/Numbers.h"

namespace korframe {

namespace {

// Written at a time. A frame in one piece is a little faster at best and several times slower in the median (1080p on
// ext4): the page cache then looks for large runs of free memory.
constexpr std::size_t kPiece = std::size_t{1} << 17;

// A pipe that holds more than its usual 64 KiB lets the two programs run beside each other. Systems allow every user
// this.
constexpr int kPipeBytes = 1 << 20;

// A file that will be flushed before it replaces another goes to the disk in parts of this size while it is being made.
constexpr std::size_t kWriteBehind = std::size_t{8} << 20;

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// The path of the temporary file, within reach of the signal handler; empty if there is none. At most one exists at a
// time.
char pendingTemporary[PATH_MAX];

// Held while that and the file change. The handler runs on the main thread and others may write; who holds this blocks
// the signals, so the handler never waits for the thread that it interrupts.
std::atomic_flag filesChange = ATOMIC_FLAG_INIT;

void HoldFiles() {
    while (filesChange.test_and_set(std::memory_order_acquire)) {
    }
}

sigset_t HandledSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) {
        sigaddset(&set, signal);
    }
    return set;
}

extern "C" void RemoveTemporaryAndDie(int signal) {
    HoldFiles();
    if (pendingTemporary[0] != '\0') {
        unlink(pendingTemporary);
    }
    if (IsLineOpen()) {
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, "\n", 1);
    }
    // SA_RESETHAND has restored the default action, which the signal takes once we return.
    raise(signal);
}

// Some file systems have nothing to flush.
bool IsUnsupported(int error) {
    return error == EINVAL || error == EROFS || error == ENOSYS || error == ENOTSUP;
}

mode_t ModeOfNewFiles() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

std::string DirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// The target of a symbolic link, relative to where the link lies.
std::string TargetOf(const std::string& link) {
    char target[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    if (length <= 0) {
        return link;
    }
    const std::string name(target, static_cast<std::size_t>(length));
    return name[0] == '/' ? name : DirectoryOf(link) + name;
}

// The descriptor that a path such as /dev/stdout or /dev/fd/3 stands for, or -1. Opening such a path anew would lose
// its position, and a file behind it would be replaced under the feet of whoever opened it.
int DescriptorNamed(const std::string& path) {
    if (path == "-" || path == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    if (path == "/dev/stderr") {
        return STDERR_FILENO;
    }
    for (const std::string directory : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.compare(0, directory.size(), directory) == 0) {
            const std::optional<unsigned long long> number = ParseNumber(path.substr(directory.size()));
            return number && *number <= INT_MAX ? static_cast<int>(*number) : -1;
        }
    }
    return -1;
}

// Follows symbolic links to what the last one names, whether that exists or not.
std::string Resolve(std::string path) {
    constexpr int kMostLinks = 40;
    struct stat status = {};
    for (int links = 0; links < kMostLinks && DescriptorNamed(path) < 0; ++links) {
        if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            break;
        }
        path = TargetOf(path);
    }
    return path;
}

// ---- Temporary files ----

const char* const kTemporaryPrefix = ".korframe-";
const char* const kTemporarySuffix = ".tmp";
constexpr std::size_t kRandomLetters = 6;

std::string TemporaryPattern(const std::string& directory) {
    return directory + kTemporaryPrefix + std::string(kRandomLetters, 'X') + kTemporarySuffix;
}

bool IsTemporaryName(const std::string& name) {
    const std::size_t prefix = std::strlen(kTemporaryPrefix);
    const std::size_t suffix = std::strlen(kTemporarySuffix);
    return name.size() == prefix + kRandomLetters + suffix && name.compare(0, prefix, kTemporaryPrefix) == 0 &&
           name.compare(prefix + kRandomLetters, suffix, kTemporarySuffix) == 0;
}

bool IsSameFile(int descriptor, const std::string& path) {
    struct stat open = {};
    struct stat named = {};
    return fstat(descriptor, &open) == 0 && lstat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

// Removes a temporary file of this user unless a living process holds its lock.
void RemoveIfAbandoned(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid()) {
        return;
    }
    const int descriptor = open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    // By the time the lock is ours, its owner may have given the file its final name and another may have this one.
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && IsSameFile(descriptor, path)) {
        unlink(path.c_str());
    }
    close(descriptor);
}

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

void RemoveAbandonedIn(const std::string& directory) {
    static std::string last;
    if (directory == last) {
        return;  // numbered pictures come here once each
    }
    last = directory;
    const std::unique_ptr<DIR, CloseDirectory> entries(opendir(directory.c_str()));
    if (!entries) {
        return;
    }
    while (const dirent* entry = readdir(entries.get())) {
        if (IsTemporaryName(entry->d_name)) {
            RemoveIfAbandoned(directory + entry->d_name);
        }
    }
}

// ---- Partial results ----

// "clip.y4m" becomes "clip.partial.y4m", then "clip.partial-2.y4m".
std::string PartialName(const std::string& path, unsigned number) {
    const std::size_t directory = DirectoryOf(path).size();
    const std::size_t begin = path.find('/') == std::string::npos ? 0 : directory;
    const std::size_t dot = path.rfind('.');
    const std::size_t end = dot == std::string::npos || dot <= begin ? path.size() : dot;
    return path.substr(0, end) + ".partial" + (number > 1 ? "-" + std::to_string(number) : "") + path.substr(end);
}

}  // namespace

BlockSignals::BlockSignals() {
    const sigset_t set = HandledSignals();
    pthread_sigmask(SIG_BLOCK, &set, &before_);
    HoldFiles();
}

BlockSignals::~BlockSignals() {
    filesChange.clear(std::memory_order_release);
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

bool IsStandardOutput(const std::string& path) {
    return DescriptorNamed(Resolve(path)) == STDOUT_FILENO;
}

std::string NameOfOutput(const std::string& path) {
    return IsStandardOutput(path) ? "standard output" : path;
}

OutputFile::OutputFile(const std::string& path, const OutputPolicy& policy)
    : name_(NameOfOutput(path)), path_(Resolve(path)), policy_(policy), isStandardOutput_(IsStandardOutput(path)) {
    if (isStandardOutput_) {
        if (isatty(STDOUT_FILENO) == 1 && !policy.force) {
            FailUsage("standard output: is a terminal; expected a file or a pipe, or add --force");
        }
        descriptor_ = STDOUT_FILENO;
        fcntl(descriptor_, F_SETPIPE_SZ, kPipeBytes);  // nothing is lost where it is no pipe
        return;
    }
    if (const int named = DescriptorNamed(path_); named >= 0) {
        descriptor_ = fcntl(named, F_DUPFD_CLOEXEC, 0);
        if (descriptor_ < 0) {
            Fail("cannot be opened");
        }
        return;
    }
    OpenPath();
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

void OutputFile::OpenPath() {
    struct stat status = {};
    replaces_ = stat(path_.c_str(), &status) == 0;
    if (replaces_ && S_ISDIR(status.st_mode)) {
        FailFile(name_, "is a directory; expected the name of a file");
    }
    if (replaces_ && !S_ISREG(status.st_mode)) {
        replaces_ = false;
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) {
            Fail("cannot be opened");
        }
        return;
    }
    // Root may write to any file, but a file that nobody may write to is protected all the same.
    const bool writable = (status.st_mode & 0222) != 0 && access(path_.c_str(), W_OK) == 0;
    if (replaces_ && !writable && !policy_.force) {
        FailFile(name_, "is read-only; expected another name, or add --force to replace it");
    }
    OpenTemporary();
    fchmod(descriptor_, replaces_ ? status.st_mode & 07777 : ModeOfNewFiles());
}

void OutputFile::OpenTemporary() {
    const std::string directory = DirectoryOf(path_);
    const std::string pattern = TemporaryPattern(directory);
    if (pattern.size() >= sizeof pendingTemporary) {
        errno = ENAMETOOLONG;
        Fail("cannot be created");
    }
    RemoveAbandonedIn(directory);
    while (!TryTemporary(pattern)) {
    }
}

// False if another run took the new file for an abandoned one before it was locked.
bool OutputFile::TryTemporary(const std::string& pattern) {
    const BlockSignals blocked;
    temporary_ = pattern;
    descriptor_ = mkstemps(temporary_.data(), static_cast<int>(std::strlen(kTemporarySuffix)));
    if (descriptor_ < 0) {
        temporary_.clear();
        Fail("cannot be created");
    }
    fcntl(descriptor_, F_SETFD, FD_CLOEXEC);
    // Where the file system has no locks, no other run gets one either.
    if (flock(descriptor_, LOCK_EX) == 0 && !IsSameFile(descriptor_, temporary_)) {
        close(descriptor_);
        descriptor_ = -1;
        temporary_.clear();
        return false;
    }
    lock_ = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    std::memcpy(pendingTemporary, temporary_.c_str(), temporary_.size() + 1);
    return true;
}

void OutputFile::RemoveTemporary() {
    if (!temporary_.empty()) {
        const BlockSignals blocked;
        unlink(temporary_.c_str());
        pendingTemporary[0] = '\0';
        temporary_.clear();
    }
    if (lock_ >= 0) {
        close(lock_);
        lock_ = -1;
    }
}

void OutputFile::Write(const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(descriptor_, next, std::min(count, kPiece));
        if (written < 0 && errno != EINTR) {
            Fail("cannot be written");
        }
        if (written > 0) {
            next += written;
            count -= static_cast<std::size_t>(written);
            unwritten_ += static_cast<std::size_t>(written);
        }
        if (replaces_ && unwritten_ >= kWriteBehind) {
            // Only a start, so that the flush has less to wait for; what fails here fails again there.
            sync_file_range(descriptor_, 0, 0, SYNC_FILE_RANGE_WRITE);
            unwritten_ = 0;
        }
    }
}

void OutputFile::Commit(Flush flush) {
    if (descriptor_ < 0 || isStandardOutput_) {
        return;
    }
    // After a system crash the name must not refer to a file whose bytes never reached the disk, if it had another.
    if (replaces_ && flush == Flush::Now && fsync(descriptor_) != 0 && !IsUnsupported(errno)) {
        Fail("cannot be written");
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
    RemoveTemporary();
}

// Creates an empty file under a name that nothing has.
std::string OutputFile::ReservePartialName() const {
    for (unsigned number = 1;; ++number) {
        const std::string name = PartialName(path_, number);
        const int reserved = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (reserved >= 0) {
            close(reserved);
            return name;
        }
        if (errno != EEXIST) {
            FailFile(name, std::string("cannot be created: ") + std::strerror(errno));
        }
    }
}

std::string OutputFile::CommitPartial() {
    if (temporary_.empty()) {
        Commit();
        return "";
    }
    if (!policy_.keepPartial) {
        path_ = ReservePartialName();
        name_ = path_;
        replaces_ = false;
    }
    Commit();
    return name_;
}

void FlushFileSystemOf(const std::string& path) {
    const int directory = open(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory < 0) {
        return;  // it can be written but not listed
    }
    const bool done = syncfs(directory) == 0;
    const int error = errno;
    close(directory);
    if (!done && !IsUnsupported(error)) {
        FailFile(path, std::string("cannot be written: ") + std::strerror(error));
    }
}

}  // namespace korframe
