// The random-bytes service of the test programs: serves what a test scripts and records what is drawn.
#ifndef KOR_TESTS_SUPPORT_SCRIPTEDRANDOM_H
#define KOR_TESTS_SUPPORT_SCRIPTEDRANDOM_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kit {

class ScriptedRandom {
  public:
    // Serves bytes that follow from the seed alone, and forgets the draws so far.
    static void ServeSeed(std::uint64_t seed);
    // Serves these values one a draw (the low bytes of each, as many as are asked for), then zeros.
    static void ServeScript(std::vector<std::uint64_t> values);
    // Leaves the buffers as they are and reports failure.
    static void Fail();

    // The byte counts of all draws since the last call of one of the above, in order.
    static const std::vector<std::size_t>& Draws();
};

}  // namespace kit

#endif
