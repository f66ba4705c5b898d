// The fourteen shapes of the library's functions, and how a case and its planes become the arguments of each.
#ifndef KOR_CONFORMANCE_CORE_FUNCTIONS_H
#define KOR_CONFORMANCE_CORE_FUNCTIONS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "conformance/core/Case.h"
#include "conformance/KorConformance.h"

namespace kit {

using CaptureFunction = KorConformanceCapture;
using CaptureGeneralFunction = KorConformanceCaptureGeneral;
using CaptureRotatingFunction = KorConformanceCaptureRotation;
using RenderFunction = KorConformanceRender;
using RenderGeneralFunction = KorConformanceRenderGeneral;
using RenderPlainFunction = KorConformancePack;
using PlaneFunction = KorConformancePlane;
using SplitFunction = KorConformanceSplit;
using PlaneRotationFunction = KorConformancePlaneRotation;
using SplitRotationFunction = KorConformanceSplitRotation;
using FlipVerticalFunction = KorConformanceFlipVertical;
using DitherFunction = KorConformanceDither;
using BlendFunction = KorConformanceBlend;
using BlendArrayFunction = KorConformanceBlendArray;

using AnyFunction =
    std::variant<CaptureFunction, CaptureGeneralFunction, CaptureRotatingFunction, RenderFunction,
                 RenderGeneralFunction, RenderPlainFunction, PlaneFunction, SplitFunction, PlaneRotationFunction,
                 SplitRotationFunction, FlipVerticalFunction, DitherFunction, BlendFunction, BlendArrayFunction>;

bool IsNull(const AnyFunction& function);

// Calls the function; planes come in the order of its parameters. An in-place dither filter has its three planes once.
void Call(const AnyFunction& function, const PlaneView* planes, const Case& options);

// The same call as the processor has it: an address, and one word for each argument. All arguments are integers and
// pointers.
struct MachineCall {
    static constexpr std::size_t kMost = 24;
    void (*function)() = nullptr;
    std::array<std::uint64_t, kMost> words{};
};
MachineCall ToMachineCall(const AnyFunction& function, const PlaneView* planes, const Case& options);

// The same call as a line of text, as in "(y, 48, u, 32, v, 32, x, 160, 40, 7, 1)".
std::string CallText(const AnyFunction& function, const PlaneView* planes, const char* const* names,
                     const Case& options);

}  // namespace kit

#endif
