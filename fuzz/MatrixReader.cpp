// The tool's reader of matrix files: nine coefficients within their bounds, or an error that says what is wrong.
#include <cstdlib>

#include "fuzz/Harness.h"
#include "fuzz/MemoryFile.h"
#include "io/Errors.h"
#include "pipeline/Matrix.h"

namespace {

constexpr KorInt kLargest = 65536;

void ReadMatrix(const fuzz::MemoryFile& file) {
    korframe::InputFile reader(file.Path());
    const korframe::Matrix matrix = korframe::ReadMatrix(reader);
    for (const auto& row : matrix.coefficients) {
        for (const KorInt coefficient : row) {
            if (coefficient < -kLargest || coefficient > kLargest) {
                std::abort();
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    const fuzz::MemoryFile file(input, size);
    try {
        ReadMatrix(file);
    } catch (const korframe::Error&) {
        // The one-line message that the user would see.
    }
    return 0;
}
