#include "platform/cameras/camera_monitor.h"

#include "base/monotonic_clock.h"

#include <algorithm>
#include <poll.h>

namespace ostrel {
namespace cameras {

namespace {

const int64_t LONGEST_POLL = 3600 * NANOSECONDS_PER_SECOND; // what poll() counts has to fit an int

// Rounded up, so that the time is over afterwards; -1 for ever.
int millisecondsUntil(int64_t time) {
    if (time < 0)
        return -1;
    const int64_t left = std::clamp<int64_t>(time - monotonicNanoseconds(), 0, LONGEST_POLL);
    return static_cast<int>((left + NANOSECONDS_PER_MILLISECOND - 1) / NANOSECONDS_PER_MILLISECOND);
}

bool isReadable(int descriptor, int milliseconds) {
    pollfd one = {descriptor, POLLIN, 0};
    return ::poll(&one, 1, milliseconds) > 0;
}

} // namespace

CameraMonitor::CameraMonitor() {
    look();
    accept();
}

std::map<std::string, std::string> CameraMonitor::cameras() const {
    std::map<std::string, std::string> result;
    for (const auto& one : told_)
        result.emplace(one.first, one.second.name);
    return result;
}

bool CameraMonitor::waitUntil(int64_t time) {
    while (changes().empty()) {
        if (!complete_ || (time >= 0 && monotonicNanoseconds() >= time))
            return false;
        isReadable(set_.descriptor(), millisecondsUntil(time)); // or a signal has come: that ends no wait
    }
    return true;
}

const std::vector<CameraChange>& CameraMonitor::changes() {
    if (changes_.empty() && !isQuiet())
        look();
    return changes_;
}

void CameraMonitor::accept() noexcept {
    if (changes_.empty())
        return;
    changes_.clear();
    told_.swap(found_);
    found_.clear();
    owed_->changed();
}

bool CameraMonitor::isQuiet() const {
    return complete_ && !isReadable(set_.descriptor(), 0);
}

// Where memory runs out on the way the descriptor stays readable, and the next look compares.
void CameraMonitor::look() {
    own_.raise();
    followProviders();
    bool due = mustCompare_ || !complete_;
    mustCompare_ = true;
    for (const auto& watch : watches_)
        due = watch->changed() || due; // each is asked: that makes it quiet
    if (due)
        compare();
    mustCompare_ = false;
    if (changes_.empty())
        owed_->changed();
}

// A machine has the same kinds of camera from first to last; a test may change them.
void CameraMonitor::followProviders() {
    Providers now = currentProviders();
    if (complete_ && now == providers_)
        return;
    complete_ = false;
    watches_.clear();
    watches_.push_back(changesHere().watch());
    for (const auto& provider : now)
        if (std::unique_ptr<ChangeWatch> watch = provider->watch())
            watches_.push_back(std::move(watch));
    bool complete = set_.add(owed_->descriptor());
    for (const auto& watch : watches_)
        complete = set_.add(watch->descriptor()) && complete;
    complete_ = complete;
    mustCompare_ = true;
    providers_.swap(now);
}

CameraMonitor::Listing CameraMonitor::list() const {
    Listing result;
    for (const auto& camera : attachedCameras()) {
        Known known;
        known.name = camera->displayName();
        const std::string identifier = camera->identifier();
        const auto before = told_.find(identifier);
        if (before != told_.end() && before->second.name == known.name)
            known.fresh = before->second.camera != camera && !before->second.camera->attached();
        known.camera = known.fresh ? camera : before->second.camera;
        if (!known.fresh || known.camera->mayBeOpened())
            result[identifier] = std::move(known); // of the same identifier the last one counts
    }
    return result;
}

void CameraMonitor::compare() {
    Listing now = list();
    std::vector<CameraChange> changes;
    for (const auto& before : told_) {
        const auto found = now.find(before.first);
        if (found == now.end() || found->second.fresh)
            changes.push_back({false, before.first, before.second.name});
    }
    for (auto& found : now) {
        if (found.second.fresh)
            changes.push_back({true, found.first, found.second.name});
        found.second.fresh = false;
    }
    found_.swap(now);
    changes_.swap(changes);
}

} // namespace cameras
} // namespace ostrel
