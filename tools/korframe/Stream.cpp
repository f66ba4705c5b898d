#include "Stream.h"

#include <algorithm>

#include "Errors.h"
#include "NumberedName.h"
#include "RawFile.h"
#include "Y4mFile.h"

namespace korframe {

namespace {

class PictureSource : public FrameSource {
  public:
    PictureSource(InputFile& input, const InputRequest& request) {
        info_.container = NameOfKind(RecognisePicture(input.Peek(kSignatureBytes)));
        Frame picture = ReadPicture(input);
        if (!request.keepAlpha) {
            LayOverBlack(picture);
        }
        Reorder(picture, *request.pictureOrder, picture_);
        info_.name = input.Name();
        info_.format = request.pictureOrder;
        info_.width = picture.Width();
        info_.height = picture.Height();
        info_.picture = true;
        info_.frames = 1;
    }

    bool Read(Frame& frame) override {
        if (taken_) {
            return false;
        }
        frame = std::move(picture_);
        taken_ = true;
        return true;
    }

  private:
    Frame picture_;
    bool taken_ = false;
};

// One picture, or as many as there are frames if the name has a place for their number.
class PictureSink : public FrameSink {
  public:
    PictureSink(const std::string& path, PictureKind kind)
        : path_(path), name_(path), kind_(kind) {}

    void Encode(const Frame& frame, Coded& coded) const override { coded = EncodePicture(path_, kind_, frame); }

    void Write(const Frame& /*frame*/, const std::string& /*fields*/, const Coded& coded) override {
        if (name_.IsNumbered()) {
            WriteWholeFile(name_.For(++frames_), coded);
            return;
        }
        if (++frames_ > 1) {
            FailFile(
                path_,
                "is one picture, but there are more frames; a number in the name, such as %04d, gives each its own");
        }
        only_ = coded;
    }

    void Finish() override {
        if (!name_.IsNumbered()) {
            WriteWholeFile(path_, only_);
        }
    }

  private:
    std::string path_;
    NumberedName name_;
    PictureKind kind_;
    std::uint64_t frames_ = 0;
    Coded only_;
};

const char* const kSizeForm = " WIDTHxHEIGHT";
const char* const kRawElsewhere = "overlays in raw frames are for korframe blend";

std::unique_ptr<FrameSource> OpenRaw(std::unique_ptr<InputFile> input, const PixelFormat& format,
                                     const InputRequest& request) {
    if (request.width == 0) {
        FailUsage(input->Name() + ": raw " + format.name + " frames do not tell their size; " +
                  (request.sizeOption == nullptr ? kRawElsewhere : std::string("give ") + request.sizeOption + kSizeForm));
    }
    return std::make_unique<RawSource>(std::move(input), format, request.width, request.height);
}

bool TellsItself(const std::string& signature) {
    return IsY4m(signature) || RecognisePicture(signature) != PictureKind::None;
}

std::unique_ptr<FrameSource> OpenAny(const InputRequest& request) {
    auto input = std::make_unique<InputFile>(request.path);
    const bool tellsItself = request.rawOnlyIfNeeded && TellsItself(input->Peek(kSignatureBytes));
    if (request.from != nullptr && !tellsItself) {
        return OpenRaw(std::move(input), *request.from, request);
    }
    // A size on the command line speaks for raw frames, and first bytes of those may look like anything.
    const PixelFormat* bySuffix = FindFormatBySuffix(request.path);
    if (bySuffix != nullptr && request.width > 0 && !tellsItself) {
        return OpenRaw(std::move(input), *bySuffix, request);
    }
    const std::string signature = input->Peek(kSignatureBytes);
    const bool y4m = IsY4m(signature);
    const bool picture = RecognisePicture(signature) != PictureKind::None;
    if ((y4m || picture) && request.width > 0 && !tellsItself) {
        FailUsage(input->Name() + ": " + request.sizeOption +
                  " is for raw frames, and this file tells its own; for raw frames add " + request.fromOption + " LAYOUT");
    }
    if (y4m) {
        return std::make_unique<Y4mSource>(std::move(input));
    }
    if (picture) {
        return std::make_unique<PictureSource>(*input, request);
    }
    if (bySuffix != nullptr) {
        return OpenRaw(std::move(input), *bySuffix, request);
    }
    if (signature.empty()) {
        FailFile(input->Name(), "is empty; a PNG, JPEG, PPM or Y4M file or raw frames are wanted");
    }
    FailFile(input->Name(), std::string("is no PNG, JPEG, PPM or Y4M file; ") +
                                (request.sizeOption == nullptr ? kRawElsewhere
                                                               : std::string("for raw frames give ") + request.fromOption +
                                                                     " LAYOUT and " + request.sizeOption + kSizeForm));
}

}  // namespace

std::unique_ptr<FrameSource> OpenSource(const InputRequest& request) {
    std::unique_ptr<FrameSource> source = OpenAny(request);
    if (request.pictureOnly && !source->Info().picture) {
        FailUsage("--order " + std::string(request.pictureOrder->name) + ": " + source->Info().name +
                  " is no picture, and its bytes have their order; for raw frames --from tells it");
    }
    if (!request.rate.empty()) {
        source->SetRate(request.rate);
    }
    return source;
}

namespace {

const char* const kColourRange = "COLORRANGE=";

const char* const kChroma = "YSCSS=";

void DropField(ClipTags& tags, const std::string& name) {
    const auto isNamed = [&](const std::string& extension) { return extension.compare(0, name.size(), name) == 0; };
    auto& extensions = tags.extensions;
    extensions.erase(std::remove_if(extensions.begin(), extensions.end(), isNamed), extensions.end());
}

}  // namespace

bool IsFullRange(const ClipTags& tags) {
    const std::string full = std::string(kColourRange) + "FULL";
    return std::find(tags.extensions.begin(), tags.extensions.end(), full) != tags.extensions.end();
}

void SetLimitedRange(ClipTags& tags) {
    DropField(tags, kColourRange);
    tags.extensions.push_back(std::string(kColourRange) + "LIMITED");
}

void DropChromaField(ClipTags& tags) {
    DropField(tags, kChroma);
}

std::string NameOfOutput(const std::string& path) {
    return path == "-" ? "standard output" : path;
}

OutputKind DecideOutput(const std::string& path, const std::string& to, const PixelFormat* rendered) {
    const std::string suffix = Suffix(path);
    const PictureKind picture = PictureKindOfName(path);
    OutputKind kind;
    if (to == "png" || to == "ppm") {
        kind.container = Container::Pictures;
        kind.picture = to == "png" ? PictureKind::Png : PictureKind::Ppm;
        return kind;
    }
    const bool y4mAsked = to == "y4m" || to.compare(0, 4, "y4m:") == 0;
    const std::string layout = y4mAsked ? to.substr(to.size() > 3 ? 4 : 3) : to;
    if (!layout.empty()) {
        kind.layout = FindFormat(layout);
        if (kind.layout == nullptr) {
            FailUsage("--to " + to + ": one of y4m, y4m:i444, png, ppm, " + FormatNames() + " is wanted");
        }
    }
    if (y4mAsked || suffix == "y4m" || (path == "-" && to.empty() && rendered == nullptr)) {
        kind.container = Container::Y4m;
        if (kind.layout != nullptr && !kind.layout->IsPlanarYuv()) {
            FailUsage("--to " + to + ": a Y4M file holds i420 or i444");
        }
    } else if (picture != PictureKind::None) {
        kind.container = Container::Pictures;
        kind.picture = picture;
        if (kind.layout != nullptr) {
            FailUsage("--to " + to + ": " + path +
                      " is named as a picture; for raw frames name it otherwise, such as out." + to);
        }
        if (picture == PictureKind::Jpeg) {
            FailUsage(path + ": JPEG files are read but not written; png, ppm, y4m or a raw layout can be");
        }
    } else if (kind.layout == nullptr) {
        kind.layout = FindFormatBySuffix(path);
        if (kind.layout == nullptr) {
            kind.layout = rendered;
        }
        if (kind.layout == nullptr) {
            FailUsage(path +
                      ": the name does not tell what to write; give --to, or end it in y4m, png, ppm or the name of a "
                      "raw layout");
        }
    }
    return kind;
}

std::unique_ptr<FrameSink> OpenSink(const std::string& path, const OutputKind& kind, const StreamInfo& info) {
    switch (kind.container) {
        case Container::Y4m:
            return std::make_unique<Y4mSink>(path, info);
        case Container::Pictures:
            return std::make_unique<PictureSink>(path, kind.picture);
        case Container::Raw:
            break;
    }
    return std::make_unique<RawSink>(path);
}

}  // namespace korframe
