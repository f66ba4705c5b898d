#include "conformance/KorConformance.h"

const KorConformanceTable* KorConformancePortable(void) {
    static const KorConformanceTable table = {
#define KOR_FUNCTION(name, shape, family, frames) &::name##_C_,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    return &table;
}
