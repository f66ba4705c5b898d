#include "conformance/kit/Plan.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <utility>

#include "conformance/kit/Contents.h"
#include "conformance/kit/FarPlane.h"

namespace kit {

namespace {

using Numbers = std::initializer_list<std::size_t>;

// ---- Sizes -------------------------------------------------------------------------------------------------------

// Around 16, 32 and 48 in both directions, and a few long rows and columns.
SizeList SmallBlocks() {
    SizeList sizes{{641, 3}, {640, 4}, {1283, 7}, {4099, 2}, {3, 301}, {2, 514}, {6, 66}, {7, 66}, {14, 66}, {1024, 4}};
    for (const std::size_t width :
         Numbers{63, 64, 65, 127, 128, 129, 130, 191, 193, 255, 256, 257, 258, 511, 512, 513, 514}) {
        sizes.emplace_back(width, 2 + width % 3);
    }
    for (const std::size_t width : Numbers{15, 16, 17, 32, 47, 49}) {
        for (const std::size_t height : Numbers{15, 16, 17, 32, 33, 49}) {
            sizes.emplace_back(width, height);
        }
    }
    return sizes;
}

SizeList SmallAndSmallBlocks() {
    SizeList sizes = SmallSizes();
    const SizeList blocks = SmallBlocks();
    sizes.insert(sizes.end(), blocks.begin(), blocks.end());
    return sizes;
}

// Every width from 41 to 140 with three heights, and every height from 13 to 140.
SizeList EverySizeBelowABlock() {
    const std::size_t others[] = {8, 33, 17, 9, 64, 18, 50, 5, 34, 16, 65};
    SizeList sizes;
    for (std::size_t size = 13; size <= 140; ++size) {
        sizes.emplace_back(others[size % std::size(others)], size);
        for (std::size_t k = 0; size > 40 && k < 3; ++k) {
            sizes.emplace_back(size, others[(size + 4 * k) % std::size(others)]);
        }
    }
    return sizes;
}

// Blocks of 64, 128 and 256 and their neighbours in both directions.
SizeList LargeBlocks() {
    SizeList sizes;
    for (const std::size_t width : Numbers{63, 64, 66, 127, 128, 129, 130, 192, 255, 256, 257, 258}) {
        for (const std::size_t height : Numbers{63, 64, 65, 128, 129, 130, 257}) {
            sizes.emplace_back(width, height);
        }
    }
    sizes.insert(sizes.end(), {{383, 9}, {385, 10}, {512, 17}, {514, 16}, {768, 33}, {1025, 18}, {16, 513}, {18, 600}});
    return sizes;
}

// Rows and columns whose numbers outgrow 8, 12 and 16 bits and the blocks of any kernel, and the rests of long rows.
const SizeList kLong{{120, 8},   {248, 5},   {376, 6},   {504, 3},   {1040, 10}, {1144, 6}, {2050, 4}, {4400, 6},
                     {16644, 4}, {65801, 2}, {2, 65538}, {64, 1200}, {34, 1100}, {20, 700}, {70, 650}};

// Chroma, too, has more than 65536 columns or rows, and runs of thousands of columns begin beyond these.
const SizeList kVeryLong{{137802, 3}, {131201, 2}, {2, 131079}};

const SizeList kPictures{{1280, 720}, {1366, 768}, {1921, 1081}};

// A width or height on either side of every power of two up to 16, and one size for each kind of run and tile.
SizeList FewSizes() {
    SizeList sizes;
    for (const std::size_t height : {0u, 1u, 2u, 3u, 4u, 5u}) {
        for (const std::size_t width : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 18u}) {
            sizes.emplace_back(width, height);
        }
    }
    sizes.insert(sizes.end(), {{33, 17}, {17, 33}, {34, 2}, {64, 3}, {128, 3}, {129, 4}, {258, 2}, {641, 3}, {3, 301}});
    return sizes;
}

const SizeList kFewBlocks{{50, 8},   {66, 66},   {63, 9},   {120, 8},  {126, 5},  {127, 34}, {98, 130},
                          {258, 18}, {514, 129}, {1024, 4}, {1025, 4}, {1040, 6}, {4400, 4}, {64, 1100}};

// ---- Parts -------------------------------------------------------------------------------------------------------

const std::vector<Pattern> kTelling{Pattern::Noise, Pattern::Ramp, Pattern::Extremes};

// Every combination of the options once or more often, each time with another memory.
Sweep InTurn(const Entry& entry, SizeList sizes, std::size_t perSize) {
    Sweep sweep = entry.options();
    sweep.sizes = std::move(sizes);
    sweep.perSize = perSize;
    sweep.patterns = kTelling;
    return sweep;
}

Sweep EachOption(const Entry& entry, SizeList sizes) {
    return InTurn(entry, std::move(sizes), CountOptions(entry.options()));
}

Sweep MatrixInEveryPlane(const Entry& entry, bool quick) {
    SizeList sizes{{6, 7}, {11, 4}, {16, 9}, {41, 5}, {47, 7}};
    if (!quick) {
        sizes.insert(sizes.end(),
                     {{1, 80}, {2, 40}, {23, 6}, {32, 8}, {33, 5}, {40, 3}, {48, 17}, {64, 7}, {66, 5}, {129, 3}});
    }
    Sweep sweep = entry.options();
    sweep.matrixPlaces = {MatrixPlace::Y, MatrixPlace::U, MatrixPlace::V, MatrixPlace::SpareRow};
    sweep.sizes = std::move(sizes);
    sweep.patterns = kTelling;
    sweep.perSize = CountOptions(sweep) / (quick ? 4 : 1);
    return sweep;
}

// Matrices of every magnitude, up to the largest numbers that 2 to 32 bits hold: a fast path for small coefficients
// shows where it ends.
std::vector<Matrix> DrawMatrices(std::size_t count) {
    Noise noise(0x3a7f1c);
    std::vector<Matrix> matrices(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t limit = std::int64_t{1} << (1 + i % 31);
        for (auto& row : matrices[i].rows) {
            for (KorInt& coefficient : row) {
                const std::int64_t values[] = {-limit, limit - 1, 0, 1};
                const std::uint32_t turn = noise.Below(16);
                coefficient = static_cast<KorInt>(
                    turn < 4 ? values[turn] : static_cast<std::int64_t>(noise.Next() >> 32) % (2 * limit) - limit);
            }
        }
    }
    return matrices;
}

Sweep ManyMatrices(const Entry& entry) {
    static const std::vector<Matrix> kDrawn = DrawMatrices(310);
    Sweep sweep = InTurn(entry, {{34, 6}}, 0);
    sweep.matrices.clear();
    for (const Matrix& matrix : kDrawn) {
        sweep.matrices.push_back(&matrix);
    }
    sweep.perSize = CountOptions(sweep);
    return sweep;
}

// Angles that are none: next to one, or one modulo 360 or in fewer bits.
Sweep OtherAngles(const Entry& entry) {
    Sweep sweep = entry.options();
    sweep.rotationDegrees = {1,         89,       91,        179,   181,        269,         271,
                             180 + 256, 90 + 360, 180 + 360, 65536, 65536 + 90, 65536 + 180, 0x80000000u + 180};
    sweep.sizes = {{18, 34}, {66, 6}, {66, 66}};
    sweep.patterns = kTelling;
    sweep.perSize = CountOptions(sweep);
    return sweep;
}

// Planes without gaps between their rows beside planes with gaps.
Sweep SomeWithGaps(const Entry& entry, bool quick) {
    Sweep sweep = InTurn(entry, {{64, 6}, {66, 4}, {128, 4}, {130, 7}, {96, 5}, {258, 3}}, quick ? 4 : 24);
    sweep.matrixPlaces = {MatrixPlace::Own};
    sweep.pitches = {Pitches::Mixed};
    return sweep;
}

// Rows whose numbers outgrow 16 bits, those of chroma, too, as long as the vectors of a kernel. The last one is a row
// of its own, and where it can be read first, it is.
Sweep ManyRows(const Entry& entry) {
    const std::size_t angles = entry.options().rotationDegrees.size();
    // Where chroma has loops of its own, it needs that, too.
    const bool hasChromaRows = entry.family == Family::PackedYuv || entry.family == Family::Compositing;
    const std::size_t width = hasChromaRows && angles == 1 ? 130 : 66;
    Sweep sweep = InTurn(entry, {{width, 131205}}, angles);
    if (entry.family == Family::RgbToYuv) {
        sweep.sizes.emplace_back(67, 131205);  // an odd last column is converted on its own
    }
    if (angles > 1) {
        sweep.sizes.emplace_back(131206, 66);  // columns become rows
    }
    if (sweep.ditherLevels.size() > 1) {
        sweep.ditherLevels = {KOR_VIDEOFRAMEDITHERLEVEL_Off, KOR_VIDEOFRAMEDITHERLEVEL_2};
        sweep.perSize = 2;
    }
    sweep.flips = {entry.options().flips.back()};
    sweep.matrixPlaces = {MatrixPlace::Own};
    sweep.patterns = {Pattern::Noise};
    sweep.pitches = {Pitches::Odd};
    return sweep;
}

Sweep NoiseInManyRows(const Entry& entry) {
    Sweep sweep = InTurn(entry, {{64, 1100}}, 3);
    sweep.ditherLevels = {KOR_VIDEOFRAMEDITHERLEVEL_0, KOR_VIDEOFRAMEDITHERLEVEL_1, KOR_VIDEOFRAMEDITHERLEVEL_2};
    return sweep;
}

std::vector<KorUint8> AllAlphas() {
    std::vector<KorUint8> alphas(256);
    std::iota(alphas.begin(), alphas.end(), KorUint8{0});
    return alphas;
}

Sweep EveryAlpha(const Entry& entry, bool quick) {
    Sweep sweep = InTurn(entry, {{66, 6}}, quick ? 256 : 768);
    sweep.alphas = AllAlphas();
    sweep.positions = {{0, 0}};
    return sweep;
}

Sweep DistantPositions(const Entry& entry, bool quick) {
    Sweep sweep = InTurn(entry, {{33, 5}, {66, 34}, {130, 4}}, quick ? 9 : 72);
    sweep.positions = {{64, 64}, {127, 1}, {129, 2}, {301, 5}, {1003, 3}, {7, 600}};
    if (!quick) {
        sweep.positions.insert(sweep.positions.end(), {{70001, 2}, {1, 65601}, {0, 65604}});
    }
    return sweep;
}

std::vector<std::size_t> FirstPictures(std::size_t count) {
    std::vector<std::size_t> pictures(count);
    std::iota(pictures.begin(), pictures.end(), std::size_t{0});
    return pictures;
}

// One arrangement of memory, all pictures.
Sweep Pictures(const Entry& entry, Pattern pattern, std::size_t count) {
    Sweep sweep = entry.options();
    sweep.sizes = {{512, 512}};
    sweep.patterns = {pattern};
    sweep.pitches = {Pitches::Loose};
    sweep.placements = {Placement::Rear};
    sweep.pictures = FirstPictures(count);
    return sweep;
}

// Every colour, every pair of samples and weight, or every pair of samples that is averaged, once or more often.
Sweep EveryColour(const Entry& entry) {
    const Sweep options = entry.options();
    const ColourPictures pictures = PicturesOf(entry);
    Sweep sweep = Pictures(entry, pictures.pattern, pictures.count);
    if (pictures.pattern == Pattern::Colours) {
        sweep.flips = {0};
        sweep.ditherLevels = {KOR_VIDEOFRAMEDITHERLEVEL_Off};
        sweep.matrices.resize(std::min<std::size_t>(options.matrices.size(), 2));
        sweep.matrixPlaces = {MatrixPlace::Own};
        sweep.positions = {{0, 0}};
        sweep.alphas = options.alphas.size() > 1 ? AllAlphas() : options.alphas;
        if (options.alphas.size() > 1) {
            sweep.pictures = {0};
        }
    }
    sweep.perSize = CountOptions(sweep);
    return sweep;
}

// Every sample with every entry of the noise table, in chroma, too, which has half the columns.
Sweep EveryNoise(const Entry& entry) {
    Sweep sweep = Pictures(entry, Pattern::Flat, 256);
    sweep.sizes = {{32768, 2}};
    sweep.ditherLevels = {KOR_VIDEOFRAMEDITHERLEVEL_0, KOR_VIDEOFRAMEDITHERLEVEL_1, KOR_VIDEOFRAMEDITHERLEVEL_2};
    if (sweep.randomizeNoiseOffsets.size() > 1) {
        // The filter adds noise at level 0 as well.
        sweep.ditherLevels.push_back(KOR_VIDEOFRAMEDITHERLEVEL_Off);
        sweep.randomizeNoiseOffsets.resize(1);
        sweep.inPlace = {false};
    }
    sweep.matrices.resize(1);
    sweep.perSize = CountOptions(sweep);
    return sweep;
}

// As far apart as this system lets them be: every option at every distance. One size fills a tile of any vector and
// leaves a last row over.
Sweep FarApart(const Entry& entry, bool quick) {
    Sweep sweep = InTurn(entry, {{66, 34}}, quick ? 6 : 3 * CountOptions(entry.options()));
    if (!quick) {
        sweep.sizes.insert(sweep.sizes.end(), {{35, 7}, {130, 67}, {258, 10}});
    }
    sweep.patterns = {Pattern::Noise};
    sweep.matrixPlaces = {MatrixPlace::Own};
    sweep.pitches = FarPitches();
    return sweep;
}

Sweep Random(const Entry& entry, std::size_t count, bool quick) {
    Sweep sweep = entry.options();
    sweep.drawn = count;
    sweep.drawnLimit = quick ? 300 : 2000;
    sweep.patterns.insert(sweep.patterns.end(), 5, Pattern::Noise);
    sweep.pitches = {Pitches::Tight, Pitches::Drawn, Pitches::Drawn};
    return sweep;
}

}  // namespace

Plan MakePlan(const Entry& entry, const PlanOptions& options) {
    Plan plan;
    const auto add = [&](Sweep sweep) { plan.push_back({std::move(sweep), options.seed}); };
    const Sweep values = entry.options();
    const bool quick = options.quick;
    Sweep small = values;
    small.sizes = quick ? FewSizes() : SmallAndSmallBlocks();
    add(small);
    if (quick) {
        add(InTurn(entry, kFewBlocks, 3));
        add(InTurn(entry, {{1280, 720}}, 1));
        if (values.ditherLevels.size() > 1) {
            add(NoiseInManyRows(entry));
        }
    } else {
        add(InTurn(entry, EverySizeBelowABlock(), 8));
        add(InTurn(entry, LargeBlocks(), 6));
        Sweep longOnes = EachOption(entry, kLong);
        longOnes.patterns = {Pattern::Noise};
        add(longOnes);
        Sweep veryLong = InTurn(entry, kVeryLong, std::min<std::size_t>(CountOptions(values), 10));
        veryLong.patterns = {Pattern::Noise};
        add(veryLong);
        add(ManyRows(entry));
        Sweep pictures = InTurn(entry, kPictures, 3);
        pictures.patterns = {Pattern::Noise};
        add(pictures);
    }
    if (values.matrixPlaces.size() > 1) {
        add(MatrixInEveryPlane(entry, quick));
    }
    if (values.matrices.size() > 1) {
        add(ManyMatrices(entry));
    }
    if (values.rotationDegrees.size() > 1) {
        add(OtherAngles(entry));
    }
    if (values.positions.size() > 1) {
        add(DistantPositions(entry, quick));
    }
    if (values.alphas.size() > 1) {
        add(EveryAlpha(entry, quick));
    }
    if (!quick) {
        add(EveryColour(entry));
    }
    if (!quick && values.ditherLevels.size() > 1) {
        add(EveryNoise(entry));
    }
    add(SomeWithGaps(entry, quick));
    add(FarApart(entry, quick));
    plan.push_back({Random(entry, options.random, quick), options.randomSeed});
    return plan;
}

void ForEachCase(const Plan& plan, const std::function<bool(const Part&, const Case&)>& visit) {
    std::size_t before = 0;
    bool going = true;
    for (const Part& part : plan) {
        const std::size_t visited = ForEachCase(part.sweep, part.seed, [&](const Case& options) {
            Case c = options;
            c.number += before;
            going = visit(part, c);
            return going;
        });
        if (!going) {
            return;
        }
        before += visited;
    }
}

}  // namespace kit
