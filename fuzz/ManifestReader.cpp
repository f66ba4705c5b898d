// The reader of manifests of digests: arbitrary text either is a list of digests or is rejected with the line that is
// wrong.
#include <stdexcept>
#include <string>

#include "conformance/digest/Digest.h"
#include "fuzz/Harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    try {
        kit::ReadManifest(std::string(input, input + size));
    } catch (const std::runtime_error&) {
        // The message that the user would see.
    }
    return 0;
}
