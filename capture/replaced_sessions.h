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
        std::lock_guard<std::mutex> lock(m_mutex);
        m_entries.push_back(std::make_pair(owner, Entry(session, camera)));
    }

    // The owner's entries, taken out of the list.
    std::vector<Entry> take(id owner) {
        std::vector<Entry> taken;
        std::lock_guard<std::mutex> lock(m_mutex);
        for (std::size_t i = m_entries.size(); i-- > 0;) {
            if (m_entries[i].first != owner)
                continue;
            taken.push_back(m_entries[i].second);
            m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(i));
        }
        return taken;
    }

private:
    std::mutex m_mutex;
    std::vector<std::pair<id, Entry>> m_entries;
};

} // namespace ostrel

#endif
