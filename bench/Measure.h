// The measurement. A figure is the roofline ratio of a function: the time that memcpy takes to read and write as many
// bytes as the function reads and writes, divided by the function's time. docs/performance.md explains it.
#ifndef KOR_BENCH_MEASURE_H
#define KOR_BENCH_MEASURE_H

#include <array>
#include <cstddef>
#include <limits>

#include "bench/Cases.h"

namespace bench {

struct Figure {
    FrameSize size;
    // Bytes read plus bytes written.
    double bytes;
    // The best of all rounds, per call: a busy machine can only make a call slower.
    double seconds;
    double memcpySeconds;
    // How well the ratio repeats: the rounds are dealt into three groups, and this is the distance between the ratios
    // of the groups, relative to the overall ratio.
    double spread;
    std::size_t rounds;

    double Roofline() const { return memcpySeconds / seconds; }
    double PixelsPerSecond() const { return size.Pixels() / seconds; }
};

// The measurements of a case at a size, possibly from several passes. A round is a burst of the function and one of
// memcpy; successive rounds form a run, and runs go to the groups in turn.
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

// The minimum number of rounds, the minimum time, and the number of runs of a figure.
struct Effort {
    int rounds = 11;
    double seconds = 0.1;
    int runs = 3;
};

// Measures, adds to the samples, and returns their summary.
Figure Measure(const Case& subject, FrameSize size, Effort effort, Samples& samples);

}  // namespace bench

#endif
