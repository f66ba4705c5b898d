// JPEG through libjpeg-turbo. Its errors leave by longjmp, which must not pass over a destructor: the functions that
// call setjmp, and everything below them, hold nothing but plain data, and the C++ side reads the outcome from Decoder.
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them

#include <jpeglib.h>
// After jpeglib.h:
#include <jerror.h>

#include <csetjmp>
#include <cstring>

#include "Errors.h"
#include "PictureFile.h"

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

// Level -1 tells of damaged data, which the library would paper over with grey. Stray bytes between segments are the
// one kind that costs nothing and that cameras do write.
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

// Frees what the library holds, on every way out. Harmless on a decoder that was zeroed and never begun.
class DecoderCloser {
  public:
    explicit DecoderCloser(Decoder& decoder)
        : decoder_(decoder) {}
    ~DecoderCloser() { jpeg_destroy_decompress(&decoder_.jpeg); }
    DecoderCloser(const DecoderCloser&) = delete;
    DecoderCloser& operator=(const DecoderCloser&) = delete;

  private:
    Decoder& decoder_;
};

[[noreturn]] void FailDamaged(const std::string& name, const Decoder& decoder) {
    FailFile(name, std::string("is a JPEG file that cannot be read (") + decoder.message +
                       "); a complete 8-bit one is wanted");
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
        FailFile(name, "is a JPEG file in CMYK, the colours of print; grey, RGB or YCbCr is wanted");
    }
    CheckSize(name, decoder.jpeg.image_width, decoder.jpeg.image_height);
    Frame picture(FormatOf(Layout::Rgba), decoder.jpeg.image_width, decoder.jpeg.image_height);
    if (!ReadRows(decoder, picture.Data(), picture.Pitch())) {
        FailDamaged(name, decoder);
    }
    return picture;
}

}  // namespace korframe
