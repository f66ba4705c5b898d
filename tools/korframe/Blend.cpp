// korframe blend, and the blending itself.
#include "Blend.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "Commands.h"
#include "Errors.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "LibraryCall.h"
#include "Options.h"
#include "Pipeline.h"

namespace korframe {

namespace {

// One axis of a placement.
struct Overlap {
    std::size_t from = 0;
    std::size_t to = 0;
    std::size_t length = 0;
};

Overlap OverlapOf(long at, std::size_t overlay, std::size_t background) {
    const std::size_t before = at < 0 ? static_cast<std::size_t>(-at) : 0;
    const std::size_t begin = at > 0 ? static_cast<std::size_t>(at) : 0;
    if (before >= overlay || begin >= background) {
        return {};
    }
    return {before, begin, std::min(overlay - before, background - begin)};
}

// Columns and rows past the end repeat the last.
void CutPlane(const Plane& whole, std::size_t x, std::size_t y, Plane& part) {
    for (std::size_t row = 0; row < part.height; ++row) {
        const std::uint8_t* from = whole.Row(std::min(y + row, whole.height - 1));
        const std::size_t columns = std::min(part.width, x < whole.width ? whole.width - x : 0);
        std::memcpy(part.Row(row), from + x, columns);
        std::memset(part.Row(row) + columns, from[whole.width - 1], part.width - columns);
    }
}

// The mean of the alpha that lies over a chroma sample, rounded half up.
std::uint8_t BlockMean(const Plane& y, std::size_t column, std::size_t row) {
    unsigned sum = 0;
    for (const std::size_t line : {2 * row, std::min(2 * row + 1, y.height - 1)}) {
        sum += y.Row(line)[2 * column];
        sum += y.Row(line)[std::min(2 * column + 1, y.width - 1)];
    }
    return static_cast<std::uint8_t>((sum + 2) / 4);
}

}  // namespace

YuvImage AlphaOf(const Frame& rgb) {
    YuvImage alpha(Layout::I420, rgb.Width(), rgb.Height());
    const std::size_t position = rgb.Format().rgb.alpha;
    for (std::size_t row = 0; row < rgb.Height(); ++row) {
        for (std::size_t column = 0; column < rgb.Width(); ++column) {
            alpha.y.Row(row)[column] = rgb.Pixel(column, row)[position];
        }
    }
    for (std::size_t row = 0; row < alpha.u.height; ++row) {
        for (std::size_t column = 0; column < alpha.u.width; ++column) {
            alpha.u.Row(row)[column] = BlockMean(alpha.y, column, row);
            alpha.v.Row(row)[column] = alpha.u.Row(row)[column];
        }
    }
    return alpha;
}

std::optional<Placement> Place(const Position& at, const Size& overlay, const Size& background) {
    const Overlap across = OverlapOf(at.x, overlay.width, background.width);
    const Overlap down = OverlapOf(at.y, overlay.height, background.height);
    if (across.length == 0 || down.length == 0) {
        return std::nullopt;
    }
    return Placement{across.from, down.from, across.to, down.to, across.length, down.length};
}

void CutToPlacement(const YuvImage& whole, const Placement& placement, YuvImage& part) {
    part.Reset(Layout::I420, placement.width, placement.height);
    CutPlane(whole.y, placement.overlayX, placement.overlayY, part.y);
    const std::size_t chromaX = (placement.overlayX + 1) / 2;
    const std::size_t chromaY = (placement.overlayY + 1) / 2;
    CutPlane(whole.u, chromaX, chromaY, part.u);
    CutPlane(whole.v, chromaX, chromaY, part.v);
}

void BlendConstant(YuvImage& background, const YuvImage& part, const Placement& placement, std::uint8_t alpha) {
    CallLibrary(KorI420AlphaBlend_C_, background, part, placement.width, placement.height, placement.x, placement.y,
                alpha);
}

void BlendByAlpha(YuvImage& background, const YuvImage& part, YuvImage& alphaPart, const Placement& placement) {
    CallLibrary(KorI420AlphaArrayBlend_C_, background, part, placement.width, placement.height, placement.x,
                placement.y, alphaPart);
}

namespace {

struct BlendOptions {
    std::string background;
    std::string overlay;
    std::string output;
    InputOptions from;
    std::string overlayFrom;
    std::string overlaySize;
    OutputOptions to;
    std::string matrix;
    std::string at = "0,0";
    std::string alpha = "255";
    bool alphaChannel = false;
};

// The overlay as it will be laid: the part that shows, with its alpha, for each frame of a clip or for one picture.
class Overlay {
  public:
    Overlay(Reader reader, bool alphaChannel, const Placement& placement)
        : reader_(std::move(reader)), alphaChannel_(alphaChannel), placement_(placement) {}

    // Goes on to the next frame; at the end the last one stays.
    bool Advance() {
        if (!reader_.Read(whole_)) {
            return false;
        }
        CutToPlacement(whole_, placement_, part_);
        if (alphaChannel_) {
            CutToPlacement(AlphaOf(reader_.LastFrame()), placement_, alphaPart_);
        }
        return true;
    }

    void LayOn(YuvImage& background, std::uint8_t alpha) {
        if (alphaChannel_) {
            BlendByAlpha(background, part_, alphaPart_, placement_);
        } else {
            BlendConstant(background, part_, placement_, alpha);
        }
    }

  private:
    Reader reader_;
    bool alphaChannel_;
    Placement placement_;
    YuvImage whole_;
    YuvImage part_;
    YuvImage alphaPart_;
};

// A picture as background stays for every frame of the overlay.
class Background {
  public:
    explicit Background(Reader reader)
        : reader_(std::move(reader)) {}

    const StreamInfo& Info() const { return reader_.Info(); }
    bool IsPicture() const { return reader_.Info().picture; }

    bool Next(YuvImage& image) {
        if (!IsPicture()) {
            return reader_.Read(image);
        }
        if (picture_.Width() == 0) {
            reader_.Read(picture_);
        }
        image.CopyFrom(picture_);
        return true;
    }

  private:
    Reader reader_;
    YuvImage picture_;
};

Reader OpenPlanes(std::unique_ptr<FrameSource> source, const Matrix& matrix) {
    return Reader(std::move(source), nullptr, matrix, {});
}

void CheckPlanes(const StreamInfo& info) {
    if (info.format->layout != Layout::I420) {
        FailFile(info.name, std::string("is ") + info.format->name + ", and the library blends i420 only");
    }
}

[[noreturn]] void FailOutside(const std::string& at, const StreamInfo& overlay, const StreamInfo& background) {
    const auto range = [](std::size_t overlaySide, std::size_t backgroundSide) {
        return "-" + std::to_string(overlaySide - 1) + " to " + std::to_string(backgroundSide - 1);
    };
    const auto size = [](const StreamInfo& info) {
        return std::to_string(info.width) + "x" + std::to_string(info.height);
    };
    FailUsage("--at " + at + ": nothing of the overlay of " + size(overlay) + " lies on the background of " +
              size(background) + "; X from " + range(overlay.width, background.width) + " and Y from " +
              range(overlay.height, background.height) + " show some of it");
}

void RunBlend(const BlendOptions& options, bool alphaGiven) {
    const Position at = ParsePosition("--at", options.at);
    const auto alpha = static_cast<std::uint8_t>(ParseUnsigned("--alpha", options.alpha, 255));
    if (options.alphaChannel && alphaGiven) {
        FailUsage("--alpha " + options.alpha + ": --alpha-channel is given as well; one of the two is wanted");
    }
    if (options.background == "-" && options.overlay == "-") {
        FailUsage("-: background and overlay cannot both come from standard input");
    }
    const InputRequest backgroundRequest = options.from.Request(options.background);
    InputOptions overlayOptions;
    overlayOptions.from = options.overlayFrom;
    overlayOptions.size = options.overlaySize;
    InputRequest overlayRequest = overlayOptions.Request(options.overlay);
    overlayRequest.keepAlpha = options.alphaChannel;
    WriterRequest request = options.to.Request(options.output);

    std::unique_ptr<FrameSource> backgroundSource = OpenSource(backgroundRequest);
    std::unique_ptr<FrameSource> overlaySource = OpenSource(overlayRequest);
    const StreamInfo overlayInfo = overlaySource->Info();
    if (options.alphaChannel && !overlayInfo.format->HasAlpha()) {
        FailFile(overlayInfo.name, std::string("is ") + overlayInfo.format->name +
                                       " and has no alpha channel; a PNG file or a 32-bit RGB layout has one");
    }
    const bool fromRgb = backgroundSource->Info().format->IsRgb() || overlayInfo.format->IsRgb();
    request.matrix = RequestMatrix(options.matrix, fromRgb, WritesRgb(request.kind));

    Background background(OpenPlanes(std::move(backgroundSource), request.matrix));
    Reader overlayReader = OpenPlanes(std::move(overlaySource), request.matrix);
    CheckPlanes(background.Info());
    CheckPlanes(overlayReader.Info());
    const std::optional<Placement> placement =
        Place(at, {overlayInfo.width, overlayInfo.height}, {background.Info().width, background.Info().height});
    if (!placement) {
        FailOutside(options.at, overlayInfo, background.Info());
    }

    StreamInfo info = background.Info();
    if (background.IsPicture() && !overlayInfo.picture) {
        info.picture = false;
        info.frames = overlayInfo.frames;
        info.tags.rate = overlayInfo.tags.rate;
    }
    Overlay overlay(std::move(overlayReader), options.alphaChannel, *placement);
    Writer writer(request, info);
    YuvImage image;
    Pump(writer, [&] {
        const bool moreOverlay = overlay.Advance();
        if (background.IsPicture() && !moreOverlay) {
            return false;
        }
        const bool more = background.Next(image);
        if (more) {
            overlay.LayOn(image, alpha);
            writer.Write(image);
        }
        return more;
    });
}

}  // namespace

void AddBlend(CLI::App& app) {
    const auto options = std::make_shared<BlendOptions>();
    CLI::App* command = app.add_subcommand("blend", "Lays one picture or clip over another");
    command->add_option("BACKGROUND", options->background, "picture, Y4M file or raw frames; - for standard input")
        ->required()
        ->type_name("");
    command->add_option("OVERLAY", options->overlay, "what to lay over it; - for standard input")
        ->required()
        ->type_name("");
    AddOutputArgument(*command, options->output);
    command
        ->add_option("--at", options->at,
                     "column and row of the background for the overlay's left top corner; may be negative")
        ->type_name("X,Y");
    CLI::Option* alpha =
        command->add_option("--alpha", options->alpha, "opacity of the overlay, 0 to 255 (default)")->type_name("N");
    command->add_flag("--alpha-channel", options->alphaChannel,
                      "take the opacity from the overlay's own alpha channel");
    options->from.Add(*command);
    command->add_option("--overlay-from", options->overlayFrom, "layout of raw frames of the overlay")
        ->type_name("LAYOUT");
    command->add_option("--overlay-size", options->overlaySize, "width and height of raw frames of the overlay")
        ->type_name("WxH");
    options->to.Add(*command);
    AddMatrixOption(*command, options->matrix);
    command->footer(
        "The output is as long as the background; an overlay that ends before it stays with its last frame. A picture\n"
        "as background lasts as long as the overlay. What lies outside the background is cut off. Chroma is laid at\n"
        "half the position, rounded down.\n\n" +
        std::string(kMatrixFileHelp));
    command->callback([alpha, options] { RunBlend(*options, alpha->count() > 0); });
}

}  // namespace korframe
