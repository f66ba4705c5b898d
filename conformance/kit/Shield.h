// Takes from the caller of a function, for the time of the call, what the function has no business with.
#ifndef KOR_CONFORMANCE_KIT_SHIELD_H
#define KOR_CONFORMANCE_KIT_SHIELD_H

#include "conformance/kit/Plane.h"

namespace kit {

// The plane can be read but not written, even with what it holds already.
void ForbidWriting(const Plane& plane);
// Whole pages between the rows can neither be read nor written.
void HideGaps(const Plane& plane);
// Everything is allowed again.
void AllowAll(const Plane& plane);

}  // namespace kit

#endif
