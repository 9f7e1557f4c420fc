// Which of the attached cameras a command works with.
#ifndef OSTREL_APPS_CAMERA_CAMERA_CHOICE_H
#define OSTREL_APPS_CAMERA_CAMERA_CHOICE_H

#include "apps/camera/size.h"
#include "apps/camera/video_nodes.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class OVideoVirtualCamera;

namespace cli {

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

// The cameras that the options add to the machine's, for as long as the object lives.
class AddedCameras {
public:
    // size: what will be captured, so that the test picture need not be scaled. Throws when the file of
    // --play cannot be played.
    AddedCameras(const CameraOptions& options, const Size& size);
    ~AddedCameras();

    // Identifiers, in the order of the options above.
    const std::vector<std::string>& identifiers() const { return identifiers_; }
    // Seconds without a frame after which a file that is played once has ended; nothing when none is.
    std::optional<double> endOfFile() const { return endOfFile_; }

private:
    void add(std::unique_ptr<OVideoVirtualCamera> camera);

    std::vector<std::unique_ptr<OVideoVirtualCamera>> cameras_;
    std::vector<std::string> identifiers_;
    std::optional<double> endOfFile_;
};

// In the order of the library's listing.
std::vector<Camera> attachedCameras();

// wanted: an identifier, else a name, else a part of one name; letter case only counts where it decides.
// Empty: the added camera if there is one, else the first. closed: why there may be none. Throws a Failure
// with EXIT_NO_CAMERA, EXIT_NO_SUCH_CAMERA or EXIT_CANNOT_OPEN.
Camera chooseCamera(const std::vector<Camera>& cameras, const std::string& wanted,
                    const std::vector<std::string>& added, const std::vector<ClosedNode>& closed);

// The failure of a machine without a usable camera.
[[noreturn]] void failWithoutCamera(const std::vector<ClosedNode>& closed);

} // namespace cli
} // namespace ostrel

#endif
