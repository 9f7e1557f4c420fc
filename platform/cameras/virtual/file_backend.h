// The camera behind OVideoFileCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_FILE_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_FILE_BACKEND_H

#include "platform/cameras/backend.h"
#include "platform/cameras/pixels/pixel_pool.h"
#include "platform/cameras/virtual/frame_clock.h"
#include "platform/cameras/virtual/y4m_clip.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// Each stream plays the file from its beginning; a frame is read when somebody takes it.
class FileBackend : public Backend {
public:
    // known: what is wrong with the file; such a camera does not open.
    FileBackend(std::string name, std::string path, bool loop, std::string known)
        : name_(std::move(name)), path_(std::move(path)), loop_(loop), known_(std::move(known)) {}

    bool attached() const override { return true; }
    Error open() override;
    void close() override { clip_.reset(); }
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    // There is nothing to revive, and the file goes on playing.
    Error restart(const Request&, const std::shared_ptr<Outlet>&) override { return Error(); }
    const char* threadName() const override { return "ostrel-virtual"; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    // A file that has been played to its end owes no frame.
    int64_t longestPause() override { return finished_ ? 0 : clock_->fiveIntervals(); }

private:
    Error noFurtherFrame() const;

    const std::string name_; // for messages
    const std::string path_;
    const bool loop_;
    const std::string known_;
    std::shared_ptr<Y4mClip> clip_; // while it is open
    // While it streams:
    std::unique_ptr<FrameClock> clock_;
    std::unique_ptr<Y4mPlayer> player_;
    bool finished_ = false;
    Mode mode_;
    uint32_t played_ = 0; // frames, the skipped ones too
    std::shared_ptr<Figures> figures_;
    std::shared_ptr<pixels::PixelPool> pool_;
};

} // namespace cameras
} // namespace ostrel

#endif
