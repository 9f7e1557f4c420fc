#include "apps/common/added_cameras.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <ostrel/virtual_camera.h>

#include <QtCore/QFileInfo>

#include <algorithm>

namespace ostrel::apps {

namespace {

// How long a file must be silent to have ended: a few of its intervals, and long enough for a busy machine.
const double END_INTERVALS = 3;
const double SHORTEST_END_SECONDS = 1;

} // namespace

AddedCameras::AddedCameras(bool testCamera, const QString& play, bool once, const Size& size) {
    if (testCamera)
        add(std::make_unique<OVideoTestPatternCamera>("ostrel-test-pattern", "Test pattern", size.width,
                                                      size.height));
    if (play.isEmpty())
        return;
    auto file = std::make_unique<OVideoFileCamera>("ostrel-file", QFileInfo(play).fileName(), play, !once);
    QString error = file->error();
    if (error.startsWith(play + ": "))
        error.remove(0, play.size() + 2);
    if (!error.isEmpty())
        throw Failure(EXIT_FILE, "cannot play " + quoted(play.toStdString()) + ": " + error.toStdString());
    if (once)
        endOfFile_ = std::max(SHORTEST_END_SECONDS, END_INTERVALS / file->framesPerSecond());
    add(std::move(file));
}

AddedCameras::~AddedCameras() = default;

void AddedCameras::add(std::unique_ptr<OVideoVirtualCamera> camera) {
    camera->attach();
    identifiers_.append(camera->uniqueID());
    cameras_.push_back(std::move(camera));
}

} // namespace ostrel::apps
