// Says on standard error which case was running when the process dies of a touch on an unmapped page.
#ifndef KOR_CONFORMANCE_KIT_CRASHNOTE_H
#define KOR_CONFORMANCE_KIT_CRASHNOTE_H

#include "conformance/core/Case.h"

namespace kit {

// Names the case for as long as the note lives. Making one costs next to nothing.
class CrashNote {
  public:
    CrashNote(const char* function, const Case& options);
    ~CrashNote();
    CrashNote(const CrashNote&) = delete;
    CrashNote& operator=(const CrashNote&) = delete;
};

// Once at the start of a program; a handler that was there before still gets its turn.
void InstallCrashNote();

}  // namespace kit

#endif
