// Figures as JSON, for the scripts that draw and tabulate them, and for comparison with an older run.
#ifndef KOR_BENCH_RESULTS_H
#define KOR_BENCH_RESULTS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/Measure.h"

namespace bench {

class Results {
  public:
    void Add(const Case& subject, const Figure& figure);
    // The figure of a case at a size.
    std::optional<Figure> Find(const Case& subject, const FrameSize& size) const;

    // The note says what was measured. Both throw a std::runtime_error that names the file.
    void Write(const std::string& path, const std::string& note) const;
    static Results Read(const std::string& path);

  private:
    struct Entry {
        std::string family, function, option;
        bool isBrief;
        Figure figure;
    };
    std::vector<Entry> entries_;
};

}  // namespace bench

#endif
