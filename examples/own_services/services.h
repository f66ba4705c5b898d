#ifndef SERVICES_H
#define SERVICES_H

#include <cstdint>

// Frames dithered in the same order after the same seed get the same noise.
void SeedNoise(uint64_t seed);

#endif
