#include "pipeline/Overlay.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "io/Errors.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"

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

// Columns and rows past the end repeat the last one.
void CropPlane(const Plane& whole, std::size_t x, std::size_t y, Plane& part) {
    for (std::size_t row = 0; row < part.height; ++row) {
        const std::uint8_t* from = whole.Row(std::min(y + row, whole.height - 1));
        const std::size_t columns = std::min(part.width, x < whole.width ? whole.width - x : 0);
        std::memcpy(part.Row(row), from + x, columns);
        std::memset(part.Row(row) + columns, from[whole.width - 1], part.width - columns);
    }
}

// The mean alpha over a chroma sample, rounded half up.
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

void CropToPlacement(const YuvImage& whole, const Placement& placement, YuvImage& part) {
    part.Reset(Layout::I420, placement.width, placement.height);
    CropPlane(whole.y, placement.overlayX, placement.overlayY, part.y);
    const std::size_t chromaX = (placement.overlayX + 1) / 2;
    const std::size_t chromaY = (placement.overlayY + 1) / 2;
    CropPlane(whole.u, chromaX, chromaY, part.u);
    CropPlane(whole.v, chromaX, chromaY, part.v);
}

void Composite(YuvImage& background, OverlayFrame& overlay) {
    const Placement& to = overlay.placement;
    if (overlay.ownAlpha) {
        CallLibrary(KorI420AlphaArrayBlend, background, overlay.part, to.width, to.height, to.x, to.y,
                    overlay.alphaPart);
    } else {
        CallLibrary(KorI420AlphaBlend, background, overlay.part, to.width, to.height, to.x, to.y, overlay.alpha);
    }
}

namespace {

void CheckPlanes(const StreamInfo& info) {
    if (info.format->layout != Layout::I420) {
        FailFile(info.name, std::string("is ") + info.format->name + "; blending works on i420 only");
    }
}

[[noreturn]] void FailOutside(const std::string& option, const StreamInfo& overlay, const StreamInfo& background) {
    const auto range = [](std::size_t overlaySide, std::size_t backgroundSide) {
        return "-" + std::to_string(overlaySide - 1) + " to " + std::to_string(backgroundSide - 1);
    };
    FailUsage(option + ": the " + SizeText(overlay.width, overlay.height) + " overlay lies outside the " +
              SizeText(background.width, background.height) + " background; expected X from " +
              range(overlay.width, background.width) + " and Y from " + range(overlay.height, background.height));
}

// If full-range and limited-range samples are mixed, one of the two looks wrong.
void WarnOfTwoRanges(const StreamInfo& overlay, const StreamInfo& background) {
    if (IsFullRange(overlay.tags) != IsFullRange(background.tags)) {
        const auto range = [](const StreamInfo& info) { return IsFullRange(info.tags) ? "full" : "limited"; };
        SayNote("warning: " + overlay.name + ": is " + range(overlay) + " range on a " + range(background) +
                "-range background; their contrasts will not match");
    }
}

}  // namespace

std::unique_ptr<FrameSource> OpenOverlay(const OverlayRequest& request) {
    std::unique_ptr<FrameSource> source = OpenSource(request.input);
    const StreamInfo& info = source->Info();
    if (request.ownAlpha && !info.format->HasAlpha()) {
        FailFile(info.name, std::string("is ") + info.format->name +
                                " and has no alpha channel; expected a PNG file or a 32-bit RGB layout");
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
    CropToPlacement(whole_, placement_, current_->part);
    current_->ownAlpha = request_.ownAlpha;
    current_->alpha = request_.alpha;
    if (request_.ownAlpha) {
        CropToPlacement(AlphaOf(frame_), placement_, current_->alphaPart);
    }
    return true;
}

}  // namespace korframe
