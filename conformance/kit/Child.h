// Does work in a child process, so that whatever becomes of the process, somebody is left to tell.
#ifndef KOR_CONFORMANCE_KIT_CHILD_H
#define KOR_CONFORMANCE_KIT_CHILD_H

#include <functional>
#include <string>

#include "conformance/kit/Progress.h"

namespace kit {

// A progress that a process and its children share.
class SharedProgress {
  public:
    SharedProgress();
    ~SharedProgress();
    SharedProgress(const SharedProgress&) = delete;
    SharedProgress& operator=(const SharedProgress&) = delete;

    Progress* get() const { return progress_; }

  private:
    Progress* progress_;
};

// How a child ended.
struct Ending {
    bool delivered = false;  // the message is what the work returned
    std::string message;
    std::string how;  // otherwise, in words: an exit status, a signal, no progress
};

// Does the work in a child and returns its message. A child that makes no progress for the given time is killed.
Ending RunInChild(const std::function<std::string()>& work, const Progress& progress, double secondsWithoutProgress);

// By how much this build on this machine is slower than a plain build on an ordinary one: emulators, sanitizers, load.
double Slowness();

}  // namespace kit

#endif
