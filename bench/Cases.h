// What the benchmark measures: one case a function and option.
#ifndef KOR_BENCH_CASES_H
#define KOR_BENCH_CASES_H

#include <functional>
#include <string>
#include <vector>

#include "Kor/Utils/SysDep/KorBaseTypes.h"

namespace bench {

// Planes that are large enough for every case at a size, filled with noise. A case reads a, b, c and writes x, y, z.
struct Planes {
    Planes(KorSizeT width, KorSizeT height);

    KorSizeT width;
    KorSizeT height;
    std::vector<KorUint8> a, b, c, x, y, z;
};

struct Case {
    std::string name;
    // Bytes that the function reads and writes for each pixel, together.
    double bytesPerPixel;
    std::function<void(Planes&)> run;
};

std::vector<Case> Cases();

}  // namespace bench

#endif
