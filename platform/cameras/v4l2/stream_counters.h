// The figures of a stream, counted on its delivery thread and by whoever converts its frames.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_STREAM_COUNTERS_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_STREAM_COUNTERS_H

#include "platform/cameras/camera.h"

#include <mutex>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Thread-safe.
class StreamCounters {
public:
    template <typename Change>
    void change(Change change) {
        std::lock_guard<std::mutex> lock(mutex_);
        change(figures_);
    }
    void drop(const char* reason) {
        change([reason](StreamStatistics& figures) { ++figures.dropped[reason]; });
    }
    StreamStatistics read() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return figures_;
    }

private:
    mutable std::mutex mutex_;
    StreamStatistics figures_;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
