// The camera behind OVideoPushCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PUSH_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PUSH_CAMERA_H

#include "platform/cameras/virtual/camera_base.h"

#include <memory>

namespace ostrel {
namespace cameras {

// Has no thread of its own: the sinks are called on the thread that pushes. Thread-safe; pushes at the same
// time go one after the other.
class PushCamera : public VirtualCamera {
public:
    using VirtualCamera::VirtualCamera;

    // False when the arguments are refused, when nobody captures, when the camera is told to stall, when
    // there is no memory, and from inside a sink's call.
    bool push(const uint8_t* bgra, int width, int height, int stride);
    bool pushI420(const uint8_t* i420, int width, int height);

protected:
    Error begin(const std::shared_ptr<VirtualStream>& stream) override;

private:
    std::shared_ptr<VirtualStream> listeningStream() const;
};

} // namespace cameras
} // namespace ostrel

#endif
