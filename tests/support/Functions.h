// The fourteen shapes of the library's functions, and how a case and its planes become the arguments of each.
#ifndef KOR_TESTS_SUPPORT_FUNCTIONS_H
#define KOR_TESTS_SUPPORT_FUNCTIONS_H

#include <variant>

#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/support/Case.h"

namespace kit {

using CaptureFunction = decltype(&KorRGBAToI420_C_);
using CaptureGeneralFunction = decltype(&KorBGRAToI420General_C_);
using CaptureRotatingFunction = decltype(&KorYUY2ToI420WithRotation_C_);
using RenderFunction = decltype(&KorI420ToRGBA_C_);
using RenderGeneralFunction = decltype(&KorI420ToBGRAGeneral_C_);
using RenderPlainFunction = decltype(&KorI420toYuv2_C_);
using PlaneFunction = decltype(&KorPlanarMirror_C_);
using SplitFunction = decltype(&KorPlanarUVDeinterlace_C_);
using PlaneRotationFunction = decltype(&KorPlanarRotation_C_);
using SplitRotationFunction = decltype(&KorPlanarUVDeinterlaceRotation_C_);
using FlipVerticalFunction = decltype(&KorI420FlipVertical_C_);
using DitherFunction = decltype(&KorI420Dither_C_);
using BlendFunction = decltype(&KorI420AlphaBlend_C_);
using BlendArrayFunction = decltype(&KorI420AlphaArrayBlend_C_);

using AnyFunction = std::variant<CaptureFunction, CaptureGeneralFunction, CaptureRotatingFunction, RenderFunction,
                                 RenderGeneralFunction, RenderPlainFunction, PlaneFunction, SplitFunction,
                                 PlaneRotationFunction, SplitRotationFunction, FlipVerticalFunction, DitherFunction,
                                 BlendFunction, BlendArrayFunction>;

// Calls the function; planes come in the order of its parameters. An in-place dither filter has its three planes once.
void Call(const AnyFunction& function, const Plane* planes, const Case& options);

}  // namespace kit

#endif
