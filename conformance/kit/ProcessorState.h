// Calls a function with every register that it has to preserve filled with a known value, and tells which of them, and
// which floating-point controls and flags, it did not leave as they were.
#ifndef KOR_CONFORMANCE_KIT_PROCESSORSTATE_H
#define KOR_CONFORMANCE_KIT_PROCESSORSTATE_H

#include <string>

#include "conformance/core/Functions.h"

namespace kit {

// How floating-point arithmetic works during a call. All but the usual mode also flush denormal numbers to zero where
// the processor can.
enum class FloatMode {
    Usual,
    Down,
    Up,
    TowardZero,
};

const char* NameOf(FloatMode mode);

// What a call left behind. Plain data, because a fault may leave the call by a jump.
struct ProcessorChange {
    static constexpr int kMost = 24;
    const char* parts[kMost] = {};  // names of what has changed
    int count = 0;

    void Add(const char* part) {
        if (count < kMost) {
            parts[count++] = part;
        }
    }
    std::string Text() const;
};

// Calls the function in the given mode, and restores the state of the processor whatever the function did to it.
void CallWatched(const AnyFunction& function, const PlaneView* planes, const Case& options, FloatMode mode,
                 ProcessorChange& change);

// The usual state again, after a call that did not return.
void ResetProcessor();

// Whether registers and flags are compared here; elsewhere only the rounding mode is.
bool WatchesRegisters();

}  // namespace kit

#endif
