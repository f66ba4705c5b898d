// Random bytes that follow a script, and a record of what is drawn. A program whose KorRandomGetBytes calls Draw gets
// both.
#ifndef KOR_CONFORMANCE_CORE_SCRIPTEDRANDOM_H
#define KOR_CONFORMANCE_CORE_SCRIPTEDRANDOM_H

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

    // Fills the buffer as the script says; returns whether it could.
    static bool Draw(char* buffer, std::size_t count);
    // The byte counts of all draws since the last call of one of the above, in order.
    static const std::vector<std::size_t>& Draws();
};

}  // namespace kit

#endif
