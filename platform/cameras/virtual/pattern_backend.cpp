#include "platform/cameras/virtual/pattern_backend.h"

#include "platform/cameras/control_ids.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/virtual/virtual_frame.h"

#include <ostrel/processing.h>

#include <algorithm>
#include <vector>

namespace ostrel {
namespace cameras {

namespace {

const char FORMAT[] = "BGRA";

template <typename Element>
void putFirst(std::vector<Element>& all, const Element& one) {
    all.erase(std::remove(all.begin(), all.end(), one), all.end());
    all.insert(all.begin(), one);
}

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

const int PLAIN_BRIGHTNESS = 128;

Control integer(uint32_t id, const char* name, int maximum, int standard) {
    Control control;
    control.id = id;
    control.name = name;
    control.maximum = maximum;
    control.defaultValue = standard;
    return control;
}

} // namespace

PatternBackend::PatternBackend(const std::string& name, const Size& size, double framesPerSecond)
    : name_(name), size_(size), interval_(intervalOf(framesPerSecond)),
      controls_(std::make_shared<StoredControls>(
          name, std::vector<Control>{integer(controlid::BRIGHTNESS, "Brightness", 255, PLAIN_BRIGHTNESS),
                                     integer(controlid::PATTERN_SPEED, "Pattern Speed", 10, 1)})) {}

// Its own size and rate come first: they are what is left open.
Error PatternBackend::modes(NativeModes& modes) {
    std::vector<Size> sizes = {{320, 240}, {640, 480}, {1280, 720}, {1920, 1080}};
    std::vector<Interval> intervals;
    for (const int rate : {15, 30, 60})
        intervals.push_back(intervalOf(rate));
    putFirst(sizes, size_);
    putFirst(intervals, interval_);
    NativeMode mode;
    mode.format = FORMAT;
    for (const Size& size : sizes) {
        mode.sizes.least = mode.sizes.most = size;
        for (const Interval& interval : intervals) {
            mode.intervals = {interval, interval};
            modes.push_back(mode);
        }
    }
    return Error();
}

Error PatternBackend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    NativeModes all;
    modes(all);
    const auto chosen = std::find_if(
        all.begin(), all.end(), [&request](const NativeMode& mode) { return offers(mode, request.wish); });
    if (chosen == all.end())
        return modeNotOffered(name_, request.wish);
    mode_.format = chosen->format;
    mode_.size = chosen->sizes.most;
    mode_.interval = chosen->intervals.shortest;
    painter_ = std::make_shared<PatternPainter>(mode_.size.width, mode_.size.height);
    clock_ = std::make_unique<FrameClock>(mode_.rate());
    figures_ = outlet->figures();
    figures_->setGranted(mode_);
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
    const int64_t speed = controls_->value(controlid::PATTERN_SPEED);
    markAhead_ += static_cast<uint32_t>((speed - 1) * static_cast<int64_t>(passedOver + 1));
    PatternScene scene;
    scene.stamp = {static_cast<uint32_t>(frame + 1), OVideoCommon::get_time()};
    scene.markAhead = markAhead_;
    scene.brighter = static_cast<int>(controls_->value(controlid::BRIGHTNESS)) - PLAIN_BRIGHTNESS;
    arrival.frame = std::make_shared<PatternFrame>(figures_, mode_, painter_, scene);
    return Error();
}

} // namespace cameras
} // namespace ostrel
