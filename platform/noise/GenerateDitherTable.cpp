/*
 * Generates the table of dither noise, platform/KorTblDitherStd4.cpp.
 *
 *   GenerateDitherTable                prints the source file of the table
 *   GenerateDitherTable --check FILE   succeeds if FILE is, byte for byte, what would be printed
 *
 * The table is a ring of 16384 values. docs/noise.md explains its requirements; in short:
 *
 *   - The histogram is a bell with sum 0 and variance 16, both exact. It is fixed below; the search only orders it.
 *   - Along a row of pixels the noise has almost no energy at low frequencies, where the eye is sensitive: the
 *     autocorrelation at lags 1 to 7 is prescribed.
 *   - Everywhere else it is white. Rows of a picture lie 8 n entries apart, and n differs from width to width, so the
 *     autocorrelation at all multiples of 8 is driven to zero.
 *   - Strides of 512, 1024, 2048 and 4096 repeat the same noise after a few rows, which would draw vertical lines.
 *     Entries a quarter and a half of the table apart are negatively correlated, so that most of it cancels in a
 *     column.
 *   - The conversions use the values shifted right by 0 to 4 bits, and rounding adds noise of its own. So all of this
 *     is required of the five shifted tables together, not only of the values.
 *
 * The search starts from a shuffled table and repeatedly tries to swap two random entries; it keeps a swap that brings
 * the autocorrelations closer to their targets. All arithmetic is integer, and the random numbers are generated below,
 * so every compiler and every machine makes the same table.
 */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace {

constexpr int kSize = 16384;
constexpr int kMask = kSize - 1;

// ---- Requirements on the table ----

// How often a value occurs: entry e is the count of +e, and of -e. These are 16384 tosses of 64 coins (a binomial
// distribution of variance 16), rounded; 0, 8, 13 and 14 are a few counts off, to make size and variance exact.
constexpr std::array<int, 15> kCountOf = {1624, 1578, 1439, 1234, 994, 752, 534, 356, 225, 130, 71, 37, 17, 9, 4};

constexpr int SumOverHistogram(int power) {
    int sum = power == 0 ? kCountOf[0] : 0;
    for (int e = 1; e < static_cast<int>(kCountOf.size()); ++e)
        sum += 2 * kCountOf[static_cast<size_t>(e)] * (power == 0 ? 1 : e * e);
    return sum;
}
static_assert(SumOverHistogram(0) == kSize, "the histogram fills the table");
static_assert(SumOverHistogram(2) == 16 * kSize, "the standard deviation is exactly 4");

// The autocorrelation along a row, in thousandths of the variance; 0 at every lag beyond the last. Of all noise with so
// short a memory this has close to the least energy below 0.15 cycles per pixel (-25 dB), without a peak above: it is
// the mean spectrum of the four best eight-tap filters for that stop band (platform/noise/evidence.py derives it).
constexpr std::array<int, 8> kAlongRow = {1000, -551, -86, 125, 73, -42, -48, 30};
constexpr int kReach = static_cast<int>(kAlongRow.size()) - 1;

constexpr int AlongRow(int lag) {
    const int distance = lag < 0 ? -lag : lag;
    return distance <= kReach ? kAlongRow[static_cast<size_t>(distance)] : 0;
}

// The complete target at lags from 1 to half the ring, in quarters of a thousandth. Where the index returns to the same
// column after a quarter or a half of the table, the correlation is -1/4 of that along a row. That leaves a column a
// quarter of its power; at -1/3, the limit, it would have to cancel completely.
constexpr int TargetAt(int lag) {
    return 4 * AlongRow(lag) - AlongRow(lag - kSize / 4) - AlongRow(lag - kSize / 2);
}

// The table is used shifted right by 0 to 4 bits: luma by 2, 1, 0; chroma by 3, 2, 1; the filter also by 3 and 4.
constexpr int kShifts = 5;

// The noise rule of the conversions: halves round up.
constexpr int ShiftRight(int entry, int shift) {
    return shift == 0 ? entry : (entry + (1 << (shift - 1))) >> shift;
}

// ---- The search ----

// A linear congruential generator modulo 2^64, using only the upper half.
class Random {
  public:
    // A number from 0 to bound - 1.
    int Below(int bound) {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<int>(((state_ >> 32) * static_cast<uint64_t>(bound)) >> 32);
    }

  private:
    uint64_t state_ = 1;
};

// A ring of values, the errors of its autocorrelation at the lags kStep * kFirst, ..., kStep * kLast, and how a swap of
// two values would change them.
template <int kStep, int kFirst, int kLast>
class LagErrors {
  public:
    // Takes over the values and computes all errors, as sums of products over the ring.
    void Load(const std::array<int, kSize>& table, int shift) {
        int64_t sum = 0;
        int64_t squares = 0;
        for (int i = 0; i < kSize; ++i) {
            const int value = ShiftRight(table[static_cast<size_t>(i)], shift);
            Set(i, value);
            sum += value;
            squares += value * value;
        }
        const int64_t squareOfMean = sum * sum / kSize;
        for (int k = kFirst; k <= kLast; ++k) {
            const int64_t target = (squares - squareOfMean) * TargetAt(kStep * k) / 4000;
            int64_t products = 0;
            for (int i = 0; i < kSize; ++i)
                products += At(i)[0] * At(i)[k];
            error_[k - kFirst] = static_cast<int>(products - squareOfMean - target);
        }
    }

    // What swapping the values at a and b would add to the sum of squared errors. They must not be half a ring apart,
    // where a lag would meet the pair from both sides.
    int64_t CostOfSwap(int a, int b) {
        const int16_t* nextA = At(a);
        const int16_t* nextB = At(b);
        const int16_t* lastA = nextA + kPeriod;
        const int16_t* lastB = nextB + kPeriod;
        const int step = nextB[0] - nextA[0];
        for (int k = kFirst; k <= kLast; ++k)
            change_[k - kFirst] = static_cast<int16_t>(step * (nextA[k] + lastA[-k] - nextB[k] - lastB[-k]));

        // At the lag between them they are each other's neighbours, and their product does not change.
        const int apart = std::min((b - a) & kMask, (a - b) & kMask);
        if (apart % kStep == 0 && apart >= kStep * kFirst && apart <= kStep * kLast) {
            int16_t& change = change_[apart / kStep - kFirst];
            change = static_cast<int16_t>(change - step * step);
        }

        // A change is at most 28 * 56 + 28 * 28 = 2352 and an error below 2^18 * 1.6, so a term fits 32 bits; the sum
        // does not.
        int64_t cost = 0;
        for (size_t j = 0; j < kCount; ++j)
            cost += change_[j] * (2 * error_[j] + change_[j]);
        return cost;
    }

    // Performs the swap that CostOfSwap evaluated last.
    void Swap(int a, int b) {
        for (size_t j = 0; j < kCount; ++j)
            error_[j] += change_[j];
        const int valueA = At(a)[0];
        Set(a, At(b)[0]);
        Set(b, valueA);
    }

    int64_t SquaredError() const {
        int64_t sum = 0;
        for (int error : error_)
            sum += int64_t{error} * error;
        return sum;
    }

  private:
    static constexpr int kPeriod = kSize / kStep;
    static constexpr size_t kPhases = kStep;
    static constexpr size_t kPositions = 2 * kPeriod;
    static constexpr size_t kCount = kLast - kFirst + 1;

    const int16_t* At(int index) const { return &ring_[index % kStep][index / kStep]; }

    void Set(int index, int value) {
        int16_t* entry = &ring_[index % kStep][index / kStep];
        entry[0] = entry[kPeriod] = static_cast<int16_t>(value);
    }

    // Values kStep apart are adjacent, and everything is stored twice so that no lag needs to wrap.
    int16_t ring_[kPhases][kPositions];
    int error_[kCount];
    int16_t change_[kCount];
};

// The table, shifted by a number of bits: all lags with a target of their own, and the multiples of 8.
struct ShiftedTable {
    LagErrors<1, 1, 31> row;
    LagErrors<1, kSize / 4 - kReach, kSize / 4 + kReach> quarter;
    LagErrors<1, kSize / 2 - kReach, kSize / 2> half;
    LagErrors<8, 4, kSize / 16> rows;

    int64_t CostOfShape(int a, int b) {
        return row.CostOfSwap(a, b) + quarter.CostOfSwap(a, b) + half.CostOfSwap(a, b);
    }

    int64_t ErrorOfShape() const { return row.SquaredError() + quarter.SquaredError() + half.SquaredError(); }
};

// The table at all five shifts, and the swaps that improve it.
class Search {
  public:
    explicit Search(Random& random) : random_(random) {
        int i = 0;
        for (int e = 1 - static_cast<int>(kCountOf.size()); e < static_cast<int>(kCountOf.size()); ++e)
            for (int n = kCountOf[static_cast<size_t>(e < 0 ? -e : e)]; n > 0; --n)
                table_[static_cast<size_t>(i++)] = e;
        for (i = kSize - 1; i > 0; --i)
            std::swap(Entry(i), Entry(random_.Below(i + 1)));
    }

    // First only the prescribed lags: they are few, so swaps are cheap, and they get nearly all the way.
    void Shape(int swaps) {
        for (int shift = 0; shift < kShifts; ++shift) {
            Shifted(shift).row.Load(table_, shift);
            Shifted(shift).quarter.Load(table_, shift);
            Shifted(shift).half.Load(table_, shift);
        }
        for (; swaps > 0; --swaps) {
            if (PickPair() && CostOfShape() < 0)
                Swap(false);
        }
    }

    // Then the distances between rows too. An error of shape counts 64 times as much; and if a swap makes the shape
    // worse by more than a thousandth, the long sum over all distances is not worth computing.
    void Whiten(int swaps) {
        for (int shift = 0; shift < kShifts; ++shift)
            Shifted(shift).rows.Load(table_, shift);
        int64_t bearable = 0;
        for (; swaps > 0; --swaps) {
            if (swaps % 4096 == 0)
                bearable = ErrorOfShape() / 1024;
            if (!PickPair())
                continue;
            const int64_t shape = CostOfShape();
            if (shape < bearable && 64 * shape + CostAcrossRows() < 0)
                Swap(true);
        }
    }

    const std::array<int, kSize>& Table() const { return table_; }

  private:
    int& Entry(int index) { return table_[static_cast<size_t>(index)]; }
    ShiftedTable& Shifted(int shift) { return shifted_[static_cast<size_t>(shift)]; }

    // The weight that makes errors of a shifted table comparable to those of the unshifted one: a product shrinks by
    // 4^shift, its square by 16^shift.
    static int64_t Weighted(int64_t squares, int shift) { return squares * (int64_t{1} << (4 * shift)); }

    bool PickPair() {
        a_ = random_.Below(kSize);
        b_ = random_.Below(kSize);
        return Entry(a_) != Entry(b_) && ((a_ - b_) & kMask) != kSize / 2;
    }

    int64_t CostOfShape() {
        int64_t cost = 0;
        for (int shift = 0; shift < kShifts; ++shift) {
            if (Matters(shift))
                cost += Weighted(Shifted(shift).CostOfShape(a_, b_), shift);
        }
        return cost;
    }

    int64_t CostAcrossRows() {
        int64_t cost = 0;
        for (int shift = 0; shift < kShifts; ++shift) {
            if (Matters(shift))
                cost += Weighted(Shifted(shift).rows.CostOfSwap(a_, b_), shift);
        }
        return cost;
    }

    int64_t ErrorOfShape() {
        int64_t error = 0;
        for (int shift = 0; shift < kShifts; ++shift)
            error += Weighted(Shifted(shift).ErrorOfShape(), shift);
        return error;
    }

    void Swap(bool acrossRows) {
        for (int shift = 0; shift < kShifts; ++shift) {
            if (!Matters(shift))
                continue;
            ShiftedTable& table = Shifted(shift);
            table.row.Swap(a_, b_);
            table.quarter.Swap(a_, b_);
            table.half.Swap(a_, b_);
            if (acrossRows)
                table.rows.Swap(a_, b_);
        }
        std::swap(Entry(a_), Entry(b_));
    }

    // Many values become equal when shifted; swapping them then changes nothing.
    bool Matters(int shift) { return ShiftRight(Entry(a_), shift) != ShiftRight(Entry(b_), shift); }

    Random& random_;
    std::array<int, kSize> table_{};
    std::array<ShiftedTable, kShifts> shifted_;
    int a_ = 0;
    int b_ = 0;
};

// ---- The source file ----

std::string SourceFile(const std::array<int, kSize>& table) {
    std::string text =
        "/*\n"
        " * The default table of dither noise: signed values around zero with a standard deviation of 4.\n"
        " *\n"
        " * Generated by platform/noise/GenerateDitherTable.cpp; do not edit. docs/noise.md says what it is made for.\n"
        " */\n"
        "#include \"Kor/Video/Common/KorVideoFrame.h\"\n"
        "\n"
        "// clang-format off\n"
        "const KorInt16 KorTblDitherStd4[16384] = {\n";
    constexpr size_t kPerLine = 16;
    for (size_t i = 0; i < table.size(); ++i) {
        const std::string value = std::to_string(table[i]);
        text += std::string(i % kPerLine == 0 ? 4 : 1, ' ') + std::string(3 - value.size(), ' ') + value + ',';
        if (i % kPerLine == kPerLine - 1)
            text += '\n';
    }
    return text +
           "};\n"
           "// clang-format on\n";
}

bool IsContentOf(const char* path, const std::string& expected) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream found;
    found << file.rdbuf();
    return file && found.str() == expected;
}

}  // namespace

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    if (argc != 1 && !check) {
        std::fprintf(stderr, "usage: %s [--check FILE]\n", argv[0]);
        return 2;
    }

    Random random;
    const auto search = std::make_unique<Search>(random);
    search->Shape(3000000);
    search->Whiten(5000000);
    const std::string text = SourceFile(search->Table());

    if (!check)
        return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
    if (IsContentOf(argv[2], text))
        return 0;
    std::fprintf(stderr, "%s differs from the output of %s\n", argv[2], argv[0]);
    return 1;
}
