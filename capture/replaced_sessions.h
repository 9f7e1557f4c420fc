// Sessions that a second start built over, still running with nobody left who refers to them.
#ifndef OSTREL_CAPTURE_REPLACED_SESSIONS_H
#define OSTREL_CAPTURE_REPLACED_SESSIONS_H

#import <QTKit/QTKit.h>

#include <mutex>
#include <utility>
#include <vector>

namespace ostrel {

// The framework does not retain a delegate. Without this list a replaced session would go on delivering to an
// object that is freed. Thread-safe.
class ReplacedSessions {
public:
    typedef std::pair<QTCaptureSession*, QTCaptureDevice*> Entry;

    void add(id owner, QTCaptureSession* session, QTCaptureDevice* camera) {
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back(std::make_pair(owner, Entry(session, camera)));
    }

    // The owner's entries, taken out of the list.
    std::vector<Entry> take(id owner) {
        std::vector<Entry> taken;
        std::lock_guard<std::mutex> lock(mutex_);
        for (std::size_t i = entries_.size(); i-- > 0;) {
            if (entries_[i].first != owner)
                continue;
            taken.push_back(entries_[i].second);
            entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return taken;
    }

private:
    std::mutex mutex_;
    std::vector<std::pair<id, Entry>> entries_;
};

} // namespace ostrel

#endif
