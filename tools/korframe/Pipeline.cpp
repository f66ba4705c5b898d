#include "Pipeline.h"

#include <algorithm>

#include "Errors.h"
#include "Random.h"

namespace korframe {

namespace {

// What is rendered or packed goes to a file in this layout.
const PixelFormat& TargetOf(const OutputKind& kind, const StreamInfo& planes) {
    if (kind.container == Container::Pictures) {
        return FormatOf(Layout::Bgr24);
    }
    return kind.layout != nullptr ? *kind.layout : *planes.format;
}

// The renderers expand limited range; full range comes out with too much contrast.
void WarnOfFullRange(const StreamInfo& planes) {
    const std::vector<std::string>& extensions = planes.tags.extensions;
    if (std::find(extensions.begin(), extensions.end(), "COLORRANGE=FULL") != extensions.end()) {
        SayLine(
            "warning: " + planes.name +
            ": is full range (XCOLORRANGE=FULL), and rendering takes it as limited range; contrast will be too strong");
    }
}

}  // namespace

Layout PlanesFor(const PixelFormat& source, const PixelFormat* asked) {
    if (source.IsPlanarYuv()) {
        return source.layout;
    }
    return asked != nullptr && asked->IsPlanarYuv() && source.IsRgb() ? asked->layout : Layout::I420;
}

Reader::Reader(std::unique_ptr<FrameSource> source, const PixelFormat* asked, const Matrix& matrix,
               std::vector<Step> steps)
    : source_(std::move(source)), steps_(std::move(steps)) {
    info_ = AfterSteps(source_->Info(), steps_);
    const Layout planes = PlanesFor(*source_->Info().format, asked);
    capture_.emplace(source_->Info(), planes, matrix, steps_);
    if (planes == Layout::I420 && info_.tags.siting.empty()) {
        info_.tags.siting = source_->Info().format->siting;
    }
    info_.format = &FormatOf(planes);
}

bool Reader::Read(YuvImage& image) {
    if (!source_->Read(frame_)) {
        return false;
    }
    (*capture_)(frame_, image);
    for (const Step& step : steps_) {
        TakeStep(step, image, spare_);
    }
    return true;
}

Writer::Writer(const WriterRequest& request, StreamInfo planes)
    : seed_(request.seed), progress_(planes) {
    const PixelFormat& target = TargetOf(request.kind, planes);
    const std::string output = request.path == "-" ? "standard output" : request.path;
    render_.emplace(planes, output, target, request.matrix, request.ditherLevel);
    if (target.IsRgb()) {
        WarnOfFullRange(planes);
    }
    planes.format = &target;
    sink_ = OpenSink(request.path, request.kind, planes);
}

void Writer::Write(YuvImage& image) {
    if (seed_) {
        SeedRandom(*seed_, frames_);
    }
    (*render_)(image, frame_);
    sink_->Write(frame_);
    ++frames_;
    progress_.Show(frames_);
}

void Writer::Finish() {
    sink_->Finish();
    progress_.Finish(frames_);
}

}  // namespace korframe
