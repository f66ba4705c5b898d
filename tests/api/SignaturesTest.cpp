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
#include "Kor/Video/Common/KorYuv420.h"

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

// The shapes of the functions. Each plane is a pointer and a pitch.
namespace shape {
using Plane = void(Source, ptrdiff_t, Bytes, Size, Size, Size);
using Split = void(Source, ptrdiff_t, Bytes, Size, Bytes, Size, Size, Size);
using PlaneRotation = void(Source, ptrdiff_t, Bytes, Size, Size, Size, uint32_t);
using SplitRotation = void(Source, ptrdiff_t, Bytes, Size, Bytes, Size, Size, Size, uint32_t);
using FlipVertical = void(Bytes, Size, Bytes, Size, Bytes, Size, Size, Size);

using Capture = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t);
using CaptureGeneral = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t, Matrix);
using CaptureRotation = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Size, Size, uint8_t, uint32_t);

using Render = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size, Level);
using RenderGeneral = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size, Matrix, Level);
using Pack = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Size, Size);

using Dither = void(Source, Size, Source, Size, Source, Size, Bytes, Size, Bytes, Size, Bytes, Size, Size, Size, Level,
                    uint8_t);
using Blend = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Source, Size, Source, Size, Size, Size, Size,
                   Size, uint8_t);
using BlendArray = void(Bytes, Size, Bytes, Size, Bytes, Size, Source, Size, Source, Size, Source, Size, Size, Size,
                        Size, Size, Bytes, Size, Bytes, Size, Bytes, Size);
}  // namespace shape

#define KOR_FUNCTION(name, type, family, frames)                                                                  \
    static_assert(std::is_same_v<decltype(name##_C_), shape::type>, "the signature of " #name "_C_ has changed"); \
    static_assert(std::is_same_v<decltype(name), shape::type>, "the signature of " #name " has changed");
#include "Kor/Video/Common/KorYuv420Functions_.inc"

static_assert(std::is_same_v<decltype(KorYuv420Target), const char*()>, "the name of the target has changed");
static_assert(std::is_same_v<decltype(KorYuv420Targets), Size(const char**, Size)>, "the list of targets has changed");
static_assert(std::is_same_v<decltype(KorYuv420SelectTarget), uint8_t(const char*)>, "the selection has changed");

static_assert(std::is_same_v<decltype(KorRandomGetBytes), uint8_t(char*, size_t)>, "the random service has changed");
static_assert(std::is_same_v<decltype(KorTblDitherStd4), const int16_t[]>, "the noise table has changed");

std::set<std::string> LinesOf(const char* file) {
    std::ifstream list(file);
    std::set<std::string> lines;
    for (std::string line; std::getline(list, line);)
        lines.insert(line);
    return lines;
}

// The list of functions, from which all tables are generated, names exactly what the libraries export.
TEST(Signatures, CoverEveryExportedFunction) {
    const std::set<std::string> listed = {
#define KOR_FUNCTION(name, type, family, frames) #name "_C_",
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    EXPECT_EQ(listed, LinesOf(KOR_API_LISTS "/exported-symbols.txt"));
}

TEST(Signatures, CoverEveryExportedFunctionOfTheDispatchedSet) {
    const std::set<std::string> listed = {
        "KorYuv420Target",
        "KorYuv420Targets",
        "KorYuv420SelectTarget",
#define KOR_FUNCTION(name, type, family, frames) #name,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    EXPECT_EQ(listed, LinesOf(KOR_API_LISTS "/exported-dispatched.txt"));
}

}  // namespace
