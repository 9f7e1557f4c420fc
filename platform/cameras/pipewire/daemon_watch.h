// Notices that PipeWire's cameras come and go, and PipeWire itself.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_DAEMON_WATCH_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_DAEMON_WATCH_H

#include "platform/cameras/change_watch.h"

#include <memory>

namespace ostrel {
namespace cameras {
namespace pipewire {

class Remote;

// While a daemon is there a connection to it is kept, on which it tells of its cameras. While none is there
// inotify tells when a socket comes, in whichever folder on the way to it exists. Only where a socket is
// there that nobody answers at, or a folder cannot be watched, is there a look once a second.
std::unique_ptr<ChangeWatch> watchDaemon(std::shared_ptr<Remote> remote);

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
