// ostrel-camera record
#include "apps/camera/commands.h"
#include "apps/camera/frame_source.h"
#include "apps/camera/frame_writer.h"
#include "apps/camera/progress.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

FileKind kindOf(const Options& all) {
    const RecordOptions& options = all.record;
    const std::optional<FileKind> bySuffix = fileKindOfPath(options.output);
    for (const char* other : {"mp4", "mkv", "avi", "mov", "webm", "gif"})
        if (!options.format && suffixOf(options.output) == other)
            throw Failure(EXIT_USAGE, "record does not compress: give " + quoted(options.output) +
                                          " the suffix .y4m, or pipe: record -o - | ffmpeg -i - " +
                                          quoted(options.output));
    const FileKind kind = options.format.value_or(bySuffix.value_or(FileKind{Container::Y4m, Layout::I420}));
    if (kind.container == Container::Png)
        throw Failure(EXIT_USAGE, "record writes video; 'ostrel-camera snapshot' writes PNG pictures");
    if (options.rate && kind.container != Container::Y4m)
        throw Failure(EXIT_USAGE, "--rate is for Y4M files: bare frames do not state a rate");
    if (!options.scale)
        requireSize(kind.layout, all.size());
    return kind;
}

std::string outputPath(const RecordOptions& options, const FileKind& kind) {
    if (options.output == "-" && isatty(STDOUT_FILENO))
        throw Failure(EXIT_USAGE, "video is nothing for a terminal: give a file with -o, or redirect");
    if (!options.output.empty())
        return options.output;
    return std::string("recording.") + (kind.container == Container::Y4m ? "y4m" : layoutName(kind.layout));
}

// From a captured frame to the layout and size of the file.
std::unique_ptr<FrameStep> makeStep(const Size& size, const FileKind& kind, const Options& options) {
    if (!options.record.scale)
        return std::make_unique<FrameConverter>(size, Layout::Argb, kind.layout);
    return std::make_unique<FrameScaler>(*levelOf(size), Layout::Argb, *options.record.scale, kind.layout,
                                         options.filter);
}

std::string lostDetail(const OVideoStatistics& statistics) {
    return " lost" + (statistics.dropped.isEmpty() ? "" : ", dropped " + droppedText(statistics));
}

class Recording {
public:
    // endOfFile: seconds without a frame that are a proper end.
    Recording(const Options& options, const std::optional<double>& endOfFile, const Surroundings& around)
        : options_(options), endOfFile_(endOfFile), around_(around), kind_(kindOf(options)),
          writtenSize_(options.record.scale ? sizeOf(*options.record.scale) : options.size()),
          writer_(makeFrameWriter(outputPath(options.record, kind_), kind_, writtenSize_,
                                  options.record.rate.value_or(Rate()))),
          step_(makeStep(options.size(), kind_, options)), progress_(around.messages) {}

    int run(const Camera& camera) {
        FrameSource source(camera, options_.size(), around_.stop);
        around_.messages.say("recording " + toString(writtenSize_) + " from " + camera.name + " to " +
                             writer_->displayName() + (limited() ? "" : ", Ctrl-C ends it"));
        const FrameSource::Result end = takeFrames(source);
        progress_.clear();
        finish(source);
        const StreamFigures figures = source.figures();
        const bool playedOut = endOfFile_ && figures.taken > 0;
        if (end == FrameSource::Result::TimedOut && !playedOut)
            throw Failure(EXIT_NO_FRAME, source.timeoutReason(options_.camera.timeout));
        if (end == FrameSource::Result::Ended)
            throw Failure(EXIT_CANNOT_OPEN, source.endReason());
        const bool early = end == FrameSource::Result::Stopped && (limited() || figures.taken == 0);
        return early ? EXIT_SIGNAL + around_.stop.signal() : EXIT_OK;
    }

private:
    bool limited() const { return options_.limit.frames || options_.limit.seconds; }

    FrameSource::Result takeFrames(FrameSource& source) {
        VideoFrame frame;
        FrameSource::Result result = FrameSource::Result::Frame;
        while (!reached(source.figures())) {
            const bool started = source.figures().taken > 0;
            result = source.next(frame, started && endOfFile_ ? *endOfFile_ : options_.camera.timeout);
            if (result != FrameSource::Result::Frame)
                break;
            writer_->write(step_->apply(frame.data));
            if (progress_.due())
                show(source);
        }
        return result;
    }

    bool reached(const StreamFigures& figures) const {
        return (options_.limit.frames && figures.taken >= *options_.limit.frames) ||
               (options_.limit.seconds && figures.seconds >= *options_.limit.seconds);
    }

    void show(const FrameSource& source) {
        const StreamFigures figures = source.figures();
        double fraction = -1;
        if (options_.limit.frames)
            fraction = static_cast<double>(figures.taken) / static_cast<double>(*options_.limit.frames);
        if (options_.limit.seconds)
            fraction = std::max(fraction, figures.seconds / *options_.limit.seconds);
        progress_.update(fraction, counted(figures.taken, "frame") + ", " + fixed(figures.seconds, 1) +
                                       " s, " + fixed(figures.rate(), 1) + "/s, " +
                                       std::to_string(figures.missed) + " lost");
    }

    void finish(const FrameSource& source) {
        const StreamFigures figures = source.figures();
        if (figures.taken == 0)
            return;
        const bool measured = !options_.record.rate && figures.taken > 1 && figures.seconds > 0;
        writer_->finish(measured ? std::optional<Rate>(nearestRate(figures.rate())) : std::nullopt);
        around_.messages.say("recorded " + counted(figures.taken, "frame") + " in " +
                             fixed(figures.seconds, 1) + " s (" + fixed(figures.rate(), 2) + " a second), " +
                             std::to_string(source.lost()) + lostDetail(source.statistics()) + ", to " +
                             writer_->displayName());
    }

    const Options& options_;
    std::optional<double> endOfFile_;
    const Surroundings& around_;
    FileKind kind_;
    Size writtenSize_;
    std::unique_ptr<FrameWriter> writer_;
    std::unique_ptr<FrameStep> step_;
    Progress progress_;
};

} // namespace

int runRecord(const Options& options, const Surroundings& around) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    return Recording(options, added.endOfFile(), around).run(camera);
}

} // namespace ostrel::apps::cli
