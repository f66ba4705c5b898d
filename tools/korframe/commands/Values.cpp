#include "commands/Values.h"

#include <cstdlib>
#include <optional>
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

std::vector<std::pair<std::string, OutputRequest>> Outputs() {
    std::vector<std::pair<std::string, OutputRequest>> outputs = {
        {"y4m", {Container::Y4m, PictureKind::None, nullptr}},
        {"y4m:i420", {Container::Y4m, PictureKind::None, &FormatOf(Layout::I420)}},
        {"y4m:i444", {Container::Y4m, PictureKind::None, &FormatOf(Layout::I444)}},
        {"png", {Container::Pictures, PictureKind::Png, nullptr}},
        {"ppm", {Container::Pictures, PictureKind::Ppm, nullptr}},
    };
    for (const PixelFormat* format : AllFormats()) {
        outputs.push_back({format->name, {std::nullopt, PictureKind::None, format}});
    }
    return outputs;
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
    for (const auto& [name, output] : Outputs()) {
        if (text == name) {
            request = output;
            return true;
        }
    }
    return false;
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
    std::vector<std::string> names;
    for (const auto& output : Outputs()) {
        names.push_back(output.first);
    }
    return Reads<OutputRequest>(JoinWords(names));
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
            const std::string ratio = text.find(':') == std::string::npos ? text + ":1" : text;
            const auto numbers = ParsePair(ratio, ':', ParseNumber);
            if (!numbers || numbers->first == 0 || numbers->second == 0) {
                return Expected("frames per second, for example 25 or 30000:1001", text);
            }
            text = ratio;
            return "";
        },
        "");
}

CLI::Validator IsLayout(FormatTest pick) {
    Choices layouts;
    std::vector<std::string> names;
    for (const PixelFormat* format : AllFormats()) {
        if (pick == nullptr || pick(*format)) {
            layouts.emplace_back(format->name, static_cast<int>(format->layout));
            names.push_back(format->name);
        }
    }
    return OneOf(layouts, JoinWords(names));
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
