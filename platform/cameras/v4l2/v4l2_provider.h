// The machine's V4L2 cameras.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_PROVIDER_H

#include "platform/cameras/provider.h"
#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/kernel_calls.h"

#include <memory>

namespace ostrel {
namespace cameras {
namespace v4l2 {

std::shared_ptr<CameraProvider> makeProvider();

// The same on a machine of the caller's making.
std::shared_ptr<CameraProvider> makeProvider(const std::shared_ptr<KernelCalls>& kernel,
                                             const std::shared_ptr<Discovery>& discovery);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
