// One call of a function in all its arguments but the memory, and sweeps over many such calls.
#ifndef KOR_CONFORMANCE_CORE_CASE_H
#define KOR_CONFORMANCE_CORE_CASE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "conformance/core/Pattern.h"
#include "conformance/core/PlaneShape.h"
#include "Kor/Utils/SysDep/KorBaseTypes.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace kit {

struct Matrix {
    KorInt rows[3][3];
};

enum class Pitches {
    Tight,  // as many bytes as a row has
    Loose,  // some bytes of padding, another number for each plane, all rows aligned alike
    Odd,    // padding that puts every row on another alignment
    Drawn,  // padding from the seed of the case
    Mixed,  // some planes tight, others not: rows may only be taken as one where all planes allow it
    // The subject's rows lie far apart: a pitch of more than 16 bits, rows whose offsets have more than 32, and a pitch
    // of more than 32.
    Wide,
    Far,
    Huge,
};

constexpr bool AreFarApart(Pitches pitches) {
    return pitches == Pitches::Wide || pitches == Pitches::Far || pitches == Pitches::Huge;
}

// Where the caller's matrix lies: in memory of its own, or in a plane that is written.
enum class MatrixPlace {
    Own,
    Middle,  // of luma
    Y,
    U,
    V,
    SpareRow,
};

// How a plane-geometry function walks its source.
enum class Walk {
    Down,
    Up,
};

struct Case {
    std::size_t width = 0;
    std::size_t height = 0;
    KorBool flip = 0;
    KorVideoFrameDitherLevel ditherLevel = KOR_VIDEOFRAMEDITHERLEVEL_Off;
    KorImageRotationDegree rotationDegree = 0;
    Walk walk = Walk::Down;
    KorBool randomizeNoiseOffsets = 0;
    bool inPlace = false;
    std::size_t xPosition = 0;
    std::size_t yPosition = 0;
    KorUint8 alpha = 0;
    const Matrix* matrix = nullptr;
    MatrixPlace matrixPlace = MatrixPlace::Own;
    std::size_t picture = 0;  // of those that the pattern has

    Pitches pitches = Pitches::Tight;
    Placement placement = Placement::Rear;
    Pattern pattern = Pattern::Noise;
    std::uint64_t seed = 0;
    std::size_t number = 0;  // its place in the sweep, from 1 on
};

std::string Describe(const Case& options);

using SizeList = std::vector<std::pair<std::size_t, std::size_t>>;

// The values that each argument takes, and which of their combinations are visited.
struct Sweep {
    SizeList sizes;
    std::vector<KorBool> flips{0};
    std::vector<KorVideoFrameDitherLevel> ditherLevels{KOR_VIDEOFRAMEDITHERLEVEL_Off};
    std::vector<KorImageRotationDegree> rotationDegrees{0};
    std::vector<Walk> walks{Walk::Down};
    std::vector<KorBool> randomizeNoiseOffsets{0};
    std::vector<bool> inPlace{false};
    std::vector<std::pair<std::size_t, std::size_t>> positions{{0, 0}};
    std::vector<KorUint8> alphas{0};
    std::vector<const Matrix*> matrices{nullptr};
    std::vector<MatrixPlace> matrixPlaces{MatrixPlace::Own};
    std::vector<std::size_t> pictures{0};

    std::vector<Pitches> pitches{Pitches::Tight, Pitches::Loose, Pitches::Odd};
    std::vector<Placement> placements{Placement::Rear, Placement::Front};
    // Every combination is visited with noise and with one of these in turn.
    std::vector<Pattern> patterns{Pattern::Zeros, Pattern::Full, Pattern::Alternating, Pattern::Ramp,
                                  Pattern::Extremes};

    // Visits only so many combinations of each size. They take turns from size to size, so that all come round.
    std::size_t perSize = 0;
    // Visits so many cases at sizes up to a limit, with everything drawn from the seed.
    std::size_t drawn = 0;
    std::size_t drawnLimit = 2000;
};

// Every width from 0 to 40 by every height from 0 to 12.
SizeList SmallSizes();

// The number of combinations of the options, without pitches, placements and patterns.
std::size_t CountOptions(const Sweep& sweep);

// The values of the options that a sweep varies, as in "flip=1,angle=90"; "-" for a sweep that varies none.
std::string NameOption(const Sweep& sweep, const Case& options);

// Visits all combinations of the options, with everything else as it is in the given case, until the visitor returns
// false; returns whether it never did.
bool ForEachOption(const Sweep& sweep, const Case& start, const std::function<bool(const Case&)>& visit);
// Visits all cases of a sweep until the visitor returns false; returns the number of cases visited.
std::size_t ForEachCase(const Sweep& sweep, std::uint64_t seed, const std::function<bool(const Case&)>& visit);

}  // namespace kit

#endif
