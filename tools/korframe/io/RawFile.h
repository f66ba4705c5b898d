// Raw frames, one after another with nothing in between.
#ifndef KORFRAME_RAWFILE_H
#define KORFRAME_RAWFILE_H

#include "io/InputFile.h"
#include "io/OutputFile.h"
#include "io/Stream.h"

namespace korframe {

// Reads the first bytes of a frame from the input. `number`, counted from 1, is for the message if it ends before.
void ReadFrameBytes(InputFile& input, Frame& frame, std::size_t count, std::uint64_t number);

class RawSource : public FrameSource {
  public:
    RawSource(std::unique_ptr<InputFile> input, const PixelFormat& format, std::size_t width, std::size_t height);
    bool Read(Frame& frame) override;

  private:
    std::unique_ptr<InputFile> input_;
    std::uint64_t framesRead_ = 0;
};

class RawSink : public FrameSink {
  public:
    RawSink(const std::string& path, const OutputPolicy& policy) : output_(path, policy) {}
    void Write(const Frame& frame, const std::string& /*fields*/, const Coded& /*coded*/) override {
        output_.Write(frame.Data(), frame.Size());
    }
    void Finish() override { output_.Commit(); }
    std::string FinishPartial() override { return output_.CommitPartial(); }

  private:
    OutputFile output_;
};

}  // namespace korframe

#endif
