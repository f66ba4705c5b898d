// One differential fuzzer a family: the input's bytes become a call (function, sizes, pitches, options, pixels), the
// library and the literal reference each make it, and every byte of every plane is compared. Planes lie apart from each
// other, each against an unmapped page.
#ifndef KOR_FUZZ_HARNESS_H
#define KOR_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>

#include "conformance/core/Catalogue.h"

namespace fuzz {

// Makes the call that the input describes to a function of the family. Ends the process when library and reference differ.
void TryOne(kit::Family family, const std::uint8_t* input, std::size_t size);

}  // namespace fuzz

// What both the fuzzing engine and the plain main program call.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size);

#endif
