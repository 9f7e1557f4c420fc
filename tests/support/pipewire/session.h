// A PipeWire daemon and a session manager of a test's own: without a session bus, systemd or hardware, as any
// user.
#ifndef OSTREL_TESTS_SUPPORT_PIPEWIRE_SESSION_H
#define OSTREL_TESTS_SUPPORT_PIPEWIRE_SESSION_H

#include "platform/cameras/pipewire/remote.h"
#include "support/pipewire/program.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel::support {

// Changes this process's environment, so that everything in it that asks for PipeWire finds this one.
class PipeWireSession {
public:
    // Empty when it can be had here, else what is missing.
    static std::string missing();

    PipeWireSession();
    ~PipeWireSession();
    PipeWireSession(const PipeWireSession&) = delete;
    PipeWireSession& operator=(const PipeWireSession&) = delete;

    // Both return when this process finds it.
    void startDaemon();
    void startManager();

    Program& daemon() { return *daemon_; }
    Program& manager() { return *manager_; }
    std::string socket() const { return folder_ + "/pipewire-0"; }

private:
    std::string folder_;
    std::unique_ptr<Program> daemon_, manager_;
};

// A program that is a camera. Words: see pipewire_camera.cpp. Returns when the daemon lists it.
class PipeWireCamera {
public:
    explicit PipeWireCamera(const std::string& name, const std::vector<std::string>& words = {});
    // As an unplugged one: returns when the daemon no longer lists it.
    ~PipeWireCamera() { unplug(); }
    PipeWireCamera(const PipeWireCamera&) = delete;
    PipeWireCamera& operator=(const PipeWireCamera&) = delete;
    void unplug();
    Program& program() { return program_; }
    bool streams() { return program_.runs() && program_.newest() == "streaming"; }

private:
    const std::string name_;
    std::string serial_; // empty until it is listed
    Program program_;
};

} // namespace ostrel::support

#endif
