// The binary interface behind the names: the type of every exported function, spelled out in fundamental types, so that
// a changed parameter or typedef does not compile.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <set>
#include <string>
#include <type_traits>

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"

namespace {

using Bytes = uint8_t*;
using Source = const uint8_t*;
using Size = size_t;
using Level = KorVideoFrameDitherLevel;
using Matrix = const int32_t (*)[3];

static_assert(std::is_same_v<std::underlying_type_t<Level>, uint32_t>, "a level is passed as 32 bits");
static_assert(KOR_VIDEOFRAMEDITHERLEVEL_Off == 0 && KOR_VIDEOFRAMEDITHERLEVEL_0 == 1 &&
                  KOR_VIDEOFRAMEDITHERLEVEL_1 == 2 && KOR_VIDEOFRAMEDITHERLEVEL_2 == 3,
              "compiled programs contain the values of the levels");

// The shapes. Each plane is a pointer and a pitch.
using OnePlane = void(Source, ptrdiff_t, Bytes, Size, Size, Size);
using Split = void(Source, ptrdiff_t, Bytes, Size, Bytes, Size, Size, Size);
using PlaneTurn = void(Source, ptrdiff_t, Bytes, Size, Size, Size, uint32_t);
using SplitTurn = void(Source, ptrdiff_t, Bytes, Size, Bytes, Size, Size, Size, uint32_t);
using InPlace = void(Bytes, Size, Bytes, Size, Bytes, Size, Size, Size);

using Capture = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t);
using CaptureMatrix = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t, Matrix);
using CaptureTurn = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t, uint32_t);

using Render = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size, Level);
using RenderMatrix = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size, Matrix, Level);
using RenderPlain = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size);

using Filter = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Bytes, Size, Bytes, Size,
                    Size, Size, Level, uint8_t);
using Blend = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Source, Size, Source, Size,
                   Size, Size, Size, Size, uint8_t);
using BlendArray = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Source, Size, Source, Size,
                        Size, Size, Size, Size, Bytes, Size, Bytes, Size, Bytes, Size);

#define KOR_FOR_EACH_FUNCTION(DO)                    \
    DO(KorPlanarUV422To420_C_, OnePlane)             \
    DO(KorPlanarUVDeinterlace_C_, Split)             \
    DO(KorPlanarMirror_C_, OnePlane)                 \
    DO(KorPlanarUVDeinterlaceMirror_C_, Split)       \
    DO(KorPlanarRotation_C_, PlaneTurn)              \
    DO(KorPlanarUVDeinterlaceRotation_C_, SplitTurn) \
    DO(KorI420FlipVertical_C_, InPlace)              \
    DO(KorRGBAToI420_C_, Capture)                    \
    DO(KorBGRAToI420_C_, Capture)                    \
    DO(KorARGBToI420_C_, Capture)                    \
    DO(KorABGRToI420_C_, Capture)                    \
    DO(KorBGRAToI444_C_, Capture)                    \
    DO(KorBGRAToI420UsingBT709_C_, Capture)          \
    DO(KorBGRAToI444UsingBT709_C_, Capture)          \
    DO(KorBGRAToI420General_C_, CaptureMatrix)       \
    DO(KorRawToI420_C_, Capture)                     \
    DO(Kor24BGToI420_C_, Capture)                    \
    DO(KorI420ToRGBA_C_, Render)                     \
    DO(KorI420ToBGRA_C_, Render)                     \
    DO(KorI420ToARGB_C_, Render)                     \
    DO(KorI420ToABGR_C_, Render)                     \
    DO(KorI444ToBGRA_C_, Render)                     \
    DO(KorI444ToBGRAUsingBT709_C_, Render)           \
    DO(KorI420ToBGRAUsingBT709_C_, Render)           \
    DO(KorI420ToBGRAGeneral_C_, RenderMatrix)        \
    DO(KorI420To24BG_C_, Render)                     \
    DO(KorYUY2ToI420_C_, Capture)                    \
    DO(KorUYVYToI420_C_, Capture)                    \
    DO(KorYUY2ToI420WithRotation_C_, CaptureTurn)    \
    DO(KorUYVYToI420WithRotation_C_, CaptureTurn)    \
    DO(KorI420ToYUY2_C_, Render)                     \
    DO(KorI420ToUYVY_C_, Render)                     \
    DO(KorYuv2ToI420_C_, Capture)                    \
    DO(KorI420toYuv2_C_, RenderPlain)                \
    DO(KorM420ToI420_C_, Capture)                    \
    DO(KorI420Dither_C_, Filter)                     \
    DO(KorI420AlphaBlend_C_, Blend)                  \
    DO(KorI420AlphaArrayBlend_C_, BlendArray)

#define KOR_SAME_TYPE(function, type) \
    static_assert(std::is_same_v<decltype(function), type>, "the signature of " #function " has changed");
KOR_FOR_EACH_FUNCTION(KOR_SAME_TYPE)

static_assert(std::is_same_v<decltype(KorRandomGetBytes), uint8_t(char*, size_t)>, "the random service has changed");
static_assert(std::is_same_v<decltype(KorTblDitherStd4), const int16_t[]>, "the noise table has changed");

// A function that is exported but missing from the table above would go unchecked.
TEST(Signatures, CoverEveryExportedFunction) {
#define KOR_NAME(function, type) #function,
    const std::set<std::string> checked = {KOR_FOR_EACH_FUNCTION(KOR_NAME)};

    std::ifstream list(KOR_EXPORTED_SYMBOLS);
    std::set<std::string> exported;
    for (std::string line; std::getline(list, line);)
        exported.insert(line);

    EXPECT_EQ(checked, exported);
}

}  // namespace
