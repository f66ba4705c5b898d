// The default services: the noise table has the properties that docs/noise.md states, and the random service fills what
// it is asked to fill and reports failure.
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/wait.h>
#include <unistd.h>
#endif
#if defined(__linux__)
#include <sys/random.h>
#include <sys/syscall.h>
#endif

#include "gtest/gtest.h"

#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorVideoFrame.h"

namespace {

// ---- The noise table ----

constexpr int kSize = 16384;
constexpr int kMask = kSize - 1;

std::vector<int> Table() {
    return {KorTblDitherStd4, KorTblDitherStd4 + kSize};
}

// The noise that a conversion adds when it shifts the table's values right by shift bits.
std::vector<int> Noise(int shift) {
    std::vector<int> noise;
    for (const int entry : Table())
        noise.push_back(shift == 0 ? entry : (entry + (1 << (shift - 1))) >> shift);
    return noise;
}

double Mean(const std::vector<int>& noise) {
    int sum = 0;
    for (int value : noise)
        sum += value;
    return static_cast<double>(sum) / kSize;
}

// The autocorrelation of the ring about its mean, relative to the variance.
double Autocorrelation(const std::vector<int>& noise, int lag) {
    int64_t products = 0;
    int64_t squares = 0;
    for (int i = 0; i < kSize; ++i) {
        const int64_t value = noise[static_cast<size_t>(i)];
        squares += value * value;
        products += value * noise[static_cast<size_t>((i + lag) & kMask)];
    }
    const double offset = kSize * Mean(noise) * Mean(noise);
    return (static_cast<double>(products) - offset) / (static_cast<double>(squares) - offset);
}

// The autocorrelation along a row that the table is designed for.
double AlongRow(int lag) {
    constexpr double kTarget[] = {1, -0.551, -0.086, 0.125, 0.073, -0.042, -0.048, 0.030};
    const int distance = std::abs(lag);
    return distance < 8 ? kTarget[distance] : 0;
}

TEST(DitherTable, HasTheExactMoments) {
    int sum = 0;
    int squares = 0;
    for (const int entry : Table()) {
        sum += entry;
        squares += entry * entry;
    }
    EXPECT_EQ(sum, 0);
    EXPECT_EQ(squares, 16 * kSize) << "a standard deviation of 4";
}

TEST(DitherTable, IsASymmetricBell) {
    std::array<int, 29> count{};
    for (const int entry : Table()) {
        ASSERT_GE(entry, -14);
        ASSERT_LE(entry, 14);
        const int index = entry + 14;
        ++count[static_cast<size_t>(index)];
    }
    for (size_t e = 0; e < 14; ++e) {
        EXPECT_EQ(count[14 - e], count[14 + e]) << "entries " << e;
        EXPECT_GT(count[14 + e], count[15 + e]) << "entries " << e;
    }
    EXPECT_GT(count[0], 0);
}

// Halves round up, so the mean shifts by half the share of entries that lie half-way: at a shift of 1, the odd ones,
// and so on. All of this follows from the zero-mean bell, and the counts are exact.
TEST(DitherTable, HasTheDocumentedBiasAtEachShift) {
    constexpr double kBias[] = {0, 4096.0 / kSize, 2048.0 / kSize, 1011.0 / kSize, 225.0 / kSize};
    for (int shift = 0; shift <= 4; ++shift)
        EXPECT_DOUBLE_EQ(Mean(Noise(shift)), kBias[shift]) << "shift " << shift;
}

TEST(DitherTable, AlternatesAlongARow) {
    constexpr double kNear[] = {0.005, 0.006, 0.015, 0.04, 0.1};
    for (int shift = 0; shift <= 4; ++shift) {
        const std::vector<int> noise = Noise(shift);
        for (int lag = 1; lag < 32; ++lag) {
            EXPECT_NEAR(Autocorrelation(noise, lag), AlongRow(lag), kNear[shift])
                << "shift " << shift << ", lag " << lag;
        }
    }
}

// The eye is sensitive to low frequencies, so the noise has almost no power there; white noise would have 1.
TEST(DitherTable, HasLittlePowerAtLowFrequencies) {
    constexpr double kPi = 3.14159265358979323846;
    constexpr double kAtMost[] = {0.0125, 0.015, 0.03, 0.08, 0.3};
    for (int shift = 0; shift <= 4; ++shift) {
        const std::vector<int> noise = Noise(shift);
        std::array<double, 32> windowed{};
        for (int lag = 1; lag < 32; ++lag)
            windowed[static_cast<size_t>(lag)] = (1 + std::cos(kPi * lag / 32)) / 2 * Autocorrelation(noise, lag);
        for (int step = 0; step < 25; ++step) {
            const double frequency = 0.005 * step;
            double power = 1;
            for (size_t lag = 1; lag < 32; ++lag)
                power += 2 * windowed[lag] * std::cos(2 * kPi * frequency * static_cast<double>(lag));
            EXPECT_LT(power, kAtMost[shift]) << "shift " << shift << ", cycles per pixel " << frequency;
        }
    }
}

// Whether entries at this lag are meant to be negatively correlated, for the strides below.
bool IsQuarterOrHalf(int lag) {
    return std::abs(lag - kSize / 4) < 8 || std::abs(lag - kSize / 2) < 8;
}

// Rows of a picture are a multiple of 8 apart that depends on the width. Shuffled values meet the last two bounds as
// well.
TEST(DitherTable, IsWhiteAcrossRowsOfEveryWidth) {
    constexpr double kAtMost[] = {0.005, 0.005, 0.01, 0.03, 0.045};
    for (int shift = 0; shift <= 4; ++shift) {
        const std::vector<int> noise = Noise(shift);
        for (int lag = 32; lag <= kSize / 2; lag += 8) {
            if (IsQuarterOrHalf(lag))
                continue;
            EXPECT_LT(std::abs(Autocorrelation(noise, lag)), kAtMost[shift]) << "shift " << shift << ", lag " << lag;
        }
    }
}

// Free-running indices, and diagonals of the others, meet every lag.
TEST(DitherTable, IsNearlyWhiteAtEveryOtherLag) {
    for (int shift = 0; shift <= 2; ++shift) {
        const std::vector<int> noise = Noise(shift);
        for (int lag = 8; lag <= kSize / 2; ++lag) {
            if (IsQuarterOrHalf(lag))
                continue;
            EXPECT_LT(std::abs(Autocorrelation(noise, lag)), 0.05) << "shift " << shift << ", lag " << lag;
        }
    }
}

TEST(DitherTable, LeansToOppositeSignsAtAQuarterAndAHalf) {
    constexpr double kNear[] = {0.005, 0.006, 0.015, 0.04, 0.1};
    for (int shift = 0; shift <= 4; ++shift) {
        const std::vector<int> noise = Noise(shift);
        for (int middle : {kSize / 4, kSize / 2}) {
            for (int lag = middle - 7; lag <= middle + 7; ++lag)
                EXPECT_NEAR(Autocorrelation(noise, lag), -AlongRow(lag - middle) / 4, kNear[shift])
                    << "shift " << shift << ", lag " << lag;
        }
    }
}

// Power-of-two strides repeat the same noise after a few rows. What does not cancel in a column shows as vertical
// lines; white noise would leave 1.
TEST(DitherTable, CancelsInTheColumnsOfPowerOfTwoStrides) {
    constexpr double kAtMost[] = {0.27, 0.27, 0.27, 0.3, 0.4};
    for (int shift = 0; shift <= 4; ++shift) {
        const std::vector<int> noise = Noise(shift);
        const double mean = Mean(noise);
        double variance = 0;
        for (int value : noise)
            variance += (value - mean) * (value - mean) / kSize;
        for (int stride = 512; stride <= 4096; stride *= 2) {
            const int rows = kSize / stride;
            double power = 0;
            for (int column = 0; column < stride; ++column) {
                double sum = 0;
                for (int row = 0; row < rows; ++row) {
                    const int index = row * stride + column;
                    sum += noise[static_cast<size_t>(index)] - mean;
                }
                power += sum * sum / rows / stride;
            }
            EXPECT_LT(power / variance, kAtMost[shift]) << "shift " << shift << ", stride " << stride;
        }
    }
}

// ---- The random service ----

#if defined(__linux__)
// How the system's random source behaves on this thread: the most bytes it returns at a time, the number of
// interruptions before that, and the number of calls before it fails.
struct SystemScript {
    size_t most = SIZE_MAX;
    int interruptions = 0;
    int callsBeforeFailure = -1;
    int calls = 0;
};
thread_local SystemScript systemScript;
#endif

constexpr char kGuard = 0x5a;

bool AllGuard(const char* begin, const char* end) {
    return std::all_of(begin, end, [](char byte) { return byte == kGuard; });
}

// Draws count bytes into the middle of a guarded buffer and returns them.
std::vector<char> Draw(size_t count) {
    constexpr size_t kMargin = 64;
    std::vector<char> buffer(count + 2 * kMargin, kGuard);
    char* middle = buffer.data() + kMargin;
    EXPECT_TRUE(KorRandomGetBytes(middle, count));
    EXPECT_TRUE(AllGuard(buffer.data(), middle)) << "wrote before the buffer, count " << count;
    EXPECT_TRUE(AllGuard(middle + count, middle + count + kMargin)) << "wrote past the buffer, count " << count;
    return std::vector<char>(middle, middle + count);
}

// Whether each of count bytes changes within a few draws; by chance this fails once in 10^15.
bool EveryByteIsDrawn(size_t count) {
    std::vector<char> changed(count, 0);
    const std::vector<char> first = Draw(count);
    for (int draw = 0; draw < 9; ++draw) {
        const std::vector<char> next = Draw(count);
        for (size_t i = 0; i < count; ++i)
            changed[i] = static_cast<char>(changed[i] | (first[i] ^ next[i]));
    }
    return std::find(changed.begin(), changed.end(), 0) == changed.end();
}

TEST(RandomService, FillsExactlyWhatIsAsked) {
    for (size_t count = 1; count <= 40; ++count)
        EXPECT_TRUE(EveryByteIsDrawn(count)) << "count " << count;
}

TEST(RandomService, CompletesLargeRequests) {
    EXPECT_TRUE(EveryByteIsDrawn((1u << 20) + 3));
}

TEST(RandomService, GivesNothingWhenNothingIsAsked) {
    char byte = kGuard;
    EXPECT_TRUE(KorRandomGetBytes(&byte, 0));
    EXPECT_EQ(byte, kGuard);
    EXPECT_TRUE(KorRandomGetBytes(nullptr, 0));
}

TEST(RandomService, NeverRepeatsItself) {
    EXPECT_NE(Draw(16), Draw(16));
}

TEST(RandomService, DrawsEveryValueOfAByte) {
    std::array<int, 256> count{};
    for (char byte : Draw(1u << 16))
        ++count[static_cast<unsigned char>(byte)];
    for (int n : count) {
        EXPECT_GT(n, 128) << "expected 256, standard deviation 16";
        EXPECT_LT(n, 384) << "expected 256, standard deviation 16";
    }
}

TEST(RandomService, ServesManyThreadsAtOnce) {
    constexpr size_t kThreads = 4;
    constexpr size_t kDraws = 2000;
    std::vector<std::array<uint64_t, kDraws>> draws(kThreads);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (std::array<uint64_t, kDraws>& own : draws) {
        threads.emplace_back([&own, &failures] {
            for (uint64_t& value : own) {
                char bytes[sizeof(value)];
                failures += KorRandomGetBytes(bytes, sizeof(bytes)) ? 0 : 1;
                std::memcpy(&value, bytes, sizeof(value));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures, 0);

    std::vector<uint64_t> all;
    for (const std::array<uint64_t, kDraws>& own : draws)
        all.insert(all.end(), own.begin(), own.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end()) << "two draws are the same";
}

#if defined(__unix__) || defined(__APPLE__)
// What a child of this process draws.
std::vector<char> DrawInChild(size_t count) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    EXPECT_GE(child, 0);
    if (child == 0) {
        const std::vector<char> bytes = Draw(count);
        _exit(write(ends[1], bytes.data(), count) == static_cast<ssize_t>(count) ? 0 : 1);
    }
    std::vector<char> bytes(count);
    EXPECT_EQ(read(ends[0], bytes.data(), count), static_cast<ssize_t>(count));
    close(ends[0]);
    close(ends[1]);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return bytes;
}

TEST(RandomService, GivesEveryChildBytesOfItsOwn) {
    std::vector<std::vector<char>> draws;
    Draw(8);
    draws.push_back(DrawInChild(16));
    draws.push_back(DrawInChild(16));
    draws.push_back(Draw(16));
    std::sort(draws.begin(), draws.end());
    EXPECT_EQ(std::adjacent_find(draws.begin(), draws.end()), draws.end()) << "two processes drew the same";
}
#endif

#if defined(__linux__)

// On a thread of its own, for which nothing has been kept yet.
class ScriptedSystem : public testing::Test {
  protected:
    template <class Work>
    static void OnNewThread(Work work) {
        std::thread(work).join();
    }
};

TEST_F(ScriptedSystem, IsAskedOncePerManyDraws) {
    OnNewThread([] {
        for (int draw = 0; draw < 60; ++draw)
            Draw(8);
        EXPECT_EQ(systemScript.calls, 1);
    });
}

TEST_F(ScriptedSystem, ShortReadsAreContinued) {
    OnNewThread([] {
        systemScript.most = 3;
        EXPECT_TRUE(EveryByteIsDrawn(1000));
        EXPECT_EQ(systemScript.calls, 10 * 334);
    });
}

TEST_F(ScriptedSystem, ShortReadsOfSmallRequestsAreContinued) {
    OnNewThread([] {
        systemScript.most = 3;
        EXPECT_TRUE(EveryByteIsDrawn(8));
    });
}

TEST_F(ScriptedSystem, InterruptionsAreRepeated) {
    OnNewThread([] {
        systemScript.interruptions = 5;
        EXPECT_EQ(Draw(8).size(), 8u);
        EXPECT_EQ(systemScript.calls, 6);
    });
}

TEST_F(ScriptedSystem, FailureIsToldAtOnce) {
    OnNewThread([] {
        systemScript.callsBeforeFailure = 0;
        char bytes[8];
        EXPECT_FALSE(KorRandomGetBytes(bytes, sizeof(bytes)));
        EXPECT_EQ(systemScript.calls, 1);
    });
}

TEST_F(ScriptedSystem, FailureHalfWayIsToldToo) {
    OnNewThread([] {
        systemScript.most = 3;
        systemScript.callsBeforeFailure = 2;
        char bytes[8];
        EXPECT_FALSE(KorRandomGetBytes(bytes, sizeof(bytes)));
        EXPECT_EQ(systemScript.calls, 3);
    });
}

TEST_F(ScriptedSystem, FailureDoesNotLast) {
    OnNewThread([] {
        systemScript.most = 3;
        systemScript.callsBeforeFailure = 2;
        char bytes[8];
        EXPECT_FALSE(KorRandomGetBytes(bytes, sizeof(bytes)));
        systemScript = SystemScript();
        EXPECT_TRUE(EveryByteIsDrawn(8));
    });
}

TEST_F(ScriptedSystem, NothingIsAskedForNothing) {
    OnNewThread([] {
        EXPECT_TRUE(KorRandomGetBytes(nullptr, 0));
        EXPECT_EQ(systemScript.calls, 0);
    });
}

#endif

}  // namespace

#if defined(__linux__)
// Replaces the C library's function of this name, to subject the service to short reads, interruptions and failures.
extern "C" ssize_t getrandom(void* buffer, size_t count, unsigned int flags) {
    ++systemScript.calls;
    if (systemScript.interruptions > 0) {
        --systemScript.interruptions;
        errno = EINTR;
        return -1;
    }
    if (systemScript.callsBeforeFailure >= 0 && systemScript.calls > systemScript.callsBeforeFailure) {
        errno = ENOSYS;
        return -1;
    }
    return static_cast<ssize_t>(syscall(SYS_getrandom, buffer, std::min(count, systemScript.most), flags));
}
#endif
