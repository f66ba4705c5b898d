#include "pipeline/Progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "io/Errors.h"

namespace korframe {

namespace {

// Shorter work needs no progress display.
constexpr std::chrono::milliseconds kUntilShown(500);
constexpr std::chrono::milliseconds kBetweenUpdates(200);

// The narrowest terminal on which the line takes no second row.
constexpr std::size_t kColumns = 29;

const char* const kEraseLine = "\r\033[K";

std::string Rounded(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, rate < 10 ? "%.1f" : "%.0f", rate);
    return text;
}

// "1:02:03", or "2:03" if it is less than an hour.
std::string Clock(double seconds) {
    const auto whole = static_cast<unsigned long long>(std::llround(seconds));
    char text[64];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%llu:%02llu", whole / 60, whole % 60);
    }
    return text;
}

// Frames, of how many if that is known, frames a second and the time left, as far as there is room.
std::string ProgressLine(std::uint64_t frames, std::optional<std::uint64_t> total, double seconds) {
    const bool isTotalKnown = total && frames <= *total;  // a header may promise less than there is
    const double rate = static_cast<double>(frames) / seconds;
    std::string line = std::to_string(frames) + (isTotalKnown ? "/" + std::to_string(*total) : " frames");
    std::vector<std::string> more = {" " + Rounded(rate) + " fps"};
    if (isTotalKnown && rate > 0) {
        more.push_back(" " + Clock(static_cast<double>(*total - frames) / rate) + " left");
    }
    for (const std::string& part : more) {
        if (line.size() + part.size() <= kColumns) {
            line += part;
        }
    }
    return line;
}

}  // namespace

Progress::Progress(const StreamInfo& info)
    : enabled_(!info.picture && !SaysErrorsOnly() && isatty(STDERR_FILENO) == 1),
      total_(info.frames),
      begin_(std::chrono::steady_clock::now()),
      shown_(begin_) {}

// An unfinished line must not stand before a message.
Progress::~Progress() {
    if (IsLineOpen()) {
        std::fputs(kEraseLine, stderr);
        SetLineOpen(false);
    }
}

void Progress::Show(std::uint64_t frames) {
    const auto now = std::chrono::steady_clock::now();
    if (!enabled_ || now - begin_ < kUntilShown || (IsLineOpen() && now - shown_ < kBetweenUpdates)) {
        return;
    }
    shown_ = now;
    SetLineOpen(true);
    const std::string line = ProgressLine(frames, total_, std::chrono::duration<double>(now - begin_).count());
    std::fprintf(stderr, "%s%s", kEraseLine, line.c_str());
    std::fflush(stderr);
}

void Progress::Finish(std::uint64_t frames) {
    if (!IsLineOpen()) {
        return;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
    std::fprintf(stderr, "%s%" PRIu64 " frames in %s s, %s fps\n", kEraseLine, frames, Rounded(seconds).c_str(),
                 Rounded(static_cast<double>(frames) / seconds).c_str());
    SetLineOpen(false);
}

}  // namespace korframe
