#include "tests/support/Case.h"

#include <initializer_list>
#include <sstream>

#include "tests/support/Frames.h"

namespace kit {

namespace {

using Visitor = std::function<bool(const Case&)>;

// An axis sets one field of the case to each of its values in turn.
template <class Value, class Member>
bool ForEachValue(const std::vector<Value>& values, Case& options, Member Case::*field,
                  const std::function<bool()>& next) {
    for (const Value value : values) {
        options.*field = value;
        if (!next()) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::vector<std::pair<std::size_t, std::size_t>> SmallSizes() {
    std::vector<std::pair<std::size_t, std::size_t>> sizes;
    for (std::size_t height = 0; height <= 12; ++height) {
        for (std::size_t width = 0; width <= 40; ++width) {
            sizes.emplace_back(width, height);
        }
    }
    return sizes;
}

std::vector<std::pair<std::size_t, std::size_t>> AwkwardSizes() {
    std::vector<std::pair<std::size_t, std::size_t>> sizes{{641, 3}, {640, 4}, {1283, 7}, {4099, 2}, {3, 301}, {2, 514}};
    // Where runs of samples and tiles end, and one sample before and behind.
    for (const std::size_t width : Sizes{63, 64, 65, 127, 128, 129, 130, 191, 193, 255, 256, 257, 258, 511, 512, 513, 514}) {
        sizes.emplace_back(width, 2 + width % 3);
    }
    for (const std::size_t width : Sizes{15, 16, 17, 32, 47, 49}) {
        for (const std::size_t height : Sizes{15, 16, 17, 32, 33, 49}) {
            sizes.emplace_back(width, height);
        }
    }
    return sizes;
}

std::size_t ForEachCase(const Sweep& sweep, std::uint64_t seed, const Visitor& visit) {
    Case c;
    std::size_t visited = 0;
    std::size_t turn = 0;
    const auto visitWith = [&](Pattern pattern) {
        c.pattern = pattern;
        c.seed = MixSeed(seed, visited);
        ++visited;
        return visit(c);
    };
    const auto visitPatterns = [&] {
        return visitWith(Pattern::Noise) && visitWith(sweep.patterns[turn++ % sweep.patterns.size()]);
    };
    const auto placements = [&] { return ForEachValue(sweep.placements, c, &Case::placement, visitPatterns); };
    const auto pitches = [&] { return ForEachValue(sweep.pitches, c, &Case::pitches, placements); };
    const auto matrices = [&] { return ForEachValue(sweep.matrices, c, &Case::matrix, pitches); };
    const auto alphas = [&] { return ForEachValue(sweep.alphas, c, &Case::alpha, matrices); };
    const auto positions = [&] {
        for (const auto& position : sweep.positions) {
            c.xPosition = position.first;
            c.yPosition = position.second;
            if (!alphas()) {
                return false;
            }
        }
        return true;
    };
    const auto inPlace = [&] { return ForEachValue(sweep.inPlace, c, &Case::inPlace, positions); };
    const auto randomize = [&] {
        return ForEachValue(sweep.randomizeNoiseOffsets, c, &Case::randomizeNoiseOffsets, inPlace);
    };
    const auto walks = [&] { return ForEachValue(sweep.walks, c, &Case::walk, randomize); };
    const auto angles = [&] { return ForEachValue(sweep.rotationDegrees, c, &Case::rotationDegree, walks); };
    const auto levels = [&] { return ForEachValue(sweep.ditherLevels, c, &Case::ditherLevel, angles); };
    const auto flips = [&] { return ForEachValue(sweep.flips, c, &Case::flip, levels); };
    for (const auto& size : sweep.sizes) {
        c.width = size.first;
        c.height = size.second;
        if (!flips()) {
            break;
        }
    }
    return visited;
}

std::string Describe(const Case& c) {
    static const char* const kPitches[] = {"tight", "loose", "odd"};
    std::ostringstream text;
    text << c.width << "x" << c.height << ", flip " << int{c.flip} << ", dither level "
         << static_cast<KorUint>(c.ditherLevel) << ", angle " << c.rotationDegree << ", source walked "
         << (c.walk == Walk::Up ? "up" : "down") << ", random offsets " << int{c.randomizeNoiseOffsets}
         << (c.inPlace ? ", in place" : "") << ", position (" << c.xPosition << ", " << c.yPosition << "), alpha "
         << int{c.alpha} << ", pitches " << kPitches[static_cast<int>(c.pitches)] << ", unmapped page "
         << (c.placement == Placement::Rear ? "behind" : "in front") << ", pattern " << NameOf(c.pattern)
         << ", case seed " << c.seed;
    if (c.matrix != nullptr) {
        text << ", matrix";
        for (const auto& row : c.matrix->rows) {
            text << " {" << row[0] << ", " << row[1] << ", " << row[2] << "}";
        }
    }
    return text.str();
}

}  // namespace kit
