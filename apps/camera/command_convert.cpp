// ostrel-camera convert
#include "apps/camera/file_work.h"

namespace ostrel::apps::cli {

int runConvert(const Options& options, const Context& context) {
    const auto makeStep = [](const Size& size, Layout from, const FileKind& to) {
        requireSize(to.layout, size);
        return FileStep{std::make_unique<FrameConverter>(size, from, to.layout), size};
    };
    return runFileWork(options, context, makeStep);
}

} // namespace ostrel::apps::cli
