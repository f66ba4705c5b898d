/*
 * Writes the default noise table, platform/KorTblDitherStd4.cpp, to standard output.
 *
 *     c++ -std=c++17 -O3 platform/noise/GenerateNoise.cpp -o GenerateNoise
 *     ./GenerateNoise > platform/KorTblDitherStd4.cpp
 *
 * The table is a ring of 16384 values with a Gaussian histogram. Conversions lay it out row after row under the
 * picture, at a stride that depends on the width, and shift it right by a number of bits that depends on the level. So
 * what the eye gets to see is the autocorrelation of the shifted ring: short lags are neighbours in a row, lags around a
 * multiple of 8 are neighbours in a column or on a diagonal, and which multiple it is depends on the width. The
 * generator starts from a random order and exchanges pairs of values for as long as that brings the autocorrelations
 * closer to what they should be, at all shifts at once:
 *
 *   short lags          those of noise whose energy lies at high frequencies
 *   all other lags      zero, at multiples of 8 first of all
 *
 * An exchange leaves the histogram alone, and with it the sum, the deviation and the extremes.
 *
 * Everything that decides a value is integer arithmetic, so the result is the same on every machine.
 */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace {

// --- What is wanted -------------------------------------------------------------------------------------------------

constexpr int kEntries = 16384;
constexpr int kIndexMask = kEntries - 1;

// The shifts that the dither levels apply: 0 to 2 to luma, 1 to 3 to chroma; the dither filter also takes 3 and 4.
constexpr int kShifts = 5;

// How often x and -x occur: a Gaussian of deviation 4, cut at 14 where less than half an entry in ten thousand is lost,
// and rounded so that the entries are 16384 in number and their squares add up to 16 each.
constexpr int kLargest = 14;
constexpr std::array<int, kLargest + 1> kCountOf = {1624, 1578, 1439, 1234, 994, 752, 534, 356, 225, 130, 71, 37, 17, 9, 4};

// The autocorrelation at lags 1 to 7, in thousandths: that of the widest high-pass noise eight entries can describe. It
// has a gain of -25 dB or less below 0.15 cycles a sample and is flat above 0.25.
constexpr std::array<int, 8> kTarget = {1000, -551, -86, 125, 73, -42, -48, 30};

// Lags below this one shape the spectrum along a row: they count sixteen times as much as the others.
constexpr int kShortLags = 32;
constexpr int kShortWeight = 16;
constexpr int kColumnWeight = 4;
constexpr int kDiagonalWeight = 1;

// Every row of the luma raster begins at a multiple of eight entries.
constexpr int kRowGranule = 8;

// --- How long it is sought ------------------------------------------------------------------------------------------

constexpr int kRoughTrials = 2000000;
constexpr int kFineRounds = 24;
constexpr int kFineTrials = 1000000;

// --- Random numbers -------------------------------------------------------------------------------------------------

// SplitMix64: one addition and a mix of the bits; more than good enough to pick pairs.
class Random {
  public:
    uint64_t Next() {
        state_ += 0x9e3779b97f4a7c15u;
        uint64_t z = state_;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }

    // A number from 0 to bound - 1.
    int Below(int bound) { return static_cast<int>(((Next() >> 32) * static_cast<uint64_t>(bound)) >> 32); }

  private:
    uint64_t state_ = 1;
};

// --- The ring at one shift ------------------------------------------------------------------------------------------

// What the conversions make of an entry; the shift rounds towards minus infinity, as theirs does.
int Shifted(int entry, int shift) {
    const int round = shift > 0 ? 1 << (shift - 1) : 0;
    return (entry + round) >> shift;
}

// One lag under control. The error is the sum of the products at that lag, less what it should be.
struct Lag {
    int lag;
    int weight;
    int64_t error;
};

class Ring {
  public:
    Ring(const std::vector<int>& entries, int shift) {
        for (int i = 0; i < kEntries; ++i) {
            Set(i, Shifted(entries[Index(i)], shift));
        }
        ListLags(shift);
        MeasureErrors();
    }

    int At(int i) const { return values_[Index(i)]; }

    size_t AllLags() const { return lags_.size(); }

    // By how much the weighted squares of the errors grow when the values at a and b are exchanged, over the first
    // lags of the list. Keeps the changes of the errors for Exchange.
    int64_t CostOfExchange(int a, int b, size_t lagsUsed) {
        const int step = At(b) - At(a);
        if (step == 0) {
            return 0;
        }
        const int16_t* const pa = &values_[Index(a)];
        const int16_t* const pb = &values_[Index(b)];
        const int distance = std::min((b - a) & kIndexMask, (a - b) & kIndexMask);
        int64_t cost = 0;
        for (size_t j = 0; j < lagsUsed; ++j) {
            const Lag& l = lags_[j];
            const int forward = l.lag;
            const int backward = kEntries - l.lag;
            int change = step * (pa[forward] + pa[backward] - pb[forward] - pb[backward]);
            if (l.lag == distance) {
                change -= step * step;  // the product of the two values themselves stays what it is
            }
            changes_[j] = change;
            cost += l.weight * (change * (2 * l.error + change));
        }
        return cost * scale_;
    }

    // Follows a call of CostOfExchange with the same arguments.
    void Exchange(int a, int b, size_t lagsUsed) {
        const int va = At(a);
        const int vb = At(b);
        if (va == vb) {
            return;
        }
        for (size_t j = 0; j < lagsUsed; ++j) {
            lags_[j].error += changes_[j];
        }
        Set(a, vb);
        Set(b, va);
    }

    // Half the derivative of the cost by the value at every index.
    void MeasureSlopes() {
        std::fill(slopes_.begin(), slopes_.end(), 0);
        for (const Lag& l : lags_) {
            const int factor = static_cast<int>(l.weight * l.error);
            const int16_t* const forward = &values_[Index(l.lag)];
            const int16_t* const backward = &values_[Index(kEntries - l.lag)];
            for (size_t i = 0; i < kEntries; ++i) {
                slopes_[i] += factor * (forward[i] + backward[i]);
            }
        }
    }

    // What CostOfExchange is likely to return, from the slopes and the mean of the squared changes.
    int64_t EstimateOfExchange(int a, int b) const {
        const int64_t step = At(b) - At(a);
        const int64_t slope = slopes_[Index(a)] - slopes_[Index(b)];
        return (2 * step * slope + step * step * curvature_) * scale_;
    }

    void MeasureErrors() {
        const int64_t mean = SumOfProducts();
        const int64_t energy = SumOfProductsAt(0) - mean;
        curvature_ = 0;
        for (Lag& l : lags_) {
            const int target = l.lag < static_cast<int>(kTarget.size()) ? kTarget[Index(l.lag)] : 0;
            l.error = SumOfProductsAt(l.lag) - mean - energy * target / 1000;
            curvature_ += l.weight * 4 * energy / kEntries;
        }
    }

    int64_t Cost() const {
        int64_t cost = 0;
        for (const Lag& l : lags_) {
            cost += l.weight * l.error * l.error;
        }
        return cost * scale_;
    }

  private:
    static size_t Index(int i) { return static_cast<size_t>(i); }

    // The ring is stored twice in a row, so that a walk of up to its whole length needs no wrap.
    void Set(int i, int value) {
        values_[Index(i)] = static_cast<int16_t>(value);
        values_[Index(i + kEntries)] = static_cast<int16_t>(value);
    }

    // Lags beyond half the ring mirror those before it. The diagonals are watched at shift 0 only: at the other shifts
    // they follow.
    void ListLags(int shift) {
        for (int lag = 1; lag < kShortLags; ++lag) {
            lags_.push_back({lag, kShortWeight, 0});
        }
        for (int lag = kShortLags; lag < kEntries / 2; ++lag) {
            const int off = std::min(lag % kRowGranule, kRowGranule - lag % kRowGranule);
            if (off == 0) {
                lags_.push_back({lag, kColumnWeight, 0});
            } else if (off <= 2 && shift == 0) {
                lags_.push_back({lag, kDiagonalWeight, 0});
            }
        }
        changes_.resize(lags_.size());
        scale_ = int64_t{1} << (4 * shift);  // products shrink by four with every shift, their squares by sixteen
    }

    int64_t SumOfProductsAt(int lag) const {
        int64_t sum = 0;
        for (int i = 0; i < kEntries; ++i) {
            sum += At(i) * At(i + lag);
        }
        return sum;
    }

    // What the sum of products is at every lag, on average, because the mean is not zero after rounding.
    int64_t SumOfProducts() const {
        int64_t sum = 0;
        for (int i = 0; i < kEntries; ++i) {
            sum += At(i);
        }
        return sum * sum / kEntries;
    }

    std::array<int16_t, 2 * kEntries> values_{};
    std::array<int64_t, kEntries> slopes_{};
    std::vector<Lag> lags_;
    std::vector<int> changes_;
    int64_t scale_ = 1;
    int64_t curvature_ = 0;
};

std::vector<int> Gaussian() {
    std::vector<int> entries;
    for (int x = -kLargest; x <= kLargest; ++x) {
        entries.insert(entries.end(), static_cast<size_t>(kCountOf[static_cast<size_t>(std::abs(x))]), x);
    }
    return entries;
}

void Shuffle(std::vector<int>& entries, Random& random) {
    for (int i = kEntries - 1; i > 0; --i) {
        std::swap(entries[static_cast<size_t>(i)], entries[static_cast<size_t>(random.Below(i + 1))]);
    }
}

using Rings = std::vector<Ring>;

bool ExchangeIfBetter(Rings& rings, int a, int b, bool rough) {
    int64_t cost = 0;
    auto used = [&](const Ring& r) { return rough ? static_cast<size_t>(kShortLags - 1) : r.AllLags(); };
    for (Ring& ring : rings) {
        cost += ring.CostOfExchange(a, b, used(ring));
    }
    if (cost >= 0) return false;
    for (Ring& ring : rings) {
        ring.Exchange(a, b, used(ring));
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    int rounds = argc > 1 ? atoi(argv[1]) : kFineRounds, trials = argc > 2 ? atoi(argv[2]) : kFineTrials;
    int cap = argc > 3 ? atoi(argv[3]) : 1000;
    Random random;
    std::vector<int> entries = Gaussian();
    Shuffle(entries, random);
    Rings rings;
    for (int s = 0; s < kShifts; ++s) rings.emplace_back(entries, s);
    for (int t = 0; t < kRoughTrials; ++t) {
        int a = random.Below(kEntries), b = random.Below(kEntries);
        if (rings[0].At(a) != rings[0].At(b)) ExchangeIfBetter(rings, a, b, true);
    }
    for (auto& r : rings) r.MeasureErrors();
    for (int q = 0; q < rounds; ++q) {
        for (auto& r : rings) r.MeasureSlopes();
        int pass = 0, ok = 0, t = 0;
        for (; t < trials && ok < cap; ++t) {
            int a = random.Below(kEntries), b = random.Below(kEntries);
            int64_t e = 0;
            for (auto& r : rings) e += r.EstimateOfExchange(a, b);
            if (e >= 0) continue;
            ++pass;
            ok += ExchangeIfBetter(rings, a, b, false);
        }
        fprintf(stderr, "%d: trials %d pass %d ok %d cost", q, t, pass, ok);
        for (auto& r : rings) fprintf(stderr, " %.4g", double(r.Cost()));
        fprintf(stderr, "\n");
    }
    for (int i = 0; i < kEntries; ++i) printf("%d\n", rings[0].At(i));
}
