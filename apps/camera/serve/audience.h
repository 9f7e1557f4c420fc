// Those who look at the live picture, and what there is to see.
#ifndef OSTREL_APPS_CAMERA_SERVE_AUDIENCE_H
#define OSTREL_APPS_CAMERA_SERVE_AUDIENCE_H

#include "apps/common/size.h"
#include "base/wake_descriptor.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel::apps::cli {

struct LivePicture {
    std::string jpeg;
    uint64_t number = 0;     // from 1, over all captures
    int64_t captureTime = 0; // nanoseconds of CLOCK_MONOTONIC
};
using LivePicturePointer = std::shared_ptr<const LivePicture>;

struct LiveFacts {
    uint64_t number = 0; // of the newest picture; 0: none
    int64_t captureTime = 0;
    double rate = 0;    // frames a second; 0 until it is known
    bool shown = false; // there are pictures at present
    std::string why;    // there are none
};

// Thread-safe: one thread publishes, others look.
class Audience {
public:
    // One who looks. sleep() and wake() are called under the audience's lock, from any thread: wake() once
    // after each sleep(). They must not call back.
    struct Looker {
        std::function<void()> sleep;
        std::function<void()> wake;

    private:
        friend class Audience;
        bool sleeps_ = false;
        uint64_t seen_ = 0;
        uint64_t failures_ = 0; // that were before it came
    };
    using Place = std::list<Looker>::iterator;

    Audience() = default;
    Audience(const Audience&) = delete;
    Audience& operator=(const Audience&) = delete;

    Place join(std::function<void()> sleep, std::function<void()> wake);
    void leave(Place place);

    enum class Next {
        Picture, // the newest that this one has not had
        Later,   // it was put to sleep
        Over     // there will be none
    };
    Next next(Place place, LivePicturePointer& picture);
    LiveFacts facts() const;

    // How many look for whom it is not over.
    std::size_t size() const;
    // For poll(): readable once somebody has joined since settle().
    int descriptor() const { return joined_.descriptor(); }
    void settle();

    void publish(std::string jpeg, int64_t captureTime, double rate);
    // Has all who wait have the newest picture again, so that those who have gone away are noticed.
    void repeat();
    // Nothing can be seen: it is over for all who look now. Those who come later start anew.
    void fail(const std::string& why);
    // As if nothing had been shown.
    void clear();
    // It is over, also for all who come later.
    void close();

private:
    void wakeAll();

    mutable std::mutex mutex_;
    std::list<Looker> lookers_;
    LivePicturePointer newest_;
    LiveFacts facts_;
    uint64_t failures_ = 0;
    bool closed_ = false;
    WakeDescriptor joined_;
};

} // namespace ostrel::apps::cli

#endif
