// Finds the cameras of one kind.
#ifndef OSTREL_PLATFORM_CAMERAS_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_PROVIDER_H

#include "platform/cameras/camera.h"
#include "platform/cameras/change_watch.h"
#include "platform/cameras/node_report.h"

#include <memory>
#include <vector>

namespace ostrel {
namespace cameras {

class Backend;

class CameraProvider {
public:
    virtual ~CameraProvider() = default;
    // The attached cameras, asked of the system afresh, on any thread. A new object for each, or the same
    // object as before: what is already open stays in use under its identifier either way.
    virtual std::vector<std::shared_ptr<Camera>> list() = 0;
    // Tells when list() may have come to answer something else, or a camera of it may be opened that could
    // not be. Null where changesHere() is told of all that.
    virtual std::unique_ptr<ChangeWatch> watch() { return nullptr; }
    // Every device that might be a camera of this kind, in the same order.
    virtual std::vector<NodeReport> nodes() { return std::vector<NodeReport>(); }
    // Other ways to a camera that this kind may have, by the number (st_rdev) of a device node of it: for who
    // is refused by the first.
    virtual std::vector<std::shared_ptr<Backend>> waysTo(uint64_t /*device*/) {
        return std::vector<std::shared_ptr<Backend>>();
    }
};

using Providers = std::vector<std::shared_ptr<CameraProvider>>;

} // namespace cameras
} // namespace ostrel

#endif
