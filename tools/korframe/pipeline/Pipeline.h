// From an input through a chain to an output. Frames are read in order, processed on several threads and written in
// order.
#ifndef KORFRAME_PIPELINE_H
#define KORFRAME_PIPELINE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "io/Open.h"
#include "pipeline/Overlay.h"
#include "pipeline/Step.h"

namespace korframe {

constexpr std::size_t kMaxJobs = 256;

// A part of each frame of the input; a size of 0x0 means all.
struct CropRequest {
    Size size;
    std::size_t x = 0;
    std::size_t y = 0;
};

// Frames of the input, counted from 1, both included.
struct FrameRange {
    std::uint64_t first = 1;
    std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
};

struct ChainRequest {
    InputRequest input;
    std::optional<bool> fullRange;  // --range; otherwise what the input says
    CropRequest crop;
    FrameRange frames;
    std::vector<Step> steps;
    std::vector<OverlayRequest> overlays;  // the Blend steps refer to them by index
    std::string output;
    OutputRequest to;
    OutputPolicy policy;
    std::string matrix;  // --matrix; empty for the default
    std::optional<std::uint64_t> seed;
    std::size_t jobs = 0;  // threads; 0 for one a processor
    bool verbose = false;
};

// If the input breaks off, the frames before the break are written before the error is reported.
void RunChain(const ChainRequest& request);

}  // namespace korframe

#endif
