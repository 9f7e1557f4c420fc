// ostrel-camera convert
#include "apps/camera/failure.h"
#include "apps/camera/file_work.h"

namespace ostrel {
namespace cli {

int runConvert(const Options& options, const Surroundings& around) {
    const bool bottomUp = options.files.bottomUp;
    const auto makeStep = [bottomUp](const Size& size, const FileKind& from, const FileKind& to) {
        if (needsEvenSize(to.layout) && !size.even())
            throw Failure(EXIT_USAGE, std::string(layoutName(to.layout)) + " frames have even sides, " +
                                          toString(size) + " does not: choose argb, rgb24 or png with --to");
        return FileStep{std::make_unique<FrameConverter>(size, from.layout, to.layout, bottomUp), size};
    };
    return runFileWork(options, around, makeStep);
}

} // namespace cli
} // namespace ostrel
