#include "platform/cameras/pipewire/daemon.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

int connectTo(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return -ENAMETOOLONG;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return -errno;
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    const int error = errno;
    ::close(descriptor);
    return -error;
}

} // namespace

std::vector<std::string> daemonSockets() {
    std::string name = variable("PIPEWIRE_REMOTE");
    if (name.empty())
        name = "pipewire-0";
    if (name[0] == '/')
        return {name};
    std::vector<std::string> paths;
    std::string folder = variable("PIPEWIRE_RUNTIME_DIR");
    if (folder.empty())
        folder = variable("XDG_RUNTIME_DIR");
    if (!folder.empty())
        paths.push_back(folder + '/' + name);
    paths.push_back("/run/pipewire/" + name); // one for all users
    return paths;
}

int connectToDaemon() {
    for (const std::string& path : daemonSockets()) {
        const int descriptor = connectTo(path);
        if (descriptor >= 0 || descriptor == -EAGAIN) // its queue is full: it is there, and does not answer
            return descriptor;
    }
    return -EHOSTDOWN;
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
