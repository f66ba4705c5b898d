// The program kordigest for any table of functions.
#ifndef KOR_CONFORMANCE_DIGEST_DIGESTMAIN_H
#define KOR_CONFORMANCE_DIGEST_DIGESTMAIN_H

#include "conformance/KorConformance.h"

namespace kit {

int DigestMain(int argc, char** argv, const KorConformanceTable& table);

}  // namespace kit

#endif
