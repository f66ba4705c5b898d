// The steps that a user may name, in any order and number, between an input and an output.
#ifndef KORFRAME_STEP_H
#define KORFRAME_STEP_H

#include <cstddef>

#include "Kor/Video/Common/KorVideoFrame.h"
#include "PixelFormat.h"

namespace korframe {

enum class StepKind {
    Flip,    // top to bottom
    Mirror,  // left to right
    Turn,    // clockwise, by the angle
    Dither,  // noise of the level
    Blend,   // an overlay is laid on
    Render   // planes become frames of the layout
};

// What a kind does not need keeps its value here.
struct Step {
    StepKind kind;
    KorImageRotationDegree angle = 0;
    KorVideoFrameDitherLevel level = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    std::size_t overlay = 0;  // a place in the list of overlays
    const PixelFormat* layout = nullptr;

    bool IsQuarterTurn() const { return kind == StepKind::Turn && angle % 180 != 0; }
};

}  // namespace korframe

#endif
