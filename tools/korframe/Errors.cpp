#include "Errors.h"

#include <cctype>
#include <cstdio>

namespace korframe {

void SayLine(const std::string& message) {
    std::string line = "korframe: " + message;
    for (char& c : line) {
        if (std::iscntrl(static_cast<unsigned char>(c)) != 0) {
            c = '?';
        }
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace korframe
