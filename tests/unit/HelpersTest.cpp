// The shared vocabulary: base types, dither levels, and the three inline helpers.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <type_traits>

#include "Kor/Os/KorRandom.h"
#include "Kor/Utils/KorStdCLibInline.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "Kor/Video/Common/KorVideoCommonUtilityInline_.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace {

template <class Type>
constexpr bool IsSigned(std::size_t bits) {
    return std::is_integral<Type>::value && std::is_signed<Type>::value && sizeof(Type) * CHAR_BIT == bits;
}

template <class Type>
constexpr bool IsUnsigned(std::size_t bits) {
    return std::is_integral<Type>::value && std::is_unsigned<Type>::value && sizeof(Type) * CHAR_BIT == bits;
}

constexpr std::size_t kPointerBits = sizeof(void*) * CHAR_BIT;

TEST(BaseTypes, HaveTheirWidthsAndSigns) {
    EXPECT_TRUE(IsSigned<KorInt>(32));
    EXPECT_TRUE(IsUnsigned<KorUint>(32));
    EXPECT_TRUE(IsSigned<KorInt8>(8));
    EXPECT_TRUE(IsUnsigned<KorUint8>(8));
    EXPECT_TRUE(IsSigned<KorInt16>(16));
    EXPECT_TRUE(IsUnsigned<KorUint16>(16));
    EXPECT_TRUE(IsUnsigned<KorBool>(8));
    EXPECT_TRUE(IsUnsigned<KorSizeT>(kPointerBits));
    EXPECT_TRUE(IsSigned<KorDistanceT>(kPointerBits));
}

TEST(VideoFrame, DitherLevelIsAnUnsigned32BitEnumerationOfFour) {
    EXPECT_TRUE(std::is_enum<KorVideoFrameDitherLevel>::value);
    EXPECT_TRUE((std::is_same<std::underlying_type_t<KorVideoFrameDitherLevel>, KorUint>::value));
    EXPECT_EQ(KOR_VIDEOFRAMEDITHERLEVEL_Off, 0u);
    EXPECT_EQ(KOR_VIDEOFRAMEDITHERLEVEL_0, 1u);
    EXPECT_EQ(KOR_VIDEOFRAMEDITHERLEVEL_1, 2u);
    EXPECT_EQ(KOR_VIDEOFRAMEDITHERLEVEL_2, 3u);
}

TEST(VideoFrame, RotationDegreeIsAKorUint) {
    EXPECT_TRUE((std::is_same<KorImageRotationDegree, KorUint>::value));
}

TEST(VideoFrame, NoiseTableHoldsSigned16BitEntriesThatCannotBeWritten) {
    EXPECT_TRUE((std::is_same<std::remove_extent_t<decltype(KorTblDitherStd4)>, const KorInt16>::value));
}

TEST(Random, ServiceTakesACharacterBufferAndACount) {
    EXPECT_TRUE((std::is_same<decltype(&KorRandomGetBytes), KorBool (*)(char*, KorSizeT)>::value));
}

TEST(Clip3, LimitsToTheInterval) {
    EXPECT_EQ(KorClip3(0, 255, -1), 0);
    EXPECT_EQ(KorClip3(0, 255, 256), 255);
    EXPECT_EQ(KorClip3(0, 255, 77), 77);
    EXPECT_EQ(KorClip3(0, 255, 0), 0);
    EXPECT_EQ(KorClip3(0, 255, 255), 255);
    EXPECT_EQ(KorClip3(-20, -10, -15), -15);
    EXPECT_EQ(KorClip3(-20, -10, 0), -10);
    EXPECT_EQ(KorClip3(-20, -10, -21), -20);
}

TEST(Clip3, IntervalOfOneValueGivesThatValue) {
    for (const KorInt value : {INT_MIN, -1, 6, 7, 8, INT_MAX}) {
        EXPECT_EQ(KorClip3(7, 7, value), 7);
    }
}

TEST(Clip3, WholeRangeChangesNothing) {
    for (const KorInt value : {INT_MIN, INT_MIN + 1, -1, 0, 1, INT_MAX - 1, INT_MAX}) {
        EXPECT_EQ(KorClip3(INT_MIN, INT_MAX, value), value);
        EXPECT_EQ(KorClip3(-3, 3, value), std::min(3, std::max(value, -3)));
    }
}

TEST(ByteClip, SaturatesToAByte) {
    EXPECT_EQ(KorByteClip(300), 255);
    EXPECT_EQ(KorByteClip(-5), 0);
    EXPECT_EQ(KorByteClip(INT_MAX), 255);
    EXPECT_EQ(KorByteClip(INT_MIN), 0);
    EXPECT_TRUE((std::is_same<decltype(KorByteClip(0)), KorUint8>::value));
    for (KorInt value = -70000; value <= 70000; ++value) {
        ASSERT_EQ(KorByteClip(value), std::min(255, std::max(0, value))) << value;
    }
}

TEST(MemCpy, CopiesAndReturnsTheDestination) {
    const char source[] = "luma";
    char target[] = "......";
    EXPECT_EQ(KorMemCpy(target + 1, source, 4), target + 1);
    EXPECT_STREQ(target, ".luma.");
}

TEST(MemCpy, ZeroBytesChangeNothing) {
    const char source[] = "x";
    char target[] = "y";
    EXPECT_EQ(KorMemCpy(target, source, 0), target);
    EXPECT_STREQ(target, "y");
}

}  // namespace
