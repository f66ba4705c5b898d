// PNG through libpng's simplified interface: it reports errors as return values, so no longjmp can skip a destructor,
// and it converts palettes, greyscale, 16-bit samples and any transparency to the requested bytes.
#include <png.h>
#include <zlib.h>

#include <cstring>

#include "io/Errors.h"
#include "io/PictureFile.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

class PngImage {
  public:
    PngImage() {
        std::memset(&image, 0, sizeof image);
        image.version = PNG_IMAGE_VERSION;
    }
    ~PngImage() { png_image_free(&image); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;

    png_image image;
};

std::uint32_t BigEndian(const std::uint8_t* bytes) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

// The simplified interface stops at the last pixel. The chunks show whether the rest is there and the data intact: each
// has its length, its kind and, at the end, a checksum of everything but the length.
void CheckChunks(const std::string& name, const std::vector<std::uint8_t>& file) {
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kAround = 12;
    std::size_t at = kSignature;
    for (bool end = false; !end;) {
        const std::size_t left = file.size() - at;
        if (left < kAround || left - kAround < BigEndian(&file[at])) {
            FailFile(name, "is a truncated PNG file: its final chunk (IEND) is missing");
        }
        const std::size_t length = BigEndian(&file[at]);
        const std::uint8_t* kind = &file[at + 4];
        const bool critical = (kind[0] & 0x20) == 0;
        if (critical && crc32(0, kind, static_cast<uInt>(length + 4)) != BigEndian(kind + 4 + length)) {
            FailFile(name, "is a damaged PNG file (the checksum at byte " + std::to_string(at + 8 + length) +
                               " does not match its chunk); expected an intact one");
        }
        end = std::memcmp(kind, "IEND", 4) == 0;
        at += kAround + length;
    }
}

}  // namespace

Frame DecodePng(const std::string& name, const std::vector<std::uint8_t>& file) {
    PngImage png;
    if (png_image_begin_read_from_memory(&png.image, file.data(), file.size()) == 0) {
        FailFile(name, std::string("is a damaged PNG file (") + png.image.message + "); expected an intact one");
    }
    CheckSize(name, png.image.width, png.image.height);
    png.image.format = PNG_FORMAT_RGBA;
    png.image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // without a gamma in the file, treat it as sRGB, like 8-bit files
    Frame picture(FormatOf(Layout::Rgba), png.image.width, png.image.height);
    if (png_image_finish_read(&png.image, nullptr, picture.Data(), 0, nullptr) == 0) {
        FailFile(name, std::string("is a damaged PNG file (") + png.image.message + "); expected an intact one");
    }
    CheckChunks(name, file);
    return picture;
}

std::vector<std::uint8_t> EncodePng(const std::string& name, const Frame& rgb24) {
    PngImage png;
    png.image.width = static_cast<png_uint_32>(rgb24.Width());
    png.image.height = static_cast<png_uint_32>(rgb24.Height());
    png.image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.image);
    std::vector<std::uint8_t> file(size);
    if (png_image_write_to_memory(&png.image, file.data(), &size, 0, rgb24.Data(), 0, nullptr) == 0) {
        FailFile(name, std::string("cannot be encoded: ") + png.image.message);
    }
    file.resize(size);
    return file;
}

}  // namespace korframe
