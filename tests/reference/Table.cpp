#include "tests/reference/Table.h"

#include "tests/reference/Reference.h"

namespace reference {

const KorConformanceTable& Table() {
    static const KorConformanceTable table = {
#define KOR_FUNCTION(name, shape, family, frames) &name##_C_,
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    };
    return table;
}

}  // namespace reference
