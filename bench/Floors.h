// Target ratios, from a file of lines: a ratio, then a pattern of labels. The first pattern that matches counts.
#ifndef KOR_BENCH_FLOORS_H
#define KOR_BENCH_FLOORS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace bench {

class Floors {
  public:
    Floors() = default;
    // Throws a std::runtime_error that names the file.
    explicit Floors(const std::string& path);

    std::optional<double> Find(const std::string& label) const;

  private:
    std::vector<std::pair<std::string, double>> floors_;
};

}  // namespace bench

#endif
