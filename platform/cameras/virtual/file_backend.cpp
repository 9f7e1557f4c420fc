#include "platform/cameras/virtual/file_backend.h"

#include "platform/cameras/virtual/virtual_frame.h"
#include "platform/cameras/virtual/yuv_picture.h"

namespace ostrel {
namespace cameras {

namespace {

Mode modeOf(const Y4mFormat& format) {
    Mode mode;
    mode.format = format.layout.code();
    mode.size.width = format.layout.width;
    mode.size.height = format.layout.height;
    mode.interval = intervalOf(format.framesPerSecond);
    return mode;
}

class ClipFrame : public VirtualFrame {
public:
    ClipFrame(std::shared_ptr<Figures> figures, uint32_t sequence, const Mode& mode,
              std::shared_ptr<pixels::PixelPool> pool, std::shared_ptr<Y4mClip> clip, uint64_t planes)
        : VirtualFrame(std::move(figures), sequence, mode), pool_(std::move(pool)), clip_(std::move(clip)),
          planes_(planes) {}

    bool show(const PictureReader& reader) override {
        const YuvLayout& layout = clip_->format().layout;
        const pixels::PixelPool::Block picture = pool_->take(layout.bytes());
        if (!clip_->reader().readPlanes(planes_, picture.data()))
            return false;
        reader(yuvPicture(layout, picture.data()));
        return true;
    }

protected:
    bool draw(const pixels::Output& to) override { return drawShown(to, *pool_); }

private:
    const std::shared_ptr<pixels::PixelPool> pool_;
    const std::shared_ptr<Y4mClip> clip_;
    const uint64_t planes_;
};

} // namespace

Error FileBackend::open() {
    if (!known_.empty())
        return Error(known_);
    const std::string wrong = Y4mClip::open(path_, clip_);
    return wrong.empty() ? Error() : Error(wrong);
}

// The one that the file has.
Error FileBackend::modes(NativeModes& modes) {
    std::shared_ptr<Y4mClip> clip = clip_;
    std::string wrong = known_;
    if (!clip && wrong.empty())
        wrong = Y4mClip::open(path_, clip);
    if (!wrong.empty())
        return Error(wrong);
    const Mode own = modeOf(clip->format());
    NativeMode mode;
    mode.format = own.format;
    mode.sizes.least = mode.sizes.most = own.size;
    mode.intervals = {own.interval, own.interval};
    modes.push_back(mode);
    return Error();
}

Error FileBackend::noFurtherFrame() const {
    return Error(name_ + " found no further frame in its file: it is damaged, or was changed");
}

Error FileBackend::start(const Request&, const std::shared_ptr<Outlet>& outlet) {
    if (Y4mPlayer(clip_->reader(), false).step() != Y4mPlayer::Step::Frame)
        return noFurtherFrame();
    const Y4mFormat& format = clip_->format();
    clock_ = std::make_unique<FrameClock>(format.framesPerSecond);
    player_ = std::make_unique<Y4mPlayer>(clip_->reader(), loop_);
    finished_ = false;
    pool_ = std::make_shared<pixels::PixelPool>();
    figures_ = outlet->figures();
    mode_ = modeOf(format);
    figures_->setGranted(mode_);
    played_ = 0;
    return Error();
}

void FileBackend::stop() {
    player_.reset();
    pool_.reset();
    figures_.reset();
}

Error FileBackend::next(const StopSignal& stop, Arrival& arrival) {
    if (finished_) { // no frame will come, but the camera has not gone either
        stop.sleepUntil(monotonicNanoseconds() + NANOSECONDS_PER_SECOND);
        return Error();
    }
    uint64_t frame = 0, passedOver = 0;
    if (!clock_->wait(stop, frame, passedOver))
        return Error();
    uint64_t found = 0; // of the frames that are due, those that exist
    uint64_t planes = 0;
    Y4mPlayer::Step step = Y4mPlayer::Step::Frame;
    for (uint64_t left = passedOver + 1; left > 0 && !stop.raised(); --left) {
        step = player_->step();
        if (step != Y4mPlayer::Step::Frame)
            break;
        planes = player_->at();
        ++found;
    }
    finished_ = step == Y4mPlayer::Step::Finished;
    if (found > 0) {
        figures_->countSkipped(found - 1);
        played_ += static_cast<uint32_t>(found);
        arrival.frame = std::make_shared<ClipFrame>(figures_, played_ - 1, mode_, pool_, clip_, planes);
    }
    return step == Y4mPlayer::Step::Broken ? noFurtherFrame() : Error();
}

} // namespace cameras
} // namespace ostrel
