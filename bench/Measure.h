// The measuring. A figure is the roofline ratio of a function: the time in which memcpy reads and writes, together, as
// many bytes as the function reads and writes, divided by the function's time. memcpy reads a byte for every byte that
// it writes, so it copies half of them. A function that did nothing but move its bytes would come to about 1.
#ifndef KOR_BENCH_MEASURE_H
#define KOR_BENCH_MEASURE_H

#include <array>
#include <cstddef>
#include <limits>

#include "bench/Cases.h"

namespace bench {

struct Figure {
    FrameSize size;
    // Read and written, together.
    double bytes;
    // The best of all rounds, for one call: what a busy machine takes away, it never gives back.
    double seconds;
    double memcpySeconds;
    // How well the ratio repeats: the rounds are dealt into three lots, and this is how far the ratios of the lots lie
    // apart, relative to the ratio of all.
    double spread;
    std::size_t rounds;

    double Roofline() const { return memcpySeconds / seconds; }
    double PixelsPerSecond() const { return size.Pixels() / seconds; }
};

// What was measured of a case at a size, perhaps in several passes. A round is one burst of the function and one of
// memcpy; rounds that follow each other form a run, and runs go to the lots in turn.
class Samples {
  public:
    void StartRun() { ++runs_; }
    void Add(double functionSeconds, double memcpySeconds);
    Figure Summary(FrameSize size, double bytes) const;

  private:
    struct Best {
        double function = std::numeric_limits<double>::infinity();
        double memcpy = std::numeric_limits<double>::infinity();
    };
    std::array<Best, 3> lots_;
    std::size_t runs_ = 0;
    std::size_t rounds_ = 0;
};

// A figure takes at least so many rounds, and at least so long, in so many runs.
struct Effort {
    int rounds = 11;
    double seconds = 0.1;
    int runs = 3;
};

// Measures, adds to the samples, and sums up what they are now.
Figure Measure(const Case& subject, FrameSize size, Effort effort, Samples& samples);

}  // namespace bench

#endif
