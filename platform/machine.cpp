// Which kinds of camera this machine has: the one place that names them.
#include "platform/cameras/registry.h"
#include "platform/cameras/virtual/virtual_provider.h"
#if defined(__APPLE__)
#include "platform/cameras/avfoundation/av_provider.h"
#else
#include "platform/cameras/v4l2/v4l2_provider.h"
#endif
#ifdef OSTREL_PIPEWIRE
#include "platform/cameras/pipewire/pipewire_provider.h"
#endif

namespace ostrel {
namespace cameras {

Providers machineProviders() {
#if defined(__APPLE__)
    return {avfoundation::makeProvider(), virtualProvider()};
#elif defined(OSTREL_PIPEWIRE)
    // What has a video node of its own is captured by that.
    return {v4l2::makeProvider(), pipewire::makeProvider(), virtualProvider()};
#else
    return {v4l2::makeProvider(), virtualProvider()};
#endif
}

} // namespace cameras
} // namespace ostrel
