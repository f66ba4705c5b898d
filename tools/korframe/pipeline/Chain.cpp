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

// As on the command line.
std::string NameOfStep(const Step& step) {
    switch (step.kind) {
        case StepKind::Flip:
            return "flip";
        case StepKind::Mirror:
            return "mirror";
        case StepKind::Rotate:
            return "rotate " + std::to_string(step.angle);
        case StepKind::Dither:
            return "dither";
        case StepKind::Blend:
            return "blend";
        case StepKind::Render:
            break;
    }
    return "render";
}

}  // namespace

Chain::Chain(const StreamInfo& source, const std::vector<Step>& steps, const ChainEnd& end, const Matrix& matrix)
    : info_(source), path_(source.format->name) {
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
    if (!link.empty() || !Arrives(end)) {
        AddLink(std::move(link), end, matrix);
    }
}

// Whether the frames are what they should be, or become that by moving samples. The library does what leads to I420.
bool Chain::Arrives(const ChainEnd& end) {
    if (end.target == nullptr ? info_.format->IsPlanarYuv() : end.target == info_.format) {
        return true;
    }
    if (end.target == nullptr || end.target->layout == Layout::I420 || !HoldSameSamples(*info_.format, *end.target)) {
        return false;
    }
    path_ += std::string(" -> ") + end.target->name + " (samples moved)";
    info_.format = end.target;
    links_.push_back({end.target, std::nullopt, {}, std::nullopt, Frame()});
    return true;
}

void Chain::AddLink(std::vector<Step> steps, const ChainEnd& end, const Matrix& matrix) {
    const StreamInfo from = info_;
    const Layout layout = PlanesFor(*from.format, end.target);
    StreamInfo planes = from;
    planes.format = &FormatOf(layout);
    if (layout == Layout::I420 && planes.tags.siting.empty()) {
        planes.tags.siting = from.format->siting;
    }
    if (from.format->IsRgb()) {
        capturesRgb_ = true;
        SetRange(planes.tags, false);
        SetMatrix(planes.tags, matrix.kind == MatrixKind::Own ? "" : matrix.name);
    }
    path_ +=
        std::string(" -> ") + planes.format->name + " planes" + (from.format->IsRgb() ? " by " + NameOf(matrix) : "");
    for (const Step& step : steps) {
        path_ += " -> " + NameOfStep(step);
    }
    const KorVideoFrameDitherLevel noise = TakeLastNoise(steps);
    for (const Step& step : steps) {
        planes = Follow(std::move(planes), step);
    }
    const PixelFormat& target = end.target != nullptr ? *end.target : *planes.format;
    Capture capture(from, layout, matrix, steps);
    links_.push_back(
        {nullptr, std::move(capture), std::move(steps), Render(planes, end.name, target, matrix, noise), Frame()});
    if (target.IsRgb()) {
        dependsOnRange_ = dependsOnRange_ || !capturesRgb_;
        rendersRgb_ = true;
    }
    if (&target != planes.format) {
        path_ += std::string(" -> ") + target.name;
        if (target.IsRgb()) {
            path_ += " by " + NameOf(matrix) + (IsFullRange(planes.tags) ? ", from full range" : "");
        }
    }
    if (target.layout != from.format->layout) {
        DropChromaField(planes.tags);
    }
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

Frame& Chain::Run(Frame& frame, const std::vector<std::shared_ptr<OverlayFrame>>& overlays) {
    Frame* current = &frame;
    for (Link& link : links_) {
        if (link.moveTo != nullptr) {
            MoveSamples(*current, *link.moveTo, link.made);
        } else {
            (*link.capture)(*current, image_);
            for (const Step& step : link.steps) {
                Apply(step, overlays);
            }
            (*link.render)(image_, link.made);
        }
        current = &link.made;
    }
    return *current;
}

void Chain::Apply(const Step& step, const std::vector<std::shared_ptr<OverlayFrame>>& overlays) {
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

}  // namespace korframe
