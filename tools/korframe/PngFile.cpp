// PNG through libpng's simplified interface: it reports errors as return values, so no jump can pass over a
// destructor, and it turns palettes, grey, 16-bit samples and transparency of every kind into the bytes asked for.
#include <png.h>

#include <cstring>

#include "Errors.h"
#include "PictureFile.h"

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

}  // namespace

Frame DecodePng(const std::string& name, const std::vector<std::uint8_t>& file) {
    PngImage png;
    if (png_image_begin_read_from_memory(&png.image, file.data(), file.size()) == 0) {
        FailFile(name, std::string("is a damaged PNG file (") + png.image.message + "); a complete one is wanted");
    }
    CheckSize(name, png.image.width, png.image.height);
    png.image.format = PNG_FORMAT_RGBA;
    png.image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // without a word on gamma in the file, as 8-bit files are taken
    Frame picture(FormatOf(Layout::Rgba), png.image.width, png.image.height);
    if (png_image_finish_read(&png.image, nullptr, picture.Data(), 0, nullptr) == 0) {
        FailFile(name, std::string("is a damaged PNG file (") + png.image.message + "); a complete one is wanted");
    }
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
        FailFile(name, std::string("cannot be made: ") + png.image.message);
    }
    file.resize(size);
    return file;
}

}  // namespace korframe
