// Opens inputs and outputs of any kind: raw frames, Y4M and pictures.
#ifndef KORFRAME_OPEN_H
#define KORFRAME_OPEN_H

#include <memory>
#include <optional>
#include <string>

#include "io/OutputFile.h"
#include "io/PictureFile.h"
#include "io/RawFile.h"
#include "io/Stream.h"

namespace korframe {

struct InputRequest {
    std::string path;
    const PixelFormat* from = nullptr;  // --from; otherwise the content decides, or the suffix of a raw file
    Size size;                          // --size, for raw frames only; 0x0 if not given
    Strides strides;                    // --stride, for raw frames only; empty if their rows are not padded
    bool rawOnlyIfNeeded = false;       // from and size are for raw frames, but other files are welcome too
    const char* sizeOption = "--size";  // the options as messages name them; null if there are none
    const char* fromOption = "--from";
    const PixelFormat* pictureOrder = nullptr;  // the byte order in which the pixels of a picture are passed on
    bool pictureOnly = false;                   // the order was given, so anything but a picture is a mistake
    bool keepAlpha = false;                     // otherwise a picture is composited over black
    const char* alphaAdvice = nullptr;          // how to keep it, for a warning
    bool discard = false;                       // the frames of pictures are only counted
    std::size_t maxPixels = kDefaultMaxPixels;  // of a picture
    std::string rate;                           // --rate; if empty, that of the input
};

std::unique_ptr<FrameSource> OpenSource(const InputRequest& request);

enum class Container { Raw, Y4m, Pictures };

// What --to asks for. A layout alone leaves the container open: Y4M if the file is named so, otherwise raw.
struct OutputRequest {
    std::optional<Container> container;
    PictureKind picture = PictureKind::None;
    const PixelFormat* layout = nullptr;
};

// What an output will be. A null `layout` leaves the choice to the container.
struct OutputKind {
    Container container = Container::Raw;
    const PixelFormat* layout = nullptr;
    PictureKind picture = PictureKind::None;
};

// Decides by --to, or else by the suffix of the name, or else by what is rendered last, if anything is.
OutputKind DecideOutput(const std::string& path, const OutputRequest& to, const PixelFormat* rendered);

// Opens an output for frames of the layout and size in `info`.
std::unique_ptr<FrameSink> OpenSink(const std::string& path, const OutputKind& kind, const StreamInfo& info,
                                    const OutputPolicy& policy);

}  // namespace korframe

#endif
