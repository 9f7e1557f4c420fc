#include "apps/camera/camera_return.h"

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

const std::chrono::milliseconds BETWEEN_STARTS(500);
// Where the system has no descriptor left to wait with.
const std::chrono::milliseconds BETWEEN_LOOKS(500);

} // namespace

CameraReturn::CameraReturn(const std::string& identifier, const StopRequest& stop, double seconds)
    : identifier_(QString::fromStdString(identifier)), stop_(stop),
      end_(Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))),
      attached_(monitor_.cameras().contains(identifier_)) {}

bool CameraReturn::wait() {
    for (Clock::time_point now = Clock::now(); now < end_ && !stop_.raised(); now = Clock::now()) {
        follow();
        if (attached_ && now >= next_) {
            next_ = now + BETWEEN_STARTS;
            return true;
        }
        const Clock::time_point then = attached_                   ? next_
                                       : monitor_.descriptor() < 0 ? now + BETWEEN_LOOKS
                                                                   : end_;
        stop_.wait(monitor_.descriptor(), std::min(then, end_));
    }
    return false;
}

void CameraReturn::follow() {
    const QList<OVideoDeviceChange> changes = monitor_.take();
    for (const OVideoDeviceChange& change : changes) {
        if (change.uniqueID() != identifier_)
            continue;
        attached_ = change.kind() == OVideoDeviceChange::ADDED;
        next_ = Clock::time_point();
    }
}

double CameraReturn::secondsLeft() const {
    return std::max(0.0, std::chrono::duration<double>(end_ - Clock::now()).count());
}

} // namespace ostrel::apps::cli
