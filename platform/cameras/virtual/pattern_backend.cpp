#include "platform/cameras/virtual/pattern_backend.h"

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
