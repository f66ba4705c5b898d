// Where frames come from and where they go, whatever the files are.
#ifndef KORFRAME_STREAM_H
#define KORFRAME_STREAM_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "image/Image.h"

namespace korframe {

// What a Y4M header gives besides size and layout, with the values used for other inputs.
struct ClipTags {
    std::string rate = "25:1";
    std::string interlacing = "p";
    std::string aspect = "1:1";
    // Of 4:2:0 chroma, as in "420jpeg"; if empty, that of the layout.
    std::string siting;
    // The X fields, without the X.
    std::vector<std::string> extensions = {"COLORRANGE=LIMITED"};
};

struct StreamInfo {
    std::string name;  // of the input, for messages
    const PixelFormat* format = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::string container = "raw frames";
    bool raw = false;                     // nothing but frames
    bool hasTags = false;                 // the tags come from the input
    bool alpha = false;                   // the frames have an alpha channel that means something
    bool picture = false;                 // a single frame, so no progress is shown
    std::optional<std::uint64_t> frames;  // an estimate, for the progress display
    ClipTags tags;
};

bool IsFullRange(const ClipTags& tags);
bool IsRangeKnown(const ClipTags& tags);
void SetRange(ClipTags& tags, bool full);
// The matrix by which RGB became this clip, "601" or "709", in an X field of this program's own; empty if not known.
std::string MatrixOf(const ClipTags& tags);
void SetMatrix(ClipTags& tags, const std::string& name);
// Removes the X field in which some programs repeat the chroma layout, for when that changes.
void DropChromaField(ClipTags& tags);

// A frame as encoded in a file, if that differs from its bytes.
using Coded = std::vector<std::uint8_t>;

class FrameSource {
  public:
    virtual ~FrameSource() = default;
    const StreamInfo& Info() const { return info_; }
    void SetRate(const std::string& rate) { info_.tags.rate = rate; }
    // Reads the next frame, in the layout that Info names; false at the end. Throws BrokenStream if the input breaks
    // off.
    virtual bool Read(Frame& frame) = 0;
    // What a Y4M file gives for the last frame alone, as in " Itpp"; usually nothing.
    const std::string& FrameFields() const { return frameFields_; }

  protected:
    std::string frameFields_;
    StreamInfo info_;
};

class FrameSink {
  public:
    virtual ~FrameSink() = default;
    // Does whatever can be done before the frame's turn comes. May be called on several threads at once.
    virtual void Encode(const Frame& /*frame*/, Coded& /*coded*/) const {}
    // Writes a frame, given the fields from its source and what Encode made of it.
    virtual void Write(const Frame& frame, const std::string& fields, const Coded& coded) = 0;
    // Puts the file in place; without it or FinishPartial, none appears.
    virtual void Finish() = 0;
    // The same if the input broke off after some frames. Returns the name under which they can be found; empty if they
    // went where they were to go.
    virtual std::string FinishPartial() = 0;
};

}  // namespace korframe

#endif
