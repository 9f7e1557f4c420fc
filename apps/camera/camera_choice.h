// Which of the attached cameras a command works with.
#ifndef OSTREL_APPS_CAMERA_CAMERA_CHOICE_H
#define OSTREL_APPS_CAMERA_CAMERA_CHOICE_H

#include "apps/camera/video_nodes.h"
#include "apps/common/added_cameras.h"

#include <string>
#include <vector>

namespace ostrel::apps::cli {

struct CameraOptions {
    std::string camera;      // --camera; empty: not given
    bool testCamera = false; // --test-camera
    std::string play;        // --play; empty: not given
    bool once = false;       // --once
    double timeout = 5;      // --timeout, seconds
};

struct Camera {
    std::string identifier; // UTF-8, as startCapture() takes it
    std::string name;
    std::vector<Size> sizes;
};

AddedCameras addCameras(const CameraOptions& options, const Size& size);

// In the order of the library's listing.
std::vector<Camera> attachedCameras();

// wanted: what meantCameras() takes. Empty: the added camera if there is one, else the first. closed: why
// there may be none. Throws a Failure with EXIT_NO_CAMERA, EXIT_NO_SUCH_CAMERA or EXIT_CANNOT_OPEN.
Camera chooseCamera(const std::vector<Camera>& cameras, const std::string& wanted, const QStringList& added,
                    const std::vector<ClosedNode>& closed);
Camera chooseCamera(const CameraOptions& options, const AddedCameras& added); // of those attached

// The failure of a machine without a usable camera.
[[noreturn]] void failWithoutCamera(const std::vector<ClosedNode>& closed);

} // namespace ostrel::apps::cli

#endif
