#include "Overlay.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Errors.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "LibraryCall.h"

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

void LayOn(YuvImage& background, OverlayFrame& overlay) {
    const Placement& to = overlay.placement;
    if (overlay.ownAlpha) {
        CallLibrary(KorI420AlphaArrayBlend_C_, background, overlay.part, to.width, to.height, to.x, to.y,
                    overlay.alphaPart);
    } else {
        CallLibrary(KorI420AlphaBlend_C_, background, overlay.part, to.width, to.height, to.x, to.y, overlay.alpha);
    }
}

namespace {

// The position behind the last colon, if that is one: names may have colons, too.
std::size_t FindPlace(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon + 1 == text.size()) {
        return std::string::npos;
    }
    const bool place = text.find('/', colon) == std::string::npos && text.find(',', colon) != std::string::npos;
    return place ? colon : std::string::npos;
}

void CheckPlanes(const StreamInfo& info) {
    if (info.format->layout != Layout::I420) {
        FailFile(info.name, std::string("is ") + info.format->name + ", and the library blends i420 only");
    }
}

[[noreturn]] void FailOutside(const std::string& option, const StreamInfo& overlay, const StreamInfo& background) {
    const auto range = [](std::size_t overlaySide, std::size_t backgroundSide) {
        return "-" + std::to_string(overlaySide - 1) + " to " + std::to_string(backgroundSide - 1);
    };
    FailUsage(option + ": nothing of the overlay of " + SizeText(overlay.width, overlay.height) +
              " lies on the background of " + SizeText(background.width, background.height) + "; X from " +
              range(overlay.width, background.width) + " and Y from " + range(overlay.height, background.height) +
              " show some of it");
}

// Samples of full and of limited range side by side look wrong in one of the two.
void WarnOfTwoRanges(const StreamInfo& overlay, const StreamInfo& background) {
    if (IsFullRange(overlay.tags) != IsFullRange(background.tags)) {
        const auto range = [](const StreamInfo& info) { return IsFullRange(info.tags) ? "full" : "limited"; };
        SayLine("warning: " + overlay.name + ": is " + range(overlay) + " range and lies on " + range(background) +
                " range; its contrast will not fit");
    }
}

}  // namespace

OverlayRequest ParseOverlay(const std::string& option, const std::string& text) {
    OverlayRequest request;
    request.option = option + " " + text;
    const std::size_t colon = FindPlace(text);
    request.input.path = text.substr(0, colon);
    request.input.sizeOption = nullptr;
    request.input.fromOption = nullptr;
    request.input.pictureOrder = &FormatOf(Layout::Bgra);
    if (request.input.path.empty()) {
        FailUsage(request.option + ": the name of a picture or clip is wanted, and if need be its place, such as " +
                  "logo.png:16,16");
    }
    if (colon != std::string::npos) {
        std::string place = text.substr(colon + 1);
        const std::size_t second = place.find(',', place.find(',') + 1);
        if (second != std::string::npos) {
            const std::string alpha = place.substr(second + 1);
            const std::optional<unsigned long long> value = ParseNumber(alpha);
            request.ownAlpha = alpha == "own";
            if (!request.ownAlpha && (!value || *value > 255)) {
                FailUsage(request.option + ": " + alpha + " is no opacity; 0 to 255 is wanted, or own for the overlay's " +
                          "alpha channel");
            }
            request.alpha = request.ownAlpha ? std::uint8_t{255} : static_cast<std::uint8_t>(*value);
            place.resize(second);
        }
        const std::optional<Position> at = ReadPosition(place);
        if (!at) {
            FailUsage(request.option + ": " + kPositionWanted);
        }
        request.at = *at;
    }
    request.input.keepAlpha = request.ownAlpha;
    return request;
}

std::unique_ptr<FrameSource> OpenOverlay(const OverlayRequest& request) {
    std::unique_ptr<FrameSource> source = OpenSource(request.input);
    const StreamInfo& info = source->Info();
    if (request.ownAlpha && !info.format->HasAlpha()) {
        FailFile(info.name, std::string("is ") + info.format->name +
                                " and has no alpha channel; a PNG file or a 32-bit RGB layout has one");
    }
    return source;
}

Overlay::Overlay(const OverlayRequest& request, std::unique_ptr<FrameSource> source, const Matrix& matrix)
    : request_(request), source_(std::move(source)), info_(source_->Info()) {
    std::vector<Step> none;
    const Layout planes = PlanesFor(*info_.format, nullptr);
    capture_.emplace(info_, planes, matrix, none);
    info_.format = &FormatOf(planes);
    CheckPlanes(info_);
}

void Overlay::PlaceOn(const StreamInfo& background) {
    CheckPlanes(background);
    const std::optional<Placement> placement =
        Place(request_.at, {info_.width, info_.height}, {background.width, background.height});
    if (!placement) {
        FailOutside(request_.option, info_, background);
    }
    placement_ = *placement;
    WarnOfTwoRanges(info_, background);
}

bool Overlay::Advance() {
    if (!source_->Read(frame_)) {
        return false;
    }
    (*capture_)(frame_, whole_);
    current_ = std::make_shared<OverlayFrame>();
    current_->placement = placement_;
    CutToPlacement(whole_, placement_, current_->part);
    current_->ownAlpha = request_.ownAlpha;
    current_->alpha = request_.alpha;
    if (request_.ownAlpha) {
        CutToPlacement(AlphaOf(frame_), placement_, current_->alphaPart);
    }
    return true;
}

}  // namespace korframe
