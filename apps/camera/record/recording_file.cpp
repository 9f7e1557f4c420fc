#include "apps/camera/record/recording_file.h"

#include "apps/camera/frame_writer.h"
#include "apps/camera/input_file.h"
#include "apps/camera/jpeg/jpeg_encoder.h"
#include "apps/camera/record/matroska_file.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

// What a camera's frames become: the layout and the size of the file.
std::unique_ptr<FrameStep> makeStep(const Options& options, Layout layout) {
    if (!options.record.scale)
        return std::make_unique<FrameConverter>(options.size(), Layout::Argb, layout);
    return std::make_unique<FrameScaler>(*levelOf(options.size()), Layout::Argb, *options.record.scale,
                                         layout, options.filter);
}

Size sizeOfPictures(const Options& options) {
    return options.record.scale ? sizeOf(*options.record.scale) : options.size();
}

// Y4M and bare frames.
class FramesFile : public RecordingFile {
public:
    FramesFile(const Options& options, const std::string& path, const FileKind& kind)
        : size_(sizeOfPictures(options)), measured_(!options.record.rate),
          writer_(makeFrameWriter(path, kind, size_, options.record.rate.value_or(Rate()))),
          step_(makeStep(options, kind.layout)) {}

    FrameStream::Wanted wanted() const override { return FrameStream::Wanted::Pixels; }
    void write(const CapturedFrame& frame) override {
        const Bytes& bytes = step_->apply(frame.pixels.data);
        writer_->write(bytes);
        bytes_ += bytes.size();
    }
    void finish(const std::optional<Rate>& rate) override {
        writer_->finish(measured_ ? rate : std::nullopt);
    }
    uint64_t bytes() const override { return bytes_; }
    std::string displayName() const override { return writer_->displayName(); }
    Size size() const override { return size_; }

private:
    Size size_;
    bool measured_; // the file states the rate at which the frames came
    std::unique_ptr<FrameWriter> writer_;
    std::unique_ptr<FrameStep> step_;
    uint64_t bytes_ = 0;
};

// The camera's own pictures where it has them, else encoded ones.
class JpegFile : public RecordingFile {
public:
    JpegFile(const Options& options, const std::string& path)
        : size_(sizeOfPictures(options)), scaled_(options.record.scale), file_(path, size_),
          step_(makeStep(options, Layout::Argb)),
          encoder_(size_, options.record.quality.value_or(DEFAULT_JPEG_QUALITY)) {}

    FrameStream::Wanted wanted() const override {
        return scaled_ ? FrameStream::Wanted::Pixels : FrameStream::Wanted::OwnJpeg;
    }
    void write(const CapturedFrame& frame) override {
        JpegEncoder::Jpeg jpeg = {frame.jpeg.data(), frame.jpeg.bytesUsed()};
        if (!frame.isJpeg)
            jpeg = encoder_.encode(step_->apply(frame.pixels.data).data());
        file_.write(jpeg.data, jpeg.bytes, frame.facts.captureTime());
    }
    // Its pictures have times instead.
    void finish(const std::optional<Rate>&) override { file_.finish(); }
    uint64_t bytes() const override { return file_.bytes(); }
    std::string displayName() const override { return file_.displayName(); }
    Size size() const override { return size_; }

private:
    Size size_;
    bool scaled_;
    MatroskaFile file_;
    std::unique_ptr<FrameStep> step_;
    JpegEncoder encoder_;
};

// Names of video that others make.
void refuseOthers(const std::string& path) {
    for (const char* other : {"mp4", "m4v", "avi", "mov", "webm", "gif", "mjpeg", "mjpg", "ts", "ogv"})
        if (suffixOf(path) == other)
            throw Failure(EXIT_USAGE,
                          "record writes .mkv and .y4m, not " + quoted(path) +
                              ": give it such a name, or pipe: record -o - --format mkv | ffmpeg -i - " +
                              quoted(path));
}

RecordingKind kindOf(const Options& all) {
    const RecordOptions& options = all.record;
    if (!options.format)
        refuseOthers(options.output);
    const RecordingKind otherwise = {false, {Container::Y4m, Layout::I420}};
    const RecordingKind kind =
        options.format.value_or(recordingKindOfPath(options.output).value_or(otherwise));
    const FileKind& frames = kind.frames;
    if (!kind.matroska && frames.container == Container::Png)
        throw Failure(EXIT_USAGE, "record writes video; 'ostrel-camera snapshot' writes pictures");
    if (options.rate && kind.matroska)
        throw Failure(EXIT_USAGE, "--rate is for Y4M files: in a Matroska file each frame has its own time");
    if (options.rate && frames.container != Container::Y4m)
        throw Failure(EXIT_USAGE, "--rate is for Y4M files: bare frames do not state a rate");
    if (options.quality && !kind.matroska)
        throw Failure(EXIT_USAGE, "--quality is for Matroska files (.mkv): the others are not compressed");
    if (!options.scale && !kind.matroska)
        requireSize(frames.layout, all.size());
    return kind;
}

std::string outputPath(const RecordOptions& options, const RecordingKind& kind) {
    if (options.output == "-" && isatty(STDOUT_FILENO))
        throw Failure(EXIT_USAGE, "video is nothing for a terminal: give a file with -o, or redirect");
    if (!options.output.empty())
        return options.output;
    if (kind.matroska)
        return "recording.mkv";
    return std::string("recording.") +
           (kind.frames.container == Container::Y4m ? "y4m" : layoutName(kind.frames.layout));
}

// The first frame that is written would cut off what is being played.
void refusePlayed(const std::string& played, const std::string& output) {
    if (!played.empty() && sameFile(played, output))
        throw Failure(EXIT_USAGE, quoted(output) + " is being played: record to another file");
}

} // namespace

std::unique_ptr<RecordingFile> makeRecordingFile(const Options& options) {
    const RecordingKind kind = kindOf(options);
    const std::string path = outputPath(options.record, kind);
    refusePlayed(options.camera.play, path);
    if (kind.matroska)
        return std::make_unique<JpegFile>(options, path);
    return std::make_unique<FramesFile>(options, path, kind.frames);
}

} // namespace ostrel::apps::cli
