// The kit itself: a test bench that overlooks a wrong byte is worth nothing, so each kind of wrong byte is shown to it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/Differential.h"
#include "conformance/kit/NoiseTable.h"
#include "conformance/kit/Poison.h"
#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorVideoFrame.h"
#include "tests/support/Frames.h"

namespace {

using kit::Placement;
using kit::Plane;
using kit::Shape;

// ---- Guarded planes ----------------------------------------------------------------------------------------------

TEST(KitPlaneDeathTest, ByteBehindAPlaneAtTheRearGuardCrashes) {
    const Plane plane(Shape(5, 3, 2), Placement::Rear);
    volatile std::uint8_t* end = plane.data() + 2 * 7 + 5;
    end[-1] = 1;
    EXPECT_DEATH(end[0] = 1, "");
    EXPECT_DEATH(static_cast<void>(end[0]), "");
}

TEST(KitPlaneDeathTest, ByteBeforeAPlaneAtTheFrontGuardCrashes) {
    const Plane plane(Shape(5, 3, 2), Placement::Front);
    volatile std::uint8_t* begin = plane.data();
    begin[0] = 1;
    EXPECT_DEATH(begin[-1] = 1, "");
}

TEST(KitPlaneDeathTest, EmptyPlaneHasNoByteToTouch) {
    const Plane plane(Shape(0, 3), Placement::Rear);
    volatile std::uint8_t* begin = plane.data();
    EXPECT_DEATH(begin[0] = 1, "");
}

TEST(KitPlane, SparePartsAndMarginLieInside) {
    kit::PlaneShape shape = kit::ShapeWithSpares(3, 2, 1, 1);
    shape.margin = 4;
    for (const Placement placement : {Placement::Rear, Placement::Front}) {
        const Plane plane(shape, placement);
        const kit::Bytes before = plane.Snapshot();
        plane.At(2, 3) ^= 1;
        plane.data()[-4] ^= 1;
        EXPECT_NE(plane.Difference("y", before.data()), "");
        EXPECT_EQ(plane.GapDifference("y", before.data()), "");
    }
}

TEST(KitPlane, EveryByteAroundTheSamplesIsWatched) {
    for (const Placement placement : {Placement::Rear, Placement::Front}) {
        const Plane plane(Shape(4, 3, 3), placement);
        const kit::Bytes before = plane.Snapshot();
        std::size_t samples = 0;
        for (std::size_t i = 0; i < before.size(); ++i) {
            plane.allocation()[i] ^= 0x10;
            EXPECT_NE(plane.Difference("y", before.data()), "");
            samples += plane.GapDifference("y", before.data()).empty() ? 1u : 0u;
            plane.allocation()[i] ^= 0x10;
        }
        EXPECT_EQ(samples, 12u);
        EXPECT_EQ(plane.Difference("y", before.data()), "");
    }
}

TEST(KitPlane, DifferenceNamesThePlace) {
    const Plane plane(Shape(4, 3, 3));
    plane.SetAll(7);
    const kit::Bytes before = plane.Snapshot();
    plane.At(1, 2) = 9;
    const std::string report = plane.Difference("u", before.data());
    EXPECT_NE(report.find("plane u, row 1, column 2: expected 7, found 9"), std::string::npos) << report;
}

// ---- Services ----------------------------------------------------------------------------------------------------

TEST(KitRandom, ServesTheScriptAndRecordsTheDraws) {
    kit::ScriptedRandom::ServeScript({0x1122334455667788u, 0xabcd});
    std::uint64_t first = 0;
    std::uint16_t second = 0;
    std::uint32_t third = 1;
    const auto draw = [](auto& value) {
        char buffer[8];
        const KorBool served = KorRandomGetBytes(buffer, sizeof value);
        std::memcpy(&value, buffer, sizeof value);
        return served;
    };
    EXPECT_TRUE(draw(first) && draw(second) && draw(third));
    EXPECT_EQ(first, 0x1122334455667788u);
    EXPECT_EQ(second, 0xabcd);
    EXPECT_EQ(third, 0u);
    EXPECT_EQ(kit::ScriptedRandom::Draws(), (std::vector<std::size_t>{8, 2, 4}));
    kit::ScriptedRandom::Fail();
    EXPECT_FALSE(draw(first));
    EXPECT_EQ(kit::ScriptedRandom::Draws(), (std::vector<std::size_t>{8}));
}

TEST(KitNoiseTable, HoldsItsRegions) {
    for (std::size_t i = 0; i < kit::kNoiseEntries; ++i) {
        ASSERT_EQ(KorTblDitherStd4[i], kit::NoiseEntry(i)) << i;
    }
    const std::set<int> extremes(KorTblDitherStd4 + kit::kExtremeNoise, KorTblDitherStd4 + kit::kNoiseRamp);
    EXPECT_TRUE(extremes.count(-32768) == 1 && extremes.count(32767) == 1);
    for (std::size_t i = kit::kNoiseRamp; i < kit::kWideNoise; ++i) {
        ASSERT_EQ(KorTblDitherStd4[i], static_cast<int>(i - kit::kNoiseRamp) - 4096);
    }
}

// ---- The comparison of two functions -----------------------------------------------------------------------------

// A harmless pair that stands for any: the model copies a plane, the subject copies it and commits one crime.
void Copy(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
          KorSizeT height) {
    for (KorSizeT j = 0; j < height; ++j) {
        for (KorSizeT i = 0; i < width; ++i) {
            dst[j * pitchDst + i] = src[static_cast<KorDistanceT>(j) * pitchSrc + static_cast<KorDistanceT>(i)];
        }
    }
}

enum class Crime {
    None,
    Sample,
    Padding,
    Source,
    Draw,
    BeforeDestination,
    ReadsPadding,
};
Crime crime;

void CopyAndSin(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    if (width != 7 || height != 5) {
        return;
    }
    char byte[1];
    switch (crime) {
        case Crime::None:
            break;
        case Crime::Sample:
            dst[2 * pitchDst + 3] ^= 1;
            break;
        case Crime::Padding:
            dst[pitchDst + width] ^= 1;
            break;
        case Crime::Source:
            const_cast<KorUint8*>(src)[0] ^= 1;
            break;
        case Crime::Draw:
            KorRandomGetBytes(byte, 1);
            break;
        case Crime::BeforeDestination:
            dst[-9] ^= 1;
            break;
        case Crime::ReadsPadding:
            dst[0] = src[width];
            break;
    }
}

kit::Verdict Judge(Crime committed, kit::PlaneFunction model = &Copy) {
    crime = committed;
    const kit::Entry& entry = kit::Find("KorPlanarMirror_C_");
    kit::Sweep sweep;
    sweep.sizes = kit::SmallSizes();
    sweep.pitches = {kit::Pitches::Loose};
    sweep.placements = {Placement::Rear};
    return kit::Differential(entry, &CopyAndSin, model).Run(sweep, 1);
}

TEST(KitDifferential, FindsNothingWhereNothingIs) {
    const kit::Verdict verdict = Judge(Crime::None);
    EXPECT_TRUE(verdict.same) << verdict.report;
    EXPECT_EQ(verdict.cases, 41u * 13u * 2u);
}

TEST(KitDifferential, FindsEveryKindOfDifference) {
    EXPECT_NE(Judge(Crime::Sample).report.find("plane dst, row 2, column 3"), std::string::npos);
    EXPECT_NE(Judge(Crime::Source).report.find("plane src, row 0, column 0"), std::string::npos);
    EXPECT_NE(Judge(Crime::Draw).report.find("found 1 draws: 1"), std::string::npos);
}

// Bytes that are not the function's business: AddressSanitizer stops the touch itself, else its trace is found.
void ExpectTouchIsFound(Crime committed, kit::PlaneFunction model, const char* report) {
    if (kit::kPoisons) {
        EXPECT_DEATH(Judge(committed, model), "use-after-poison");
    } else {
        EXPECT_NE(Judge(committed, model).report.find(report), std::string::npos);
    }
}

TEST(KitDifferentialDeathTest, FindsEveryTouchOutsideOfThePlanes) {
    ExpectTouchIsFound(Crime::Padding, &Copy, "(padding)");
    ExpectTouchIsFound(Crime::BeforeDestination, &Copy, "plane dst, 9 bytes before");
}

TEST(KitDifferentialDeathTest, FindsPaddingInAResultEvenIfTheModelPutsItThereToo) {
    ExpectTouchIsFound(Crime::ReadsPadding, &CopyAndSin, "plane dst, row 0, column 0");
}

TEST(KitDifferential, HoldsTheModelToItsPlanes) {
    crime = Crime::Padding;
    kit::Case options;
    options.width = 7;
    options.height = 5;
    options.pitches = kit::Pitches::Loose;
    const std::string report = kit::Differential(kit::Find("KorPlanarMirror_C_"), &Copy, &CopyAndSin).RunCase(options);
    EXPECT_NE(report.find("The model itself"), std::string::npos) << report;
}

TEST(KitDifferentialDeathTest, CrashNamesTheCase) {
    crime = Crime::BeforeDestination;
    kit::Case options;
    options.width = 7;
    options.height = 5;
    options.placement = Placement::Front;
    kit::Differential differential(kit::Find("KorPlanarMirror_C_"), &CopyAndSin, &Copy);
    EXPECT_DEATH(differential.RunCase(options), "Outside of its planes: KorPlanarMirror_C_ with 7x5");
}

TEST(KitCatalogue, HasAll38FunctionsOnce) {
    std::set<std::string> names;
    for (const kit::Entry& entry : kit::Catalogue()) {
        names.insert(entry.name);
    }
    EXPECT_EQ(names.size(), 38u);
    EXPECT_EQ(kit::Catalogue().size(), 38u);
}

}  // namespace
