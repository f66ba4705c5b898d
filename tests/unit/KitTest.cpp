// The kit itself: a test bench that overlooks a wrong byte is worth nothing, so each kind of wrong byte is shown to it.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cfenv>
#include <cstdlib>
#include <cstring>
#include <set>
#include <stdexcept>

#include "conformance/core/ScriptedRandom.h"
#include "conformance/kit/Child.h"
#include "conformance/kit/Differential.h"
#include "conformance/kit/NoiseTable.h"
#include "conformance/kit/Poison.h"
#include "conformance/kit/Shield.h"
#include "conformance/kit/Targets.h"
#include "conformance/kit/Trials.h"
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
        const Plane::Differences differences = plane.Compare(before.data());
        EXPECT_EQ(differences.inside, 2u);
        EXPECT_EQ(differences.outside, 0u);
    }
}

TEST(KitPlane, EveryByteAroundTheSamplesIsWatched) {
    for (const Placement placement : {Placement::Rear, Placement::Front}) {
        const Plane plane(Shape(4, 3, 3), placement);
        const kit::Bytes before = plane.Snapshot();
        std::size_t samples = 0;
        for (std::size_t i = 0; i < before.size(); ++i) {
            plane.allocation()[i] ^= 0x10;
            const Plane::Differences differences = plane.Compare(before.data());
            EXPECT_EQ(differences.inside + differences.outside, 1u);
            EXPECT_EQ(differences.inside == 1 ? differences.firstInside : differences.firstOutside, i);
            samples += differences.inside;
            plane.allocation()[i] ^= 0x10;
        }
        EXPECT_EQ(samples, 12u);
        EXPECT_TRUE(plane.Compare(before.data()).None());
    }
}

TEST(KitPlane, DescriptionShowsThePlace) {
    const Plane plane(Shape(4, 3, 3));
    std::fill_n(plane.allocation(), plane.allocationSize(), std::uint8_t{7});
    const kit::Bytes before = plane.Snapshot();
    plane.At(1, 2) = 9;
    const kit::Plane::Differences differences = plane.Compare(before.data());
    EXPECT_EQ(plane.Describe("u", before.data(), differences.firstInside),
              "plane u, row 1, column 2: expected 0x07, found 0x09\n"
              "           column   0   1   2   3   4   5   6 \n"
              "       row 0 both  07  07  07  07  07  07  07 \n"
              "   row 1 expected  07  07  07  07  07  07  07 \n"
              "            found  07  07 [09] 07  07  07  07 \n"
              "       row 2 both  07  07  07  07             \n");
}

TEST(KitPlane, PlacesAroundThePlaneAreTold) {
    kit::PlaneShape shape = kit::ShapeWithSpares(4, 2, 1, 1);
    shape.pitch = 8;
    shape.margin = 2;
    const Plane plane(shape);
    EXPECT_EQ(plane.Where(-3), "3 bytes before the plane");
    EXPECT_EQ(plane.Where(-1), "1 byte before the plane (margin)");
    EXPECT_EQ(plane.Where(11), "row 1, column 3");
    EXPECT_EQ(plane.Where(12), "row 1, column 4 (spare column)");
    EXPECT_EQ(plane.Where(13), "row 1, column 5 (padding)");
    EXPECT_EQ(plane.Where(16), "row 2, column 0 (spare row)");
    EXPECT_EQ(plane.Where(21), "1 byte behind the plane's end");
    EXPECT_EQ(Plane(Shape(0, 3)).Where(0), "which is empty");
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
    ReadsBehindSource,
    Stops,
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
        case Crime::ReadsBehindSource:
            static_cast<void>(*const_cast<const volatile KorUint8*>(src + 4 * pitchSrc + 7));
            break;
        case Crime::Stops:
            raise(SIGFPE);
            break;
    }
}

kit::Verdict Judge(Crime committed, kit::PlaneFunction model = &Copy, Placement placement = Placement::Rear) {
    crime = committed;
    const kit::Entry& entry = kit::Find("KorPlanarMirror_C_");
    kit::Sweep sweep;
    sweep.sizes = kit::SmallSizes();
    sweep.pitches = {kit::Pitches::Loose};
    sweep.placements = {placement};
    return kit::Differential(entry, &CopyAndSin, model).Run(sweep, 1);
}

std::string Title(Crime committed, kit::PlaneFunction model = &Copy, Placement placement = Placement::Rear) {
    return Judge(committed, model, placement).finding.title;
}

testing::AssertionResult StartsWith(const std::string& text, const std::string& start) {
    return (text.compare(0, start.size(), start) == 0 ? testing::AssertionSuccess() : testing::AssertionFailure())
           << "\"" << text << "\", expected \"" << start << "\" at its start";
}

TEST(KitDifferential, FindsNothingWhereNothingIs) {
    const kit::Verdict verdict = Judge(Crime::None);
    EXPECT_TRUE(verdict.Same()) << verdict.finding.report;
    EXPECT_EQ(verdict.cases, 41u * 13u * 2u);
}

TEST(KitDifferential, TellsEveryKindOfDifferenceApart) {
    EXPECT_TRUE(StartsWith(Title(Crime::Sample), "wrong byte in a destination: plane dst, row 2, column 3: expected "));
    EXPECT_TRUE(StartsWith(Title(Crime::Source), "changed a source: plane src, row 0, column 0: expected "));
    EXPECT_EQ(Title(Crime::Draw), "drew other random bytes: expected 0 draws, found 1 draw (bytes: 1)");
}

TEST(KitDifferential, NumbersTheFailingCaseAndFindsItAgain) {
    const kit::Verdict verdict = Judge(Crime::Sample);
    EXPECT_EQ(verdict.failing, 2u * (41 * 5 + 7) + 1);
    kit::Sweep sweep;
    sweep.sizes = kit::SmallSizes();
    sweep.pitches = {kit::Pitches::Loose};
    sweep.placements = {Placement::Rear};
    kit::Differential differential(kit::Find("KorPlanarMirror_C_"), &CopyAndSin, &Copy);
    const kit::Verdict again = differential.Run(sweep, 1, verdict.failing);
    EXPECT_EQ(again.cases, 1u);
    EXPECT_EQ(again.finding.report, verdict.finding.report);
    EXPECT_TRUE(differential.Run(sweep, 1, verdict.failing - 1).Same());
}

// Bytes that are not the function's business: AddressSanitizer stops the touch itself, else its trace is found.
void ExpectTouchIsFound(Crime committed, kit::PlaneFunction model, const char* title) {
    if (kit::kPoisons) {
        EXPECT_DEATH(Judge(committed, model), "use-after-poison");
    } else {
        EXPECT_TRUE(StartsWith(Title(committed, model), title));
    }
}

TEST(KitDifferentialDeathTest, FindsEveryTouchOutsideOfThePlanes) {
    ExpectTouchIsFound(Crime::Padding, &Copy, "wrote outside of a plane: plane dst, row 1, column 7 (padding): ");
    ExpectTouchIsFound(Crime::BeforeDestination, &Copy,
                       "wrote outside of a plane: plane dst, 9 bytes before the plane: ");
}

TEST(KitDifferentialDeathTest, FindsPaddingInAResultEvenIfTheModelPutsItThereToo) {
    ExpectTouchIsFound(Crime::ReadsPadding, &CopyAndSin, "wrong byte in a destination: plane dst, row 0, column 0: ");
}

TEST(KitDifferential, HoldsTheModelToItsPlanes) {
    crime = Crime::Padding;
    kit::Case options;
    options.width = 7;
    options.height = 5;
    options.pitches = kit::Pitches::Loose;
    const kit::Finding finding =
        kit::Differential(kit::Find("KorPlanarMirror_C_"), &Copy, &CopyAndSin).RunCase(options);
    EXPECT_TRUE(StartsWith(finding.title, "the model wrote where it may not: plane dst, row 1, column 7 (padding): "));
}

TEST(KitDifferential, SurvivesACrashAndTellsWhatWasTouched) {
    EXPECT_EQ(Title(Crime::BeforeDestination, &Copy, Placement::Front),
              "crashed: SIGSEGV on touching plane dst, 9 bytes before the plane");
    EXPECT_EQ(Title(Crime::ReadsBehindSource), "crashed: SIGSEGV on touching plane src, 1 byte behind the plane's end");
    EXPECT_EQ(Title(Crime::Stops), "crashed: SIGFPE");
}

// ---- How a case is called ----------------------------------------------------------------------------------------

TEST(KitManner, FollowsFromTheNumberAndComesInAllKinds) {
    std::set<kit::FloatMode> modes;
    std::set<kit::Reach> reaches;
    int threads = 0;
    int repeated = 0;
    for (std::size_t number = 1; number <= 2000; ++number) {
        const kit::Manner manner = kit::MannerOf(number);
        modes.insert(manner.floats);
        reaches.insert(manner.reach);
        threads += manner.secondThread ? 1 : 0;
        repeated += manner.repeated ? 1 : 0;
        ASSERT_EQ(Describe(manner), Describe(kit::MannerOf(number)));
    }
    EXPECT_EQ(modes.size(), 4u);
    EXPECT_EQ(reaches.size(), 3u);
    EXPECT_GT(threads, 10);
    EXPECT_GT(repeated, 10);
    EXPECT_EQ(Describe(kit::MannerOf(0)), "");
    int longThreads = 0;
    for (std::size_t number = 1; number <= 100; ++number) {
        longThreads += kit::MannerOf(number, true).secondThread ? 1 : 0;
    }
    EXPECT_GT(longThreads, 30);
}

// What a function may not rely on: registers of 64 bits carry the arguments of 32 bits.
TEST(KitCall, LeavesNothingBesideNarrowArguments) {
    const kit::Case options{};
    const kit::PlaneView planes[kit::kMaximumPlanes] = {};
    const kit::MachineCall call =
        kit::ToMachineCall(kit::Find("KorPlanarRotation_C_").of(*KorConformancePortable()), planes, options);
    EXPECT_NE(call.words[6] >> 32, 0u);
    EXPECT_EQ(call.words[6] & 0xffffffffu, 0u);
}

// What a case of a copy has to report in one manner.
std::string TitleIn(const kit::Manner& manner, kit::PlaneFunction subject, std::size_t width = 20) {
    kit::Case options;
    options.width = width;
    options.height = 4;
    kit::Differential differential(kit::Find("KorPlanarMirror_C_"), subject, &Copy);
    const kit::Finding finding = differential.Prepare(options, manner);
    return finding.None() ? differential.CallSubject().title : finding.title;
}

void CopyAndRoundUp(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                    KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    std::fesetround(FE_UPWARD);
}

TEST(KitProcessorState, RoundingModeHasToStay) {
    EXPECT_TRUE(StartsWith(TitleIn({}, &CopyAndRoundUp), "left the processor changed: rounding mode"));
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    kit::Manner up;
    up.floats = kit::FloatMode::Up;
    EXPECT_EQ(TitleIn(up, &CopyAndRoundUp), "");
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

int roundingSeen = 0;

void CopyAndLook(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                 KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    roundingSeen = std::fegetround();
}

TEST(KitProcessorState, FunctionsMeetEveryRoundingMode) {
    const std::pair<kit::FloatMode, int> modes[] = {{kit::FloatMode::Usual, FE_TONEAREST},
                                                    {kit::FloatMode::Down, FE_DOWNWARD},
                                                    {kit::FloatMode::Up, FE_UPWARD},
                                                    {kit::FloatMode::TowardZero, FE_TOWARDZERO}};
    for (const auto& [mode, expected] : modes) {
        kit::Manner manner;
        manner.floats = mode;
        EXPECT_EQ(TitleIn(manner, &CopyAndLook), "");
        EXPECT_EQ(roundingSeen, expected) << NameOf(mode);
    }
}

// Every word of a call arrives where the compiler of the function expects it.
struct SeenArguments {
    const KorUint8* planes[9];
    KorSizeT sizes[4];
    KorSizeT pitches[9];
};
SeenArguments seen;

void NoteArguments(KorUint8* y, KorSizeT pitchY, KorUint8* u, KorSizeT pitchU, KorUint8* v, KorSizeT pitchV,
                   const KorUint8* yf, KorSizeT pitchYf, const KorUint8* uf, KorSizeT pitchUf, const KorUint8* vf,
                   KorSizeT pitchVf, KorSizeT width, KorSizeT height, KorSizeT x, KorSizeT yPosition, KorUint8* ya,
                   KorSizeT pitchYa, KorUint8* ua, KorSizeT pitchUa, KorUint8* va, KorSizeT pitchVa) {
    seen = {{y, u, v, yf, uf, vf, ya, ua, va},
            {width, height, x, yPosition},
            {pitchY, pitchU, pitchV, pitchYf, pitchUf, pitchVf, pitchYa, pitchUa, pitchVa}};
}

TEST(KitProcessorState, WatchedCallPassesAllArguments) {
    std::uint8_t bytes[9] = {};
    kit::PlaneView views[9];
    for (std::size_t i = 0; i < 9; ++i) {
        views[i] = {bytes + i, 1000 + i, 1};
    }
    kit::Case options;
    options.width = 11;
    options.height = 12;
    options.xPosition = 13;
    options.yPosition = 14;
    kit::ProcessorChange change;
    kit::CallWatched(kit::BlendArrayFunction{&NoteArguments}, views, options, kit::FloatMode::Usual, change);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_EQ(seen.planes[i], bytes + i);
        EXPECT_EQ(seen.pitches[i], 1000 + i);
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(seen.sizes[i], 11 + i);
    }
    EXPECT_EQ(change.Text(), "");
}

void CopyWithMuchStack(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                       KorSizeT height) {
    char much[1 << 20];
    char* volatile lowest = much;
    *lowest = 1;
    Copy(src, pitchSrc, dst, pitchDst, width, height);
}

TEST(KitSecondThread, HasASmallStackAndSurvivesItsEnd) {
    kit::Manner manner;
    EXPECT_EQ(TitleIn(manner, &CopyWithMuchStack), "");
    manner.secondThread = true;
    EXPECT_TRUE(StartsWith(TitleIn(manner, &CopyWithMuchStack), "needs more stack than "));
    EXPECT_EQ(TitleIn(manner, &Copy), "");
}

TEST(KitSecondThread, IsAnotherThread) {
    kit::SecondThread thread;
    const pthread_t self = pthread_self();
    bool same = true;
    thread.Run([&] { same = pthread_equal(self, pthread_self()) != 0; });
    EXPECT_FALSE(same);
    thread.Run([&] { same = true; });
    EXPECT_TRUE(same);
}

void CopyAndRestoreSource(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                          KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    volatile KorUint8* changed = const_cast<KorUint8*>(src);
    changed[1] ^= 1;
    changed[1] ^= 1;
}

TEST(KitShield, SourceThatIsRestoredIsSeen) {
    kit::Manner manner;
    EXPECT_EQ(TitleIn(manner, &CopyAndRestoreSource), "");
    manner.reach = kit::Reach::SourcesReadOnly;
    EXPECT_EQ(TitleIn(manner, &CopyAndRestoreSource),
              "wrote to a source that it may only read: plane src, row 0, column 1");
    EXPECT_EQ(TitleIn(manner, &Copy), "");
}

void CopyAndRewritePadding(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                           KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    volatile KorUint8* same = dst + pitchDst + width;
    *same = *same;
}

TEST(KitShield, PaddingThatIsRewrittenIsSeen) {
    kit::Manner manner;
    manner.reach = kit::Reach::RowsOnPages;
    if (!kit::kPoisons) {
        EXPECT_EQ(TitleIn(manner, &CopyAndRewritePadding),
                  "crashed: SIGSEGV on touching plane dst, row 1, column 20 (padding)");
    }
    EXPECT_EQ(TitleIn(manner, &Copy), "");
    EXPECT_EQ(TitleIn(manner, &Copy, kit::PageBytes() + 1), "");
}

void CopyAndThrow(const KorUint8*, KorDistanceT, KorUint8*, KorSizeT, KorSizeT, KorSizeT) {
    throw std::runtime_error("no copy");
}

TEST(KitFault, ExceptionIsAFault) {
    EXPECT_EQ(TitleIn({}, &CopyAndThrow), "crashed: SIGABRT");
}

int callsOfCounting = 0;

void CopyAndCount(const KorUint8* src, KorDistanceT pitchSrc, KorUint8* dst, KorSizeT pitchDst, KorSizeT width,
                  KorSizeT height) {
    Copy(src, pitchSrc, dst, pitchDst, width, height);
    if (++callsOfCounting == 1500) {
        dst[0] ^= 1;
    }
}

TEST(KitTrials, FindACallOfMany) {
    const kit::Entry& entry = kit::Find("KorPlanarMirror_C_");
    const kit::Verdict verdict = kit::Trials(entry, &CopyAndCount, &Copy).Run(true, 1, 100);
    EXPECT_TRUE(
        StartsWith(verdict.finding.title, "differs in call 1500 of 2000: wrong byte in a destination: plane dst"));
    EXPECT_EQ(verdict.failing, 100u);
    callsOfCounting = 1500;
    const kit::Verdict same = kit::Trials(entry, &CopyAndCount, &Copy).Run(true, 1, 100);
    EXPECT_TRUE(same.Same()) << same.finding.report;
    EXPECT_GT(same.cases, 1u);
}

// ---- Child processes ---------------------------------------------------------------------------------------------

kit::Ending EndingOf(const std::function<std::string()>& work) {
    const kit::SharedProgress progress;
    return kit::RunInChild(work, *progress.get(), 0.3);
}

TEST(KitChild, DeliversWhatTheWorkReturns) {
    const std::string message(200000, 'm');
    const kit::Ending ending = EndingOf([&] { return message; });
    EXPECT_TRUE(ending.delivered);
    EXPECT_EQ(ending.message, message);
}

TEST(KitChild, TellsHowAProcessEnded) {
    const auto how = [](const std::function<void()>& end) {
        const kit::Ending ending = EndingOf([&] { return end(), std::string(); });
        return ending.delivered ? "delivered" : ending.how;
    };
    EXPECT_EQ(how([] { _exit(0); }), "ended the process: exit status 0");
    EXPECT_EQ(how([] { _exit(7); }), "ended the process: exit status 7");
    EXPECT_TRUE(StartsWith(how([] { raise(SIGKILL); }), "ended the process: signal 9"));
    EXPECT_EQ(how([] { pause(); }), "never returned: still running after 0.3 s");
    EXPECT_EQ(how([] {}), "delivered");
}

TEST(KitChild, WaitsAsLongAsThereIsProgress) {
    const kit::SharedProgress progress;
    const auto work = [&] {
        for (int i = 0; i < 10; ++i) {
            usleep(100000);
            progress.get()->Enter(kit::Stage::Kit);
        }
        return std::string("done");
    };
    EXPECT_EQ(kit::RunInChild(work, *progress.get(), 0.6).message, "done");
}

TEST(KitTargets, AreListedInOrderAndThenTheAutomaticChoice) {
    const auto list = [](const char** names, KorSizeT count) {
        const char* const all[] = {"fast", "slow"};
        std::copy_n(all, std::min<KorSizeT>(count, 2), names);
        return KorSizeT{2};
    };
    std::vector<std::string> names;
    for (const kit::Target& target : kit::ListTargets(list)) {
        names.push_back(target.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"fast", "slow", "automatic"}));
    ASSERT_EQ(kit::ListTargets(nullptr).size(), 1u);
    EXPECT_FALSE(kit::ListTargets(nullptr)[0].Named());
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
