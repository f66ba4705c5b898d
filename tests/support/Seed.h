// The seed of a test run: KOR_TEST_SEED=<number> sets it, KOR_TEST_SEED=random draws one, otherwise it is fixed.
#ifndef KOR_TESTS_SUPPORT_SEED_H
#define KOR_TESTS_SUPPORT_SEED_H

#include <cstdint>

namespace kit {

std::uint64_t RunSeed();

}  // namespace kit

#endif
