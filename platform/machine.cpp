// Which kinds of camera this machine has: the one place that names them.
#include "platform/cameras/registry.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "platform/cameras/virtual/virtual_provider.h"

namespace ostrel {
namespace cameras {

Providers machineProviders() {
    return {v4l2::makeProvider(), virtualProvider()};
}

} // namespace cameras
} // namespace ostrel
