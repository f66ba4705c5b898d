#include "io/RawFile.h"

#include "io/Errors.h"
#include "io/SizeChecks.h"

namespace korframe {

void ReadFrameBytes(InputFile& input, Frame& frame, std::size_t count, std::uint64_t number) {
    const std::size_t got = input.Read(frame.Data(), count);
    if (got < count) {
        throw BrokenStream(input.Name() + ": frame " + std::to_string(number) + " is truncated: " +
                           std::to_string(count - got) + " of its " + std::to_string(count) + " bytes are missing");
    }
}

RawSource::RawSource(std::unique_ptr<InputFile> input, const PixelFormat& format, std::size_t width, std::size_t height)
    : input_(std::move(input)) {
    info_.name = input_->Name();
    info_.format = &format;
    info_.width = width;
    info_.height = height;
    info_.alpha = format.HasAlpha();
    CheckSize(info_.name, width, height);
    CheckParity(info_.name, format, width, height);
    if (input_->Size()) {
        info_.frames = *input_->Size() / format.FrameBytes(width, height);
    }
}

bool RawSource::Read(Frame& frame) {
    if (input_->Peek(1).empty()) {
        if (framesRead_ == 0) {
            FailFile(info_.name, "is empty; expected frames of " +
                                     std::to_string(info_.format->FrameBytes(info_.width, info_.height)) + " bytes");
        }
        return false;
    }
    frame.Reset(*info_.format, info_.width, info_.height);
    ReadFrameBytes(*input_, frame, frame.Size(), framesRead_ + 1);
    ++framesRead_;
    return true;
}

}  // namespace korframe
