#include "io/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "io/Errors.h"

namespace korframe {

namespace {

constexpr std::size_t kChunk = 65536;

}  // namespace

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      isStandardInput_(path == "-"),
      descriptor_(isStandardInput_ ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat status = {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
        FailFile(name_, std::string("cannot be opened: ") + std::strerror(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        FailFile(name_, "is a directory; expected a file, or - for standard input");
    }
    if (S_ISREG(status.st_mode)) {
        size_ = static_cast<std::uint64_t>(status.st_size);
    }
}

InputFile::~InputFile() {
    if (!isStandardInput_) {
        close(descriptor_);
    }
}

std::size_t InputFile::ReadSome(std::uint8_t* bytes, std::size_t count) {
    for (;;) {
        const ssize_t got = read(descriptor_, bytes, count);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR) {
            FailFile(name_, std::string("cannot be read: ") + std::strerror(errno));
        }
    }
}

// Appends the next bytes to the look-ahead; false at the end.
bool InputFile::Fill() {
    ahead_.erase(ahead_.begin(), ahead_.begin() + static_cast<std::ptrdiff_t>(aheadBegin_));
    aheadBegin_ = 0;
    const std::size_t old = ahead_.size();
    ahead_.resize(old + kChunk);
    const std::size_t got = ReadSome(ahead_.data() + old, kChunk);
    ahead_.resize(old + got);
    return got > 0;
}

std::string InputFile::Peek(std::size_t count) {
    while (ahead_.size() - aheadBegin_ < count && Fill()) {
    }
    const auto begin = ahead_.begin() + static_cast<std::ptrdiff_t>(aheadBegin_);
    return std::string(begin, begin + static_cast<std::ptrdiff_t>(std::min(count, ahead_.size() - aheadBegin_)));
}

const std::uint8_t* InputFile::AtHand(std::size_t& count) {
    if (aheadBegin_ == ahead_.size()) {
        Fill();
    }
    count = ahead_.size() - aheadBegin_;
    return ahead_.data() + aheadBegin_;
}

std::size_t InputFile::Read(std::uint8_t* bytes, std::size_t count) {
    std::size_t done = std::min(count, ahead_.size() - aheadBegin_);
    if (done > 0) {
        std::memcpy(bytes, ahead_.data() + aheadBegin_, done);
        aheadBegin_ += done;
    }
    while (done < count) {
        const std::size_t got = ReadSome(bytes + done, count - done);
        if (got == 0) {
            break;
        }
        done += got;
    }
    position_ += done;
    return done;
}

std::optional<std::string> InputFile::ReadLine(std::size_t limit) {
    for (std::size_t scanned = 0;;) {
        const auto begin = ahead_.begin() + static_cast<std::ptrdiff_t>(aheadBegin_);
        const auto end =
            std::find(begin + static_cast<std::ptrdiff_t>(scanned), ahead_.end(), static_cast<std::uint8_t>('\n'));
        scanned = static_cast<std::size_t>(end - begin);
        if (scanned > limit) {
            return std::nullopt;
        }
        if (end != ahead_.end()) {
            std::string line(begin, end);
            aheadBegin_ += scanned + 1;
            position_ += scanned + 1;
            return line;
        }
        if (!Fill()) {
            return std::nullopt;
        }
    }
}

void InputFile::SkipRest() {
    for (std::size_t count = 0; AtHand(count), count > 0;) {
        Consume(count);
    }
}

std::vector<std::uint8_t> InputFile::ReadAll(std::size_t limit, const std::string& expected) {
    while (Fill()) {
        if (ahead_.size() > limit) {
            FailFile(name_, "is larger than " + std::to_string(limit) + " bytes; expected " + expected);
        }
    }
    std::vector<std::uint8_t> all(ahead_.begin() + static_cast<std::ptrdiff_t>(aheadBegin_), ahead_.end());
    ahead_.clear();
    aheadBegin_ = 0;
    position_ += all.size();
    return all;
}

}  // namespace korframe
