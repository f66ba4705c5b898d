// The way of a frame: Reader makes planes of whatever an input holds, Writer makes of planes whatever an output is to
// hold. Commands put what they do between the two.
#ifndef KORFRAME_PIPELINE_H
#define KORFRAME_PIPELINE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Capture.h"
#include "Errors.h"
#include "Geometry.h"
#include "Matrix.h"
#include "Progress.h"
#include "Render.h"
#include "Stream.h"

namespace korframe {

// The planes that a source is captured into: its own if it is planar, else those that are asked for, else I420.
Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked);

class Reader {
  public:
    // `asked` is the layout that the output is to have, null where any will do.
    Reader(std::unique_ptr<FrameSource> source, const PixelFormat* asked, const Matrix& matrix,
           std::vector<Step> steps);

    // The planes that come out, after capture and steps.
    const StreamInfo& Info() const { return info_; }
    bool Read(YuvImage& image);
    // The bytes from which the last planes were made.
    const Frame& LastFrame() const { return frame_; }

  private:
    std::unique_ptr<FrameSource> source_;
    StreamInfo info_;
    std::vector<Step> steps_;
    std::optional<Capture> capture_;
    Frame frame_;
    YuvImage spare_;
};

struct WriterRequest {
    std::string path;
    OutputKind kind;
    Matrix matrix;
    KorVideoFrameDitherLevel ditherLevel = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    std::optional<unsigned long long> seed;
};

class Writer {
  public:
    Writer(const WriterRequest& request, StreamInfo planes);
    // Uses the image up.
    void Write(YuvImage& image);
    void Finish();
    std::uint64_t Frames() const { return frames_; }

  private:
    std::optional<Render> render_;
    std::unique_ptr<FrameSink> sink_;
    std::optional<unsigned long long> seed_;
    Progress progress_;
    Frame frame_;
    std::uint64_t frames_ = 0;
};

// Runs `step` until it returns false, and finishes the output. Where the input breaks off, the frames before the break
// are kept, and then the break is reported.
template <typename MakeFrame>
void Pump(Writer& writer, MakeFrame step) {
    try {
        while (step()) {
        }
    } catch (const BrokenStream&) {
        if (writer.Frames() > 0) {
            writer.Finish();
        }
        throw;
    }
    writer.Finish();
}

}  // namespace korframe

#endif
