#include "Parse.h"

#include <algorithm>
#include <cstdlib>

#include "Errors.h"

namespace korframe {

const char* const kPositionWanted = "column and row are wanted, such as 16,-8";

namespace {

[[noreturn]] void FailValue(const std::string& option, const std::string& text, const std::string& right) {
    FailUsage(option + " " + text + ": " + right);
}

std::optional<long> ParseSigned(const std::string& text) {
    const bool negative = !text.empty() && text[0] == '-';
    const std::optional<unsigned long long> value = ParseNumber(text.substr(negative ? 1 : 0));
    if (!value || *value > 1000000000) {
        return std::nullopt;
    }
    return negative ? -static_cast<long>(*value) : static_cast<long>(*value);
}

}  // namespace

std::optional<unsigned long long> ParseNumber(const std::string& text) {
    const bool digits = std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (text.empty() || text.size() > 18 || !digits) {
        return std::nullopt;
    }
    return std::strtoull(text.c_str(), nullptr, 10);
}

bool IsRatio(const std::string& text) {
    const std::size_t colon = text.find(':');
    return colon != std::string::npos && ParseNumber(text.substr(0, colon)) && ParseNumber(text.substr(colon + 1));
}

Size ParseSize(const std::string& option, const std::string& text) {
    const std::size_t cross = text.find('x');
    const std::optional<unsigned long long> width = ParseNumber(text.substr(0, cross));
    const std::optional<unsigned long long> height =
        cross == std::string::npos ? std::nullopt : ParseNumber(text.substr(cross + 1));
    if (!width || !height) {
        FailValue(option, text, "width and height are wanted, such as 1280x720");
    }
    if (*width < 1 || *height < 1 || *width > kMaxSide || *height > kMaxSide || *width * *height > kMaxPixels) {
        FailValue(option, text,
                  "each side must be 1 to " + std::to_string(kMaxSide) + ", and both together no more than " +
                      std::to_string(kMaxPixels) + " pixels");
    }
    return {static_cast<std::size_t>(*width), static_cast<std::size_t>(*height)};
}

std::optional<Position> ReadPosition(const std::string& text) {
    const std::size_t comma = text.find(',');
    const std::optional<long> x = ParseSigned(text.substr(0, comma));
    const std::optional<long> y = comma == std::string::npos ? std::nullopt : ParseSigned(text.substr(comma + 1));
    return x && y ? std::optional<Position>({*x, *y}) : std::nullopt;
}

Position ParsePosition(const std::string& option, const std::string& text) {
    const std::optional<Position> position = ReadPosition(text);
    if (!position) {
        FailValue(option, text, kPositionWanted);
    }
    return *position;
}

std::string ParseRate(const std::string& option, const std::string& text) {
    const std::string ratio = text.find(':') == std::string::npos ? text + ":1" : text;
    if (!IsRatio(ratio) || *ParseNumber(ratio.substr(0, ratio.find(':'))) == 0 ||
        *ParseNumber(ratio.substr(ratio.find(':') + 1)) == 0) {
        FailValue(option, text, "frames per second are wanted, such as 25 or 30000:1001");
    }
    return ratio;
}

KorImageRotationDegree ParseAngle(const std::string& option, const std::string& text) {
    for (const KorImageRotationDegree angle : {0u, 90u, 180u, 270u}) {
        if (text == std::to_string(angle)) {
            return angle;
        }
    }
    FailValue(option, text, "0, 90, 180 or 270 degrees, clockwise, are wanted");
}

KorVideoFrameDitherLevel ParseDitherLevel(const std::string& option, const std::string& text) {
    if (text == "off") {
        return KOR_VIDEOFRAMEDITHERLEVEL_Off;
    }
    if (text == "0") {
        return KOR_VIDEOFRAMEDITHERLEVEL_0;
    }
    if (text == "1") {
        return KOR_VIDEOFRAMEDITHERLEVEL_1;
    }
    if (text == "2") {
        return KOR_VIDEOFRAMEDITHERLEVEL_2;
    }
    FailValue(option, text, "off, 0 (weakest), 1 or 2 (strongest) is wanted");
}

unsigned long long ParseUnsigned(const std::string& option, const std::string& text, unsigned long long most) {
    const std::optional<unsigned long long> value = ParseNumber(text);
    if (!value || *value > most) {
        FailValue(option, text, "a whole number from 0 to " + std::to_string(most) + " is wanted");
    }
    return *value;
}

const PixelFormat& ParseFormat(const std::string& option, const std::string& text, bool (*pick)(const PixelFormat&)) {
    const PixelFormat* format = FindFormat(text);
    if (format == nullptr || (pick != nullptr && !pick(*format))) {
        FailValue(option, text, "one of " + FormatNames(pick) + " is wanted");
    }
    return *format;
}

}  // namespace korframe
