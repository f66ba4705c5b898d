#include "io/Numbers.h"

#include <algorithm>
#include <cstdlib>

namespace korframe {

std::optional<unsigned long long> ParseNumber(const std::string& text) {
    const bool digits = std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (text.empty() || text.size() > 18 || !digits) {
        return std::nullopt;
    }
    return std::strtoull(text.c_str(), nullptr, 10);
}

std::optional<long long> ParseSigned(const std::string& text) {
    const bool sign = !text.empty() && (text[0] == '-' || text[0] == '+');
    const std::optional<unsigned long long> value = ParseNumber(text.substr(sign ? 1 : 0));
    if (!value) {
        return std::nullopt;
    }
    return text[0] == '-' ? -static_cast<long long>(*value) : static_cast<long long>(*value);
}

bool IsRatio(const std::string& text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return false;
    }
    const auto first = ParseNumber(text.substr(0, colon));
    const auto second = ParseNumber(text.substr(colon + 1));
    return first && second && (*first == 0) == (*second == 0);
}

}  // namespace korframe
