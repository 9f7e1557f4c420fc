#include "platform/cameras/v4l2/v4l2_provider.h"

namespace ostrel {
namespace cameras {
namespace v4l2 {

std::shared_ptr<CameraProvider> makeProvider() {
    return nullptr;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
