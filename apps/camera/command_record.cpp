// ostrel-camera record
#include "apps/camera/commands.h"
#include "apps/camera/progress.h"
#include "apps/camera/reconnection.h"
#include "apps/camera/record/recording_file.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli {

namespace {

const std::size_t PLACES_SHOWN = 5; // where frames were lost

// "3 lost, dropped 2 (short frame 2); missing: 2 after frame 12, 1 after frame 40"
std::string lostText(const FrameStream& stream) {
    const OVideoStatistics statistics = stream.state().statistics();
    std::string text = std::to_string(stream.lost()) + " lost";
    if (!statistics.dropped.isEmpty())
        text += ", dropped " + droppedText(statistics);
    std::vector<std::string> places;
    for (const Gap& gap : stream.gaps())
        if (places.size() < PLACES_SHOWN)
            places.push_back(std::to_string(gap.frames) + " after frame " + std::to_string(gap.after));
    if (stream.gaps().size() > places.size())
        places.emplace_back("and so on");
    return text + (places.empty() ? "" : " (" + join(places, ", ") + ")");
}

// "14.1 MB"
std::string megabytes(uint64_t bytes) {
    return fixed(static_cast<double>(bytes) / 1e6, 1) + " MB";
}

class Recording {
public:
    // endOfFile: seconds without a frame that are a proper end.
    Recording(const Options& options, const std::optional<double>& endOfFile, const Context& context)
        : options_(options), endOfFile_(endOfFile), context_(context), file_(makeRecordingFile(options)),
          progress_(context.messages) {}

    int run(const Camera& camera) {
        FrameStream stream(camera, options_.size(), file_->wanted(), context_.stop);
        context_.messages.say("recording " + toString(file_->size()) + " from " + camera.name + " to " +
                              file_->displayName() + (limited() ? "" : ", Ctrl-C ends it"));
        const FrameStream::Result end = takeFrames(stream);
        progress_.clear();
        finish(stream);
        const StreamFigures figures = stream.figures();
        const bool playedOut = endOfFile_ && figures.taken > 0;
        if (end == FrameStream::Result::TimedOut && !playedOut)
            throw Failure(EXIT_NO_FRAME, stream.timeoutReason(options_.camera.timeout));
        if (end == FrameStream::Result::Ended)
            throw Failure(EXIT_CANNOT_OPEN, stream.endReason());
        const bool early = end == FrameStream::Result::Stopped && (limited() || figures.taken == 0);
        return early ? EXIT_SIGNAL + context_.stop.signal() : EXIT_OK;
    }

private:
    bool limited() const { return options_.limit.frames || options_.limit.seconds; }

    FrameStream::Result takeFrames(FrameStream& stream) {
        CapturedFrame frame;
        FrameStream::Result result = FrameStream::Result::Frame;
        while (!reached(stream.figures())) {
            const bool started = stream.figures().taken > 0;
            result = stream.next(frame, started && endOfFile_ ? *endOfFile_ : options_.camera.timeout);
            if (result == FrameStream::Result::Ended && options_.limit.reconnect) {
                progress_.clear();
                result = reconnect(stream, frame, *options_.limit.reconnect, context_);
            }
            if (result != FrameStream::Result::Frame)
                break;
            file_->write(frame);
            if (progress_.due())
                show(stream);
        }
        return result;
    }

    bool reached(const StreamFigures& figures) const {
        return (options_.limit.frames && figures.taken >= *options_.limit.frames) ||
               (options_.limit.seconds && figures.seconds >= *options_.limit.seconds);
    }

    void show(const FrameStream& stream) {
        const StreamFigures figures = stream.figures();
        double fraction = -1;
        if (options_.limit.frames)
            fraction = static_cast<double>(figures.taken) / static_cast<double>(*options_.limit.frames);
        if (options_.limit.seconds)
            fraction = std::max(fraction, figures.seconds / *options_.limit.seconds);
        progress_.update(fraction, counted(figures.taken, "frame") + ", " + fixed(figures.seconds, 1) +
                                       " s, " + fixed(figures.rate(), 1) + "/s, " +
                                       megabytes(file_->bytes()) + ", " + std::to_string(stream.lost()) +
                                       " lost");
    }

    void finish(const FrameStream& stream) {
        const StreamFigures figures = stream.figures();
        if (figures.taken == 0)
            return;
        const bool measured = figures.taken > 1 && figures.seconds > 0;
        file_->finish(measured ? std::optional<Rate>(nearestRate(figures.rate())) : std::nullopt);
        context_.messages.say("recorded " + counted(figures.taken, "frame") + " in " +
                              fixed(figures.seconds, 1) + " s (" + fixed(figures.rate(), 2) + " a second, " +
                              megabytes(file_->bytes()) + "), " + lostText(stream) + ", to " +
                              file_->displayName());
    }

    const Options& options_;
    std::optional<double> endOfFile_;
    const Context& context_;
    std::unique_ptr<RecordingFile> file_;
    Progress progress_;
};

} // namespace

int runRecord(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    return Recording(options, added.endOfFile(), context).run(camera);
}

} // namespace ostrel::apps::cli
