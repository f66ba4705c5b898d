// Parts of a frame on several threads of a GstSharedTaskPool.
#ifndef KOR_GSTREAMER_WORKERS_H
#define KOR_GSTREAMER_WORKERS_H

#include <gst/gst.h>

#include <functional>

namespace korgst {

class Workers {
  public:
    Workers() = default;
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    // 0 is the number of processors.
    void SetThreads(unsigned threads);
    unsigned Threads() const { return threads_; }

    // Calls work(0) to work(count - 1), on as many threads, of which one is the caller's, and returns when all are
    // done.
    void Run(unsigned count, const std::function<void(unsigned)>& work);

  private:
    void Start();
    void Stop();

    GstTaskPool* pool_ = nullptr;  // made when it is first needed
    unsigned threads_ = 1;
};

}  // namespace korgst

#endif
