#ifndef SERVICES_H
#define SERVICES_H

#include <cstdint>

// Dithered frames that follow the same seed, in the same order, get the same noise.
void SeedNoise(uint64_t seed);

#endif
