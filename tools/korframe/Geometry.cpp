#include "Geometry.h"

#include <utility>

#include "Errors.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "LibraryCall.h"

namespace korframe {

namespace {

void TakePlaneStep(const Step& step, const Plane& from, Plane& to) {
    switch (step.kind) {
        case StepKind::Flip:
            CallLibrary(KorPlanarRotation_C_, RowsOf(from, true), to, from.width, from.height, 0u);
            break;
        case StepKind::Mirror:
            CallLibrary(KorPlanarMirror_C_, RowsOf(from), to, from.width, from.height);
            break;
        case StepKind::Turn:
            CallLibrary(KorPlanarRotation_C_, RowsOf(from), to, from.width, from.height, step.angle);
            break;
    }
}

// In place there is no room for the last chroma row of an odd height, nor for the last column of an odd width.
bool CanFlipInPlace(const YuvImage& image) {
    return image.GetLayout() == Layout::I420 && image.Width() % 2 == 0 && image.Height() % 2 == 0;
}

std::string SwapSides(const std::string& ratio) {
    const std::size_t colon = ratio.find(':');
    return ratio.substr(colon + 1) + ":" + ratio.substr(0, colon);
}

// Upside down, rows that were first in time and on top come to lie below, unless their number is odd.
std::string SwapFields(const std::string& interlacing, std::size_t height) {
    if (height % 2 == 0 && (interlacing == "t" || interlacing == "b")) {
        return interlacing == "t" ? "b" : "t";
    }
    return interlacing;
}

}  // namespace

StreamInfo AfterSteps(StreamInfo info, const std::vector<Step>& steps) {
    ClipTags& tags = info.tags;
    for (const Step& step : steps) {
        if (step.IsQuarterTurn()) {
            if (tags.interlacing == "t" || tags.interlacing == "b" || tags.interlacing == "m") {
                FailFile(info.name, "is interlaced (I" + tags.interlacing +
                                        "), and a quarter turn would make columns of its fields; deinterlace it first");
            }
            std::swap(info.width, info.height);
            tags.aspect = SwapSides(tags.aspect);
        } else if (step.kind == StepKind::Flip || step.kind == StepKind::Turn) {
            tags.interlacing = SwapFields(tags.interlacing, info.height);
        }
    }
    return info;
}

void TakeStep(const Step& step, YuvImage& image, YuvImage& spare) {
    if (step.kind == StepKind::Flip && CanFlipInPlace(image)) {
        CallLibrary(KorI420FlipVertical_C_, image, image.Width(), image.Height());
        return;
    }
    const bool across = step.IsQuarterTurn();
    spare.Reset(image.GetLayout(), across ? image.Height() : image.Width(), across ? image.Width() : image.Height());
    TakePlaneStep(step, image.y, spare.y);
    TakePlaneStep(step, image.u, spare.u);
    TakePlaneStep(step, image.v, spare.v);
    std::swap(image, spare);
}

}  // namespace korframe
