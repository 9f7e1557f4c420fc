// ostrel-camera list
#include "apps/camera/camera_list.h"
#include "apps/camera/commands.h"
#include "apps/camera/output_file.h"
#include "apps/common/failure.h"

namespace ostrel::apps::cli {

int runList(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const std::vector<Camera> cameras = attachedCameras();
    OutputFile output("-", OutputFile::Mode::Stream);
    const std::vector<OtherNode> others = options.list.all ? otherNodes() : std::vector<OtherNode>();
    if (options.list.json) {
        output.write(options.list.all ? allJson(cameras, others) : cameraJson(cameras));
    } else {
        const std::string table = options.list.modes ? cameraModes(cameras) : cameraTable(cameras);
        if (!cameras.empty())
            output.write(table + (others.empty() ? "" : "\n"));
        output.write(nodeTable(others));
    }
    output.commit();
    const std::vector<ClosedNode> closed = closedVideoNodes();
    if (cameras.empty())
        failWithoutCamera(closed);
    if (!closed.empty()) // what is listed cannot all be used, or something is missing
        context.messages.say(permissionAdvice(closed));
    return EXIT_OK;
}

} // namespace ostrel::apps::cli
