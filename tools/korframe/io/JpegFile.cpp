// JPEG through libjpeg-turbo, and the orientation of the camera through libexif.
//
// libjpeg-turbo reports errors by longjmp, which must not skip a destructor. The functions that call setjmp, and
// everything below them, therefore hold plain data only, and the C++ side reads the outcome from Decoder.
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them

#include <jpeglib.h>
// After jpeglib.h:
#include <jerror.h>

#include <libexif/exif-data.h>

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <utility>

#include "io/Errors.h"
#include "io/PictureFile.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

struct Decoder {
    jpeg_decompress_struct jpeg;
    jpeg_error_mgr errors;
    std::jmp_buf failed;
    char message[JMSG_LENGTH_MAX];
};

Decoder& DecoderOf(j_common_ptr jpeg) {
    return *static_cast<Decoder*>(jpeg->client_data);
}

extern "C" void JpegFail(j_common_ptr jpeg) {
    Decoder& decoder = DecoderOf(jpeg);
    jpeg->err->format_message(jpeg, decoder.message);
    std::longjmp(decoder.failed, 1);
}

// Level -1 reports damaged data, which the library would paper over with grey. Stray bytes between segments are the one
// harmless kind, and cameras do write them.
extern "C" void JpegWarn(j_common_ptr jpeg, int level) {
    if (level < 0 && jpeg->err->msg_code != JWRN_EXTRANEOUS_DATA) {
        JpegFail(jpeg);
    }
}

bool Begin(Decoder& decoder, const std::uint8_t* file, std::size_t size) {
    decoder.jpeg.err = jpeg_std_error(&decoder.errors);
    decoder.jpeg.client_data = &decoder;
    decoder.errors.error_exit = JpegFail;
    decoder.errors.emit_message = JpegWarn;
    if (setjmp(decoder.failed) != 0) {
        return false;
    }
    jpeg_create_decompress(&decoder.jpeg);
    jpeg_mem_src(&decoder.jpeg, file, size);
    jpeg_read_header(&decoder.jpeg, TRUE);
    return true;
}

bool ReadRows(Decoder& decoder, std::uint8_t* rows, std::size_t pitch) {
    if (setjmp(decoder.failed) != 0) {
        return false;
    }
    decoder.jpeg.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&decoder.jpeg);
    while (decoder.jpeg.output_scanline < decoder.jpeg.output_height) {
        JSAMPROW row = rows + decoder.jpeg.output_scanline * pitch;
        jpeg_read_scanlines(&decoder.jpeg, &row, 1);
    }
    jpeg_finish_decompress(&decoder.jpeg);
    return true;
}

// Frees what the library holds, however the scope is left. Harmless for a zeroed decoder that never began.
class DecoderCloser {
  public:
    explicit DecoderCloser(Decoder& decoder) : decoder_(decoder) {}
    ~DecoderCloser() { jpeg_destroy_decompress(&decoder_.jpeg); }
    DecoderCloser(const DecoderCloser&) = delete;
    DecoderCloser& operator=(const DecoderCloser&) = delete;

  private:
    Decoder& decoder_;
};

struct Unref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

// 1 to 8 in Exif's numbering; 1 if the file gives none or an unknown one.
unsigned OrientationOf(const std::vector<std::uint8_t>& file) {
    const auto size = static_cast<unsigned>(std::min<std::size_t>(file.size(), UINT_MAX));
    const std::unique_ptr<ExifData, Unref> data(exif_data_new_from_data(file.data(), size));
    ExifEntry* entry = data ? exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION) : nullptr;
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components < 1) {
        return 1;
    }
    const unsigned orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

// How to make a picture upright: transpose, then mirror left to right, then flip top to bottom.
struct Orientation {
    bool transpose;
    bool mirror;
    bool flip;
};

constexpr Orientation kOrientations[] = {
    {false, false, false},  // 1: upright
    {false, true, false},   // 2: mirrored
    {false, true, true},    // 3: upside down
    {false, false, true},   // 4: flipped
    {true, false, false},   // 5: row 0 is the left side
    {true, true, false},    // 6: row 0 is the right side, so rotate clockwise by 90 degrees
    {true, true, true},     // 7: row 0 is the right side, bottom first
    {true, false, true},    // 8: row 0 is the left side, bottom first
};

Frame MakeUpright(Frame picture, unsigned orientation) {
    if (orientation == 1) {
        return picture;
    }
    const Orientation to = kOrientations[orientation - 1];
    Frame upright(picture.Format(), to.transpose ? picture.Height() : picture.Width(),
                  to.transpose ? picture.Width() : picture.Height());
    for (std::size_t row = 0; row < picture.Height(); ++row) {
        for (std::size_t column = 0; column < picture.Width(); ++column) {
            const std::size_t x = to.transpose ? row : column;
            const std::size_t y = to.transpose ? column : row;
            std::memcpy(upright.Pixel(to.mirror ? upright.Width() - 1 - x : x, to.flip ? upright.Height() - 1 - y : y),
                        picture.Pixel(column, row), picture.Format().rgb.bytes);
        }
    }
    return upright;
}

[[noreturn]] void FailDamaged(const std::string& name, const Decoder& decoder) {
    FailFile(name, std::string("is a JPEG file that cannot be decoded (") + decoder.message +
                       "); expected a complete 8-bit JPEG");
}

}  // namespace

Frame DecodeJpeg(const std::string& name, const std::vector<std::uint8_t>& file) {
    Decoder decoder;
    std::memset(&decoder, 0, sizeof decoder);
    const DecoderCloser closer(decoder);
    if (!Begin(decoder, file.data(), file.size())) {
        FailDamaged(name, decoder);
    }
    if (decoder.jpeg.jpeg_color_space == JCS_CMYK || decoder.jpeg.jpeg_color_space == JCS_YCCK) {
        FailFile(name, "is a CMYK JPEG file, meant for print; expected greyscale, RGB or YCbCr");
    }
    CheckSize(name, decoder.jpeg.image_width, decoder.jpeg.image_height);
    Frame picture(FormatOf(Layout::Rgba), decoder.jpeg.image_width, decoder.jpeg.image_height);
    if (!ReadRows(decoder, picture.Data(), picture.Pitch())) {
        FailDamaged(name, decoder);
    }
    return MakeUpright(std::move(picture), OrientationOf(file));
}

}  // namespace korframe
