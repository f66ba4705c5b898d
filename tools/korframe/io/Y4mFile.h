// Y4M: a header line, then frames of planes, each after a line "FRAME".
#ifndef KORFRAME_Y4MFILE_H
#define KORFRAME_Y4MFILE_H

#include "io/InputFile.h"
#include "io/OutputFile.h"
#include "io/Stream.h"

namespace korframe {

bool IsY4m(const std::string& signature);

class Y4mSource : public FrameSource {
  public:
    explicit Y4mSource(std::unique_ptr<InputFile> input);
    bool Read(Frame& frame) override;

  private:
    void ParseHeader(const std::string& header);
    std::size_t StoredBytes() const;

    std::unique_ptr<InputFile> input_;
    bool mono_ = false;
    std::uint64_t framesRead_ = 0;
};

class Y4mSink : public FrameSink {
  public:
    Y4mSink(const std::string& path, const StreamInfo& info, const OutputPolicy& policy);
    void Write(const Frame& frame, const std::string& fields, const Coded& coded) override;
    void Finish() override { output_.Commit(); }
    std::string FinishPartial() override { return output_.CommitPartial(); }

  private:
    OutputFile output_;
    bool keepsFields_;
};

}  // namespace korframe

#endif
