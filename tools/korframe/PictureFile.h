// Pictures in files: PNG, JPEG and the PPM family are read, PNG and PPM are written.
#ifndef KORFRAME_PICTUREFILE_H
#define KORFRAME_PICTUREFILE_H

#include <cstdint>
#include <string>
#include <vector>

#include "Image.h"
#include "InputFile.h"

namespace korframe {

enum class PictureKind {
    None,
    Png,
    Jpeg,
    Ppm  // and its grey and plain relatives
};

// Enough bytes of a file to tell what it is.
constexpr std::size_t kSignatureBytes = 16;
PictureKind RecognisePicture(const std::string& signature);
const char* NameOfKind(PictureKind kind);
// By the suffix of a name: what an output is to become.
PictureKind PictureKindOfName(const std::string& fileName);

// Reads the rest of the input as one picture of RGBA bytes. Alpha is that of the file, 255 where it has none.
Frame ReadPicture(InputFile& input);

// The file of an RGB picture in any order of bytes, without alpha; `name` stands in messages.
std::vector<std::uint8_t> EncodePicture(const std::string& name, PictureKind kind, const Frame& picture);
void WriteWholeFile(const std::string& path, const std::vector<std::uint8_t>& file);
void WritePicture(const std::string& path, PictureKind kind, const Frame& picture);

// The coders, one file each. `file` holds the whole file, `name` stands in messages.
Frame DecodePng(const std::string& name, const std::vector<std::uint8_t>& file);
Frame DecodeJpeg(const std::string& name, const std::vector<std::uint8_t>& file);
Frame DecodePpm(const std::string& name, const std::vector<std::uint8_t>& file);
std::vector<std::uint8_t> EncodePng(const std::string& name, const Frame& rgb24);
std::vector<std::uint8_t> EncodePpm(const Frame& rgb24);

}  // namespace korframe

#endif
