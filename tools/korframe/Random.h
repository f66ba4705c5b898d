// The random bytes that dithering draws. The program brings the service itself instead of the one of the platform
// target, because a run with a seed must be repeatable.
#ifndef KORFRAME_RANDOM_H
#define KORFRAME_RANDOM_H

#include <cstddef>
#include <cstdint>

namespace korframe {

// From here on this thread's random bytes follow from the seed and the number of the frame alone, so that the frames
// of a clip do not depend on the order in which they are made. Without it they come from the operating system.
void SeedRandom(std::uint64_t seed, std::uint64_t frameNumber);

// From here on this thread's random bytes come from the given function, until it is called with null.
using RandomSource = bool (*)(char* buffer, std::size_t count);
void ServeRandomFrom(RandomSource source);

}  // namespace korframe

#endif
