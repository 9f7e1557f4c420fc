// The camera behind OVideoTestPatternCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_BACKEND_H

#include "platform/cameras/backend.h"
#include "platform/cameras/virtual/frame_clock.h"
#include "platform/cameras/virtual/pattern_painter.h"
#include "platform/cameras/virtual/stored_controls.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// A frame is two numbers until somebody takes it.
class PatternBackend : public Backend {
public:
    // What it has unless another mode is wished for.
    PatternBackend(const std::string& name, const Size& size, double framesPerSecond);

    bool attached() const override { return true; }
    Error open() override { return Error(); }
    void close() override {}
    std::shared_ptr<Controls> controls() const override { return controls_; }
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    // There is nothing to revive, and the frames go on counting.
    Error restart(const Request&, const std::shared_ptr<Outlet>&) override { return Error(); }
    const char* threadName() const override { return "ostrel-virtual"; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override { return clock_->fiveIntervals(); }

private:
    const std::string name_; // for messages
    const Size size_;
    const Interval interval_;
    const std::shared_ptr<StoredControls> controls_;
    // While it streams:
    std::unique_ptr<FrameClock> clock_;
    Mode mode_;
    uint32_t markAhead_ = 0;
    std::shared_ptr<PatternPainter> painter_;
    std::shared_ptr<Figures> figures_;
};

} // namespace cameras
} // namespace ostrel

#endif
