// The program kordigest, for the dispatched functions or for any table.
#ifndef KOR_CONFORMANCE_DIGEST_DIGESTMAIN_H
#define KOR_CONFORMANCE_DIGEST_DIGESTMAIN_H

#include "conformance/KorConformance.h"

namespace kit {

int DigestMain(int argc, char** argv, const KorConformanceTable& table);

// With options for targets.
int DispatchedDigestMain(int argc, char** argv);

}  // namespace kit

#endif
