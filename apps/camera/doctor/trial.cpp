#include "apps/camera/doctor/trial.h"

#include "apps/common/failure.h"

#include <ostrel/controls.h>

#include <algorithm>
#include <linux/v4l2-controls.h>

namespace ostrel::apps::cli::doctor {

namespace {

// Long enough for cameras that start dark, and for a rate that means something.
const double TRIAL_SECONDS = 2;

void watch(FrameStream& frames, double timeoutSeconds, const StopRequest& stop, Trial& trial) {
    CapturedFrame frame;
    FrameStream::Result result = FrameStream::Result::Frame;
    while (result == FrameStream::Result::Frame && frames.figures().seconds < TRIAL_SECONDS)
        result = frames.next(frame, timeoutSeconds);
    if (result == FrameStream::Result::Stopped)
        throw Interrupted(stop.signal());
    if (result == FrameStream::Result::TimedOut)
        trial.waited = timeoutSeconds;
    const StreamFigures figures = frames.figures();
    trial.taken = figures.taken;
    trial.seconds = figures.seconds;
    const uint64_t elsewhere = frames.lost();
    trial.arrived = figures.taken == 0 ? 0 : figures.taken - 1 + elsewhere;
    if (trial.taken > 0)
        trial.brightest = brightestOf(frame.pixels.data);
    trial.statistics = frames.statistics();
    trial.wasted = trial.statistics.lost;
    for (const uint64_t dropped : trial.statistics.dropped)
        trial.wasted += dropped;
    trial.why = frames.state().whyNoFrames().toStdString();
}

std::optional<bool> valueOf(const QList<OVideoControl>& controls, uint32_t id) {
    for (const OVideoControl& control : controls)
        if (control.id() == id && control.hasValue())
            return control.value() != 0;
    return std::nullopt;
}

void readControls(Trial& trial) {
    const QList<OVideoControl> controls = videoControls(QString::fromStdString(trial.camera));
    trial.privacy = valueOf(controls, V4L2_CID_PRIVACY);
    trial.slowsInTheDark = valueOf(controls, V4L2_CID_EXPOSURE_AUTO_PRIORITY);
}

} // namespace

int brightestOf(const std::vector<uint8_t>& bgra) {
    int brightest = 0;
    for (std::size_t at = 0; at + 3 < bgra.size(); at += 4)
        brightest = std::max({brightest, int(bgra[at]), int(bgra[at + 1]), int(bgra[at + 2])});
    return brightest;
}

Trial tryCamera(const Camera& camera, const Size& size, double timeoutSeconds, const StopRequest& stop) {
    Trial trial;
    trial.camera = camera.identifier;
    trial.size = size;
    try {
        FrameStream frames(camera, size, FrameStream::Wanted::Pixels, stop);
        watch(frames, timeoutSeconds, stop, trial);
    } catch (const Interrupted&) {
        throw;
    } catch (const Failure& failure) {
        const OVideoCameraState known(QString::fromStdString(camera.identifier));
        trial.refused = true;
        trial.why = known.refused().isEmpty() ? failure.what() : known.refused().toStdString();
    }
    readControls(trial);
    return trial;
}

} // namespace ostrel::apps::cli::doctor
