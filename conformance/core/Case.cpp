#include "conformance/core/Case.h"

#include <algorithm>
#include <initializer_list>
#include <sstream>

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

std::string Number(std::size_t value) {
    return std::to_string(value);
}

std::string NameOf(Walk walk) {
    return walk == Walk::Up ? "up" : "down";
}

// Minus 90 is told as such.
std::string NameOfAngle(KorImageRotationDegree angle) {
    return std::to_string(static_cast<KorInt>(angle));
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
    using Sizes = std::initializer_list<std::size_t>;
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

bool ForEachOption(const Sweep& sweep, const Case& start, const Visitor& visit) {
    Case c = start;
    const auto visitThis = [&] { return visit(c); };
    const auto insides = [&] { return ForEachValue(sweep.matrixInside, c, &Case::matrixInside, visitThis); };
    const auto matrices = [&] { return ForEachValue(sweep.matrices, c, &Case::matrix, insides); };
    const auto alphas = [&] { return ForEachValue(sweep.alphas, c, &Case::alpha, matrices); };
    const auto positions = [&] {
        return std::all_of(sweep.positions.begin(), sweep.positions.end(), [&](const auto& position) {
            c.xPosition = position.first;
            c.yPosition = position.second;
            return alphas();
        });
    };
    const auto inPlace = [&] { return ForEachValue(sweep.inPlace, c, &Case::inPlace, positions); };
    const auto randomize = [&] {
        return ForEachValue(sweep.randomizeNoiseOffsets, c, &Case::randomizeNoiseOffsets, inPlace);
    };
    const auto walks = [&] { return ForEachValue(sweep.walks, c, &Case::walk, randomize); };
    const auto angles = [&] { return ForEachValue(sweep.rotationDegrees, c, &Case::rotationDegree, walks); };
    const auto levels = [&] { return ForEachValue(sweep.ditherLevels, c, &Case::ditherLevel, angles); };
    return ForEachValue(sweep.flips, c, &Case::flip, levels);
}

std::size_t ForEachCase(const Sweep& sweep, std::uint64_t seed, const Visitor& visit) {
    std::size_t visited = 0;
    std::size_t turn = 0;
    const auto visitOption = [&](const Case& options) {
        Case c = options;
        const auto visitWith = [&](Pattern pattern) {
            c.pattern = pattern;
            c.seed = MixSeed(seed, visited);
            c.number = ++visited;
            return visit(c);
        };
        const auto patterns = [&] {
            return visitWith(Pattern::Noise) && visitWith(sweep.patterns[turn++ % sweep.patterns.size()]);
        };
        const auto placements = [&] { return ForEachValue(sweep.placements, c, &Case::placement, patterns); };
        return ForEachValue(sweep.pitches, c, &Case::pitches, placements);
    };
    for (const auto& size : sweep.sizes) {
        Case c;
        c.width = size.first;
        c.height = size.second;
        if (!ForEachOption(sweep, c, visitOption)) {
            break;
        }
    }
    return visited;
}

std::string NameOption(const Sweep& sweep, const Case& c) {
    std::string name;
    const auto add = [&name](const auto& values, const char* axis, const std::string& value) {
        if (values.size() > 1) {
            name += (name.empty() ? "" : ",") + std::string(axis) + "=" + value;
        }
    };
    const auto matrix = std::find(sweep.matrices.begin(), sweep.matrices.end(), c.matrix) - sweep.matrices.begin();
    add(sweep.flips, "flip", Number(c.flip));
    add(sweep.ditherLevels, "level", Number(c.ditherLevel));
    add(sweep.rotationDegrees, "angle", NameOfAngle(c.rotationDegree));
    add(sweep.walks, "walk", NameOf(c.walk));
    add(sweep.randomizeNoiseOffsets, "random", Number(c.randomizeNoiseOffsets));
    add(sweep.inPlace, "inplace", Number(c.inPlace));
    add(sweep.positions, "position", Number(c.xPosition) + ":" + Number(c.yPosition));
    add(sweep.alphas, "alpha", Number(c.alpha));
    add(sweep.matrices, "matrix", Number(static_cast<std::size_t>(matrix)));
    add(sweep.matrixInside, "inside", Number(c.matrixInside));
    return name.empty() ? "-" : name;
}

std::string Describe(const Case& c) {
    static const char* const kPitches[] = {"tight", "loose", "odd"};
    std::ostringstream text;
    text << c.width << "x" << c.height << ", flip " << int{c.flip} << ", dither level "
         << static_cast<KorUint>(c.ditherLevel) << ", angle " << c.rotationDegree << ", source walked "
         << NameOf(c.walk) << ", random offsets " << int{c.randomizeNoiseOffsets} << (c.inPlace ? ", in place" : "")
         << ", position (" << c.xPosition << ", " << c.yPosition << "), alpha " << int{c.alpha} << ", pitches "
         << kPitches[static_cast<int>(c.pitches)] << ", unmapped page "
         << (c.placement == Placement::Rear ? "behind" : "in front") << ", pattern " << kit::NameOf(c.pattern)
         << ", case seed " << c.seed;
    if (c.matrix != nullptr) {
        text << ", matrix";
        for (const auto& row : c.matrix->rows) {
            text << " {" << row[0] << ", " << row[1] << ", " << row[2] << "}";
        }
        text << (c.matrixInside ? " inside the first plane" : "");
    }
    return text.str();
}

}  // namespace kit
