// How far a clip has come, on standard error if that is a terminal; else nothing is said. Pictures need none.
#ifndef KORFRAME_PROGRESS_H
#define KORFRAME_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

#include "Stream.h"

namespace korframe {

class Progress {
  public:
    explicit Progress(const StreamInfo& info);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::uint64_t frames);
    // Leaves a line with the number of frames, the time and the frames per second.
    void Finish(std::uint64_t frames);

  private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    bool lineBegun_ = false;
    std::optional<std::uint64_t> total_;
    Clock::time_point begin_;
    Clock::time_point shown_;
};

}  // namespace korframe

#endif
