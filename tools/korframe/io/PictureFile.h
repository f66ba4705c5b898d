// Picture files: reads PNG, JPEG and the PPM family, writes PNG and PPM.
#ifndef KORFRAME_PICTUREFILE_H
#define KORFRAME_PICTUREFILE_H

#include <cstdint>
#include <memory>
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

// ---- Reading ----

// The most pixels of a picture unless the user allows more: a small file can announce a picture that fills the memory.
constexpr std::size_t kDefaultMaxPixels = std::size_t{1} << 26;

// How to make a stored picture upright: transpose, then mirror left to right, then flip top to bottom.
struct Orientation {
    bool transpose = false;
    bool mirror = false;
    bool flip = false;
};

struct PictureHeader {
    std::size_t width = 0;  // as stored
    std::size_t height = 0;
    Orientation orientation;
    bool alpha = false;     // pixels may be transparent
    bool ownsRest = false;  // what follows in the file belongs to this picture
    double otherGamma = 0;  // the gamma of the samples if it is far from that of sRGB
};

// A picture while it is decoded. Opening it reads the header, each row is decoded when it is asked for, and Finish
// reads to the end of the picture and no further, since another may follow.
class PictureDecoder {
  public:
    virtual ~PictureDecoder() = default;
    const PictureHeader& Header() const { return header_; }
    // The next row as stored, top first, in RGBA.
    virtual void ReadRow(std::uint8_t* rgba) = 0;
    virtual void Finish() = 0;

  protected:
    PictureHeader header_;
};

// The codecs, one file each. `name` is for messages.
std::unique_ptr<PictureDecoder> OpenPng(InputFile& input, const std::string& name);
std::unique_ptr<PictureDecoder> OpenJpeg(InputFile& input, const std::string& name);
std::unique_ptr<PictureDecoder> OpenPpm(InputFile& input, const std::string& name);

struct PictureRequest {
    const PixelFormat* order = &FormatOf(Layout::Rgba);  // of the pixels, an RGB layout
    bool keepAlpha = false;                              // otherwise the picture is composited over black
    bool discard = false;                                // decode the picture but keep no pixels
    std::size_t maxPixels = kDefaultMaxPixels;
};

// What is known of a picture once it has been read.
struct PictureFacts {
    PictureKind kind = PictureKind::None;
    std::size_t width = 0;  // upright
    std::size_t height = 0;
    bool alpha = false;        // it has an alpha channel
    bool transparent = false;  // pixels were composited over black
    bool ownsRest = false;
    double otherGamma = 0;
};

// Reads one picture, upright. Alpha is 255 if the file has none.
PictureFacts ReadPicture(InputFile& input, const std::string& name, const PictureRequest& request, Frame& picture);
// Reports what was done to a picture that its user may not expect. `advice` says how to keep its alpha; it may be null.
void WarnOfPicture(const std::string& name, const PictureFacts& facts, const char* advice);

// ---- Writing ----

// Encodes an RGB picture of any byte order. PNG keeps alpha if `keepAlpha` is set. `name` is for messages.
std::vector<std::uint8_t> EncodePicture(const std::string& name, PictureKind kind, const Frame& picture,
                                        bool keepAlpha);
void WritePicture(const std::string& path, PictureKind kind, const Frame& picture, const OutputPolicy& policy);

// RGB24 or RGBA.
std::vector<std::uint8_t> EncodePng(const std::string& name, const Frame& picture);
std::vector<std::uint8_t> EncodePpm(const Frame& rgb24);

}  // namespace korframe

#endif
