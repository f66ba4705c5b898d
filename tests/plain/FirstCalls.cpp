// FirstCalls [EXPECTED | --select]: the first calls of the process come from several threads at the same time. All of
// them convert, and see one target: EXPECTED, if it is given. With --select, threads also select targets meanwhile.
// Most useful under ThreadSanitizer.
#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "Kor/Video/Common/KorYuv420.h"

namespace {

constexpr unsigned kThreads = 8;
constexpr KorSizeT kSide = 64;
constexpr KorUint8 kRed[4] = {0, 0, 255, 255};

std::atomic<unsigned> waiting = {0};
std::atomic<bool> isWrong = {false};

// Threads leave this together.
void WaitForAll() {
    ++waiting;
    while (waiting < kThreads) {
        std::this_thread::yield();
    }
}

void CaptureRed() {
    std::vector<KorUint8> bgra(4 * kSide * kSide), y(kSide * kSide), u(kSide * kSide / 4), v(u.size());
    for (KorSizeT i = 0; i < bgra.size(); ++i) {
        bgra[i] = kRed[i % 4];
    }
    KorBGRAToI420(y.data(), kSide, u.data(), kSide / 2, v.data(), kSide / 2, bgra.data(), 4 * kSide, kSide, kSide, 0);
    if (y != std::vector<KorUint8>(y.size(), 81) || u != std::vector<KorUint8>(u.size(), 90) ||
        v != std::vector<KorUint8>(v.size(), 239)) {
        isWrong = true;
    }
}

// One thread after the other takes the next target; the one that ends last may be any.
void Select(unsigned number) {
    std::array<const char*, 16> names;
    const KorSizeT count = KorYuv420Targets(names.data(), names.size());
    for (KorSizeT i = 0; i < 100; ++i) {
        KorYuv420SelectTarget(names[(number + i) % (count < names.size() ? count : names.size())]);
        CaptureRed();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const bool select = argc > 1 && std::strcmp(argv[1], "--select") == 0;
    std::array<const char*, kThreads> seen = {};
    std::vector<std::thread> threads;
    for (unsigned number = 0; number < kThreads; ++number) {
        threads.emplace_back([&, number] {
            WaitForAll();
            if (select && number % 2 != 0) {
                Select(number);
            }
            CaptureRed();
            seen[number] = KorYuv420Target();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const char* const expected = argc > 1 && !select ? argv[1] : KorYuv420Target();
    for (const char* target : seen) {
        if (!select && std::strcmp(target, expected) != 0) {
            std::fprintf(stderr, "a first call chose %s, expected %s\n", target, expected);
            return 1;
        }
    }
    if (isWrong) {
        std::fprintf(stderr, "a first call wrote wrong bytes\n");
        return 1;
    }
    std::printf("first calls on %u threads; target %s\n", kThreads, KorYuv420Target());
    return 0;
}
