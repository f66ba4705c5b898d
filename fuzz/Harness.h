// One differential fuzzer per family: the input's bytes become a call (function, sizes, pitches, options, pixels), the
// library and the literal reference both make it, and every byte of every plane is compared. Each plane has memory of
// its own, against an unmapped page. The library is the dispatched one, under the target that KOR_TARGET names.
#ifndef KOR_FUZZ_HARNESS_H
#define KOR_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>

#include "conformance/core/Catalogue.h"

namespace fuzz {

// Makes the call that the input describes to a function of the family. Ends the process if library and reference
// differ.
void TryOne(kit::Family family, const std::uint8_t* input, std::size_t size);

}  // namespace fuzz

// The entry point for both the fuzzing engine and the plain main program.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size);

#endif
