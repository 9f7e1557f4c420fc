#include "platform/cameras/v4l2/examination.h"

#include "platform/cameras/messages.h"
#include "platform/cameras/unusable_formats.h"
#include "platform/cameras/v4l2/offers.h"
#include "platform/cameras/v4l2/video_node.h"

#include <cerrno>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

const char* const UNFED = "no program gives it pictures at present";

bool saysCapture(const NodeFacts& facts) {
    const auto has = [&facts](const char* word) {
        return facts.capabilities.find(word) != std::string::npos;
    };
    return has(":capture:") && !has(":video_output:");
}

std::string reasonOf(NodeKind kind) {
    switch (kind) {
    case NodeKind::Camera:
        return std::string();
    case NodeKind::MediaController:
        return "is a part of a camera that other programs must set up (media controller): needs libcamera, "
               "for "
               "example through PipeWire";
    case NodeKind::ImageProcessor:
        return "processes pictures of other devices";
    case NodeKind::Codec:
        return "converts pictures that programs give it (codec)";
    case NodeKind::UnfedLoopback:
        return UNFED;
    case NodeKind::Output:
        return "shows pictures that programs give it (output)";
    case NodeKind::Metadata:
        return "delivers data about pictures, not pictures (metadata)";
    case NodeKind::TouchPad:
        return "is a touch pad";
    case NodeKind::Other:
        break;
    }
    return "delivers no pictures";
}

bool refused(int error) {
    return error == EACCES || error == EPERM || error == EBUSY;
}

} // namespace

Examination byDescription(const NodeFacts& facts) {
    Examination result;
    result.isCamera = saysCapture(facts);
    if (!result.isCamera)
        result.reason = facts.capabilities.find(":video_output:") != std::string::npos
                            ? reasonOf(NodeKind::Output)
                            : "delivers no pictures (on most cameras, metadata)";
    return result;
}

Examination withoutAnswer(const NodeFacts& facts, const std::string& reason) {
    Examination result;
    result.isCamera = facts.described ? saysCapture(facts) : facts.index == 0;
    result.reason = reason;
    return result;
}

Examination examine(const std::shared_ptr<KernelCalls>& kernel, const NodeFacts& facts) {
    Examination result;
    const std::shared_ptr<VideoNode> node = VideoNode::open(kernel, facts.path);
    if (!node) {
        const int error = errno;
        const std::string reason = openFailed(facts.path, error).text;
        if (refused(error))
            return withoutAnswer(facts, reason);
        result.reason = reason;
        return result;
    }
    Capabilities capabilities;
    if (const int error = node->query(capabilities)) {
        result.reason = openFailed(facts.path, error).text;
        return result;
    }
    result.isFinal = true;
    result.texts = {capabilities.card, capabilities.driver, capabilities.busInfo};
    result.reason = reasonOf(capabilities.kind);
    if (!result.reason.empty())
        return result;
    if (!capabilities.streaming)
        result.reason = "delivers no streams (only single pictures, by read)";
    else if (facts.isUnfed)
        result.reason = UNFED;
    else if (convertibleFormats(*node, capabilities.multiplanar).empty()) {
        const std::vector<uint32_t> offered = offeredFormats(*node, capabilities.multiplanar);
        const bool unfed = capabilities.driver == "v4l2 loopback";
        result.reason = unfed ? UNFED : unusableFormats(offered);
        result.nativeOnly = !unfed && !offered.empty();
    }
    result.isCamera = result.reason.empty();
    return result;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
