#include "platform/cameras/virtual/pattern_backend.h"

#include "platform/cameras/virtual/virtual_frame.h"

#include <ostrel/processing.h>

namespace ostrel {
namespace cameras {

namespace {

class PatternFrame : public VirtualFrame {
public:
    PatternFrame(std::shared_ptr<Figures> figures, const Mode& mode, std::shared_ptr<PatternPainter> painter,
                 const pattern::Stamp& stamp)
        : VirtualFrame(std::move(figures), stamp.counter, mode), painter_(std::move(painter)), stamp_(stamp) {
    }

    bool show(const PictureReader& reader) override { return painter_->show(stamp_, reader); }

protected:
    bool draw(const pixels::Output& to) override {
        if (to.format != pixels::OutputFormat::Bgra)
            return drawShown(to, painter_->pool());
        return painter_->paint(stamp_, to.data, to.width, to.height, to.stride);
    }

private:
    const std::shared_ptr<PatternPainter> painter_;
    const pattern::Stamp stamp_;
};

} // namespace

Error PatternBackend::start(const Request&, const std::shared_ptr<Outlet>& outlet) {
    painter_ = std::make_shared<PatternPainter>(width_, height_);
    clock_ = std::make_unique<FrameClock>(framesPerSecond_);
    figures_ = outlet->figures();
    Mode mode;
    mode.format = "BGRA";
    mode.size.width = width_;
    mode.size.height = height_;
    mode.rate = framesPerSecond_;
    figures_->setGranted(mode);
    mode_ = mode;
    return Error();
}

void PatternBackend::stop() {
    painter_.reset();
    figures_.reset();
}

// Frames count from 1, so that a capture's own counter shows how many it was spared.
Error PatternBackend::next(const StopSignal& stop, Arrival& arrival) {
    uint64_t frame = 0, passedOver = 0;
    if (!clock_->wait(stop, frame, passedOver))
        return Error();
    figures_->countSkipped(passedOver);
    const pattern::Stamp stamp = {static_cast<uint32_t>(frame + 1), OVideoCommon::get_time()};
    arrival.frame = std::make_shared<PatternFrame>(figures_, mode_, painter_, stamp);
    return Error();
}

} // namespace cameras
} // namespace ostrel
