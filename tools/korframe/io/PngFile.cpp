// PNG through libpng: its full interface to read, since the simplified one decodes some interlaced files wrong, needs
// the whole file and picture in memory and applies gamma; the simplified one to write.
//
// libpng reports errors by longjmp, which must not skip a destructor. The functions that call setjmp, and everything
// below them, therefore hold plain data only, and the C++ side reads the outcome from Reading.
#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>

#include "io/Errors.h"
#include "io/PictureFile.h"

namespace korframe {

namespace {

struct Reading {
    InputFile* input = nullptr;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::exception_ptr failed;  // by reading the input
    char message[128] = "";
};

bool ReadExactly(Reading& reading, std::uint8_t* bytes, std::size_t count) noexcept {
    try {
        return reading.input->Read(bytes, count) == count;
    } catch (...) {
        reading.failed = std::current_exception();
        return false;
    }
}

extern "C" void PngRead(png_structp png, png_bytep bytes, png_size_t count) {
    if (!ReadExactly(*static_cast<Reading*>(png_get_io_ptr(png)), bytes, count)) {
        png_error(png, "it ends too early");
    }
}

extern "C" void PngFail(png_structp png, png_const_charp message) {
    Reading& reading = *static_cast<Reading*>(png_get_error_ptr(png));
    std::snprintf(reading.message, sizeof reading.message, "%s", message);
    png_longjmp(png, 1);
}

// Warnings are about chunks that do not matter here.
extern "C" void PngWarn(png_structp, png_const_charp) {}

bool Begin(Reading& reading) {
    reading.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reading, PngFail, PngWarn);
    if (reading.png == nullptr) {
        return false;
    }
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    reading.info = png_create_info_struct(reading.png);
    png_set_read_fn(reading.png, &reading, PngRead);
    png_set_user_limits(reading.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // the size is checked before a row is read
    png_read_info(reading.png, reading.info);
    return true;
}

// Makes rows RGBA of 8 bits, whatever the file holds.
bool BeginRows(Reading& reading) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_set_expand(reading.png);
    png_set_scale_16(reading.png);
    png_set_gray_to_rgb(reading.png);
    png_set_add_alpha(reading.png, 255, PNG_FILLER_AFTER);
    png_set_interlace_handling(reading.png);
    png_read_update_info(reading.png, reading.info);
    return true;
}

bool ReadOne(Reading& reading, std::uint8_t* rgba) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_read_row(reading.png, rgba, nullptr);
    return true;
}

bool ReadAllRows(Reading& reading, png_bytepp rows) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_read_image(reading.png, rows);
    return true;
}

bool End(Reading& reading) {
    if (setjmp(png_jmpbuf(reading.png)) != 0) {
        return false;
    }
    png_read_end(reading.png, nullptr);
    return true;
}

class PngDecoder : public PictureDecoder {
  public:
    PngDecoder(InputFile& input, std::string name) : name_(std::move(name)) {
        reading_.input = &input;
        const bool begun = Begin(reading_);
        if (!begun) {
            png_destroy_read_struct(&reading_.png, &reading_.info, nullptr);
            Fail();
        }
        header_.width = png_get_image_width(reading_.png, reading_.info);
        header_.height = png_get_image_height(reading_.png, reading_.info);
        header_.alpha = (png_get_color_type(reading_.png, reading_.info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                        png_get_valid(reading_.png, reading_.info, PNG_INFO_tRNS) != 0;
        header_.otherGamma = OtherGamma();
        interlaced_ = png_get_interlace_type(reading_.png, reading_.info) != PNG_INTERLACE_NONE;
    }
    ~PngDecoder() override { png_destroy_read_struct(&reading_.png, &reading_.info, nullptr); }
    PngDecoder(const PngDecoder&) = delete;
    PngDecoder& operator=(const PngDecoder&) = delete;

    void ReadRow(std::uint8_t* rgba) override {
        if (row_ == 0 && (!BeginRows(reading_) || (interlaced_ && !Deinterlace()))) {
            Fail();
        }
        if (interlaced_) {
            std::memcpy(rgba, &whole_[row_ * header_.width * 4], header_.width * 4);
        } else if (!ReadOne(reading_, rgba)) {
            Fail();
        }
        ++row_;
    }

    void Finish() override {
        if (!End(reading_)) {
            Fail();
        }
    }

  private:
    // Each pass spreads over the whole picture, so the first row is complete only after the last pass.
    bool Deinterlace() {
        whole_.resize(header_.width * header_.height * 4);
        std::vector<png_bytep> rows(header_.height);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            rows[row] = &whole_[row * header_.width * 4];
        }
        return ReadAllRows(reading_, rows.data());
    }

    double OtherGamma() const {
        constexpr double kOfSrgb = 1 / 2.2;
        double gamma = 0;
        const bool given = png_get_gAMA(reading_.png, reading_.info, &gamma) != 0 && gamma > 0;
        return given && std::abs(gamma / kOfSrgb - 1) > 0.05 ? gamma : 0;
    }

    [[noreturn]] void Fail() const {
        if (reading_.failed) {
            std::rethrow_exception(reading_.failed);
        }
        FailFile(name_, std::string("is a damaged PNG file (") + reading_.message + "); expected an intact one");
    }

    std::string name_;
    Reading reading_;
    bool interlaced_ = false;
    std::size_t row_ = 0;
    std::vector<std::uint8_t> whole_;  // if interlaced
};

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

std::unique_ptr<PictureDecoder> OpenPng(InputFile& input, const std::string& name) {
    return std::make_unique<PngDecoder>(input, name);
}

std::vector<std::uint8_t> EncodePng(const std::string& name, const Frame& picture) {
    PngImage png;
    png.image.width = static_cast<png_uint_32>(picture.Width());
    png.image.height = static_cast<png_uint_32>(picture.Height());
    png.image.format = picture.Format().HasAlpha() ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
    // Without filters and with a low level: several times as fast, for files that are a little larger.
    png.image.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.image);
    // Memory for the largest file that can be; what the file does not fill is never touched.
    const std::unique_ptr<std::uint8_t[]> file(new std::uint8_t[size]);
    if (png_image_write_to_memory(&png.image, file.get(), &size, 0, picture.Data(), 0, nullptr) == 0) {
        FailFile(name, std::string("cannot be encoded: ") + png.image.message);
    }
    return std::vector<std::uint8_t>(file.get(), file.get() + size);
}

}  // namespace korframe
