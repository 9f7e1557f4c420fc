// The camera behind OVideoTestPatternCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_TEST_PATTERN_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_TEST_PATTERN_CAMERA_H

#include "platform/cameras/virtual/camera_base.h"

#include <memory>

namespace ostrel {
namespace cameras {

// Thread-safe. A frame is two numbers until somebody takes it.
class TestPatternCamera : public VirtualCamera {
public:
    TestPatternCamera(std::shared_ptr<VirtualControls> controls, int width, int height,
                      double framesPerSecond);

protected:
    Error begin(const std::shared_ptr<VirtualStream>& stream) override;

private:
    const int width_;
    const int height_;
    const double framesPerSecond_;
};

} // namespace cameras
} // namespace ostrel

#endif
