// The cameras that a PipeWire daemon offers.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_PROVIDER_H

#include "platform/cameras/provider.h"

#include <memory>

namespace ostrel {
namespace cameras {
namespace pipewire {

class Remote;

// All of them, those included that have a video node in this machine's listing: whether they are told twice
// is for who puts the kinds together.
std::shared_ptr<CameraProvider> makeProvider();
// The same behind a remote of the caller's.
std::shared_ptr<CameraProvider> makeProvider(std::shared_ptr<Remote> remote);

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
