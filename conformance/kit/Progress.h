// Where a run is, for somebody else to see: a process that ends without a word, or never ends, leaves it behind.
#ifndef KOR_CONFORMANCE_KIT_PROGRESS_H
#define KOR_CONFORMANCE_KIT_PROGRESS_H

#include <atomic>
#include <cstdint>

namespace kit {

enum class Stage : std::uint32_t {
    Kit,
    Selecting,  // the target
    Model,
    Subject,
};

struct Progress {
    std::atomic<std::uint32_t> beats{0};   // changes as long as the run gets on
    std::atomic<std::uint32_t> number{0};  // of the case
    std::atomic<Stage> stage{Stage::Kit};

    void Enter(Stage next) {
        stage.store(next, std::memory_order_relaxed);
        beats.fetch_add(1, std::memory_order_relaxed);
    }
};

}  // namespace kit

#endif
