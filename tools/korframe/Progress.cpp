#include "Progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

namespace korframe {

namespace {

constexpr std::chrono::milliseconds kBetweenShows(200);

const char* const kEraseLine = "\r\033[K";

}  // namespace

Progress::Progress(const StreamInfo& info)
    : enabled_(!info.picture && isatty(STDERR_FILENO) == 1),
      total_(info.frames),
      begin_(Clock::now()),
      shown_(begin_) {}

// What was begun must not stand before a message of another kind.
Progress::~Progress() {
    if (lineBegun_) {
        std::fputs(kEraseLine, stderr);
    }
}

void Progress::Show(std::uint64_t frames) {
    const Clock::time_point now = Clock::now();
    if (!enabled_ || now - shown_ < kBetweenShows) {
        return;
    }
    shown_ = now;
    lineBegun_ = true;
    const double rate = static_cast<double>(frames) / std::chrono::duration<double>(now - begin_).count();
    if (total_ && *total_ > 0) {
        std::fprintf(stderr, "%s%" PRIu64 " of %" PRIu64 " frames (%" PRIu64 " %%), %.1f frames/s", kEraseLine, frames,
                     *total_, frames * 100 / *total_, rate);
    } else {
        std::fprintf(stderr, "%s%" PRIu64 " frames, %.1f frames/s", kEraseLine, frames, rate);
    }
    std::fflush(stderr);
}

void Progress::Finish(std::uint64_t frames) {
    if (enabled_) {
        const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
        std::fprintf(stderr, "%s%" PRIu64 " frames in %.2f s, %.1f frames/s\n", kEraseLine, frames, seconds,
                     static_cast<double>(frames) / seconds);
        lineBegun_ = false;
    }
}

}  // namespace korframe
