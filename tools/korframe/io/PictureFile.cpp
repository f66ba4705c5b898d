#include "io/PictureFile.h"

#include <optional>

#include "io/Errors.h"
#include "io/SizeChecks.h"

namespace korframe {

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool IsPpmSignature(const std::string& signature) {
    if (signature.size() < 3 || signature[0] != 'P') {
        return false;
    }
    const std::string kinds = "2356";
    const std::string separators = " \t\r\n#";
    return kinds.find(signature[1]) != std::string::npos && separators.find(signature[2]) != std::string::npos;
}

}  // namespace

PictureKind RecognisePicture(const std::string& signature) {
    if (StartsWith(signature, "\x89PNG\r\n\x1a\n")) {
        return PictureKind::Png;
    }
    if (StartsWith(signature, "\xff\xd8\xff")) {
        return PictureKind::Jpeg;
    }
    return IsPpmSignature(signature) ? PictureKind::Ppm : PictureKind::None;
}

const char* NameOfKind(PictureKind kind) {
    switch (kind) {
        case PictureKind::Png:
            return "PNG picture";
        case PictureKind::Jpeg:
            return "JPEG picture";
        case PictureKind::Ppm:
            return "PPM picture";
        case PictureKind::None:
            break;
    }
    return "not a picture";
}

PictureKind PictureKindOfName(const std::string& fileName) {
    const std::string suffix = Suffix(fileName);
    if (suffix == "png") {
        return PictureKind::Png;
    }
    if (suffix == "jpg" || suffix == "jpeg") {
        return PictureKind::Jpeg;
    }
    return suffix == "ppm" || suffix == "pnm" ? PictureKind::Ppm : PictureKind::None;
}

namespace {

std::unique_ptr<PictureDecoder> OpenPicture(InputFile& input, const std::string& name, PictureKind kind) {
    switch (kind) {
        case PictureKind::Png:
            return OpenPng(input, name);
        case PictureKind::Jpeg:
            return OpenJpeg(input, name);
        case PictureKind::Ppm:
            return OpenPpm(input, name);
        case PictureKind::None:
            break;
    }
    FailFile(name, input.Peek(1).empty() ? "is empty; expected a PNG, JPEG or PPM picture"
                                         : "is not a picture; expected PNG, JPEG or PPM (P2, P3, P5, P6)");
}

void CheckPictureSize(const std::string& name, const PictureHeader& header, std::size_t maxPixels) {
    CheckSize(name, header.width, header.height);
    if (header.width * header.height > maxPixels) {
        FailFile(name, "size " + SizeText(header.width, header.height) + " is too large; the limit is " +
                           std::to_string(maxPixels) + " pixels, and --max-pixels raises it");
    }
}

// Composites RGBA pixels over black, which makes them opaque. Returns whether any was not.
bool LayOverBlack(std::uint8_t* pixel, std::size_t count) {
    bool transparent = false;
    for (; count > 0; --count, pixel += 4) {
        const unsigned alpha = pixel[3];
        if (alpha < 255) {
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * alpha + 127) / 255);
            }
            pixel[3] = 255;
            transparent = true;
        }
    }
    return transparent;
}

// Puts stored rows where they belong in an upright picture of any byte order.
class UprightRows {
  public:
    UprightRows(Frame& picture, const Orientation& to) : channels_(picture.Format().rgb) {
        const auto pixel = static_cast<std::ptrdiff_t>(channels_.bytes);
        const auto pitch = static_cast<std::ptrdiff_t>(picture.Pitch());
        const std::ptrdiff_t right = to.mirror ? -pixel : pixel;
        const std::ptrdiff_t down = to.flip ? -pitch : pitch;
        column_ = to.transpose ? down : right;
        row_ = to.transpose ? right : down;
        next_ = picture.Pixel(to.mirror ? picture.Width() - 1 : 0, to.flip ? picture.Height() - 1 : 0);
    }

    void Put(const std::uint8_t* rgba, std::size_t count) {
        std::uint8_t* pixel = next_;
        for (; count > 0; --count, rgba += 4, pixel += column_) {
            pixel[channels_.red] = rgba[0];
            pixel[channels_.green] = rgba[1];
            pixel[channels_.blue] = rgba[2];
            if (channels_.alpha < channels_.bytes) {
                pixel[channels_.alpha] = rgba[3];
            }
        }
        next_ += row_;
    }

  private:
    Channels channels_;
    std::ptrdiff_t column_;
    std::ptrdiff_t row_;
    std::uint8_t* next_;
};

}  // namespace

PictureFacts ReadPicture(InputFile& input, const std::string& name, const PictureRequest& request, Frame& picture) {
    PictureFacts facts;
    facts.kind = RecognisePicture(input.Peek(kSignatureBytes));
    const std::unique_ptr<PictureDecoder> decoder = OpenPicture(input, name, facts.kind);
    const PictureHeader& header = decoder->Header();
    CheckPictureSize(name, header, request.maxPixels);
    facts.width = header.orientation.transpose ? header.height : header.width;
    facts.height = header.orientation.transpose ? header.width : header.height;
    facts.alpha = header.alpha;
    facts.ownsRest = header.ownsRest;
    facts.otherGamma = header.otherGamma;

    std::optional<UprightRows> rows;
    if (!request.discard) {
        picture.Reset(*request.order, facts.width, facts.height);
        rows.emplace(picture, header.orientation);
    }
    std::vector<std::uint8_t> row(header.width * 4);
    for (std::size_t left = header.height; left > 0; --left) {
        decoder->ReadRow(row.data());
        if (header.alpha && !request.keepAlpha) {
            facts.transparent = LayOverBlack(row.data(), header.width) || facts.transparent;
        }
        if (rows) {
            rows->Put(row.data(), header.width);
        }
    }
    decoder->Finish();
    return facts;
}

void WarnOfPicture(const std::string& name, const PictureFacts& facts, const char* advice) {
    if (facts.transparent) {
        SayNote("warning: " + name + ": has transparent pixels, which are composited over black" +
                (advice == nullptr ? "" : std::string("; ") + advice));
    }
    if (facts.otherGamma > 0) {
        std::string gamma = std::to_string(facts.otherGamma);
        gamma.resize(gamma.find('.') + 3);
        SayNote("warning: " + name + ": has a gamma of " + gamma +
                " (gAMA), which is ignored; samples are used as stored");
    }
    if (facts.ownsRest) {
        SayNote("warning: " + name + ": holds further images (MPF), which are ignored");
    }
}

std::vector<std::uint8_t> EncodePicture(const std::string& name, PictureKind kind, const Frame& picture,
                                        bool keepAlpha) {
    Frame plain;
    const bool alpha = keepAlpha && picture.Format().HasAlpha() && kind == PictureKind::Png;
    Reorder(picture, FormatOf(alpha ? Layout::Rgba : Layout::Rgb24), plain);
    return kind == PictureKind::Png ? EncodePng(name, plain) : EncodePpm(plain);
}

void WritePicture(const std::string& path, PictureKind kind, const Frame& picture, const OutputPolicy& policy) {
    OutputFile output(path, policy);
    const std::vector<std::uint8_t> file = EncodePicture(NameOfOutput(path), kind, picture, false);
    output.Write(file.data(), file.size());
    output.Commit();
}

}  // namespace korframe
