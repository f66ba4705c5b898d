#include "io/PictureFile.h"

#include "io/Errors.h"

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

Frame ReadPicture(InputFile& input) {
    const PictureKind kind = RecognisePicture(input.Peek(kSignatureBytes));
    const std::vector<std::uint8_t> file = input.ReadAll();
    switch (kind) {
        case PictureKind::Png:
            return DecodePng(input.Name(), file);
        case PictureKind::Jpeg:
            return DecodeJpeg(input.Name(), file);
        case PictureKind::Ppm:
            return DecodePpm(input.Name(), file);
        case PictureKind::None:
            break;
    }
    FailFile(input.Name(), file.empty() ? "is empty; expected a PNG, JPEG or PPM picture"
                                        : "is not a picture; expected PNG, JPEG or PPM (P2, P3, P5, P6)");
}

std::vector<std::uint8_t> EncodePicture(const std::string& name, PictureKind kind, const Frame& picture) {
    Frame rgb24;
    Reorder(picture, FormatOf(Layout::Rgb24), rgb24);
    return kind == PictureKind::Png ? EncodePng(name, rgb24) : EncodePpm(rgb24);
}

void WritePicture(const std::string& path, PictureKind kind, const Frame& picture, const OutputPolicy& policy) {
    OutputFile output(path, policy);
    const std::vector<std::uint8_t> file = EncodePicture(NameOfOutput(path), kind, picture);
    output.Write(file.data(), file.size());
    output.Commit();
}

}  // namespace korframe
