// The two functions that take a matrix against their literal twins, with matrices of every magnitude and in every
// place. All functions are checked against the reference by the conformance kit.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>

#include "conformance/kit/Differential.h"
#include "Kor/Video/Common/C/KorYuv420_C_.h"
#include "tests/reference/Reference.h"
#include "tests/support/Frames.h"
#include "tests/support/Seed.h"

namespace {

// ---- Matrices of every magnitude ---------------------------------------------------------------------------------

// A coefficient at, just below or just above a power of two, with either sign; zero now and then.
KorInt TurningPoint(kit::Noise& noise) {
    const std::int64_t power = std::int64_t{1} << noise.Below(32);
    const std::int64_t value = (power + noise.Below(3) - 1) * (noise.Below(2) == 0 ? 1 : -1);
    return static_cast<KorInt>(std::clamp<std::int64_t>(value, INT_MIN, INT_MAX));
}

// Most matrices stay within a magnitude, so that all sizes of sums occur and not only those that wrap.
std::vector<kit::Matrix> RandomMatrices(std::size_t count) {
    kit::Noise noise(kit::RunSeed());
    std::vector<kit::Matrix> matrices(count);
    for (kit::Matrix& matrix : matrices) {
        const KorInt limit = INT_MAX >> noise.Below(28);
        for (auto& row : matrix.rows) {
            for (KorInt& coefficient : row) {
                coefficient = std::clamp(TurningPoint(noise), -limit - 1, limit);
            }
        }
    }
    return matrices;
}

void CompareMatrices(const char* name, const kit::AnyFunction& library, const kit::AnyFunction& reference) {
    const std::vector<kit::Matrix> matrices = RandomMatrices(4000);
    kit::Sweep sweep = kit::Find(name).options();
    sweep.sizes = {{34, 3}, {7, 4}};
    sweep.pitches = {kit::Pitches::Tight};
    sweep.placements = {kit::Placement::Rear};
    sweep.patterns = {kit::Pattern::Extremes};
    sweep.ditherLevels = {KOR_VIDEOFRAMEDITHERLEVEL_Off};
    sweep.matrixPlaces = {kit::MatrixPlace::Own};
    sweep.matrices.clear();
    for (const kit::Matrix& matrix : matrices) {
        sweep.matrices.push_back(&matrix);
    }
    const kit::Verdict verdict = kit::Differential(kit::Find(name), library, reference).Run(sweep, kit::RunSeed());
    EXPECT_TRUE(verdict.Same()) << verdict.finding.report;
}

TEST(MatricesOfEveryMagnitude, Capture) {
    CompareMatrices("KorBGRAToI420General_C_", &::KorBGRAToI420General_C_, &::reference::KorBGRAToI420General_C_);
}

TEST(MatricesOfEveryMagnitude, Render) {
    CompareMatrices("KorI420ToBGRAGeneral_C_", &::KorI420ToBGRAGeneral_C_, &::reference::KorI420ToBGRAGeneral_C_);
}

// ---- A matrix that shares memory with the planes that are written --------------------------------------------------

// Converts into three planes of planeBytes each, with a matrix somewhere in, between or around them; returns all bytes.
kit::Bytes CaptureOntoMatrix(kit::CaptureGeneralFunction convert, std::size_t planeBytes, std::size_t matrixAt,
                             std::size_t width, std::size_t height, std::uint64_t seed, std::size_t pitchU,
                             std::size_t pitchV) {
    kit::Bytes memory(sizeof(kit::Matrix) + 3 * planeBytes + sizeof(kit::Matrix));
    kit::FillNoise(seed, memory.data(), memory.size());
    const kit::Plane x(kit::Shape(4 * width, height));
    x.Fill(kit::Pattern::Noise, seed + 1);
    KorUint8* const y = memory.data() + sizeof(kit::Matrix);
    const void* const matrix = memory.data() + matrixAt;
    convert(y, width + 1, y + planeBytes, pitchU, y + 2 * planeBytes, pitchV, x.data(), x.pitch(), width, height,
            static_cast<KorBool>(seed % 2), static_cast<const KorInt(*)[3]>(matrix));
    return memory;
}

void CompareOntoMatrix(std::size_t planeBytes, std::size_t step, const kit::Sizes& widths, const kit::Sizes& heights) {
    std::uint64_t seed = kit::RunSeed();
    for (const std::size_t width : widths) {
        for (const std::size_t height : heights) {
            for (std::size_t at = 0; at <= sizeof(kit::Matrix) + 3 * planeBytes; at += step) {
                ++seed;
                const auto capture = [&](kit::CaptureGeneralFunction convert) {
                    return CaptureOntoMatrix(convert, planeBytes, at, width, height, seed, width / 2 + 2,
                                             width / 2 + 5);
                };
                ASSERT_EQ(capture(&::KorBGRAToI420General_C_), capture(&::reference::KorBGRAToI420General_C_))
                    << width << "x" << height << ", matrix at " << at;
            }
        }
    }
}

TEST(SharedMemory, MatrixInsideADestinationIsReadAfreshForEverySample) {
    CompareOntoMatrix(64, 4, {1, 2, 3, 6, 7}, {1, 2, 3, 4, 5, 6});
    CompareOntoMatrix(1024, 20, {17, 40}, {9, 20});
}

TEST(SharedMemory, PitchOfASingleRowOfChromaDoesNotCount) {
    // One, two, four and five times these come to a little less than all addresses.
    constexpr std::size_t kWidth = 100, kHeight = 2, kPlaneBytes = 2048, kAll = ~std::size_t{0};
    for (const std::size_t pitch : {kAll - 59, kAll / 2 - 59, kAll / 4 - 19, kAll / 5 - 19}) {
        for (std::size_t at = 0; at <= sizeof(kit::Matrix) + 3 * kPlaneBytes; at += 20) {
            const auto capture = [at, pitch](kit::CaptureGeneralFunction convert) {
                return CaptureOntoMatrix(convert, kPlaneBytes, at, kWidth, kHeight, 1, pitch, pitch);
            };
            ASSERT_EQ(capture(&::KorBGRAToI420General_C_), capture(&::reference::KorBGRAToI420General_C_))
                << "pitch " << pitch << ", matrix at " << at;
        }
    }
}

}  // namespace
