#include "io/Open.h"

#include <utility>

#include "io/Errors.h"
#include "io/NumberedName.h"
#include "io/PictureSource.h"
#include "io/RawFile.h"
#include "io/Y4mFile.h"

namespace korframe {

namespace {

// A single picture.
class PictureSink : public FrameSink {
  public:
    PictureSink(const std::string& path, PictureKind kind, const StreamInfo& info, const OutputPolicy& policy)
        : name_(NameOfOutput(path)), kind_(kind), keepsAlpha_(info.alpha), output_(path, policy) {}

    void Encode(const Frame& frame, Coded& coded) const override {
        coded = EncodePicture(name_, kind_, frame, keepsAlpha_);
    }

    void Write(const Frame& /*frame*/, const std::string& /*fields*/, const Coded& coded) override {
        if (written_) {
            FailFile(name_,
                     "is a single picture, but there are more frames; put a number in the name, for example "
                     "frame-%04d.png");
        }
        output_.Write(coded.data(), coded.size());
        written_ = true;
    }

    void Finish() override { output_.Commit(); }
    std::string FinishPartial() override { return output_.CommitPartial(); }

  private:
    std::string name_;
    PictureKind kind_;
    bool keepsAlpha_;
    OutputFile output_;
    bool written_ = false;
};

// A picture for each frame. Each is complete by itself and gets its name at once; those that replace others are flushed
// to the disk together.
class NumberedPictureSink : public FrameSink {
  public:
    NumberedPictureSink(const NumberedName& name, PictureKind kind, const StreamInfo& info, const OutputPolicy& policy)
        : name_(name), kind_(kind), keepsAlpha_(info.alpha), policy_(policy) {}

    void Encode(const Frame& frame, Coded& coded) const override {
        coded = EncodePicture(name_.For(1), kind_, frame, keepsAlpha_);
    }

    void Write(const Frame& /*frame*/, const std::string& /*fields*/, const Coded& coded) override {
        OutputFile output(name_.For(++frames_), policy_);
        output.Write(coded.data(), coded.size());
        output.Commit(OutputFile::Flush::Later);
        replaces_ = replaces_ || output.Replaces();
    }

    void Finish() override {
        if (replaces_) {
            FlushFileSystemOf(name_.For(1));
        }
    }

    std::string FinishPartial() override {
        Finish();
        return "";
    }

  private:
    NumberedName name_;
    PictureKind kind_;
    bool keepsAlpha_;
    OutputPolicy policy_;
    std::uint64_t frames_ = 0;
    bool replaces_ = false;
};

const char* const kSizeForm = " WIDTHxHEIGHT";
const char* const kRawElsewhere = "for an overlay of raw frames use korframe blend";

std::unique_ptr<FrameSource> OpenRaw(std::unique_ptr<InputFile> input, const PixelFormat& format,
                                     const InputRequest& request) {
    if (request.size.width == 0) {
        FailUsage(
            input->Name() + ": raw " + format.name + " frames carry no size; " +
            (request.sizeOption == nullptr ? kRawElsewhere : std::string("add ") + request.sizeOption + kSizeForm));
    }
    return std::make_unique<RawSource>(std::move(input), format, request.size.width, request.size.height,
                                       request.strides);
}

bool DescribesItself(const std::string& signature) {
    return IsY4m(signature) || RecognisePicture(signature) != PictureKind::None;
}

std::unique_ptr<FrameSource> OpenPictures(std::unique_ptr<InputFile> input, std::vector<std::string> more,
                                          const InputRequest& request) {
    PictureRequest picture;
    picture.order = request.pictureOrder;
    picture.keepAlpha = request.keepAlpha;
    picture.discard = request.discard;
    picture.maxPixels = request.maxPixels;
    const std::string name = more.empty() ? input->Name() : request.path;
    return std::make_unique<PictureSource>(std::move(input), std::move(more), name, picture, request.alphaAdvice);
}

// Numbered or globbed files.
std::unique_ptr<FrameSource> OpenSeries(std::vector<std::string> files, const InputRequest& request) {
    if (request.from != nullptr && !request.rawOnlyIfNeeded) {
        FailUsage(request.path + ": stands for several files, which must be pictures, and " + request.fromOption +
                  " is for raw frames");
    }
    auto input = std::make_unique<InputFile>(files.front());
    files.erase(files.begin());
    return OpenPictures(std::move(input), std::move(files), request);
}

std::unique_ptr<FrameSource> OpenAny(const InputRequest& request) {
    if (std::vector<std::string> files = FindSeries(request.path); !files.empty()) {
        return OpenSeries(std::move(files), request);
    }
    auto input = std::make_unique<InputFile>(request.path);
    const bool describesItself = request.rawOnlyIfNeeded && DescribesItself(input->Peek(kSignatureBytes));
    if (request.from != nullptr && !describesItself) {
        return OpenRaw(std::move(input), *request.from, request);
    }
    // A size on the command line means raw frames, whose first bytes may look like anything.
    const PixelFormat* bySuffix = FindFormatBySuffix(request.path);
    if (bySuffix != nullptr && request.size.width > 0 && !describesItself) {
        return OpenRaw(std::move(input), *bySuffix, request);
    }
    const std::string signature = input->Peek(kSignatureBytes);
    const bool y4m = IsY4m(signature);
    const bool picture = RecognisePicture(signature) != PictureKind::None;
    if ((y4m || picture) && request.size.width > 0 && !describesItself) {
        FailUsage(input->Name() + ": " + request.sizeOption +
                  " is for raw frames, and this file has a size of its own; for raw frames add " + request.fromOption +
                  " LAYOUT");
    }
    if (y4m) {
        return std::make_unique<Y4mSource>(std::move(input));
    }
    if (picture) {
        return OpenPictures(std::move(input), {}, request);
    }
    if (bySuffix != nullptr) {
        return OpenRaw(std::move(input), *bySuffix, request);
    }
    if (signature.empty()) {
        FailFile(input->Name(), "is empty; expected a PNG, JPEG, PPM or Y4M file or raw frames");
    }
    FailFile(input->Name(),
             std::string("is not a PNG, JPEG, PPM or Y4M file; ") +
                 (request.sizeOption == nullptr ? kRawElsewhere
                                                : std::string("for raw frames add ") + request.fromOption +
                                                      " LAYOUT and " + request.sizeOption + kSizeForm));
}

}  // namespace

std::unique_ptr<FrameSource> OpenSource(const InputRequest& request) {
    std::unique_ptr<FrameSource> source = OpenAny(request);
    if (request.pictureOnly && !source->Info().picture) {
        FailUsage("--order " + std::string(request.pictureOrder->name) + ": " + source->Info().name +
                  " is not a picture; for raw frames give the byte order by --from");
    }
    if (!request.strides.planes.empty() && !request.rawOnlyIfNeeded && !source->Info().raw) {
        FailUsage("--stride: " + source->Info().name + " does not hold raw frames");
    }
    if (!request.rate.empty()) {
        source->SetRate(request.rate);
    }
    return source;
}

OutputKind DecideOutput(const std::string& path, const OutputRequest& to, const PixelFormat* rendered) {
    if (to.container == Container::Pictures) {
        return {Container::Pictures, nullptr, to.picture};
    }
    const bool y4mAsked = to.container == Container::Y4m;
    const bool nothingAsked = !to.container && to.layout == nullptr;
    if (y4mAsked || Suffix(path) == "y4m" || (IsStandardOutput(path) && nothingAsked && rendered == nullptr)) {
        if (to.layout != nullptr && !to.layout->IsPlanarYuv()) {
            FailUsage(std::string("--to ") + to.layout->name + ": " + path +
                      " is named as a Y4M file; expected i420, i422 or i444, or another name");
        }
        return {Container::Y4m, to.layout, PictureKind::None};
    }
    if (const PictureKind picture = PictureKindOfName(path); picture != PictureKind::None) {
        if (to.layout != nullptr) {
            FailUsage(std::string("--to ") + to.layout->name + ": " + path +
                      " is named as a picture; for raw frames use another name, for example out." + to.layout->name);
        }
        if (picture == PictureKind::Jpeg) {
            FailUsage(path +
                      ": cannot write JPEG, only read it; expected a name that ends in .png, .ppm, .y4m or the "
                      "name of a raw layout");
        }
        return {Container::Pictures, nullptr, picture};
    }
    const PixelFormat* layout = to.layout != nullptr ? to.layout : FindFormatBySuffix(path);
    if (layout == nullptr) {
        layout = rendered;
    }
    if (layout == nullptr) {
        FailUsage(path +
                  ": the name does not say what to write; add --to, or use a name that ends in .y4m, .png, .ppm or "
                  "the name of a raw layout");
    }
    return {Container::Raw, layout, PictureKind::None};
}

std::unique_ptr<FrameSink> OpenSink(const std::string& path, const OutputKind& kind, const StreamInfo& info,
                                    const OutputPolicy& policy) {
    switch (kind.container) {
        case Container::Y4m:
            return std::make_unique<Y4mSink>(path, info, policy);
        case Container::Pictures:
            if (const NumberedName name(path); name.IsNumbered()) {
                return std::make_unique<NumberedPictureSink>(name, kind.picture, info, policy);
            }
            return std::make_unique<PictureSink>(path, kind.picture, info, policy);
        case Container::Raw:
            break;
    }
    return std::make_unique<RawSink>(path, policy);
}

}  // namespace korframe
