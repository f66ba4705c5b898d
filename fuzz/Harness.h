// One differential fuzzer a family: the input's bytes become a call (function, sizes, pitches, options, pixels), the
// library and the literal reference each make it, and every byte of every plane is compared. Planes lie apart from each
// other, each against an unmapped page.
#ifndef KOR_FUZZ_HARNESS_H
#define KOR_FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

// Makes the call that the input describes to one of the functions. Ends the process when library and reference differ.
void TryOne(const char* const* functions, std::size_t count, const std::uint8_t* input, std::size_t size);

}  // namespace fuzz

// What both the fuzzing engine and the plain main program call.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size);

// A family is a file with this line: the names of its functions.
#define KOR_FUZZ_FAMILY(...)                                                             \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) { \
        static const char* const functions[] = {__VA_ARGS__};                            \
        ::fuzz::TryOne(functions, sizeof functions / sizeof *functions, input, size);    \
        return 0;                                                                        \
    }

#endif
