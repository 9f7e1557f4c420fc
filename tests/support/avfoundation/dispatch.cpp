// Serial queues with a thread each.
#include <dispatch/dispatch.h>

#include "support/avfoundation/queues.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

struct dispatch_queue_s {
    struct Work {
        dispatch_function_t call;
        void* context;
    };
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Work> waiting;
    int references = 1;
};

namespace {

std::atomic<int> g_queues{0};

void run(dispatch_queue_s* queue) {
    std::unique_lock<std::mutex> lock(queue->mutex);
    for (;;) {
        queue->changed.wait(lock, [&] { return !queue->waiting.empty() || queue->references == 0; });
        if (queue->waiting.empty())
            break;
        const dispatch_queue_s::Work work = queue->waiting.front();
        queue->waiting.pop_front();
        lock.unlock();
        work.call(work.context);
        lock.lock();
    }
    lock.unlock();
    delete queue;
    --g_queues;
}

} // namespace

int ostrel::support::avfoundation::liveQueues() {
    return g_queues;
}

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
    auto* const queue = new dispatch_queue_s;
    ++g_queues;
    std::thread(run, queue).detach();
    return queue;
}

void dispatch_retain(dispatch_queue_t queue) {
    const std::lock_guard<std::mutex> lock(queue->mutex);
    ++queue->references;
}

void dispatch_release(dispatch_queue_t queue) {
    const std::lock_guard<std::mutex> lock(queue->mutex);
    --queue->references;
    queue->changed.notify_all();
}

void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work) {
    const std::lock_guard<std::mutex> lock(queue->mutex);
    queue->waiting.push_back({work, context});
    queue->changed.notify_all();
}
