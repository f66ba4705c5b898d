// Picture files: reads PNG, JPEG and the PPM family, writes PNG and PPM.
#ifndef KORFRAME_PICTUREFILE_H
#define KORFRAME_PICTUREFILE_H

#include <cstdint>
#include <string>
#include <vector>

#include "image/Image.h"
#include "io/InputFile.h"
#include "io/OutputFile.h"

namespace korframe {

enum class PictureKind {
    None,
    Png,
    Jpeg,
    Ppm  // and its greyscale and plain-text relatives
};

// Enough bytes of a file to recognise it.
constexpr std::size_t kSignatureBytes = 16;
PictureKind RecognisePicture(const std::string& signature);
const char* NameOfKind(PictureKind kind);
// By the suffix of a name, for outputs.
PictureKind PictureKindOfName(const std::string& fileName);

// Reads the rest of the input as one RGBA picture. Alpha comes from the file and is 255 if that has none.
Frame ReadPicture(InputFile& input);

// Encodes an RGB picture of any byte order, without alpha. `name` is for messages.
std::vector<std::uint8_t> EncodePicture(const std::string& name, PictureKind kind, const Frame& picture);
void WritePicture(const std::string& path, PictureKind kind, const Frame& picture, const OutputPolicy& policy);

// The codecs, one file each. `file` is the whole file, `name` is for messages.
Frame DecodePng(const std::string& name, const std::vector<std::uint8_t>& file);
Frame DecodeJpeg(const std::string& name, const std::vector<std::uint8_t>& file);
Frame DecodePpm(const std::string& name, const std::vector<std::uint8_t>& file);
std::vector<std::uint8_t> EncodePng(const std::string& name, const Frame& rgb24);
std::vector<std::uint8_t> EncodePpm(const Frame& rgb24);

}  // namespace korframe

#endif
