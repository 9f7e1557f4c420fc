// The machine's V4L2 cameras.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_PROVIDER_H

#include "platform/cameras/registry.h"

#include <memory>

namespace ostrel {
namespace cameras {
namespace v4l2 {

std::shared_ptr<CameraProvider> makeProvider();

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
