// The PPM family: P3 and P6 in colour, P2 and P5 in greyscale; samples are one or two bytes or decimal numbers.
#include <cctype>
#include <utility>

#include "io/Errors.h"
#include "io/PictureFile.h"

namespace korframe {

namespace {

// The most bytes of white space and comments before a number, since an input may have no end.
constexpr std::uint64_t kLongestGap = 65536;

class PpmDecoder : public PictureDecoder {
  public:
    PpmDecoder(InputFile& input, std::string name) : input_(input), name_(std::move(name)), begin_(input.Position()) {
        const char kind = input_.Peek(2)[1];
        input_.Consume(2);
        plain_ = kind == '2' || kind == '3';
        grey_ = kind == '2' || kind == '5';
        header_.width = Number("the width");
        header_.height = Number("the height");
        maximum_ = Number("the maximum sample");
        if (maximum_ < 1 || maximum_ > 65535) {
            FailFile(name_, "has a maximum sample of " + std::to_string(maximum_) + "; PPM allows 1 to 65535");
        }
        if (input_.PeekByte() >= 0) {
            input_.Consume(1);  // the single space between header and binary samples
        }
        bytesOfRow_ = header_.width * (grey_ ? 1 : 3) * (maximum_ > 255 ? 2 : 1);
    }

    void ReadRow(std::uint8_t* rgba) override {
        samples_.resize(header_.width * (grey_ ? 1 : 3));
        if (plain_) {
            for (std::uint8_t& sample : samples_) {
                sample = Scale(Number("its last sample"));
            }
        } else {
            ReadBytes();
        }
        const std::uint8_t* sample = samples_.data();
        for (std::size_t left = header_.width; left > 0; --left, rgba += 4, sample += grey_ ? 1 : 3) {
            rgba[0] = sample[0];
            rgba[1] = sample[grey_ ? 0 : 1];
            rgba[2] = sample[grey_ ? 0 : 2];
            rgba[3] = 255;
        }
        ++rowsRead_;
    }

    void Finish() override {
        if (plain_) {
            SkipSpace();  // such as the last line feed
        }
    }

  private:
    void ReadBytes() {
        bytes_.resize(bytesOfRow_);
        const std::size_t got = input_.Read(bytes_.data(), bytes_.size());
        if (got < bytes_.size()) {
            const std::size_t needed = bytesOfRow_ * header_.height;
            FailFile(name_, "is truncated: " + std::to_string(needed - rowsRead_ * bytesOfRow_ - got) + " of the " +
                                std::to_string(needed) + " bytes for " + SizeText(header_.width, header_.height) +
                                " pixels are missing");
        }
        for (std::size_t i = 0; i < samples_.size(); ++i) {
            samples_[i] = Scale(maximum_ > 255 ? bytes_[2 * i] * 256u + bytes_[2 * i + 1] : bytes_[i]);
        }
    }

    // A decimal number and the white space and comments (from '#' to the end of the line) before it.
    unsigned Number(const char* what) {
        SkipSpace();
        const std::uint64_t at = input_.Position() - begin_;
        int next = input_.PeekByte();
        if (next < 0) {
            FailFile(name_, std::string("ends before ") + what + "; expected a complete PPM file");
        }
        unsigned value = 0;
        for (bool first = true; first || (next >= '0' && next <= '9'); first = false, next = input_.PeekByte()) {
            if (next < '0' || next > '9' || value > 99999) {
                FailFile(name_, "has no number at byte " + std::to_string(at) +
                                    " of the PPM file; expected up to six digits for " + what);
            }
            value = value * 10 + static_cast<unsigned>(next - '0');
            input_.Consume(1);
        }
        return value;
    }

    void SkipSpace() {
        const std::uint64_t from = input_.Position();
        bool comment = false;
        for (int next = input_.PeekByte(); next >= 0; next = input_.PeekByte()) {
            if (next == '#') {
                comment = true;
            } else if (next == '\n') {
                comment = false;
            } else if (!comment && std::isspace(next) == 0) {
                return;
            }
            input_.Consume(1);
            if (input_.Position() - from > kLongestGap) {
                FailFile(name_, "has no number within " + std::to_string(kLongestGap) + " bytes from byte " +
                                    std::to_string(from - begin_) + "; expected a PPM file");
            }
        }
    }

    std::uint8_t Scale(unsigned sample) const {
        if (sample > maximum_) {
            FailFile(name_, "has a sample of " + std::to_string(sample) + "; its PPM header allows at most " +
                                std::to_string(maximum_));
        }
        return static_cast<std::uint8_t>((sample * 255 + maximum_ / 2) / maximum_);
    }

    InputFile& input_;
    std::string name_;
    std::uint64_t begin_;  // the picture's first byte
    bool plain_ = false;
    bool grey_ = false;
    unsigned maximum_ = 0;
    std::size_t bytesOfRow_ = 0;
    std::size_t rowsRead_ = 0;
    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint8_t> samples_;
};

}  // namespace

std::unique_ptr<PictureDecoder> OpenPpm(InputFile& input, const std::string& name) {
    return std::make_unique<PpmDecoder>(input, name);
}

std::vector<std::uint8_t> EncodePpm(const Frame& rgb24) {
    const std::string header =
        "P6\n" + std::to_string(rgb24.Width()) + " " + std::to_string(rgb24.Height()) + "\n255\n";
    std::vector<std::uint8_t> file(header.begin(), header.end());
    file.insert(file.end(), rgb24.Data(), rgb24.Data() + rgb24.Size());
    return file;
}

}  // namespace korframe
