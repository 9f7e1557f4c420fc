// Waiting for a camera that has left.
#ifndef OSTREL_APPS_CAMERA_CAMERA_RETURN_H
#define OSTREL_APPS_CAMERA_CAMERA_RETURN_H

#include "apps/camera/stop_request.h"

#include <ostrel/device_monitor.h>

#include <chrono>
#include <string>

namespace ostrel::apps::cli {

// Bound to one thread.
class CameraReturn {
public:
    CameraReturn(const std::string& identifier, const StopRequest& stop, double seconds);

    // Waits until it is worth while to start it: at first as soon as it is attached, later when it was
    // plugged in anew, or a moment after the start before, which has failed. False when the time is over or
    // a signal has come.
    bool wait();
    double secondsLeft() const; // 0 when the time is over

private:
    using Clock = std::chrono::steady_clock;
    void follow();

    const QString identifier_;
    const StopRequest& stop_;
    const Clock::time_point end_;
    OVideoDeviceMonitor monitor_;
    bool attached_;
    Clock::time_point next_; // try
};

} // namespace ostrel::apps::cli

#endif
