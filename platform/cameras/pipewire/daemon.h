// Where the session's PipeWire daemon listens.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_DAEMON_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_DAEMON_H

#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

// The sockets that are tried, in this order: by the environment variables by which every PipeWire program
// finds it.
std::vector<std::string> daemonSockets();

// A connected socket, or minus the errno; EHOSTDOWN when nobody listens. Does not wait. Done by hand, since
// libpipewire reads its configuration before it looks: that would make every listing of a machine without
// PipeWire a hundred times as slow.
int connectToDaemon();

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
