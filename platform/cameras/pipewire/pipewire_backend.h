// What is PipeWire's own in a camera's life.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_BACKEND_H

#include "platform/cameras/backend.h"
#include "platform/cameras/pipewire/capture_stream.h"
#include "platform/cameras/pipewire/remote.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

class PipewireBackend final : public Backend {
public:
    // The camera is the node with this serial number: once that has gone, or the daemon that gave the number,
    // the camera is unplugged.
    PipewireBackend(std::shared_ptr<Remote> remote, CameraNode node, std::string where);

    bool attached() const override;
    Error open() override;
    void close() override;
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    bool canServeBetter(const Request& request) override;
    Error restart(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    const char* threadName() const override { return "ostrel-pipewire"; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override;

private:
    std::vector<Candidate> candidatesFor(const Request& request) const;
    Error nothingFits(const Request& request) const;
    int tryToStart(const Candidate& candidate, const Request& request, std::string& step, Mode& running);
    void announce(const Granted& granted);
    bool isOpenAtPipeWire() const;
    bool isGone() const;
    Error failed(int error) const;

    const std::shared_ptr<Remote> remote_;
    const CameraNode node_;
    const std::string where_; // for messages

    mutable std::mutex mutex_;               // of the pointer alone
    std::shared_ptr<Connection> connection_; // while it is open

    std::vector<Offer> offers_;             // as they were at the start
    std::shared_ptr<Figures> figures_;      // of the running stream
    std::unique_ptr<CaptureStream> stream_; // while it runs
    Mode announced_;
};

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
