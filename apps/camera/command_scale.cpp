// ostrel-camera scale
#include "apps/camera/file_work.h"
#include "apps/common/failure.h"

namespace ostrel::apps::cli {

int runScale(const Options& options, const Context& context) {
    const VIDEO_QUALITY target = *options.scaleTo;
    const auto makeStep = [&options, target](const Size& size, Layout from, const FileKind& to) {
        const std::optional<VIDEO_QUALITY> source = levelOf(size);
        if (!source)
            throw Failure(EXIT_USAGE, "frames of " + toString(size) +
                                          " cannot be scaled: only 320x240, 640x480 and 1280x720 can");
        return FileStep{std::make_unique<FrameScaler>(*source, from, target, to.layout, options.filter),
                        sizeOf(target)};
    };
    return runFileWork(options, context, makeStep);
}

} // namespace ostrel::apps::cli
