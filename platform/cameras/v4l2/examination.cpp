#include "platform/cameras/v4l2/examination.h"

#include "platform/cameras/messages.h"
#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/v4l2/video_node.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

const char* const kUnfed = "no program gives it pictures at present";

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
        return kUnfed;
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

// What a format is that cannot be converted; null where its four characters have to do.
const char* meaningOf(uint32_t fourcc) {
    const std::string name = pixels::fourccText(fourcc);
    const auto isOneOf = [&name](std::initializer_list<const char*> names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (isOneOf({"BA81", "GBRG", "GRBG", "RGGB", "BG10", "GB10", "BA10", "RG10", "BG12", "GB12", "BA12",
                 "RG12", "BG14", "GB14", "GR14", "RG14", "BYR2", "GB16", "GR16", "RG16", "pBAA", "pGAA",
                 "pgAA", "pRAA", "pBCC", "pGCC", "pgCC", "pRCC", "pBEE", "pGEE", "pgEE", "pREE", "aBA8",
                 "aGA8", "agA8", "aRA8", "bBA8", "bGA8", "BD10", "bRA8", "ip3b", "ip3g", "ip3G", "ip3r"}))
        return "raw Bayer";
    if (isOneOf({"Z16", "INZI", "CNF4", "UV8"}))
        return "depth";
    if (isOneOf({"H264", "AVC1", "M264", "S264", "H263", "HEVC", "MPEG", "MPG1", "MPG2", "MPG4", "XVID",
                 "VC1G", "VC1L", "VP80", "VP90", "FWHT"}))
        return "a compressed film, which is not decoded here";
    if (isOneOf({"PJPG", "S910", "S920", "S501", "S505", "S508", "S561", "S680",
                 "SONX", "P207", "M310", "JL20", "905C", "O511", "O518", "PWC1",
                 "PWC2", "E625", "WNVA", "CPIA", "TM60", "KONI", "S401"}))
        return "its maker's own format, which is not decoded here";
    return nullptr;
}

bool refused(int error) {
    return error == EACCES || error == EPERM || error == EBUSY;
}

} // namespace

std::string unusableFormats(const std::vector<uint32_t>& formats) {
    if (formats.empty())
        return "offers no pixel format";
    std::string text = "offers only ";
    bool isBayer = true;
    for (size_t i = 0; i < formats.size(); ++i) {
        const char* const meaning = meaningOf(formats[i]);
        const char* const next = i + 1 < formats.size() ? meaningOf(formats[i + 1]) : nullptr;
        text += pixels::fourccText(formats[i]);
        // Said once for a row of the same.
        if (meaning && meaning != next)
            text += std::string(" (") + meaning + ')';
        if (i + 1 < formats.size())
            text += ", ";
        isBayer = isBayer && meaning && std::strcmp(meaning, "raw Bayer") == 0;
    }
    return isBayer ? text + ": needs libcamera, for example through PipeWire" : text;
}

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
    Abilities abilities;
    if (const int error = node->ask(abilities)) {
        result.reason = openFailed(facts.path, error).text;
        return result;
    }
    result.isFinal = true;
    result.texts = {abilities.card, abilities.driver, abilities.busInfo};
    result.reason = reasonOf(abilities.kind);
    if (!result.reason.empty())
        return result;
    if (!abilities.streaming)
        result.reason = "delivers no streams (only single pictures, by read)";
    else if (facts.isUnfed)
        result.reason = kUnfed;
    else if (node->formats(abilities.multiplanar).empty())
        result.reason = abilities.driver == "v4l2 loopback"
                            ? kUnfed
                            : unusableFormats(node->offeredFormats(abilities.multiplanar));
    result.isCamera = result.reason.empty();
    return result;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
