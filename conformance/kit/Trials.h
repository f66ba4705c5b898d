// What only many calls of a function show, or calls on two threads at once.
#ifndef KOR_CONFORMANCE_KIT_TRIALS_H
#define KOR_CONFORMANCE_KIT_TRIALS_H

#include <cstddef>
#include <cstdint>

#include "conformance/kit/Differential.h"

namespace kit {

class Trials {
  public:
    Trials(const Entry& entry, const AnyFunction& subject, const AnyFunction& model, Progress* progress = nullptr);

    // All trials, numbered from the given number on, or only the one that has the other number.
    Verdict Run(bool quick, std::uint64_t seed, std::size_t firstNumber, std::size_t onlyCase = 0);

    void OnlyDescribe(const std::string& title);

  private:
    Finding CallOften(const Case& options, std::size_t calls);
    Finding CallAtOnce(const Case& options, double seconds);

    const Entry& entry_;
    Differential first_;
    Differential second_;
    bool onlyDescribes_ = false;
};

}  // namespace kit

#endif
