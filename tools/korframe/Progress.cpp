#include "Progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <iostream>

namespace korframe {

namespace {

// Shorter work needs no progress.
constexpr std::chrono::milliseconds kUntilShown(500);
constexpr std::chrono::milliseconds kBetweenCounts(200);

const char* const kEraseLine = "\r\033[K";

}  // namespace

Progress::Progress(const StreamInfo& info)
    : enabled_(!info.picture && isatty(STDERR_FILENO) == 1), total_(info.frames), begin_(Clock::now()), shown_(begin_) {}

// What was begun must not stand before a message of another kind.
Progress::~Progress() {
    if (bar_) {
        std::fputs("\n", stderr);
    } else if (counting_) {
        std::fputs(kEraseLine, stderr);
    }
}

void Progress::Show(std::uint64_t frames) {
    if (!enabled_ || Clock::now() - begin_ < kUntilShown) {
        return;
    }
    if (total_) {
        ShowBar(frames);
    } else {
        ShowCount(frames);
    }
}

void Progress::ShowBar(std::uint64_t frames) {
    if (!bar_) {
        bar_.emplace(static_cast<unsigned long>(*total_), std::cerr, "", "", "");
    }
    const unsigned long most = bar_->expected_count();
    const auto done = static_cast<unsigned long>(frames);
    *bar_ += (done < most ? done : most) - bar_->count();
}

// Without an end that is known, a bar has no length.
void Progress::ShowCount(std::uint64_t frames) {
    const Clock::time_point now = Clock::now();
    if (counting_ && now - shown_ < kBetweenCounts) {
        return;
    }
    shown_ = now;
    counting_ = true;
    std::fprintf(stderr, "%s%" PRIu64 " frames, %.1f frames/s", kEraseLine, frames,
                 static_cast<double>(frames) / std::chrono::duration<double>(now - begin_).count());
    std::fflush(stderr);
}

void Progress::Finish(std::uint64_t frames) {
    if (!bar_ && !counting_) {
        return;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin_).count();
    std::fprintf(stderr, "%s%" PRIu64 " frames in %.2f s, %.1f frames/s\n", counting_ ? kEraseLine : "", frames, seconds,
                 static_cast<double>(frames) / seconds);
    bar_.reset();
    counting_ = false;
}

}  // namespace korframe
