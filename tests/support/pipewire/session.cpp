#include "support/pipewire/session.h"

#include "support/gate.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace ostrel::support {

namespace {

using cameras::pipewire::CameraNode;
using cameras::pipewire::Connection;
using cameras::pipewire::Remote;

[[noreturn]] void hung(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

template <typename Condition>
void await(const std::string& what, Condition condition) {
    if (!comesTrue(condition))
        hung(what);
}

// From 0.5 on there are profiles, before that configuration files.
std::vector<std::string> managerWords() {
    const bool old = std::filesystem::exists("/usr/share/wireplumber/policy.conf");
    return old ? std::vector<std::string>{"wireplumber", "-c", "policy.conf"}
               : std::vector<std::string>{"wireplumber", "-p", "policy"};
}

std::shared_ptr<Connection> look() {
    return Remote().ask();
}

} // namespace

std::string PipeWireSession::missing() {
    for (const char* name : {"pipewire", "wireplumber"})
        if (!isInstalled(name))
            return std::string("the program ") + name + " is not installed";
    return std::string();
}

PipeWireSession::PipeWireSession() {
    Remote::timeout = 30000000000; // a busy machine must not look like a silent daemon
    Remote::leftOutFor = 500000000;
    std::string name = (std::filesystem::temp_directory_path() / "ostrel-pipewire-XXXXXX").string();
    folder_ = ::mkdtemp(&name[0]);
    for (const char* variable : {"PIPEWIRE_REMOTE", "PIPEWIRE_RUNTIME_DIR", "PIPEWIRE_NODE", "PIPEWIRE_PROPS",
                                 "PIPEWIRE_AUTOCONNECT", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
        ::unsetenv(variable);
    ::setenv("XDG_RUNTIME_DIR", folder_.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (folder_ + "/config").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (folder_ + "/state").c_str(), 1);
    startDaemon();
    startManager();
}

PipeWireSession::~PipeWireSession() {
    manager_.reset();
    daemon_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void PipeWireSession::startDaemon() {
    daemon_.reset();
    daemon_ = std::make_unique<Program>(std::vector<std::string>{"pipewire"});
    await("no daemon", [] { return look() != nullptr; });
}

void PipeWireSession::startManager() {
    manager_.reset();
    manager_ = std::make_unique<Program>(managerWords());
    await("no session manager", [] {
        const auto connection = look();
        return connection && connection->hasSessionManager();
    });
}

PipeWireCamera::PipeWireCamera(const std::string& name, const std::vector<std::string>& words)
    : name_(name), program_([&] {
          std::vector<std::string> all = {OSTREL_PIPEWIRE_CAMERA, name};
          all.insert(all.end(), words.begin(), words.end());
          return all;
      }()) {
    // Another of the same name may be there: this one says that it is, and is the newest then.
    if (!program_.waitForLine("paused"))
        hung("no camera " + name);
    const auto connection = look();
    unsigned long newest = 0;
    for (const auto& camera : connection ? connection->cameras() : std::vector<CameraNode>())
        if (camera.name == name_ && std::stoul(camera.serial) >= newest) {
            newest = std::stoul(camera.serial);
            serial_ = camera.serial;
        }
    if (serial_.empty())
        hung("no camera " + name + " is listed");
}

void PipeWireCamera::unplug() {
    program_.end(SIGKILL);
    await("a camera that does not leave", [this] {
        const auto connection = look();
        return !connection || !connection->has(serial_);
    });
}

} // namespace ostrel::support
