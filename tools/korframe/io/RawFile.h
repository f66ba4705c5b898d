// Raw frames, one after another with nothing in between.
#ifndef KORFRAME_RAWFILE_H
#define KORFRAME_RAWFILE_H

#include <vector>

#include "io/InputFile.h"
#include "io/OutputFile.h"
#include "io/Stream.h"

namespace korframe {

// How a plane lies in a file whose rows are padded: bytes from row to row, and its rows, 0 if none are spare.
struct Stride {
    std::size_t bytes;
    std::size_t rows;
};

// For the first planes. One that is left out has the proportion of the first to the width.
struct Strides {
    std::vector<Stride> planes;
};

constexpr std::size_t kMaxStride = std::size_t{1} << 20;

// Reads bytes of a frame from the input. `number`, counted from 1, is for the message if it ends before.
void ReadFrameBytes(InputFile& input, std::uint8_t* bytes, std::size_t count, std::uint64_t number);

class RawSource : public FrameSource {
  public:
    RawSource(std::unique_ptr<InputFile> input, const PixelFormat& format, std::size_t width, std::size_t height,
              const Strides& strides);
    bool Read(Frame& frame) override;

  private:
    std::unique_ptr<InputFile> input_;
    std::vector<Stride> strides_;  // of all planes; empty if rows are not padded
    std::size_t bytesInFile_ = 0;
    std::vector<std::uint8_t> padded_;
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
