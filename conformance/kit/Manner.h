// How a case is called beyond its arguments: what surrounds the call, and what of the memory can be touched.
#ifndef KOR_CONFORMANCE_KIT_MANNER_H
#define KOR_CONFORMANCE_KIT_MANNER_H

#include <cstddef>
#include <string>

#include "conformance/kit/ProcessorState.h"

namespace kit {

enum class Reach {
    Usual,
    SourcesReadOnly,  // so that a source that is changed and restored shows
    RowsOnPages,      // each row at an end of a page of its own, the pages between them unmapped
};

struct Manner {
    FloatMode floats = FloatMode::Usual;
    Reach reach = Reach::Usual;
    bool secondThread = false;  // with a small stack
    bool repeated = false;      // several times with the same arguments, with an eye on what is allocated
};

// The manner of a case follows from its number, so that a case that is tried alone is tried as before. Number zero is
// called in the usual manner. Long rows and columns are few and need the most scratch memory: more of them are tried
// with a small stack, read-only sources and an eye on what is allocated.
Manner MannerOf(std::size_t number, bool isLong = false);

// As in "; called on a second thread"; empty for the usual manner.
std::string Describe(const Manner& manner);

}  // namespace kit

#endif
