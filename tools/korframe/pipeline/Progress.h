// Shows the number of frames done on standard error, if that is a terminal and the work takes long; silent otherwise.
#ifndef KORFRAME_PROGRESS_H
#define KORFRAME_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "io/Stream.h"

namespace korframe {

class Progress {
  public:
    explicit Progress(const StreamInfo& info);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::uint64_t frames);
    // Leaves a line with the number of frames, the time and the rate.
    void Finish(std::uint64_t frames);

  private:
    bool enabled_;
    std::optional<std::uint64_t> total_;
    std::chrono::steady_clock::time_point begin_;
    std::chrono::steady_clock::time_point shown_;
};

}  // namespace korframe

#endif
