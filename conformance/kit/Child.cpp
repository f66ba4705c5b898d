#include "conformance/kit/Child.h"

#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include "conformance/core/Pattern.h"

namespace kit {

namespace {

using Clock = std::chrono::steady_clock;

// How often the parent looks.
constexpr int kLookMilliseconds = 50;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void WriteAll(int file, const void* bytes, std::size_t count) {
    const char* next = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t written = write(file, next, count);
        if (written < 0 && errno != EINTR) {
            return;
        }
        next += std::max<ssize_t>(written, 0);
        count -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
}

// A message is its length and its text: the end of the pipe may stay away, as children of the child hold it too.
[[noreturn]] void BeChild(const std::function<std::string()>& work, int pipe) {
#if defined(__linux__)
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    const std::string message = work();
    std::fflush(nullptr);
    const std::uint64_t size = message.size();
    WriteAll(pipe, &size, sizeof size);
    WriteAll(pipe, message.data(), message.size());
    _exit(0);
}

bool IsComplete(const std::string& received) {
    std::uint64_t size = 0;
    if (received.size() < sizeof size) {
        return false;
    }
    std::memcpy(&size, received.data(), sizeof size);
    return received.size() - sizeof size >= size;
}

std::string NameOfSignal(int number) {
    const char* const name = strsignal(number);
    return "signal " + std::to_string(number) + (name == nullptr ? "" : std::string(" (") + name + ")");
}

std::string Describe(int status) {
    return WIFSIGNALED(status) ? NameOfSignal(WTERMSIG(status)) : "exit status " + std::to_string(WEXITSTATUS(status));
}

int Reap(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace

SharedProgress::SharedProgress() {
    void* page = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        throw std::bad_alloc();
    }
    progress_ = new (page) Progress;
}

SharedProgress::~SharedProgress() {
    munmap(progress_, sizeof(Progress));
}

Ending RunInChild(const std::function<std::string()>& work, const Progress& progress, double secondsWithoutProgress) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error(std::string("cannot make a pipe: ") + std::strerror(errno));
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        close(ends[0]);
        close(ends[1]);
        throw std::runtime_error(std::string("cannot start a process: ") + std::strerror(errno));
    }
    if (child == 0) {
        close(ends[0]);
        BeChild(work, ends[1]);
    }
    close(ends[1]);

    std::string received;
    bool open = true;
    bool stuck = false;
    std::uint32_t beats = progress.beats;
    Clock::time_point last = Clock::now();
    while (open && !stuck && !IsComplete(received)) {
        pollfd look = {ends[0], POLLIN, 0};
        if (poll(&look, 1, kLookMilliseconds) > 0) {
            char bytes[4096];
            const ssize_t count = read(ends[0], bytes, sizeof bytes);
            received.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
            open = count > 0 || (count < 0 && errno == EINTR);
        }
        if (progress.beats != beats) {
            beats = progress.beats;
            last = Clock::now();
        }
        stuck = SecondsSince(last) > secondsWithoutProgress;
    }
    close(ends[0]);
    Ending ending;
    ending.delivered = IsComplete(received);
    if (!ending.delivered && stuck) {
        kill(child, SIGKILL);
        char text[32];
        std::snprintf(text, sizeof text, "%.3g", secondsWithoutProgress);
        ending.how = std::string("never returned: still running after ") + text + " s";
        Reap(child);
        return ending;
    }
    const int status = Reap(child);
    if (ending.delivered) {
        ending.message = received.substr(sizeof(std::uint64_t));
    } else {
        ending.how = "ended the process: " + Describe(status);
    }
    return ending;
}

double Slowness() {
    // What filling so much noise takes in a plain build on an ordinary machine.
    constexpr std::size_t kBytes = std::size_t{1} << 18;
    constexpr double kOrdinarySeconds = 0.0004;
    std::vector<std::uint8_t> bytes(kBytes);
    double best = 0;
    for (int i = 0; i < 3; ++i) {
        const Clock::time_point start = Clock::now();
        FillNoise(static_cast<std::uint64_t>(i), bytes.data(), bytes.size());
        best = i == 0 ? SecondsSince(start) : std::min(best, SecondsSince(start));
    }
    return std::max(1.0, best / kOrdinarySeconds);
}

}  // namespace kit
