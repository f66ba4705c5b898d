#include "Workers.h"

#include <algorithm>
#include <vector>

namespace korgst {

namespace {

struct Part {
    const std::function<void(unsigned)>* work;
    unsigned index;
    gpointer handle;
};

void RunPart(gpointer data) {
    const Part* part = static_cast<const Part*>(data);
    (*part->work)(part->index);
}

}  // namespace

Workers::~Workers() {
    Stop();
}

void Workers::SetThreads(unsigned threads) {
    threads = threads != 0 ? threads : std::max(1u, g_get_num_processors());
    if (threads != threads_) {
        Stop();
        threads_ = threads;
    }
}

void Workers::Run(unsigned count, const std::function<void(unsigned)>& work) {
    if (count > 1 && pool_ == nullptr) {
        Start();
    }
    std::vector<Part> parts;
    for (unsigned i = 1; i < count; ++i) {
        parts.push_back({&work, i, nullptr});
    }
    for (Part& part : parts) {
        GError* error = nullptr;
        part.handle = gst_task_pool_push(pool_, RunPart, &part, &error);
        if (error != nullptr) {  // no thread to be had: what it would have done is done here
            g_clear_error(&error);
            RunPart(&part);
        }
    }
    work(0);
    for (const Part& part : parts) {
        if (part.handle != nullptr) {
            gst_task_pool_join(pool_, part.handle);
        }
    }
}

void Workers::Start() {
    pool_ = gst_shared_task_pool_new();
    gst_shared_task_pool_set_max_threads(GST_SHARED_TASK_POOL(pool_), threads_ - 1);
    gst_task_pool_prepare(pool_, nullptr);
}

void Workers::Stop() {
    if (pool_ != nullptr) {
        gst_task_pool_cleanup(pool_);
        gst_object_unref(pool_);
        pool_ = nullptr;
    }
}

}  // namespace korgst
