// The reference as a table of functions, for programs that compare two such tables.
#ifndef KOR_TESTS_REFERENCE_TABLE_H
#define KOR_TESTS_REFERENCE_TABLE_H

#include "conformance/KorConformance.h"

namespace reference {

const KorConformanceTable& Table();

}  // namespace reference

#endif
