// Where frames come from and where they go. Everything between is told once, whatever the files are.
#ifndef KORFRAME_STREAM_H
#define KORFRAME_STREAM_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Image.h"
#include "PictureFile.h"

namespace korframe {

// What a Y4M header says beside size and layout; what other inputs do not say has the values here.
struct ClipTags {
    std::string rate = "25:1";
    std::string interlacing = "p";
    std::string aspect = "1:1";
    // Of 4:2:0 chroma, as in "420jpeg"; where empty, that of the layout.
    std::string siting;
    // The X fields, without the X.
    std::vector<std::string> extensions = {"COLORRANGE=LIMITED"};
};

struct StreamInfo {
    std::string name;  // of the input, for messages
    const PixelFormat* format = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    const char* container = "raw frames";
    bool tellsTags = false;               // the input itself says what is in the tags
    bool picture = false;                 // one frame, of which no progress need be told
    std::optional<std::uint64_t> frames;  // an estimate, for the progress bar
    ClipTags tags;
};

bool IsFullRange(const ClipTags& tags);
void SetLimitedRange(ClipTags& tags);
// Takes away the X field that some programs add to tell the chroma layout once more, when that becomes another.
void DropChromaField(ClipTags& tags);

// A frame as it stands in a file, where that is another form than its bytes.
using Coded = std::vector<std::uint8_t>;

class FrameSource {
  public:
    virtual ~FrameSource() = default;
    const StreamInfo& Info() const { return info_; }
    void SetRate(const std::string& rate) { info_.tags.rate = rate; }
    // The next frame in the layout that Info names; false at the end. Throws BrokenStream where the input breaks off.
    virtual bool Read(Frame& frame) = 0;
    // What a Y4M file says of the last frame alone, as in " Itpp"; mostly nothing.
    const std::string& FrameFields() const { return frameFields_; }

  protected:
    std::string frameFields_;
    StreamInfo info_;
};

class FrameSink {
  public:
    virtual ~FrameSink() = default;
    // Whatever can be done before the frame's turn comes. May be called on several threads at a time.
    virtual void Encode(const Frame& /*frame*/, Coded& /*coded*/) const {}
    // Takes a frame, the fields that the source gave of it, and what Encode made of it.
    virtual void Write(const Frame& frame, const std::string& fields, const Coded& coded) = 0;
    // Puts in place what was written. Without it, nothing of a file appears.
    virtual void Finish() = 0;
};

struct InputRequest {
    std::string path;
    const PixelFormat* from = nullptr;  // --from; where absent, the content tells, or the suffix of a raw file
    std::size_t width = 0;              // --size, of raw frames only
    std::size_t height = 0;
    bool rawOnlyIfNeeded = false;       // from and size are for raw frames, and other files are welcome as well
    const char* sizeOption = "--size";  // as the options stand in messages; null where there are none
    const char* fromOption = "--from";
    const PixelFormat* pictureOrder = nullptr;  // the bytes in which the pixels of a picture are handed on
    bool pictureOnly = false;                   // the order was asked for, so anything but a picture is a mistake
    bool keepAlpha = false;                     // otherwise a picture is laid over black
    std::string rate;                           // --rate; what the input says where empty
};

std::unique_ptr<FrameSource> OpenSource(const InputRequest& request);

enum class Container { Raw,
                       Y4m,
                       Pictures };

// What an output is to be. `layout` is null where the name leaves it open: then the container takes what suits it.
struct OutputKind {
    Container container = Container::Raw;
    const PixelFormat* layout = nullptr;
    PictureKind picture = PictureKind::None;
};

// From --to, or from the suffix of the name where --to is empty, or else from what is rendered last, if anything is.
OutputKind DecideOutput(const std::string& path, const std::string& to, const PixelFormat* rendered);

// As it stands in messages.
std::string NameOfOutput(const std::string& path);

// Opens an output for frames of the layout and size that `info` tells.
std::unique_ptr<FrameSink> OpenSink(const std::string& path, const OutputKind& kind, const StreamInfo& info);

}  // namespace korframe

#endif
