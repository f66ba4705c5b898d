#include "conformance/core/Case.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <tuple>

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

std::string NameOf(MatrixPlace place) {
    static const char* const kNames[] = {"own", "middle", "y", "u", "v", "spare"};
    return kNames[static_cast<int>(place)];
}

// Minus 90 is told as such.
std::string NameOfAngle(KorImageRotationDegree angle) {
    return std::to_string(static_cast<KorInt>(angle));
}

// ---- The three ways to go through a sweep --------------------------------------------------------------------------

using Next = std::function<bool(Case&)>;

void VisitAll(const Sweep& sweep, const Next& next) {
    std::size_t turn = 0;
    const auto visitOption = [&](const Case& options) {
        Case c = options;
        const auto visitWith = [&](Pattern pattern) {
            c.pattern = pattern;
            return next(c);
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
}

std::vector<Case> ListOptions(const Sweep& sweep) {
    std::vector<Case> options;
    ForEachOption(sweep, Case{}, [&](const Case& c) {
        options.push_back(c);
        return true;
    });
    return options;
}

// A step through so many things that comes to all of them, and to unlike ones first.
std::size_t Stride(std::size_t count) {
    std::size_t step = count * 5 / 8 + 1;
    while (std::gcd(step, count) != 1) {
        ++step;
    }
    return step;
}

void VisitInTurn(const Sweep& sweep, const Next& next) {
    const std::vector<Case> options = ListOptions(sweep);
    const std::size_t stride = Stride(options.size());
    std::size_t turn = 0;
    for (const auto& size : sweep.sizes) {
        for (std::size_t k = 0; k < sweep.perSize; ++k, ++turn) {
            Case c = options[turn * stride % options.size()];
            c.width = size.first;
            c.height = size.second;
            // An option that comes again has the next memory.
            std::size_t memory = turn % options.size() + turn / options.size();
            const auto take = [&memory](const auto& values) {
                const auto value = values[memory % values.size()];
                memory /= values.size();
                return value;
            };
            c.pitches = take(sweep.pitches);
            c.placement = take(sweep.placements);
            c.pattern = take(sweep.patterns);
            if (!next(c)) {
                return;
            }
        }
    }
}

// Mostly small pictures, where many can be tried; now and then large ones.
std::pair<std::size_t, std::size_t> DrawSize(Noise& noise, std::size_t limit) {
    const std::size_t small = std::min<std::size_t>(limit, 300);
    const std::pair<std::size_t, std::size_t> limits[] = {
        {small, small}, {small, small}, {small, small},         {limit, 40},
        {limit, 12},    {40, limit},    {limit / 2, limit / 2}, {limit, limit}};
    const auto& most = limits[noise.Below(8)];
    const auto below = [&noise](std::size_t end) { return noise.Below(static_cast<std::uint32_t>(end)); };
    const std::size_t width = 1 + below(most.first);
    return {width, 1 + below(most.second)};
}

void VisitDrawn(const Sweep& sweep, std::uint64_t seed, const Next& next) {
    const std::vector<Case> options = ListOptions(sweep);
    for (std::size_t k = 0; k < sweep.drawn; ++k) {
        Noise noise(MixSeed(~seed, k));
        const auto draw = [&noise](const auto& values) {
            return values[noise.Below(static_cast<std::uint32_t>(values.size()))];
        };
        Case c = draw(options);
        std::tie(c.width, c.height) = DrawSize(noise, sweep.drawnLimit);
        c.pitches = draw(sweep.pitches);
        c.placement = draw(sweep.placements);
        c.pattern = draw(sweep.patterns);
        if (sweep.positions.size() > 1) {
            c.xPosition = noise.Below(200);
            c.yPosition = noise.Below(200);
        }
        if (sweep.alphas.size() > 1) {
            c.alpha = static_cast<KorUint8>(noise.Below(256));
        }
        if (!next(c)) {
            return;
        }
    }
}

}  // namespace

SizeList SmallSizes() {
    SizeList sizes;
    for (std::size_t height = 0; height <= 12; ++height) {
        for (std::size_t width = 0; width <= 40; ++width) {
            sizes.emplace_back(width, height);
        }
    }
    return sizes;
}

bool ForEachOption(const Sweep& sweep, const Case& start, const Visitor& visit) {
    Case c = start;
    const auto visitThis = [&] { return visit(c); };
    const auto pictures = [&] { return ForEachValue(sweep.pictures, c, &Case::picture, visitThis); };
    const auto places = [&] { return ForEachValue(sweep.matrixPlaces, c, &Case::matrixPlace, pictures); };
    const auto matrices = [&] { return ForEachValue(sweep.matrices, c, &Case::matrix, places); };
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

std::size_t CountOptions(const Sweep& sweep) {
    return ListOptions(sweep).size();
}

std::size_t ForEachCase(const Sweep& sweep, std::uint64_t seed, const Visitor& visit) {
    std::size_t visited = 0;
    const auto visitNext = [&](Case& c) {
        c.seed = MixSeed(seed, visited);
        c.number = ++visited;
        return visit(c);
    };
    if (sweep.drawn > 0) {
        VisitDrawn(sweep, seed, visitNext);
    } else if (sweep.perSize > 0) {
        VisitInTurn(sweep, visitNext);
    } else {
        VisitAll(sweep, visitNext);
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
    add(sweep.matrixPlaces, "place", NameOf(c.matrixPlace));
    add(sweep.pictures, "picture", Number(c.picture));
    return name.empty() ? "-" : name;
}

std::string Describe(const Case& c) {
    static const char* const kPitches[] = {"tight", "loose", "odd", "drawn", "mixed", "wide", "far", "huge"};
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
        text << ", place " << NameOf(c.matrixPlace);
    }
    return text.str();
}

}  // namespace kit
