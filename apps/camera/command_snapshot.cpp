// ostrel-camera snapshot
#include "apps/camera/commands.h"
#include "apps/camera/frame_source.h"
#include "apps/camera/frame_writer.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

void checkOutput(const std::string& path) {
    if (path == "-" && isatty(STDOUT_FILENO))
        throw Failure(EXIT_USAGE,
                      "a PNG picture is nothing for a terminal: give a file with -o, or redirect");
    const std::string suffix = suffixOf(path);
    for (const char* other : {"jpg", "jpeg", "bmp", "gif", "tif", "tiff", "webp", "y4m"})
        if (suffix == other)
            throw Failure(EXIT_USAGE, "snapshot writes PNG only: give " + quoted(path) + " the suffix .png");
}

} // namespace

int runSnapshot(const Options& options, const Surroundings& around) {
    const std::string& path = options.snapshot.output;
    const Size size = options.size();
    checkOutput(path);
    const AddedCameras added = addCameras(options.camera, size);
    const Camera camera = chooseCamera(options.camera, added);
    if (options.mode)
        requestMode(camera.identifier, *options.mode);
    OutputFile output(path, OutputFile::Mode::Whole);
    FrameSource source(camera, size, around.stop);
    VideoFrame frame;
    for (uint64_t taken = 0; taken <= options.snapshot.skip; ++taken) {
        const FrameSource::Result result = source.next(frame, options.camera.timeout);
        if (result == FrameSource::Result::Stopped)
            throw Interrupted(around.stop.signal());
        if (result == FrameSource::Result::TimedOut)
            throw Failure(EXIT_NO_FRAME, source.timeoutReason(options.camera.timeout));
        if (result == FrameSource::Result::Ended)
            throw Failure(EXIT_CANNOT_OPEN, source.endReason());
    }
    output.write(encodePng(frame.data, size));
    output.commit();
    around.messages.say("saved " + toString(size) + " pixels from " + camera.name + " to " +
                        output.displayName());
    return EXIT_OK;
}

} // namespace ostrel::apps::cli
