// The tool's reader of Y4M clips: arbitrary bytes either give frames or are rejected with an error that says why.
#include <algorithm>
#include <memory>
#include <utility>

#include "fuzz/Harness.h"
#include "fuzz/MemoryFile.h"
#include "io/Errors.h"
#include "io/Y4mFile.h"

namespace {

// A header may announce the largest possible picture. Reading it would only take time.
constexpr std::size_t kMostPixels = std::size_t{1} << 20;

void ReadClip(const fuzz::MemoryFile& file) {
    auto input = std::make_unique<korframe::InputFile>(file.Path());
    if (!korframe::IsY4m(input->Peek(10))) {
        return;  // another kind of file
    }
    korframe::Y4mSource source(std::move(input));
    const korframe::StreamInfo& info = source.Info();
    if (info.width > kMostPixels / std::max<std::size_t>(info.height, 1)) {
        return;
    }
    korframe::Frame frame;
    while (source.Read(frame)) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    const fuzz::MemoryFile file(input, size);
    try {
        ReadClip(file);
    } catch (const korframe::Error&) {
        // The one-line message that the user would see.
    }
    return 0;
}
