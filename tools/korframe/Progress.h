// How far a clip has come, on standard error if that is a terminal and the work is long; else nothing is said. A bar
// where the number of frames is known, else their count.
#ifndef KORFRAME_PROGRESS_H
#define KORFRAME_PROGRESS_H

#include <boost/timer/progress_display.hpp>
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

    void ShowBar(std::uint64_t frames);
    void ShowCount(std::uint64_t frames);

    bool enabled_;
    std::optional<std::uint64_t> total_;
    Clock::time_point begin_;
    Clock::time_point shown_;
    std::optional<boost::timer::progress_display> bar_;
    bool counting_ = false;
};

}  // namespace korframe

#endif
