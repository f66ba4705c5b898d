// Numbers in headers and on the command line.
#ifndef KORFRAME_NUMBERS_H
#define KORFRAME_NUMBERS_H

#include <optional>
#include <string>

namespace korframe {

// Decimal digits and nothing else, for a value below 10^18.
std::optional<unsigned long long> ParseNumber(const std::string& text);
// The same after an optional sign.
std::optional<long long> ParseSigned(const std::string& text);
// "25:1", or "0:0", which Y4M uses for unknown.
bool IsRatio(const std::string& text);

}  // namespace korframe

#endif
