// Figures as a readable table: a row for each case, a group of rows for each family.
#ifndef KOR_BENCH_TABLE_H
#define KOR_BENCH_TABLE_H

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "bench/Measure.h"

namespace bench {

class Table {
  public:
    enum class Columns {
        Full,      // ratio, time and speed
        Compared,  // ratio before and now, time, and how many times as fast
        Speed      // only pixels per second, for many sizes
    };

    Table(std::FILE* file, const std::vector<FrameSize>& sizes, Columns columns, bool withFloors);

    // The cells of a row: for each size a figure and, in a comparison, the older one.
    struct Cell {
        Figure now;
        std::optional<Figure> before;
    };
    void Row(const Case& subject, const std::vector<Cell>& cells, std::optional<double> floor = std::nullopt);
    // Explains the columns.
    void Finish();

  private:
    void Head();

    std::FILE* file_;
    std::vector<FrameSize> sizes_;
    Columns columns_;
    bool withFloors_;
    std::string family_;
};

}  // namespace bench

#endif
