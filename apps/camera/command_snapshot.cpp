// ostrel-camera snapshot
#include "apps/camera/commands.h"
#include "apps/camera/output_file.h"
#include "apps/camera/reconnection.h"
#include "apps/camera/snapshot/picture_format.h"
#include "apps/camera/snapshot/series_name.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <algorithm>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

void check(const Options& options) {
    const SnapshotOptions& snapshot = options.snapshot;
    if (snapshot.output == "-" && isatty(STDOUT_FILENO))
        throw Failure(EXIT_USAGE,
                      "a PNG picture is nothing for a terminal: give a file with -o, or redirect");
    if (!snapshot.every && (options.limit.frames || options.limit.seconds))
        throw Failure(EXIT_USAGE, "--frames and --duration end a series: add --every SECONDS");
    if (snapshot.every && !isSeriesPath(snapshot.output))
        throw Failure(EXIT_USAGE, "each picture of a series has a name of its own: instead of " +
                                      quoted(snapshot.output) +
                                      " give one with a number or the time in it, such as shot-%04d.jpg or "
                                      "shot-%H%M%S.jpg");
}

class Snapshots {
public:
    Snapshots(const Options& options, const Context& context)
        : options_(options), context_(context),
          format_(options.snapshot.output, options.size(), options.snapshot.quality) {}

    int takeOne(const Camera& camera) {
        OutputFile output(options_.snapshot.output, OutputFile::Mode::Whole);
        FrameStream stream(camera, options_.size(), format_.wanted(), context_.stop);
        std::string picture;
        if (!skip(stream) || !next(stream, picture, 0))
            throw Interrupted(context_.stop.signal());
        output.write(picture);
        output.commit();
        context_.messages.say("saved " + toString(options_.size()) + " pixels from " + camera.name + " to " +
                              output.displayName());
        return EXIT_OK;
    }

    int takeSeries(const Camera& camera) {
        FrameStream stream(camera, options_.size(), format_.wanted(), context_.stop);
        context_.messages.say("taking a picture of " + camera.name + " every " +
                              QString::number(*options_.snapshot.every).toStdString() + " s" +
                              (limited() ? "" : ", Ctrl-C ends it"));
        if (skip(stream))
            while (!reached() && takeDue(stream))
                continue;
        context_.messages.say("saved " + counted(saved_, "picture") +
                              (saved_ > 0 ? ", the last as " + quoted(lastPath_) : ""));
        const bool early = context_.stop.raised() && (limited() || saved_ == 0);
        return early ? EXIT_SIGNAL + context_.stop.signal() : EXIT_OK;
    }

private:
    bool limited() const { return options_.limit.frames || options_.limit.seconds; }

    bool reached() const {
        const double seconds = static_cast<double>(slot_) * *options_.snapshot.every;
        return (options_.limit.frames && saved_ >= *options_.limit.frames) ||
               (options_.limit.seconds && seconds > *options_.limit.seconds);
    }

    // False when a signal ended the waiting, here and below.
    bool skip(FrameStream& stream) {
        for (uint64_t passed = 0; passed < options_.snapshot.skip; ++passed)
            if (!nextFrame(stream))
                return false;
        return true;
    }

    // The first whole one that was captured at that time or later.
    bool next(FrameStream& stream, std::string& picture, int64_t earliest) {
        do {
            if (!nextFrame(stream))
                return false;
            picture = frame_.facts.captureTime() < earliest ? std::string() : format_.encode(frame_);
        } while (picture.empty());
        return true;
    }

    bool nextFrame(FrameStream& stream) {
        FrameStream::Result result = stream.next(frame_, options_.camera.timeout);
        if (result == FrameStream::Result::Ended && options_.limit.reconnect)
            result = reconnect(stream, frame_, *options_.limit.reconnect, context_);
        if (result == FrameStream::Result::TimedOut)
            throw Failure(EXIT_NO_FRAME, stream.timeoutReason(options_.camera.timeout));
        if (result == FrameStream::Result::Ended)
            throw Failure(EXIT_CANNOT_OPEN, stream.endReason());
        return result == FrameStream::Result::Frame;
    }

    // The frame whose capture is nearest to its time: the camera's own rhythm is all that is between. Times
    // that went by without one are left out.
    bool takeDue(FrameStream& stream) {
        const double rate = stream.state().statistics().grantedRate;
        const int64_t half = rate > 0 ? static_cast<int64_t>(0.5e9 / rate) : 0;
        const double period = *options_.snapshot.every * 1e9;
        const int64_t due = first_ + static_cast<int64_t>(static_cast<double>(slot_) * period);
        const int64_t earliest = slot_ == 0 ? 0 : due - half;
        std::string picture;
        if (!sleepUntil(earliest) || !next(stream, picture, earliest))
            return false;
        const int64_t captured = frame_.facts.captureTime();
        first_ = slot_ == 0 ? captured : first_;
        save(picture);
        slot_ =
            std::max(slot_, static_cast<int64_t>(static_cast<double>(captured - first_ + half) / period)) + 1;
        return true;
    }

    // nanoseconds: of CLOCK_MONOTONIC, as the frames have them.
    bool sleepUntil(int64_t nanoseconds) const {
        const Clock::time_point due{std::chrono::nanoseconds(nanoseconds)};
        while (!context_.stop.raised())
            if (!context_.stop.wait(-1, due))
                return true;
        return false;
    }

    void save(const std::string& picture) {
        const std::chrono::nanoseconds age =
            Clock::now().time_since_epoch() - std::chrono::nanoseconds(frame_.facts.captureTime());
        const auto captured = std::chrono::system_clock::now() -
                              std::chrono::duration_cast<std::chrono::system_clock::duration>(age);
        const std::string path =
            seriesPath(options_.snapshot.output, saved_ + 1, std::chrono::system_clock::to_time_t(captured));
        if (path == lastPath_)
            throw Failure(EXIT_USAGE, "two pictures have the name " + quoted(path) +
                                          ": give one with a number, such as shot-%04d.jpg");
        OutputFile output(path, OutputFile::Mode::Whole);
        output.write(picture);
        output.commit();
        lastPath_ = path;
        ++saved_;
    }

    const Options& options_;
    const Context& context_;
    PictureFormat format_;
    CapturedFrame frame_;
    int64_t first_ = 0; // when the first one was captured
    int64_t slot_ = 0;  // of the times at which one is due, the next
    std::string lastPath_;
    uint64_t saved_ = 0;
};

} // namespace

int runSnapshot(const Options& options, const Context& context) {
    check(options);
    Snapshots snapshots(options, context);
    const AddedCameras added = addCameras(options.camera, options.size());
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    return options.snapshot.every ? snapshots.takeSeries(camera) : snapshots.takeOne(camera);
}

} // namespace ostrel::apps::cli
