#include "Geometry.h"

#include <utility>

#include "Errors.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "LibraryCall.h"

namespace korframe {

namespace {

void TurnPlane(const Step& step, const Plane& from, Plane& to) {
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
        case StepKind::Dither:
        case StepKind::Blend:
        case StepKind::Render:
            break;  // none of them moves a sample
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

StreamInfo AfterTurning(StreamInfo info, const Step& step) {
    ClipTags& tags = info.tags;
    const bool quarter = step.IsQuarterTurn();
    const bool half = step.kind == StepKind::Flip || (step.kind == StepKind::Turn && step.angle == 180);
    const bool fields = tags.interlacing == "t" || tags.interlacing == "b" || tags.interlacing == "m";
    if (quarter && fields) {
        FailFile(info.name, "is interlaced (I" + tags.interlacing +
                                "), and a quarter turn would make columns of its fields; deinterlace it first");
    }
    if (half && tags.interlacing == "m") {
        FailFile(info.name,
                 "is interlaced from frame to frame (Im), and upside down the fields of each would change places; "
                 "deinterlace it first");
    }
    if (quarter) {
        std::swap(info.width, info.height);
        tags.aspect = SwapSides(tags.aspect);
    } else if (half) {
        tags.interlacing = SwapFields(tags.interlacing, info.height);
    }
    return info;
}

void TurnImage(const Step& step, YuvImage& image, YuvImage& spare) {
    if (step.kind == StepKind::Flip && CanFlipInPlace(image)) {
        CallLibrary(KorI420FlipVertical_C_, image, image.Width(), image.Height());
        return;
    }
    const bool across = step.IsQuarterTurn();
    spare.Reset(image.GetLayout(), across ? image.Height() : image.Width(), across ? image.Width() : image.Height());
    TurnPlane(step, image.y, spare.y);
    TurnPlane(step, image.u, spare.u);
    TurnPlane(step, image.v, spare.v);
    std::swap(image, spare);
}

}  // namespace korframe
