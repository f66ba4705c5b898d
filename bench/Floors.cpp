#include "bench/Floors.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "bench/Cases.h"

namespace bench {

Floors::Floors(const std::string& path) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error(path + ": cannot be opened");
    }
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        double floor = 0;
        std::string pattern;
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (!(words >> floor) || !std::getline(words >> std::ws, pattern)) {
            throw std::runtime_error(
                std::string(path).append(": expected a ratio and a pattern, found: ").append(line));
        }
        floors_.emplace_back(pattern, floor);
    }
}

std::optional<double> Floors::Find(const std::string& label) const {
    for (const auto& [pattern, floor] : floors_) {
        if (Matches(label, pattern)) {
            return floor;
        }
    }
    return std::nullopt;
}

}  // namespace bench
