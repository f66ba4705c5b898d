// Values as they stand on the command line and in headers.
#ifndef KORFRAME_PARSE_H
#define KORFRAME_PARSE_H

#include <cstddef>
#include <optional>
#include <string>

#include "Kor/Video/Common/KorVideoFrame.h"
#include "PixelFormat.h"

namespace korframe {

struct Size {
    std::size_t width = 0;
    std::size_t height = 0;
};

struct Position {
    long x = 0;
    long y = 0;
};

// Decimal digits and nothing else, of a value below 10^18.
std::optional<unsigned long long> ParseNumber(const std::string& text);
// "25:1"; both may be 0, as Y4M has it for unknown.
bool IsRatio(const std::string& text);
// "16,-8"
std::optional<Position> ReadPosition(const std::string& text);
extern const char* const kPositionWanted;

// These take the name of the option for the message and throw a usage error for what they cannot read.
Size ParseSize(const std::string& option, const std::string& text);
Position ParsePosition(const std::string& option, const std::string& text);
std::string ParseRate(const std::string& option, const std::string& text);
KorImageRotationDegree ParseAngle(const std::string& option, const std::string& text);
KorVideoFrameDitherLevel ParseDitherLevel(const std::string& option, const std::string& text);
unsigned long long ParseUnsigned(const std::string& option, const std::string& text, unsigned long long most);
const PixelFormat& ParseFormat(const std::string& option, const std::string& text,
                               bool (*pick)(const PixelFormat&) = nullptr);

}  // namespace korframe

#endif
