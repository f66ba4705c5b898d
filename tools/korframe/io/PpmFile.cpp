// The PPM family: P3 and P6 in colour, P2 and P5 in greyscale; samples are one or two bytes or decimal numbers.
#include <cctype>

#include "io/Errors.h"
#include "io/PictureFile.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

class PpmReader {
  public:
    PpmReader(const std::string& name, const std::vector<std::uint8_t>& file) : name_(name), file_(file) {}

    // A decimal number and the white space and comments (from '#' to the end of the line) before it.
    unsigned Number(const char* what) {
        SkipSpace();
        if (at_ == file_.size()) {
            FailFile(name_, std::string("ends before ") + what + "; expected a complete PPM file");
        }
        unsigned value = 0;
        for (const std::size_t begin = at_; at_ == begin || (at_ < file_.size() && std::isdigit(file_[at_]) != 0);
             ++at_) {
            if (std::isdigit(file_[at_]) == 0 || value > 99999) {
                FailFile(name_, "has no number at byte " + std::to_string(begin) +
                                    " of the PPM file; expected up to six digits for " + what);
            }
            value = value * 10 + (file_[at_] - unsigned{'0'});
        }
        return value;
    }

    // The single space between header and binary samples.
    void Separator() {
        if (at_ < file_.size()) {
            ++at_;
        }
    }

    std::size_t Left() const { return file_.size() - at_; }
    unsigned Byte() { return file_[at_++]; }

  private:
    void SkipSpace() {
        for (bool comment = false; at_ < file_.size(); ++at_) {
            if (file_[at_] == '#') {
                comment = true;
            } else if (file_[at_] == '\n') {
                comment = false;
            } else if (!comment && std::isspace(file_[at_]) == 0) {
                return;
            }
        }
    }

    const std::string& name_;
    const std::vector<std::uint8_t>& file_;
    std::size_t at_ = 2;
};

std::uint8_t Scale(const std::string& name, unsigned sample, unsigned maximum) {
    if (sample > maximum) {
        FailFile(name, "has a sample of " + std::to_string(sample) + "; its PPM header allows at most " +
                           std::to_string(maximum));
    }
    return static_cast<std::uint8_t>((sample * 255 + maximum / 2) / maximum);
}

}  // namespace

Frame DecodePpm(const std::string& name, const std::vector<std::uint8_t>& file) {
    const bool plain = file[1] == '2' || file[1] == '3';
    const bool grey = file[1] == '2' || file[1] == '5';
    PpmReader reader(name, file);
    const std::size_t width = reader.Number("the width");
    const std::size_t height = reader.Number("the height");
    const unsigned maximum = reader.Number("the maximum sample");
    CheckSize(name, width, height);
    if (maximum < 1 || maximum > 65535) {
        FailFile(name, "has a maximum sample of " + std::to_string(maximum) + "; PPM allows 1 to 65535");
    }
    reader.Separator();

    const std::size_t samplesOfPixel = grey ? 1 : 3;
    const std::size_t bytesOfSample = maximum > 255 ? 2 : 1;
    const std::size_t needed = width * height * samplesOfPixel * bytesOfSample;
    if (!plain && reader.Left() < needed) {
        FailFile(name, "is truncated: " + std::to_string(needed - reader.Left()) + " of the " + std::to_string(needed) +
                           " bytes for " + SizeText(width, height) + " pixels are missing");
    }

    Frame picture(FormatOf(Layout::Rgba), width, height);
    std::uint8_t* pixel = picture.Data();
    for (std::size_t pixels = width * height; pixels > 0; --pixels, pixel += 4) {
        for (std::size_t channel = 0; channel < samplesOfPixel; ++channel) {
            unsigned sample = 0;
            if (plain) {
                sample = reader.Number("its last sample");
            } else {
                sample = bytesOfSample == 2 ? reader.Byte() << 8 : 0;
                sample += reader.Byte();
            }
            pixel[channel] = Scale(name, sample, maximum);
        }
        if (grey) {
            pixel[1] = pixel[2] = pixel[0];
        }
        pixel[3] = 255;
    }
    return picture;
}

std::vector<std::uint8_t> EncodePpm(const Frame& rgb24) {
    const std::string header =
        "P6\n" + std::to_string(rgb24.Width()) + " " + std::to_string(rgb24.Height()) + "\n255\n";
    std::vector<std::uint8_t> file(header.begin(), header.end());
    file.insert(file.end(), rgb24.Data(), rgb24.Data() + rgb24.Size());
    return file;
}

}  // namespace korframe
