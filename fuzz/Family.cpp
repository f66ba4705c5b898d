// The fuzzer of one family of functions, KOR_FUZZ_FAMILY.
#include "fuzz/Harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    fuzz::TryOne(kit::Family::KOR_FUZZ_FAMILY, input, size);
    return 0;
}
