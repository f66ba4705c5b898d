#include "conformance/digest/Digest.h"

#include <cinttypes>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "conformance/core/Catalogue.h"
#include "conformance/core/ScriptedRandom.h"
#include "Kor/Os/KorRandom.h"

namespace kit {

namespace {

constexpr std::uint64_t kSeed = 38;
// Bytes watched on either side of a plane.
constexpr std::size_t kApron = 64;

class Fnv1a {
  public:
    void Add(std::uint8_t byte) { value_ = (value_ ^ byte) * UINT64_C(0x100000001b3); }
    std::uint64_t Value() const { return value_; }

  private:
    std::uint64_t value_ = UINT64_C(0xcbf29ce484222325);
};

// Small sizes of every kind, ends of vectors, of runs of 64 and 128 samples and of tiles of 16 by 16, more than 128
// rows and more than 256, and rows long enough for the noise to come round the end of its table.
const std::vector<std::pair<std::size_t, std::size_t>>& Sizes() {
    // clang-format off
    static const std::vector<std::pair<std::size_t, std::size_t>> sizes{
        {0, 0}, {0, 3}, {3, 0}, {1, 1}, {2, 1}, {1, 2}, {2, 2}, {3, 2}, {2, 3}, {5, 5}, {7, 4}, {8, 3}, {15, 6},
        {16, 16}, {17, 17}, {33, 18}, {34, 35}, {63, 2}, {66, 3}, {127, 2}, {128, 4}, {129, 5}, {130, 6}, {257, 3},
        {320, 2}, {514, 5}, {1283, 4}, {3, 131}, {10, 264}, {36, 130},
    };
    // clang-format on
    return sizes;
}

// Planes in memory of their own.
class Memory {
  public:
    void Lay(const Entry& entry, const Case& options) {
        layout_ = LayOut(entry, options);
        for (std::size_t i = 0; i < layout_.count; ++i) {
            const PlaneShape& shape = layout_.planes[i].shape;
            std::vector<std::uint8_t>& bytes = bytes_[i];
            bytes.resize(kApron + shape.Front() + shape.Span() + kApron);
            views_[i] = {bytes.data() + kApron + shape.Front(), shape.pitch, shape.rows};
            FillNoise(MixSeed(options.seed, i), bytes.data(), bytes.size());
            if (layout_.planes[i].access != Access::Write) {
                FillPattern(options.pattern, MixSeed(options.seed, 100 + i), views_[i].data, shape.pitch,
                            shape.rowBytes, shape.rows);
            }
        }
    }

    const PlaneView* Views() const { return views_.data(); }

    void AddTo(Fnv1a& hash) const {
        for (std::size_t i = 0; i < layout_.count; ++i) {
            for (const std::uint8_t byte : bytes_[i]) {
                hash.Add(byte);
            }
        }
    }

  private:
    Layout layout_;
    std::array<std::vector<std::uint8_t>, kMaximumPlanes> bytes_;
    std::array<PlaneView, kMaximumPlanes> views_;
};

// A draw of a whole KorSizeT has another size on another machine.
std::uint8_t DrawMark(std::size_t count) {
    return static_cast<std::uint8_t>(count == sizeof(KorSizeT) ? 0xff : count);
}

std::uint64_t DigestOption(const Entry& entry, const Caller& call, const Sweep& one, Memory& memory) {
    Fnv1a hash;
    ForEachCase(one, kSeed, [&](const Case& options) {
        memory.Lay(entry, options);
        ScriptedRandom::ServeSeed(options.seed);
        call(entry, memory.Views(), options);
        memory.AddTo(hash);
        for (const std::size_t count : ScriptedRandom::Draws()) {
            hash.Add(DrawMark(count));
        }
        return true;
    });
    return hash.Value();
}

// The sweep over sizes, pitches and patterns with one value for each option.
Sweep SweepOver(const Case& option) {
    Sweep sweep;
    sweep.sizes = Sizes();
    sweep.flips = {option.flip};
    sweep.ditherLevels = {option.ditherLevel};
    sweep.rotationDegrees = {option.rotationDegree};
    sweep.walks = {option.walk};
    sweep.randomizeNoiseOffsets = {option.randomizeNoiseOffsets};
    sweep.inPlace = {option.inPlace};
    sweep.positions = {{option.xPosition, option.yPosition}};
    sweep.alphas = {option.alpha};
    sweep.matrices = {option.matrix};
    sweep.pitches = {Pitches::Tight, Pitches::Odd};
    sweep.placements = {Placement::Rear};
    sweep.patterns = {Pattern::Extremes, Pattern::Ramp, Pattern::Alternating, Pattern::Full, Pattern::Zeros};
    return sweep;
}

void RequireScriptedDraws() {
    char byte[1];
    ScriptedRandom::ServeSeed(kSeed);
    if (KorRandomGetBytes(byte, sizeof byte) == 0 || ScriptedRandom::Draws().size() != 1) {
        throw std::logic_error("the random service of this program does not serve the scripted draws of the digests");
    }
}

std::string Hex(std::uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016" PRIx64, value);
    return text;
}

bool ParseHex(const std::string& text, std::uint64_t& value) {
    if (text.size() != 16 || text.find_first_not_of("0123456789abcdef") != std::string::npos) {
        return false;
    }
    value = std::stoull(text, nullptr, 16);
    return true;
}

}  // namespace

std::vector<Digest> MakeDigests(const KorConformanceTable& table) {
    return MakeDigests([&table](const Entry& entry, const PlaneView* planes, const Case& options) {
        Call(entry.of(table), planes, options);
    });
}

std::vector<Digest> MakeDigests(const Caller& call) {
    RequireScriptedDraws();
    std::vector<Digest> digests;
    Memory memory;
    for (const Entry& entry : Catalogue()) {
        Sweep options = entry.options();
        // A matrix that shares memory with a plane has the byte order of the machine.
        options.matrixPlaces = {MatrixPlace::Own};
        ForEachOption(options, Case{}, [&](const Case& option) {
            digests.push_back(
                {entry.name, NameOption(options, option), DigestOption(entry, call, SweepOver(option), memory)});
            return true;
        });
    }
    return digests;
}

std::string WriteManifest(const std::vector<Digest>& digests) {
    std::string text =
        "# What the library writes, as digests: function, option, 64-bit FNV-1a over every byte of every plane of a "
        "fixed\n"
        "# set of cases. Every build on every machine has to reproduce this file. A change of a line is a change of a\n"
        "# result. Made by \"kordigest --write FILE\", held by \"kordigest --check FILE\" and \"korframe verify\".\n";
    for (const Digest& digest : digests) {
        text += digest.function + " " + digest.option + " " + Hex(digest.value) + "\n";
    }
    return text;
}

std::vector<Digest> ReadManifest(const std::string& text) {
    std::vector<Digest> digests;
    std::istringstream lines(text);
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::istringstream words(line);
        Digest digest;
        std::string hex;
        std::string more;
        words >> digest.function >> digest.option >> hex;
        if (!ParseHex(hex, digest.value) || words >> more) {
            throw std::runtime_error("line " + std::to_string(number) +
                                     " is not a function, an option and 16 hexadecimal digits: " + line);
        }
        digests.push_back(digest);
    }
    return digests;
}

std::vector<std::string> CompareDigests(const std::vector<Digest>& expected, const std::vector<Digest>& found) {
    using Key = std::pair<std::string, std::string>;
    std::map<Key, std::uint64_t> values;
    for (const Digest& digest : found) {
        values[{digest.function, digest.option}] = digest.value;
    }
    std::vector<std::string> differences;
    for (const Digest& digest : expected) {
        const std::string title = digest.function + " " + digest.option + ": expected " + Hex(digest.value);
        const auto value = values.find({digest.function, digest.option});
        if (value == values.end()) {
            differences.push_back(title + ", found nothing");
            continue;
        }
        if (value->second != digest.value) {
            differences.push_back(title + ", found " + Hex(value->second));
        }
        values.erase(value);
    }
    for (const auto& value : values) {
        differences.push_back(value.first.first + " " + value.first.second + ": expected nothing, found " +
                              Hex(value.second));
    }
    return differences;
}

std::size_t CountFunctions(const std::vector<Digest>& digests) {
    std::set<std::string> names;
    for (const Digest& digest : digests) {
        names.insert(digest.function);
    }
    return names.size();
}

}  // namespace kit
