// From an input through a chain to an output. Frames are read in order, processed on the requested number of threads
// and written in order.
#ifndef KORFRAME_PIPELINE_H
#define KORFRAME_PIPELINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "io/Open.h"
#include "pipeline/Overlay.h"
#include "pipeline/Step.h"

namespace korframe {

constexpr std::size_t kMaxJobs = 256;

struct ChainRequest {
    InputRequest input;
    std::vector<Step> steps;
    std::vector<OverlayRequest> overlays;  // the Blend steps refer to them by index
    std::string output;
    OutputRequest to;
    OutputPolicy policy;
    std::string matrix;  // --matrix; empty for the default
    std::optional<std::uint64_t> seed;
    std::size_t jobs = 1;
};

// If the input breaks off, the frames before the break are written before the error is reported.
void RunChain(const ChainRequest& request);

}  // namespace korframe

#endif
