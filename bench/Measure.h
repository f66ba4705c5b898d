// The measuring. A figure is the roofline ratio of a function: the time in which memcpy reads and writes, together, as
// many bytes as the function reads and writes, divided by the function's time. memcpy reads a byte for every byte that it
// writes, so it copies half of them. A function that did nothing but move its bytes would come to about 1.
#ifndef KOR_BENCH_MEASURE_H
#define KOR_BENCH_MEASURE_H

#include "bench/Cases.h"

namespace bench {

struct Figure {
    FrameSize size;
    // Read and written, together.
    double bytes;
    // Medians, for one call.
    double seconds;
    double memcpySeconds;
    // The distance of the quartiles of the function's time, relative to the median: how noisy the machine was.
    double spread;
    int rounds;

    double Roofline() const { return memcpySeconds / seconds; }
    double PixelsPerSecond() const { return size.Pixels() / seconds; }
};

// A figure takes at least so many rounds, and at least so long.
struct Effort {
    int rounds = 11;
    double seconds = 0.1;
};

Figure Measure(const Case& subject, FrameSize size, Effort effort);

}  // namespace bench

#endif
