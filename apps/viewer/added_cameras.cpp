#include "apps/viewer/added_cameras.h"

#include <QtCore/QFileInfo>

namespace ostrel {
namespace viewer {

AddedCameras::AddedCameras(const Options& options) {
    if (options.testCamera)
        add(std::make_unique<OVideoTestPatternCamera>("ostrel-test-pattern", "Test pattern"));
    if (options.play.isEmpty())
        return;
    auto file =
        std::make_unique<OVideoFileCamera>("ostrel-file", QFileInfo(options.play).fileName(), options.play);
    error_ = file->error();
    if (error_.isEmpty())
        add(std::move(file));
}

void AddedCameras::add(std::unique_ptr<OVideoVirtualCamera> camera) {
    camera->attach();
    cameras_.push_back(std::move(camera));
}

} // namespace viewer
} // namespace ostrel
