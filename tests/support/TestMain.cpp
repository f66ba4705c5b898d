// The main program of every test executable: prints the seed at the start, and again if a test failed.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>

#include "tests/support/Seed.h"

namespace {

class SeedPrinter : public testing::EmptyTestEventListener {
    void OnTestProgramStart(const testing::UnitTest&) override {
        std::printf("Seed %" PRIu64 " (set KOR_TEST_SEED to another, or to \"random\")\n", kit::RunSeed());
        std::fflush(stdout);
    }
    void OnTestProgramEnd(const testing::UnitTest& test) override {
        if (test.Failed()) {
            std::printf("To reproduce: KOR_TEST_SEED=%" PRIu64 "\n", kit::RunSeed());
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new SeedPrinter);
    return RUN_ALL_TESTS();
}
