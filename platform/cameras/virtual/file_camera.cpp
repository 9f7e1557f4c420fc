#include "platform/cameras/virtual/file_camera.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/virtual/frame_schedule.h"
#include "platform/cameras/virtual/yuv_picture.h"

#include <limits>
#include <new>

namespace ostrel {
namespace cameras {

namespace {

class ClipFrame : public VirtualFrame {
public:
    ClipFrame(VirtualStream& stream, std::shared_ptr<Y4mClip> clip, uint64_t planes)
        : VirtualFrame(stream.figures()), pool_(stream.pool()), clip_(std::move(clip)), planes_(planes) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        const YuvLayout& layout = clip_->format().layout;
        const pixels::PixelPool::Block picture = pool_->take(layout.bytes());
        return clip_->reader().readPlanes(planes_, picture.data()) &&
               drawYuv(layout, picture.data(), *pool_, bgra, width, height, stride);
    }

private:
    const std::shared_ptr<pixels::PixelPool> pool_;
    const std::shared_ptr<Y4mClip> clip_;
    const uint64_t planes_;
};

void run(const StopSignal& stop, VirtualStream& stream, const std::shared_ptr<Y4mClip>& clip, bool loop,
         const std::string& name) {
    const FrameSchedule schedule(monotonicNanoseconds(), clip->format().framesPerSecond);
    Y4mPlayer player(clip->reader(), loop);
    Y4mPlayer::Step step = Y4mPlayer::Step::Frame;
    uint64_t next = 0;
    while (step == Y4mPlayer::Step::Frame && !stop.sleepUntil(schedule.due(next))) {
        const uint64_t newest = schedule.newest(monotonicNanoseconds(), next);
        uint64_t passed = 0; // of the frames up to the newest, those that exist
        uint64_t planes = 0;
        for (; next <= newest && !stop.raised(); ++next) {
            step = player.step();
            if (step != Y4mPlayer::Step::Frame)
                break;
            planes = player.at();
            ++passed;
        }
        if (passed == 0)
            continue;
        if (stream.figures()->controls().told(VIRTUAL_CAMERA_FAULT_STALL))
            continue;
        try {
            stream.deliver(std::make_shared<ClipFrame>(stream, clip, planes), passed - 1);
        } catch (const std::bad_alloc&) {
            // A frame is lost; on this thread nobody else could catch it.
        }
    }
    if (step == Y4mPlayer::Step::Broken)
        stream.end(Error(name + " found no further frame in its file: it is damaged, or was changed"));
    else if (step == Y4mPlayer::Step::Finished) // no frame will come, but the camera has not gone either
        stop.sleepUntil(std::numeric_limits<int64_t>::max());
}

} // namespace

FileCamera::FileCamera(std::shared_ptr<VirtualControls> controls, std::string path, bool loop,
                       std::string known)
    : VirtualCamera(std::move(controls)), path_(std::move(path)), loop_(loop), known_(std::move(known)) {}

Error FileCamera::prepare() {
    if (!known_.empty())
        return Error(known_);
    const std::string wrong = Y4mClip::open(path_, clip_);
    return wrong.empty() ? Error() : Error(wrong);
}

Error FileCamera::begin(const std::shared_ptr<VirtualStream>& stream) {
    const Y4mFormat& format = clip_->format();
    stream->figures()->setGranted(format.layout.code(), format.layout.width, format.layout.height,
                                  format.framesPerSecond);
    const std::shared_ptr<Y4mClip> clip = clip_;
    const bool loop = loop_;
    const std::string name = displayName();
    const bool started = stream->startThread(
        [stream, clip, loop, name](const StopSignal& stop) { run(stop, *stream, clip, loop, name); });
    return started ? Error() : Error(name + " got no thread from the system");
}

} // namespace cameras
} // namespace ostrel
