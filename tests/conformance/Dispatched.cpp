// The dispatched functions checked against the portable ones: every target that this machine can run, and the automatic
// choice.
#include "Kor/Video/Common/KorYuv420.h"
#include "KorConformance.h"

int main(int argc, char** argv) {
    KorConformanceTable table = {};
#define KOR_FUNCTION(name, shape, family, frames) table.name = &name;
#include "Kor/Video/Common/KorYuv420Functions_.inc"
    return KorConformanceMainWithTargets(argc, argv, "dispatched", &table, nullptr, &KorYuv420Targets,
                                         &KorYuv420SelectTarget);
}
