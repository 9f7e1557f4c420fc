// The cameras without hardware that the command line asks for.
#ifndef OSTREL_APPS_VIEWER_ADDED_CAMERAS_H
#define OSTREL_APPS_VIEWER_ADDED_CAMERAS_H

#include "apps/viewer/options.h"

#include <ostrel/virtual_camera.h>

#include <memory>
#include <vector>

namespace ostrel {
namespace viewer {

// They stay attached while the object lives. Bound to one thread.
class AddedCameras {
public:
    explicit AddedCameras(const Options& options);

    // Empty when all of them can be used.
    QString error() const { return error_; }
    // The identifier of the first; empty when none was asked for.
    QString first() const { return cameras_.empty() ? QString() : cameras_.front()->uniqueID(); }

private:
    void add(std::unique_ptr<OVideoVirtualCamera> camera);

    std::vector<std::unique_ptr<OVideoVirtualCamera>> cameras_;
    QString error_;
};

} // namespace viewer
} // namespace ostrel

#endif
