#include "platform/cameras/virtual/test_pattern_camera.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/virtual/frame_schedule.h"
#include "platform/cameras/virtual/pattern_painter.h"

#include <ostrel/processing.h>

#include <new>

namespace ostrel {
namespace cameras {

namespace {

class PatternFrame : public VirtualFrame {
public:
    PatternFrame(std::shared_ptr<StreamFigures> figures, std::shared_ptr<PatternPainter> painter,
                 const pattern::Stamp& stamp)
        : VirtualFrame(std::move(figures)), painter_(std::move(painter)), stamp_(stamp) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        return painter_->paint(stamp_, bgra, width, height, stride);
    }

private:
    const std::shared_ptr<PatternPainter> painter_;
    const pattern::Stamp stamp_;
};

// Frames count from 1, so that a capture's own counter shows how many it was spared.
void run(const StopSignal& stop, VirtualStream& stream, const std::shared_ptr<PatternPainter>& painter,
         double framesPerSecond) {
    const FrameSchedule schedule(monotonicNanoseconds(), framesPerSecond);
    const std::shared_ptr<StreamFigures>& figures = stream.figures();
    uint64_t next = 0;
    while (!stop.sleepUntil(schedule.due(next))) {
        const uint64_t frame = schedule.newest(monotonicNanoseconds(), next);
        const uint64_t passedOver = frame - next;
        next = frame + 1;
        if (figures->controls().told(VIRTUAL_CAMERA_FAULT_STALL))
            continue;
        const pattern::Stamp stamp = {static_cast<uint32_t>(next), OVideoCommon::get_time()};
        try {
            stream.deliver(std::make_shared<PatternFrame>(figures, painter, stamp), passedOver);
        } catch (const std::bad_alloc&) {
            // A frame is lost; on this thread nobody else could catch it.
        }
    }
}

} // namespace

TestPatternCamera::TestPatternCamera(std::shared_ptr<VirtualControls> controls, int width, int height,
                                     double framesPerSecond)
    : VirtualCamera(std::move(controls)), width_(width), height_(height), framesPerSecond_(framesPerSecond) {}

Error TestPatternCamera::begin(const std::shared_ptr<VirtualStream>& stream) {
    stream->figures()->setGranted("BGRA", width_, height_, framesPerSecond_);
    auto painter = std::make_shared<PatternPainter>(width_, height_);
    const double rate = framesPerSecond_;
    const bool started = stream->startThread(
        [stream, painter, rate](const StopSignal& stop) { run(stop, *stream, painter, rate); });
    return started ? Error() : Error(displayName() + " got no thread from the system");
}

} // namespace cameras
} // namespace ostrel
