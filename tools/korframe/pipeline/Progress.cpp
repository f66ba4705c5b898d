#include "pipeline/Progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <string>

namespace korframe {

namespace {

// Shorter work needs no progress display.
constexpr std::chrono::milliseconds kUntilShown(500);
constexpr std::chrono::milliseconds kBetweenUpdates(200);

const char* const kEraseLine = "\r\033[K";

}  // namespace

Progress::Progress(const StreamInfo& info)
    : enabled_(!info.picture && isatty(STDERR_FILENO) == 1),
      total_(info.frames),
      begin_(Clock::now()),
      shown_(begin_) {}

// An unfinished line must not stand before a message.
Progress::~Progress() {
    if (showing_) {
        std::fputs(kEraseLine, stderr);
    }
}

void Progress::Show(std::uint64_t frames) {
    const Clock::time_point now = Clock::now();
    if (!enabled_ || now - begin_ < kUntilShown || (showing_ && now - shown_ < kBetweenUpdates)) {
        return;
    }
    shown_ = now;
    showing_ = true;
    const std::string of = total_ && frames <= *total_ ? " of " + std::to_string(*total_) : "";
    std::fprintf(stderr, "%s%" PRIu64 "%s frames, %.1f frames/s", kEraseLine, frames, of.c_str(),
                 static_cast<double>(frames) / std::chrono::duration<double>(now - begin_).count());
    std::fflush(stderr);
}

void Progress::Finish(std::uint64_t frames) {
    if (!showing_) {
        return;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
    std::fprintf(stderr, "%s%" PRIu64 " frames in %.2f s, %.1f frames/s\n", kEraseLine, frames, seconds,
                 static_cast<double>(frames) / seconds);
    showing_ = false;
}

}  // namespace korframe
