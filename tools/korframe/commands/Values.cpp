#include "commands/Values.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "io/Errors.h"
#include "io/Numbers.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace korframe {

namespace {

const char* const kPositionExpected = "column and row, for example 16,-8";

// Two numbers with a separator between them.
template <typename Number>
std::optional<std::pair<Number, Number>> ParsePair(const std::string& text, char separator,
                                                   std::optional<Number> (*parse)(const std::string&)) {
    const std::size_t at = text.find(separator);
    if (at == std::string::npos) {
        return std::nullopt;
    }
    const std::optional<Number> first = parse(text.substr(0, at));
    const std::optional<Number> second = parse(text.substr(at + 1));
    return first && second ? std::make_optional(std::make_pair(*first, *second)) : std::nullopt;
}

template <typename Value>
CLI::Validator Reads(const std::string& expected) {
    return CLI::Validator(
        [expected](std::string& text) {
            Value value;
            return lexical_cast(text, value) ? "" : Expected(expected, text);
        },
        "");
}

// "a, b or c"
std::string JoinWords(const std::vector<std::string>& words) {
    std::string joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        joined += (i == 0 ? "" : i + 1 < words.size() ? ", " : " or ") + words[i];
    }
    return joined;
}

using Choices = std::vector<std::pair<std::string, int>>;

// One of some words, which becomes the number beside it.
CLI::Validator OneOf(const Choices& choices, const std::string& expected) {
    return CLI::Validator(
        [choices, expected](std::string& text) -> std::string {
            for (const auto& [word, value] : choices) {
                if (text == word) {
                    text = std::to_string(value);
                    return "";
                }
            }
            return Expected(expected, text);
        },
        "");
}

const char* const kY4mOf = "y4m:";

bool IsPlanarYuv(const PixelFormat& format) {
    return format.IsPlanarYuv();
}

std::vector<std::string> NamesOfLayouts(FormatTest pick = nullptr) {
    std::vector<std::string> names;
    for (const PixelFormat* format : AllFormats()) {
        if (pick == nullptr || pick(*format)) {
            names.push_back(format->name);
        }
    }
    return names;
}

std::vector<std::string> NamesOfOutputs() {
    std::vector<std::string> names = {"y4m"};
    for (const std::string& name : NamesOfLayouts(IsPlanarYuv)) {
        names.push_back(kY4mOf + name);
    }
    names.insert(names.end(), {"png", "ppm"});
    const std::vector<std::string> layouts = NamesOfLayouts();
    names.insert(names.end(), layouts.begin(), layouts.end());
    return names;
}

// Frames of 1001/1000 seconds, which decimals only hint at: 23.976, 29.97, 59.94.
std::optional<std::string> NtscRate(double rate) {
    for (const int whole : {24, 30, 48, 60, 120, 240}) {
        if (std::abs(rate - whole * 1000 / 1001.0) < 0.0051 * whole / 30) {
            return std::to_string(whole * 1000) + ":1001";
        }
    }
    return std::nullopt;
}

// "29.97", with up to three digits behind the point.
std::optional<std::string> DecimalRate(const std::string& text) {
    const std::size_t point = text.find('.');
    const std::string fraction = point == std::string::npos ? "" : text.substr(point + 1);
    const auto whole = ParseNumber(text.substr(0, point));
    const auto digits = ParseNumber(fraction);
    if (!whole || !digits || fraction.size() > 3 || *whole > 1000000) {
        return std::nullopt;
    }
    unsigned long long parts = 1;
    for (std::size_t i = 0; i < fraction.size(); ++i) {
        parts *= 10;
    }
    const unsigned long long count = *whole * parts + *digits;
    if (count == 0) {
        return std::nullopt;
    }
    const double rate = static_cast<double>(count) / static_cast<double>(parts);
    if (const std::optional<std::string> ntsc = NtscRate(rate); ntsc && *digits != 0) {
        return ntsc;
    }
    const unsigned long long shared = std::gcd(count, parts);
    return std::to_string(count / shared) + ":" + std::to_string(parts / shared);
}

// The last colon if a position follows it; names may have colons, too.
std::size_t FindPosition(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 == text.size()) {
        return std::string::npos;
    }
    const bool position = text.find('/', colon) == std::string::npos && text.find(',', colon) != std::string::npos;
    return position ? colon : std::string::npos;
}

}  // namespace

bool lexical_cast(const std::string& text, Size& size) {
    const auto sides = ParsePair(text, 'x', ParseNumber);
    if (!sides) {
        return false;
    }
    size = {static_cast<std::size_t>(sides->first), static_cast<std::size_t>(sides->second)};
    return true;
}

bool lexical_cast(const std::string& text, Position& position) {
    constexpr long long kFarthest = 1000000000;
    const auto place = ParsePair(text, ',', ParseSigned);
    if (!place || std::abs(place->first) > kFarthest || std::abs(place->second) > kFarthest) {
        return false;
    }
    position = {static_cast<long>(place->first), static_cast<long>(place->second)};
    return true;
}

bool lexical_cast(const std::string& text, OutputRequest& request) {
    const std::string name = SmallLetters(text);
    request = OutputRequest();
    if (name == "png" || name == "ppm") {
        request.container = Container::Pictures;
        request.picture = name == "png" ? PictureKind::Png : PictureKind::Ppm;
        return true;
    }
    if (name == "y4m") {
        request.container = Container::Y4m;
        return true;
    }
    const bool y4m = name.compare(0, std::strlen(kY4mOf), kY4mOf) == 0;
    request.layout = FindFormat(y4m ? name.substr(std::strlen(kY4mOf)) : name);
    if (y4m) {
        request.container = Container::Y4m;
    }
    return request.layout != nullptr && (!y4m || request.layout->IsPlanarYuv());
}

bool lexical_cast(const std::string& text, CropRequest& crop) {
    const std::size_t plus = text.find('+');
    if (plus == std::string::npos || !lexical_cast(text.substr(0, plus), crop.size)) {
        return false;
    }
    const auto place = ParsePair(text.substr(plus + 1), '+', ParseNumber);
    if (!place || crop.size.width == 0 || crop.size.height == 0) {
        return false;
    }
    crop.x = static_cast<std::size_t>(place->first);
    crop.y = static_cast<std::size_t>(place->second);
    return std::max({crop.size.width, crop.size.height, crop.x, crop.y}) <= kMaxSide;
}

// "5-9", "5-", "-9" or "5".
bool lexical_cast(const std::string& text, FrameRange& frames) {
    frames = FrameRange();
    const std::size_t dash = text.find('-');
    const std::string first = text.substr(0, dash);
    const std::string last = dash == std::string::npos ? first : text.substr(dash + 1);
    if ((first.empty() && last.empty()) || (!first.empty() && !ParseNumber(first)) ||
        (!last.empty() && !ParseNumber(last))) {
        return false;
    }
    frames.first = ParseNumber(first).value_or(frames.first);
    frames.last = ParseNumber(last).value_or(frames.last);
    return frames.first >= 1 && frames.first <= frames.last;
}

// "324x182,164": bytes, and the rows of the plane if there are more than the picture has.
bool lexical_cast(const std::string& text, Strides& strides) {
    strides.planes.clear();
    std::istringstream planes(text + ",");
    for (std::string plane; std::getline(planes, plane, ',');) {
        const std::size_t cross = plane.find('x');
        const auto bytes = ParseNumber(plane.substr(0, cross));
        const auto rows = cross == std::string::npos ? std::make_optional(0ull) : ParseNumber(plane.substr(cross + 1));
        if (!bytes || !rows || *bytes > kMaxStride || *rows > kMaxSide) {
            return false;
        }
        strides.planes.push_back({static_cast<std::size_t>(*bytes), static_cast<std::size_t>(*rows)});
    }
    return strides.planes.size() <= 3;
}

std::string Expected(const std::string& expected, const std::string& text) {
    return "expected " + expected + ", not '" + text + "'";
}

CLI::Validator IsSize() {
    return CLI::Validator(
        [](std::string& text) -> std::string {
            Size size;
            if (!lexical_cast(text, size)) {
                return Expected("WIDTHxHEIGHT, for example 1280x720", text);
            }
            if (size.width < 1 || size.height < 1 || size.width > kMaxSide || size.height > kMaxSide ||
                size.width * size.height > kMaxPixels) {
                return Expected("sides of 1 to " + std::to_string(kMaxSide) + " and at most " +
                                    std::to_string(kMaxPixels) + " pixels",
                                text);
            }
            return "";
        },
        "");
}

CLI::Validator IsPosition() {
    return Reads<Position>(kPositionExpected);
}

CLI::Validator IsOutput() {
    return Reads<OutputRequest>(JoinWords(NamesOfOutputs()));
}

CLI::Validator IsCrop() {
    return Reads<CropRequest>("WIDTHxHEIGHT+X+Y, for example 640x360+16+8");
}

CLI::Validator IsFrameRange() {
    return Reads<FrameRange>("the first and the last frame, counted from 1, for example 25-49, 25- or -49");
}

CLI::Validator IsStrides() {
    return Reads<Strides>("the bytes from row to row of each plane, for example 1344 or 328,168,168");
}

CLI::Validator IsRange() {
    return OneOf({{"limited", 0}, {"full", 1}}, "full or limited");
}

CLI::Validator IsDecibels() {
    return CLI::Validator(
        [](std::string& text) -> std::string {
            char* end = nullptr;
            const double decibels = std::strtod(text.c_str(), &end);
            const bool isNumber = !text.empty() && *end == 0 && decibels >= 0 && decibels <= 200;  // NaN is neither
            return isNumber ? "" : Expected("decibels from 0 to 200, for example 40", text);
        },
        "");
}

CLI::Validator IsWholeNumber(unsigned long long least, unsigned long long most) {
    return CLI::Validator(
        [least, most](std::string& text) -> std::string {
            const std::optional<unsigned long long> value = ParseNumber(text);
            if (!value || *value < least || *value > most) {
                return Expected("a whole number from " + std::to_string(least) + " to " + std::to_string(most), text);
            }
            text = std::to_string(*value);  // CLI11 would take leading zeros for octal
            return "";
        },
        "");
}

CLI::Validator IsSeconds(double most) {
    return CLI::Validator(
        [most](std::string& text) -> std::string {
            char* end = nullptr;
            const double seconds = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != 0 || !(seconds >= 0 && seconds <= most)) {  // NaN is neither
                return Expected("seconds from 0 to " + std::to_string(static_cast<int>(most)) + ", for example 0.5",
                                text);
            }
            return "";
        },
        "");
}

CLI::Validator IsRate() {
    return CLI::Validator(
        [](std::string& text) -> std::string {
            std::string ratio = text.find_first_of(":/") == std::string::npos ? text + ":1" : text;
            std::replace(ratio.begin(), ratio.end(), '/', ':');
            const auto numbers = ParsePair(ratio, ':', ParseNumber);
            if (numbers && numbers->first > 0 && numbers->second > 0) {
                text = ratio;
                return "";
            }
            const std::optional<std::string> decimal = DecimalRate(text);
            if (!decimal) {
                return Expected("frames per second, for example 25, 30000:1001 or 29.97", text);
            }
            text = *decimal;
            return "";
        },
        "");
}

CLI::Validator IsLayout(FormatTest pick) {
    return CLI::Validator(
        [pick](std::string& text) -> std::string {
            const PixelFormat* format = FindFormat(text);
            if (format == nullptr || (pick != nullptr && !pick(*format))) {
                return Expected(JoinWords(NamesOfLayouts(pick)), text);
            }
            text = std::to_string(static_cast<int>(format->layout));
            return "";
        },
        "");
}

CLI::Validator IsAngle() {
    return OneOf({{"0", 0}, {"90", 90}, {"180", 180}, {"270", 270}}, "0, 90, 180 or 270 degrees");
}

CLI::Validator IsDitherLevel() {
    return OneOf({{"off", KOR_VIDEOFRAMEDITHERLEVEL_Off},
                  {"0", KOR_VIDEOFRAMEDITHERLEVEL_0},
                  {"1", KOR_VIDEOFRAMEDITHERLEVEL_1},
                  {"2", KOR_VIDEOFRAMEDITHERLEVEL_2}},
                 "off, 0 (weakest), 1 or 2 (strongest)");
}

OverlayRequest ParseOverlay(const std::string& option, const std::string& text) {
    OverlayRequest request;
    request.option = option + " " + text;
    const auto fail = [&](const std::string& expected, const std::string& found) {
        FailUsage(request.option + ": " + Expected(expected, found));
    };
    const std::size_t colon = FindPosition(text);
    request.input.path = text.substr(0, colon);
    request.input.sizeOption = nullptr;
    request.input.fromOption = nullptr;
    request.input.pictureOrder = &FormatOf(Layout::Bgra);
    if (request.input.path.empty()) {
        fail("the name of a picture or clip and optionally its position, for example logo.png:16,16", text);
    }
    if (colon != std::string::npos) {
        std::string position = text.substr(colon + 1);
        const std::size_t second = position.find(',', position.find(',') + 1);
        if (second != std::string::npos) {
            const std::string alpha = position.substr(second + 1);
            const std::optional<unsigned long long> value = ParseNumber(alpha);
            request.ownAlpha = alpha == "own";
            if (!request.ownAlpha && (!value || *value > 255)) {
                fail("an opacity from 0 to 255, or own for the overlay's alpha channel", alpha);
            }
            request.alpha = static_cast<std::uint8_t>(value.value_or(255));
            position.resize(second);
        }
        if (!lexical_cast(position, request.at)) {
            fail(kPositionExpected, position);
        }
    }
    request.input.keepAlpha = request.ownAlpha;
    request.input.alphaAdvice = "own as its opacity blends by their alpha";
    return request;
}

}  // namespace korframe
