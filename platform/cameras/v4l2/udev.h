// libudev's objects, each with an owner. Those of one context are bound to one thread at a time.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_UDEV_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_UDEV_H

#include <libudev.h>
#include <memory>

namespace ostrel {
namespace cameras {
namespace v4l2 {

template <typename Object, Object* (*Unref)(Object*)>
struct Unreference {
    void operator()(Object* object) const { Unref(object); }
};
using Udev = std::unique_ptr<udev, Unreference<udev, udev_unref>>;
using Device = std::unique_ptr<udev_device, Unreference<udev_device, udev_device_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, Unreference<udev_monitor, udev_monitor_unref>>;

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
