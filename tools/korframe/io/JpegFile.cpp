// JPEG through libjpeg-turbo, and the orientation of the camera through libexif.
//
// libjpeg-turbo reports errors by longjmp, which must not skip a destructor. The functions that call setjmp, and
// everything below them, therefore hold plain data only, and the C++ side reads the outcome from Decoder.
#include <cstdio>  // jpeglib.h uses FILE and size_t without including them

#include <jpeglib.h>
// After jpeglib.h:
#include <jerror.h>

#include <libexif/exif-data.h>

#include <csetjmp>
#include <cstring>
#include <exception>
#include <memory>
#include <utility>

#include "io/Errors.h"
#include "io/PictureFile.h"

namespace korframe {

namespace {

struct Decoder {
    jpeg_decompress_struct jpeg = {};
    jpeg_error_mgr errors = {};
    jpeg_progress_mgr progress = {};
    jpeg_source_mgr source = {};
    InputFile* input = nullptr;
    std::size_t given = 0;      // bytes of the input that the library has before it
    std::exception_ptr failed;  // by reading the input
    std::jmp_buf jump = {};
    char message[JMSG_LENGTH_MAX] = "";
};

Decoder& DecoderOf(j_common_ptr jpeg) {
    return *static_cast<Decoder*>(jpeg->client_data);
}

extern "C" void JpegFail(j_common_ptr jpeg) {
    Decoder& decoder = DecoderOf(jpeg);
    jpeg->err->format_message(jpeg, decoder.message);
    std::longjmp(decoder.jump, 1);
}

// Level -1 reports damaged data, which the library would paper over with grey. Stray bytes between segments are the one
// harmless kind, and cameras do write them.
extern "C" void JpegWarn(j_common_ptr jpeg, int level) {
    if (level < 0 && jpeg->err->msg_code != JWRN_EXTRANEOUS_DATA) {
        JpegFail(jpeg);
    }
}

// Each scan of a progressive file may cost the time of a whole picture but take only a few bytes. Encoders write about
// ten.
constexpr int kMostScans = 500;

extern "C" void JpegProgress(j_common_ptr jpeg) {
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > kMostScans) {
        Decoder& decoder = DecoderOf(jpeg);
        std::snprintf(decoder.message, sizeof decoder.message, "more than %d scans", kMostScans);
        std::longjmp(decoder.jump, 1);
    }
}

// ---- The input ----

// Gives the library what the input has at hand, in place. False at the end.
bool GiveMore(Decoder& decoder) noexcept {
    try {
        decoder.input->Consume(decoder.given);
        decoder.given = 0;
        decoder.source.next_input_byte = decoder.input->AtHand(decoder.given);
    } catch (...) {
        decoder.failed = std::current_exception();
        decoder.given = 0;
    }
    decoder.source.bytes_in_buffer = decoder.given;
    return decoder.given > 0;
}

extern "C" void JpegInit(j_decompress_ptr) {}

extern "C" boolean JpegFill(j_decompress_ptr jpeg) {
    if (!GiveMore(DecoderOf(reinterpret_cast<j_common_ptr>(jpeg)))) {
        WARNMS(jpeg, JWRN_JPEG_EOF);  // which fails
    }
    return TRUE;
}

extern "C" void JpegSkip(j_decompress_ptr jpeg, long count) {
    if (count <= 0) {
        return;
    }
    std::size_t left = static_cast<std::size_t>(count);
    while (left > jpeg->src->bytes_in_buffer) {
        left -= jpeg->src->bytes_in_buffer;
        JpegFill(jpeg);
    }
    jpeg->src->next_input_byte += left;
    jpeg->src->bytes_in_buffer -= left;
}

// ---- Decoding ----

constexpr int kExif = JPEG_APP0 + 1;
constexpr int kMultiPicture = JPEG_APP0 + 2;
constexpr unsigned kLongestMarker = 65533;

bool Begin(Decoder& decoder) {
    decoder.jpeg.err = jpeg_std_error(&decoder.errors);
    decoder.jpeg.client_data = &decoder;
    decoder.errors.error_exit = JpegFail;
    decoder.errors.emit_message = JpegWarn;
    if (setjmp(decoder.jump) != 0) {
        return false;
    }
    jpeg_create_decompress(&decoder.jpeg);
    decoder.progress.progress_monitor = JpegProgress;
    decoder.jpeg.progress = &decoder.progress;
    decoder.source.init_source = JpegInit;
    decoder.source.fill_input_buffer = JpegFill;
    decoder.source.skip_input_data = JpegSkip;
    decoder.source.resync_to_restart = jpeg_resync_to_restart;
    decoder.source.term_source = JpegInit;
    decoder.jpeg.src = &decoder.source;
    jpeg_save_markers(&decoder.jpeg, kExif, kLongestMarker);
    jpeg_save_markers(&decoder.jpeg, kMultiPicture, 4);
    jpeg_read_header(&decoder.jpeg, TRUE);
    return true;
}

bool BeginRows(Decoder& decoder) {
    if (setjmp(decoder.jump) != 0) {
        return false;
    }
    decoder.jpeg.out_color_space = JCS_EXT_RGBA;
    jpeg_start_decompress(&decoder.jpeg);
    return true;
}

bool ReadOne(Decoder& decoder, std::uint8_t* rgba) {
    if (setjmp(decoder.jump) != 0) {
        return false;
    }
    JSAMPROW row = rgba;
    jpeg_read_scanlines(&decoder.jpeg, &row, 1);
    return true;
}

bool End(Decoder& decoder) {
    if (setjmp(decoder.jump) != 0) {
        return false;
    }
    jpeg_finish_decompress(&decoder.jpeg);
    return true;
}

// ---- Markers ----

bool BeginsWith(const jpeg_marker_struct& marker, const char* text, std::size_t length) {
    return marker.data_length >= length && std::memcmp(marker.data, text, length) == 0;
}

const jpeg_marker_struct* FindMarker(const Decoder& decoder, int kind, const char* text, std::size_t length) {
    const jpeg_marker_struct* marker = decoder.jpeg.marker_list;
    while (marker != nullptr && (marker->marker != kind || !BeginsWith(*marker, text, length))) {
        marker = marker->next;
    }
    return marker;
}

struct Unref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

// 1 to 8 in Exif's numbering; 1 if the file gives none or an unknown one.
unsigned ExifOrientation(const Decoder& decoder) {
    const jpeg_marker_struct* marker = FindMarker(decoder, kExif, "Exif\0", 5);
    if (marker == nullptr) {
        return 1;
    }
    const std::unique_ptr<ExifData, Unref> data(exif_data_new_from_data(marker->data, marker->data_length));
    ExifEntry* entry = data ? exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION) : nullptr;
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components < 1) {
        return 1;
    }
    const unsigned orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

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

class JpegDecoder : public PictureDecoder {
  public:
    JpegDecoder(InputFile& input, std::string name) : name_(std::move(name)) {
        decoder_.input = &input;
        const bool begun = Begin(decoder_);
        if (!begun) {
            jpeg_destroy_decompress(&decoder_.jpeg);
            Fail();
        }
        if (decoder_.jpeg.jpeg_color_space == JCS_CMYK || decoder_.jpeg.jpeg_color_space == JCS_YCCK) {
            jpeg_destroy_decompress(&decoder_.jpeg);
            FailFile(name_, "is a CMYK JPEG file, meant for print; expected greyscale, RGB or YCbCr");
        }
        header_.width = decoder_.jpeg.image_width;
        header_.height = decoder_.jpeg.image_height;
        header_.orientation = kOrientations[ExifOrientation(decoder_) - 1];
        header_.ownsRest = FindMarker(decoder_, kMultiPicture, "MPF\0", 4) != nullptr;
    }
    ~JpegDecoder() override { jpeg_destroy_decompress(&decoder_.jpeg); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    void ReadRow(std::uint8_t* rgba) override {
        if (!begun_ && !BeginRows(decoder_)) {
            Fail();
        }
        begun_ = true;
        if (!ReadOne(decoder_, rgba)) {
            Fail();
        }
    }

    void Finish() override {
        if (!End(decoder_)) {
            Fail();
        }
        decoder_.input->Consume(decoder_.given - decoder_.source.bytes_in_buffer);
    }

  private:
    [[noreturn]] void Fail() const {
        if (decoder_.failed) {
            std::rethrow_exception(decoder_.failed);
        }
        FailFile(name_, std::string("is a JPEG file that cannot be decoded (") + decoder_.message +
                            "); expected a complete 8-bit JPEG");
    }

    std::string name_;
    Decoder decoder_;
    bool begun_ = false;
};

}  // namespace

std::unique_ptr<PictureDecoder> OpenJpeg(InputFile& input, const std::string& name) {
    return std::make_unique<JpegDecoder>(input, name);
}

}  // namespace korframe
