// ostrel-camera watch
#include "apps/camera/commands.h"
#include "apps/camera/frame_stream.h"
#include "apps/camera/output_file.h"
#include "apps/camera/reconnection.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"

#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

const double BETWEEN_REPORTS = 1; // seconds

// Lines on standard output: one that rewrites itself on a terminal, else one below the other.
class Report {
public:
    Report() : output_("-", OutputFile::Mode::Stream), terminal_(isatty(STDOUT_FILENO) == 1) {}
    ~Report() {
        if (terminal_ && drawn_)
            (void)!::write(STDOUT_FILENO, "\n", 1);
    }

    void show(const std::string& line) {
        output_.write(terminal_ ? "\r\033[K" + line : line + "\n");
        drawn_ = true;
    }

private:
    OutputFile output_;
    bool terminal_;
    bool drawn_ = false;
};

class Watch {
public:
    // endOfFile: seconds without a frame that are a proper end.
    Watch(const Options& options, const std::optional<double>& endOfFile, const Context& context,
          const Camera& camera)
        : options_(options), endOfFile_(endOfFile), context_(context), camera_(camera),
          stream_(camera, options.size(), FrameStream::Wanted::Pixels, context.stop) {}

    int run() {
        context_.messages.say("watching " + camera_.name + " at " + toString(options_.size()) +
                              (limited() ? "" : ", Ctrl-C ends it"));
        while (!reached()) {
            const double untilReport =
                BETWEEN_REPORTS - std::chrono::duration<double>(Clock::now() - reported_).count();
            FrameStream::Result result = stream_.next(frame_, std::max(untilReport, 0.0));
            if (result == FrameStream::Result::Ended && options_.limit.reconnect)
                result = reconnect(stream_, frame_, *options_.limit.reconnect, context_);
            if (result == FrameStream::Result::Frame)
                lastFrame_ = Clock::now();
            if (result == FrameStream::Result::Stopped)
                return stopped();
            if (untilReport <= 0)
                report();
            if (checkSilence(result))
                break;
        }
        report();
        return EXIT_OK;
    }

private:
    bool limited() const { return options_.limit.frames || options_.limit.seconds; }

    bool reached() const {
        const StreamFigures figures = stream_.figures();
        return (options_.limit.frames && figures.taken >= *options_.limit.frames) ||
               (options_.limit.seconds && figures.seconds >= *options_.limit.seconds);
    }

    int stopped() {
        report();
        return limited() ? EXIT_SIGNAL + context_.stop.signal() : EXIT_OK;
    }

    void report() {
        reported_ = Clock::now();
        report_.show(streamReport(stream_.figures(), stream_.statistics(), options_.size()));
        // What keeps a stream waiting is said once, when it becomes known.
        const std::string why = stream_.state().stalled().toStdString();
        if (!why.empty() && why != stalled_)
            context_.messages.say(why);
        stalled_ = why;
    }

    // Whether a file has ended. A camera that has is a failure.
    bool checkSilence(FrameStream::Result result) {
        const double silent = std::chrono::duration<double>(Clock::now() - lastFrame_).count();
        const bool ended = result == FrameStream::Result::Ended;
        if (!ended && endOfFile_ && stream_.figures().taken > 0)
            return silent >= *endOfFile_;
        if (!ended && silent < options_.camera.timeout)
            return false;
        report();
        if (ended)
            throw Failure(EXIT_CANNOT_OPEN, stream_.endReason());
        throw Failure(EXIT_NO_FRAME, stream_.timeoutReason(options_.camera.timeout));
    }

    const Options& options_;
    std::optional<double> endOfFile_;
    const Context& context_;
    const Camera& camera_;
    FrameStream stream_;
    Report report_;
    CapturedFrame frame_;
    std::string stalled_;
    Clock::time_point reported_ = Clock::now();
    Clock::time_point lastFrame_ = Clock::now();
};

} // namespace

int runWatch(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    return Watch(options, added.endOfFile(), context, camera).run();
}

} // namespace ostrel::apps::cli
