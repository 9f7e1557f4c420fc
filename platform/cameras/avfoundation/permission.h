// Whether this program may use cameras.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_PERMISSION_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_PERMISSION_H

namespace ostrel {
namespace cameras {
namespace avfoundation {

enum class Permission {
    Granted,
    Unanswered, // the system asks the user once a camera is opened
    Denied,
    Restricted // by who manages this machine: the user cannot grant it
};

// At once, on any thread.
Permission cameraPermission();

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
