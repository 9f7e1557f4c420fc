#include "platform/cameras/virtual/pattern_backend.h"

#include "platform/cameras/control_ids.h"
#include "platform/cameras/virtual/virtual_frame.h"

#include <ostrel/processing.h>

namespace ostrel {
namespace cameras {

namespace {

class PatternFrame : public VirtualFrame {
public:
    PatternFrame(std::shared_ptr<Figures> figures, const Mode& mode, std::shared_ptr<PatternPainter> painter,
                 const PatternScene& scene)
        : VirtualFrame(std::move(figures), scene.stamp.counter, mode), painter_(std::move(painter)),
          scene_(scene) {}

    bool show(const PictureReader& reader) override { return painter_->show(scene_, reader); }

protected:
    bool draw(const pixels::Output& to) override {
        if (to.format != pixels::OutputFormat::Bgra)
            return drawShown(to, painter_->pool());
        return painter_->paint(scene_, to.data, to.width, to.height, to.stride);
    }

private:
    const std::shared_ptr<PatternPainter> painter_;
    const PatternScene scene_;
};

const int kPlainBrightness = 128;

Control integer(uint32_t id, const char* name, int maximum, int standard) {
    Control control;
    control.id = id;
    control.name = name;
    control.maximum = maximum;
    control.defaultValue = standard;
    return control;
}

} // namespace

PatternBackend::PatternBackend(const std::string& where, int width, int height, double framesPerSecond)
    : width_(width), height_(height), framesPerSecond_(framesPerSecond),
      controls_(std::make_shared<StoredControls>(
          where, std::vector<Control>{integer(controlid::kBrightness, "Brightness", 255, kPlainBrightness),
                                      integer(controlid::kPatternSpeed, "Pattern Speed", 10, 1)})) {}

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
    markAhead_ = 0;
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
    const int64_t speed = controls_->value(controlid::kPatternSpeed);
    markAhead_ += static_cast<uint32_t>((speed - 1) * static_cast<int64_t>(passedOver + 1));
    PatternScene scene;
    scene.stamp = {static_cast<uint32_t>(frame + 1), OVideoCommon::get_time()};
    scene.markAhead = markAhead_;
    scene.brighter = static_cast<int>(controls_->value(controlid::kBrightness)) - kPlainBrightness;
    arrival.frame = std::make_shared<PatternFrame>(figures_, mode_, painter_, scene);
    return Error();
}

} // namespace cameras
} // namespace ostrel
