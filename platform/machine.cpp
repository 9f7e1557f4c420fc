// Which kinds of camera this machine has: the one place that names them.
#include "platform/cameras/registry.h"
#ifdef OSTREL_PIPEWIRE
#include "platform/cameras/pipewire/pipewire_provider.h"
#endif
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "platform/cameras/virtual/virtual_provider.h"

namespace ostrel {
namespace cameras {

Providers machineProviders() {
    // What has a video node of its own is captured by that.
    return {v4l2::makeProvider(),
#ifdef OSTREL_PIPEWIRE
            pipewire::makeProvider(),
#endif
            virtualProvider()};
}

} // namespace cameras
} // namespace ostrel
