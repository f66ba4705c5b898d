#include "conformance/kit/Manner.h"

#include "conformance/core/Pattern.h"
#include "conformance/kit/SecondThread.h"

namespace kit {

// One case in so many; a second thread and protected pages cost as much as many plain calls.
Manner MannerOf(std::size_t number, bool isLong) {
    Manner manner;
    if (number == 0) {
        return manner;
    }
    Noise noise(MixSeed(0x3a77e5, number));
    if (noise.Below(4) == 0) {
        manner.floats = static_cast<FloatMode>(1 + noise.Below(3));
    }
    manner.secondThread = noise.Below(isLong ? 2 : 64) == 0;
    manner.repeated = noise.Below(isLong ? 4 : 64) == 0;
    if (noise.Below(isLong ? 4 : 64) == 0) {
        manner.reach = Reach::SourcesReadOnly;
    } else if (noise.Below(128) == 0) {
        manner.reach = Reach::RowsOnPages;
    }
    return manner;
}

std::string Describe(const Manner& manner) {
    std::string text;
    if (manner.floats != FloatMode::Usual) {
        text += std::string("; rounding ") + NameOf(manner.floats) + ", denormal numbers flushed to zero";
    }
    if (manner.reach == Reach::SourcesReadOnly) {
        text += "; sources read-only";
    } else if (manner.reach == Reach::RowsOnPages) {
        text += "; unmapped pages between the rows";
    }
    if (manner.secondThread) {
        text += "; on a second thread with a stack of " + std::to_string(SecondThread::StackBytes() / 1024) + " KiB";
    }
    if (manner.repeated) {
        text += "; called again and again";
    }
    return text;
}

}  // namespace kit
