#include "pipeline/Geometry.h"

#include <utility>

#include "io/Errors.h"
#include "Kor/Video/Common/KorYuv420.h"
#include "pipeline/LibraryCall.h"

namespace korframe {

namespace {

void TransformPlane(const Step& step, const Plane& from, Plane& to) {
    switch (step.kind) {
        case StepKind::Flip:
            CallLibrary(KorPlanarRotation, RowsOf(from, true), to, from.width, from.height, 0u);
            break;
        case StepKind::Mirror:
            CallLibrary(KorPlanarMirror, RowsOf(from), to, from.width, from.height);
            break;
        case StepKind::Rotate:
            CallLibrary(KorPlanarRotation, RowsOf(from), to, from.width, from.height, step.angle);
            break;
        case StepKind::Dither:
        case StepKind::Blend:
        case StepKind::Render:
            break;  // none of these moves a sample
    }
}

// In place there is no room for the last chroma row of an odd height or the last column of an odd width.
bool CanFlipInPlace(const YuvImage& image) {
    return image.GetLayout() == Layout::I420 && image.Width() % 2 == 0 && image.Height() % 2 == 0;
}

std::string SwapSides(const std::string& ratio) {
    const std::size_t colon = ratio.find(':');
    return ratio.substr(colon + 1) + ":" + ratio.substr(0, colon);
}

// Upside down, the upper field becomes the lower one, unless the number of rows is odd.
std::string SwapFields(const std::string& interlacing, std::size_t height) {
    if (height % 2 == 0 && (interlacing == "t" || interlacing == "b")) {
        return interlacing == "t" ? "b" : "t";
    }
    return interlacing;
}

}  // namespace

StreamInfo InfoAfter(StreamInfo info, const Step& step) {
    ClipTags& tags = info.tags;
    const bool swapped = step.SwapsSides();
    const bool half = step.kind == StepKind::Flip || (step.kind == StepKind::Rotate && step.angle == 180);
    const bool fields = tags.interlacing == "t" || tags.interlacing == "b" || tags.interlacing == "m";
    if (swapped && fields) {
        FailFile(info.name, "is interlaced (I" + tags.interlacing + "), and rotating by " + std::to_string(step.angle) +
                                " would turn its fields into columns; deinterlace it first");
    }
    if (half && tags.interlacing == "m") {
        FailFile(
            info.name,
            "is interlaced frame by frame (Im), and turning it upside down would swap the fields of each; deinterlace "
            "it first");
    }
    if (swapped) {
        std::swap(info.width, info.height);
        tags.aspect = SwapSides(tags.aspect);
    } else if (half) {
        tags.interlacing = SwapFields(tags.interlacing, info.height);
    }
    return info;
}

void TransformImage(const Step& step, YuvImage& image, YuvImage& spare) {
    if (step.kind == StepKind::Flip && CanFlipInPlace(image)) {
        CallLibrary(KorI420FlipVertical, image, image.Width(), image.Height());
        return;
    }
    const bool swapped = step.SwapsSides();
    spare.Reset(image.GetLayout(), swapped ? image.Height() : image.Width(), swapped ? image.Width() : image.Height());
    TransformPlane(step, image.y, spare.y);
    TransformPlane(step, image.u, spare.u);
    TransformPlane(step, image.v, spare.v);
    std::swap(image, spare);
}

}  // namespace korframe
