// A thread with a small stack, far above anything else in memory, to run work that its owner waits for.
#ifndef KOR_CONFORMANCE_KIT_SECONDTHREAD_H
#define KOR_CONFORMANCE_KIT_SECONDTHREAD_H

#include <pthread.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>

namespace kit {

class SecondThread {
  public:
    SecondThread();
    ~SecondThread();
    SecondThread(const SecondThread&) = delete;
    SecondThread& operator=(const SecondThread&) = delete;

    void Run(const std::function<void()>& work) {
        Start(work);
        Wait();
    }
    // Starts the work, which must live until the end of Wait.
    void Start(const std::function<void()>& work);
    void Wait();

    // Whether a touched address means that the stack was too small.
    bool IsBelowStack(std::uintptr_t address) const;
    // 64 KiB, or the least that this system allows.
    static std::size_t StackBytes();

  private:
    static void* Serve(void* self);
    void ServeAll();

    std::uint8_t* mapping_ = nullptr;
    pthread_t thread_{};
    std::mutex mutex_;
    std::condition_variable changed_;
    const std::function<void()>* work_ = nullptr;
    bool ends_ = false;
};

}  // namespace kit

#endif
