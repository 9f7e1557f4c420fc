// Notices that cameras come and go.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_DEVICE_WATCH_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_DEVICE_WATCH_H

#include "platform/cameras/change_watch.h"

#include <memory>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// By the framework's notifications, which come while the main run loop turns. On the main thread of a program
// in which nobody turns it the watch does, once a second: it is readable then, mostly for nothing.
std::unique_ptr<ChangeWatch> watchDevices();

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
