// The tool's reader of raw frames: of any layout, size and padding, the file gives frames, or an error that says why
// not.
#include <memory>

#include "fuzz/Harness.h"
#include "fuzz/Input.h"
#include "fuzz/MemoryFile.h"
#include "io/Errors.h"
#include "io/RawFile.h"

namespace {

void ReadFrames(fuzz::Input& input) {
    const auto& formats = korframe::AllFormats();
    const korframe::PixelFormat& format = *formats[input.Below(static_cast<std::uint32_t>(formats.size()))];
    const std::size_t width = input.Below(40);
    const std::size_t height = input.Below(40);
    korframe::Strides strides;
    for (std::uint32_t planes = input.Below(5); planes > 0; --planes) {
        strides.planes.push_back({input.Below(200), input.Below(50)});
    }
    const fuzz::MemoryFile file(input.Bytes(), input.Size());
    korframe::RawSource source(std::make_unique<korframe::InputFile>(file.Path()), format, width, height, strides);
    korframe::Frame frame;
    while (source.Read(frame)) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    korframe::SayErrorsOnly();
    fuzz::Input input(bytes, size);
    try {
        ReadFrames(input);
    } catch (const korframe::Error&) {
        // The one-line message that the user would see.
    }
    return 0;
}
