#include "bench/Table.h"

namespace bench {

namespace {

constexpr int kFunctionWidth = 36;
constexpr int kOptionWidth = 22;

// Three significant digits.
std::string Milliseconds(double seconds) {
    const double value = 1000 * seconds;
    int decimals = 1;
    for (double limit = 10; value < limit && decimals < 6; limit /= 10) {
        ++decimals;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

// On a quiet machine figures repeat better than this.
const char* NoiseMark(const Figure& figure) {
    constexpr double kQuiet = 0.1;
    return figure.spread > kQuiet ? "~" : " ";
}

constexpr int CellWidth(Table::Columns columns) {
    switch (columns) {
        case Table::Columns::Full:
            return 28;
        case Table::Columns::Compared:
            return 36;
        default:
            return 16;
    }
}

}  // namespace

Table::Table(std::FILE* file, const std::vector<FrameSize>& sizes, Columns columns, bool withFloors)
    : file_(file), sizes_(sizes), columns_(columns), withFloors_(withFloors) {}

void Table::Head() {
    const int indent = kFunctionWidth + kOptionWidth + (withFloors_ ? 7 : 0);
    std::fprintf(file_, "%*s", indent, "");
    for (const FrameSize& size : sizes_) {
        std::fprintf(file_, "%*s", CellWidth(columns_), size.Label().c_str());
    }
    std::fprintf(file_, "\n%-*s%-*s%s", kFunctionWidth, "function", kOptionWidth, "option",
                 withFloors_ ? "  floor" : "");
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
        switch (columns_) {
            case Columns::Full:
                std::fprintf(file_, "%8s %9s%10s", "ratio", "ms", "Mpixel/s");
                break;
            case Columns::Compared:
                std::fprintf(file_, "%8s %8s %9s%9s", "before", "ratio", "ms", "faster");
                break;
            case Columns::Speed:
                std::fprintf(file_, "%16s", "Mpixel/s");
                break;
        }
    }
    std::fputc('\n', file_);
}

void Table::Row(const Case& subject, const std::vector<Cell>& cells, std::optional<double> floor) {
    if (family_.empty()) {
        Head();
    }
    if (family_ != subject.family) {
        family_ = subject.family;
        std::fprintf(file_, "\n%s\n", family_.c_str());
    }
    std::fprintf(file_, "%-*s%-*s", kFunctionWidth, subject.function.c_str(), kOptionWidth, subject.option.c_str());
    if (withFloors_) {
        floor ? std::fprintf(file_, "%7.3f", *floor) : std::fprintf(file_, "%7s", "");
    }
    for (const Cell& cell : cells) {
        switch (columns_) {
            case Columns::Full:
                std::fprintf(file_, "%8.3f%s%9s%10.0f", cell.now.Roofline(), NoiseMark(cell.now),
                             Milliseconds(cell.now.seconds).c_str(), cell.now.PixelsPerSecond() / 1e6);
                break;
            case Columns::Compared:
                if (cell.before) {
                    std::fprintf(file_, "%8.3f%s%8.3f%s%9s%8.2fx", cell.before->Roofline(), NoiseMark(*cell.before),
                                 cell.now.Roofline(), NoiseMark(cell.now), Milliseconds(cell.now.seconds).c_str(),
                                 cell.before->seconds / cell.now.seconds);
                } else {
                    std::fprintf(file_, "%8s %8.3f%s%9s%9s", "-", cell.now.Roofline(), NoiseMark(cell.now),
                                 Milliseconds(cell.now.seconds).c_str(), "-");
                }
                break;
            case Columns::Speed:
                std::fprintf(file_, "%16.0f", cell.now.PixelsPerSecond() / 1e6);
                break;
        }
    }
    std::fputc('\n', file_);
    std::fflush(file_);
}

void Table::Finish() {
    if (columns_ != Columns::Speed) {
        std::fputs(
            "\nratio: the time that memcpy takes to read and write as many bytes, divided by the function's time\n"
            "ms: the function's time for one frame; both are the best of many rounds, on one thread\n"
            "~: the machine was busy; parts of the measurement differ by more than a tenth\n",
            file_);
    }
    if (columns_ == Columns::Compared) {
        std::fputs("before, faster: the ratio of the older run, and its time divided by that of this one\n", file_);
    }
}

}  // namespace bench
