// From an input through a chain to an output: frames are read in order, made on as many threads as are asked for, and
// written in order.
#ifndef KORFRAME_PIPELINE_H
#define KORFRAME_PIPELINE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Overlay.h"
#include "Step.h"
#include "Stream.h"

namespace korframe {

constexpr std::size_t kMostJobs = 256;

struct ChainRequest {
    InputRequest input;
    std::vector<Step> steps;
    std::vector<OverlayRequest> overlays;  // the Blend steps name them by their places here
    std::string output;
    std::string to;      // --to; empty where the name of the output tells
    std::string matrix;  // --matrix; empty for the default
    std::optional<unsigned long long> seed;
    std::size_t jobs = 1;
};

// Where the input breaks off, the frames before the break are written, and then the break is reported.
void RunChain(const ChainRequest& request);

}  // namespace korframe

#endif
