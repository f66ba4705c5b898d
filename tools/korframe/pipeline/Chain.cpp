#include "pipeline/Chain.h"

#include <utility>

#include "pipeline/Geometry.h"

namespace korframe {

namespace {

// Noise at the end of a link is left to the renderer, which may have its own.
KorVideoFrameDitherLevel TakeLastNoise(std::vector<Step>& steps) {
    if (steps.empty() || steps.back().kind != StepKind::Dither) {
        return KOR_VIDEOFRAMEDITHERLEVEL_Off;
    }
    const KorVideoFrameDitherLevel level = steps.back().level;
    steps.pop_back();
    return level;
}

}  // namespace

Chain::Chain(const StreamInfo& source, const std::vector<Step>& steps, const ChainEnd& end, const Matrix& matrix)
    : info_(source) {
    std::vector<Step> link;
    bool rendered = false;
    for (const Step& step : steps) {
        rendered = step.kind == StepKind::Render;
        if (rendered) {
            AddLink(std::exchange(link, {}), {step.layout, std::string("--render ") + step.layout->name}, matrix);
        } else {
            link.push_back(step);
        }
    }
    if (!rendered || end.target != info_.format) {
        AddLink(std::move(link), end, matrix);
    }
}

void Chain::AddLink(std::vector<Step> steps, const ChainEnd& end, const Matrix& matrix) {
    const StreamInfo from = info_;
    const Layout layout = PlanesFor(*from.format, end.target);
    StreamInfo planes = from;
    planes.format = &FormatOf(layout);
    if (layout == Layout::I420 && planes.tags.siting.empty()) {
        planes.tags.siting = from.format->siting;
    }
    if (layout != from.format->layout) {
        DropChromaField(planes.tags);
    }
    if (from.format->IsRgb()) {
        SetLimitedRange(planes.tags);
    }
    const KorVideoFrameDitherLevel noise = TakeLastNoise(steps);
    for (const Step& step : steps) {
        planes = Follow(std::move(planes), step);
    }
    const PixelFormat& target = end.target != nullptr ? *end.target : *planes.format;
    Capture capture(from, layout, matrix, steps);
    links_.push_back({std::move(capture), std::move(steps), Render(planes, end.name, target, matrix, noise)});
    rendersFullRange_ = rendersFullRange_ || (target.IsRgb() && IsFullRange(planes.tags));
    info_ = std::move(planes);
    info_.format = &target;
    info_.alpha = false;  // the library sets it to 255
}

// What the planes are after a step.
StreamInfo Chain::Follow(StreamInfo planes, const Step& step) {
    switch (step.kind) {
        case StepKind::Flip:
        case StepKind::Mirror:
        case StepKind::Rotate:
            return InfoAfter(std::move(planes), step);
        case StepKind::Dither:
            if (step.level != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
                CheckDither(planes);
            }
            break;
        case StepKind::Blend:
            backgrounds_.push_back(planes);
            break;
        case StepKind::Render:
            break;
    }
    return planes;
}

void Chain::Run(Frame& frame, const std::vector<std::shared_ptr<OverlayFrame>>& overlays) {
    for (const Link& link : links_) {
        link.capture(frame, image_);
        for (const Step& step : link.steps) {
            switch (step.kind) {
                case StepKind::Flip:
                case StepKind::Mirror:
                case StepKind::Rotate:
                    TransformImage(step, image_, spare_);
                    break;
                case StepKind::Dither:
                    if (step.level != KOR_VIDEOFRAMEDITHERLEVEL_Off) {
                        DitherImage(image_, step.level);
                    }
                    break;
                case StepKind::Blend:
                    Composite(image_, *overlays[step.overlay]);
                    break;
                case StepKind::Render:
                    break;  // ends a link
            }
        }
        link.render(image_, made_);
        std::swap(frame, made_);
    }
}

}  // namespace korframe
