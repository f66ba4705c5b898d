// The tool's reader of pictures of one kind, KOR_FUZZ_PICTURE: arbitrary bytes either give pictures or are rejected
// with an error that says why.
#include <zlib.h>

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "fuzz/Harness.h"
#include "fuzz/MemoryFile.h"
#include "io/Errors.h"
#include "io/PictureSource.h"

namespace {

constexpr korframe::PictureKind kKind = korframe::PictureKind::KOR_FUZZ_PICTURE;

// Larger pictures would only take time.
constexpr std::size_t kMostPixels = std::size_t{1} << 16;

std::uint32_t BigEndian(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

// Makes the checksums of the chunks of a PNG file right, which hardly any change of its bytes would survive otherwise.
void RepairChecksums(std::vector<std::uint8_t>& file) {
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kAround = 12;
    for (std::size_t at = kSignature; at + kAround <= file.size();) {
        const std::size_t length = BigEndian(&file[at]);
        if (length > file.size() - at - kAround) {
            return;
        }
        const uLong checksum = crc32(0, &file[at + 4], static_cast<uInt>(length + 4));
        for (std::size_t byte = 0; byte < 4; ++byte) {
            file[at + 8 + length + byte] = static_cast<std::uint8_t>(checksum >> (24 - 8 * byte));
        }
        const bool last = std::memcmp(&file[at + 4], "IEND", 4) == 0;
        at += kAround + length + (last ? kSignature : 0);
    }
}

void ReadPictures(const fuzz::MemoryFile& file, bool discard) {
    auto input = std::make_unique<korframe::InputFile>(file.Path());
    if (korframe::RecognisePicture(input->Peek(korframe::kSignatureBytes)) != kKind) {
        return;  // another kind of file
    }
    korframe::PictureRequest request;
    request.maxPixels = kMostPixels;
    request.discard = discard;
    korframe::PictureSource source(std::move(input), {}, "input", request, nullptr);
    korframe::Frame frame;
    while (source.Read(frame)) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    korframe::SayErrorsOnly();
    std::vector<std::uint8_t> bytes(input, input + size);
    if (kKind == korframe::PictureKind::Png && size % 2 == 0) {
        RepairChecksums(bytes);
    }
    const fuzz::MemoryFile file(bytes.data(), bytes.size());
    try {
        ReadPictures(file, size % 4 >= 2);
    } catch (const korframe::Error&) {
        // The one-line message that the user would see.
    }
    return 0;
}
