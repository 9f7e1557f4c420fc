#include "platform/cameras/camera_search.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <sys/stat.h>

namespace ostrel {
namespace cameras {

namespace {

using Cameras = std::vector<NamedCamera>;

// Locales must not change what an identifier means.
std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

bool beginsAndEndsWith(const std::string& text, const std::pair<std::string, std::string>& ends) {
    return !ends.first.empty() && text.size() > ends.first.size() + ends.second.size() &&
           text.compare(0, ends.first.size(), ends.first) == 0 &&
           text.compare(text.size() - ends.second.size(), ends.second.size(), ends.second) == 0;
}

bool isMeantBy(const std::string& text, const NodeReport& node) {
    const std::vector<std::string>& former = node.formerIdentifiers;
    return std::find(former.begin(), former.end(), text) != former.end() ||
           beginsAndEndsWith(text, node.inAnyPort);
}

Cameras those(const Cameras& cameras, const std::function<bool(const NamedCamera&)>& fit) {
    Cameras result;
    std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(result), fit);
    return result;
}

FoundCamera refusal(const std::string& why) {
    FoundCamera result;
    result.why = why;
    return result;
}

FoundCamera theOnly(const std::string& text, const Cameras& fitting) {
    FoundCamera result;
    if (fitting.size() == 1) {
        result.identifier = fitting[0].identifier;
        return result;
    }
    std::string list;
    for (const NamedCamera& camera : fitting)
        list += (list.empty() ? "" : ", ") + camera.name + " (" + camera.identifier + ')';
    return refusal('"' + text + "\" fits several cameras: " + list);
}

FoundCamera atPath(const std::string& path, const std::vector<NodeReport>& nodes) {
    struct stat file = {};
    const bool exists = ::stat(path.c_str(), &file) == 0;
    const uint64_t device = exists && S_ISCHR(file.st_mode) ? file.st_rdev : 0;
    for (const NodeReport& node : nodes) {
        if (node.path != path && (device == 0 || node.device != device))
            continue;
        if (node.identifier.empty())
            return refusal(path + " is no camera: " + node.reason);
        FoundCamera result;
        result.identifier = node.identifier;
        return result;
    }
    return refusal(exists ? path + " is no video device" : "there is no " + path);
}

} // namespace

FoundCamera findCamera(const std::string& text, const Cameras& cameras,
                       const std::vector<NodeReport>& nodes) {
    const auto isExactly = [&](const NamedCamera& camera) { return camera.identifier == text; };
    const std::string lower = lowerCase(text);
    const auto isInOtherCase = [&](const NamedCamera& camera) {
        return lowerCase(camera.identifier) == lower;
    };
    const auto wasOnce = [&](const NamedCamera& camera) {
        return std::any_of(nodes.begin(), nodes.end(), [&](const NodeReport& node) {
            return node.identifier == camera.identifier && isMeantBy(text, node);
        });
    };
    const auto isNamed = [&](const NamedCamera& camera) { return camera.name == text; };

    Cameras fitting = those(cameras, isExactly);
    if (fitting.empty())
        fitting = those(cameras, isInOtherCase);
    if (fitting.empty() && !text.empty() && text[0] == '/')
        return atPath(text, nodes);
    if (fitting.empty())
        fitting = those(cameras, wasOnce);
    if (fitting.empty())
        fitting = those(cameras, isNamed);
    return fitting.empty() ? refusal("no attached camera fits \"" + text + '"') : theOnly(text, fitting);
}

} // namespace cameras
} // namespace ostrel
