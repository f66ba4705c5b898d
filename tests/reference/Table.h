// The reference as a table, for the programs that hold something against a table of functions.
#ifndef KOR_TESTS_REFERENCE_TABLE_H
#define KOR_TESTS_REFERENCE_TABLE_H

#include "conformance/KorConformance.h"

namespace reference {

const KorConformanceTable& Table();

}  // namespace reference

#endif
