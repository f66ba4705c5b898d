// The random bytes that dithering draws. The program provides this service itself instead of using the platform's,
// because a run with a seed must be repeatable.
#ifndef KORFRAME_RANDOM_H
#define KORFRAME_RANDOM_H

#include <cstddef>
#include <cstdint>

namespace korframe {

// From now on this thread's random bytes depend on the seed and the frame's number alone, so the frames of a clip can
// be made in any order. Without a seed they come from the operating system.
void SeedRandom(std::uint64_t seed, std::uint64_t frameNumber);

// From now on this thread's random bytes come from the given function; null ends that.
using RandomSource = bool (*)(char* buffer, std::size_t count);
void ServeRandomFrom(RandomSource source);

}  // namespace korframe

#endif
