// The services of the library that tests call directly: draws that a test scripts and counts.
#include <cstring>

#include "Kor/Os/KorRandom.h"

namespace {

KorUint16 starts[3];
KorUint draws = 0;

}  // namespace

KOR_EXTERN_C_BEGIN

// Serves these numbers in turn, whatever their size is.
KOR_SERVICE void DirectStarts(KorUint16 y, KorUint16 u, KorUint16 v) {
    starts[0] = y;
    starts[1] = u;
    starts[2] = v;
    draws = 0;
}

KOR_SERVICE KorUint DirectDraws(void) {
    return draws;
}

KOR_EXTERN_C_END

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    const KorUint16 start = starts[draws++ % 3];
    const KorSizeT wide = start;
    std::memcpy(buffer, count == sizeof start ? static_cast<const void*>(&start) : &wide, count);
    return 1;
}
