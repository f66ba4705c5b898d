// The steps that a user may give between an input and an output, in any order and number.
#ifndef KORFRAME_STEP_H
#define KORFRAME_STEP_H

#include <cstddef>

#include "image/PixelFormat.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace korframe {

enum class StepKind {
    Flip,    // top to bottom
    Mirror,  // left to right
    Rotate,  // clockwise, by the angle
    Dither,  // adds noise of the level
    Blend,   // composites an overlay
    Render   // makes frames of the layout from planes
};

// What a kind of step does not use keeps the value given here.
struct Step {
    StepKind kind;
    KorImageRotationDegree angle = 0;
    KorVideoFrameDitherLevel level = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    std::size_t overlay = 0;  // an index into the list of overlays
    const PixelFormat* layout = nullptr;

    bool SwapsSides() const { return kind == StepKind::Rotate && angle % 180 != 0; }
};

}  // namespace korframe

#endif
