// The measuring. A figure is the roofline ratio of a function: the time in which memcpy reads and writes, together, as
// many bytes as the function reads and writes, divided by the function's time. memcpy reads a byte for every byte that it
// writes, so it copies half of them. A function that did nothing but move its bytes would come to about 1.
#ifndef KOR_BENCH_MEASURE_H
#define KOR_BENCH_MEASURE_H

#include <cstddef>
#include <vector>

#include "bench/Cases.h"

namespace bench {

struct Figure {
    FrameSize size;
    // Read and written, together.
    double bytes;
    // Medians, for one call.
    double seconds;
    double memcpySeconds;
    // The distance of the quartiles relative to the median, of the function's times or of memcpy's, whichever is more: how
    // much the machine was disturbed.
    double spread;
    std::size_t rounds;

    double Roofline() const { return memcpySeconds / seconds; }
    double PixelsPerSecond() const { return size.Pixels() / seconds; }
};

// What was measured of a case at a size, perhaps at several times. A round is one burst of the function and one of memcpy.
class Samples {
  public:
    void Add(double functionSeconds, double memcpySeconds);
    Figure Summary(FrameSize size, double bytes) const;

  private:
    std::vector<double> function_;
    std::vector<double> memcpy_;
};

// A figure takes at least so many rounds, and at least so long.
struct Effort {
    int rounds = 11;
    double seconds = 0.1;
};

// Measures, adds to the samples, and sums up what they are now.
Figure Measure(const Case& subject, FrameSize size, Effort effort, Samples& samples);

}  // namespace bench

#endif
