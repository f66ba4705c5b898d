#include "tests/support/Seed.h"

#include <cstdlib>
#include <random>
#include <string>

namespace kit {

namespace {

constexpr std::uint64_t kUsualSeed = 420;

std::uint64_t ReadSeed() {
    const char* text = std::getenv("KOR_TEST_SEED");
    if (text == nullptr || *text == '\0') {
        return kUsualSeed;
    }
    if (std::string(text) == "random") {
        std::random_device device;
        return (static_cast<std::uint64_t>(device()) << 32) | device();
    }
    return std::strtoull(text, nullptr, 0);
}

}  // namespace

std::uint64_t RunSeed() {
    static const std::uint64_t seed = ReadSeed();
    return seed;
}

}  // namespace kit
