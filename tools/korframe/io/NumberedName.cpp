#include "io/NumberedName.h"

#include "io/Errors.h"
#include "io/Numbers.h"

namespace korframe {

NumberedName::NumberedName(const std::string& pattern) : before_(pattern) {
    for (std::size_t percent = pattern.find('%'); percent != std::string::npos;
         percent = pattern.find('%', percent + 1)) {
        std::size_t end = percent + 1;
        std::size_t digits = 0;
        if (end + 1 < pattern.size() && pattern[end] == '0' && pattern[end + 1] >= '1' && pattern[end + 1] <= '9') {
            digits = static_cast<std::size_t>(pattern[end + 1] - '0');
            end += 2;
        }
        if (end >= pattern.size() || pattern[end] != 'd') {
            continue;
        }
        if (numbered_) {
            FailUsage(pattern + ": has two places for a number; expected one, for example frame-%04d.png");
        }
        before_ = pattern.substr(0, percent);
        after_ = pattern.substr(end + 1);
        digits_ = digits;
        numbered_ = true;
    }
}

std::string NumberedName::For(std::uint64_t number) const {
    std::string digits = std::to_string(number);
    if (digits.size() < digits_) {
        digits.insert(0, digits_ - digits.size(), '0');
    }
    return before_ + digits + after_;
}

std::optional<std::uint64_t> NumberedName::NumberOf(const std::string& name) const {
    const std::size_t around = before_.size() + after_.size();
    if (name.size() <= around) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> number = ParseNumber(name.substr(before_.size(), name.size() - around));
    return number && For(*number) == name ? number : std::nullopt;
}

}  // namespace korframe
