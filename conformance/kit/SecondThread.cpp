#include "conformance/kit/SecondThread.h"

#include <limits.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include "conformance/kit/Fault.h"
#include "conformance/kit/Poison.h"

namespace kit {

namespace {

// So much below the stack is unmapped that a function with megabytes of local variables cannot step over it.
constexpr std::size_t kBelow = std::size_t{1} << (sizeof(void*) > 4 ? 28 : 24);

// For what the C library and the kit put on the stack themselves.
constexpr std::size_t kOwnBytes = std::size_t{1} << 13;

std::size_t MappedStackBytes() {
    const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (SecondThread::StackBytes() + kOwnBytes + page - 1) / page * page;
}

}  // namespace

std::size_t SecondThread::StackBytes() {
    // The sanitizers make every frame larger.
    const std::size_t wanted = std::size_t{1} << (kSanitized ? 19 : 16);
    const long least = sysconf(_SC_THREAD_STACK_MIN);
    return std::max(wanted, static_cast<std::size_t>(std::max(least, 0L)));
}

SecondThread::SecondThread() {
    void* mapping = mmap(nullptr, kBelow + MappedStackBytes(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    mapping_ = static_cast<std::uint8_t*>(mapping);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    int error = mprotect(mapping_ + kBelow, MappedStackBytes(), PROT_READ | PROT_WRITE) == 0 ? 0 : ENOMEM;
    error = error != 0 ? error : pthread_attr_setstack(&attributes, mapping_ + kBelow, MappedStackBytes());
    error = error != 0 ? error : pthread_create(&thread_, &attributes, &Serve, this);
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        munmap(mapping_, kBelow + MappedStackBytes());
        throw std::runtime_error(std::string("cannot start a thread: ") + std::strerror(error));
    }
}

SecondThread::~SecondThread() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ends_ = true;
    }
    changed_.notify_all();
    pthread_join(thread_, nullptr);
    munmap(mapping_, kBelow + MappedStackBytes());
}

void SecondThread::Start(const std::function<void()>& work) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        work_ = &work;
    }
    changed_.notify_all();
}

void SecondThread::Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return work_ == nullptr; });
}

bool SecondThread::IsBelowStack(std::uintptr_t address) const {
    return address - reinterpret_cast<std::uintptr_t>(mapping_) < kBelow;
}

void* SecondThread::Serve(void* self) {
    static_cast<SecondThread*>(self)->ServeAll();
    return nullptr;
}

void SecondThread::ServeAll() {
    const SignalStack stack;
    std::unique_lock<std::mutex> lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return work_ != nullptr || ends_; });
        if (work_ == nullptr) {
            return;
        }
        lock.unlock();
        (*work_)();
        lock.lock();
        work_ = nullptr;
        changed_.notify_all();
    }
}

}  // namespace kit
