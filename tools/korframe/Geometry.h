// Flips, mirrors and turns of planes, as steps in the order in which the user gave them.
#ifndef KORFRAME_GEOMETRY_H
#define KORFRAME_GEOMETRY_H

#include <vector>

#include "Image.h"
#include "Kor/Video/Common/KorVideoFrame.h"
#include "Stream.h"

namespace korframe {

enum class StepKind {
    Flip,    // top to bottom
    Mirror,  // left to right
    Turn     // clockwise, by the angle
};

struct Step {
    StepKind kind;
    KorImageRotationDegree angle = 0;

    bool IsQuarterTurn() const { return kind == StepKind::Turn && angle % 180 != 0; }
};

// What a stream of the given description becomes: size, shape of pixels, order of fields.
StreamInfo AfterSteps(StreamInfo info, const std::vector<Step>& steps);

// Does one step; `spare` lends its memory.
void TakeStep(const Step& step, YuvImage& image, YuvImage& spare);

}  // namespace korframe

#endif
