// A node is opened for the listing only when there is no other way: opening wakes the camera and may take
// long. Whatever udev says of a USB camera stays true while it is plugged in. Other hardware is asked once, a
// virtual device each time: it becomes a camera when somebody begins to feed it.
//
// No lock is held while a node is asked, and no listing waits for another's question: it goes on with the
// answer before, or without the node. A node that this process has open is not asked at all.
#include "platform/cameras/v4l2/v4l2_provider.h"

#include "platform/cameras/v4l2/examination.h"
#include "platform/cameras/v4l2/identity.h"
#include "platform/cameras/v4l2/v4l2_backend.h"
#include "platform/cameras/v4l2/video_node.h"
#include "platform/cameras/wishes.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// A node with what is known of it. Two nodes of which all is the same are one camera: the first.
struct Node {
    NodeFacts facts;
    Examination answer;
    std::string identifier; // empty for those that are no camera
};

std::string nameOf(const Node& node) {
    const NodeTexts& texts = node.answer.texts;
    return displayName(node.facts.name, texts.card,
                       node.facts.driver.empty() ? texts.driver : node.facts.driver);
}

class V4l2Provider : public CameraProvider {
public:
    V4l2Provider(const std::shared_ptr<KernelCalls>& kernel, const std::shared_ptr<Discovery>& discovery)
        : kernel_(kernel), discovery_(discovery) {}

    std::vector<std::shared_ptr<Camera>> list() override;
    std::unique_ptr<ChangeWatch> watch() override { return discovery_->watch(); }
    std::vector<NodeReport> nodes() override;

private:
    using Lock = std::unique_lock<std::mutex>;

    // What is known of a device while it is plugged in.
    struct Known {
        unsigned long lastLook = 0; // that found it
        bool isBeingAsked = false;
        bool hasAnswer = false;
        Examination answer;
        std::shared_ptr<Camera> camera;
    };

    std::vector<Node> look();
    void forgetWhatHasLeft(const std::string& generation);
    Examination answerOf(const NodeFacts& facts);
    Examination ask(const NodeFacts& facts);
    std::shared_ptr<Camera> cameraOf(const Node& node);

    const std::shared_ptr<KernelCalls> kernel_;
    const std::shared_ptr<Discovery> discovery_;
    std::mutex mutex_; // never held over a system call
    unsigned long looks_ = 0;
    std::map<std::string, Known> known_; // by generation
};

// A device may leave while its node and its place in sysfs stay; only its camera notices.
void V4l2Provider::forgetWhatHasLeft(const std::string& generation) {
    Lock lock(mutex_);
    const std::shared_ptr<Camera> camera = known_[generation].camera;
    lock.unlock();
    if (!camera || camera->attached())
        return;
    lock.lock();
    Known& known = known_[generation];
    if (known.camera != camera)
        return; // another listing was quicker
    known.camera.reset();
    known.hasAnswer = true;
    known.answer = Examination();
    known.answer.reason = "has left the machine";
}

Examination V4l2Provider::answerOf(const NodeFacts& facts) {
    if (facts.described && facts.isUsb)
        return byDescription(facts);
    Lock lock(mutex_);
    Known& known = known_[facts.generation];
    if (known.hasAnswer && known.answer.isFinal && !facts.isVirtual)
        return known.answer;
    if (known.isBeingAsked || VideoNode::isOpenHere(facts.path)) {
        if (known.hasAnswer)
            return known.answer;
        if (!known.isBeingAsked)
            return withoutAnswer(facts, std::string());
        Examination unknown;
        unknown.reason = "is being asked what it is";
        return unknown;
    }
    known.isBeingAsked = true;
    lock.unlock();
    return ask(facts);
}

// By the listing whose turn it is, outside the lock.
Examination V4l2Provider::ask(const NodeFacts& facts) {
    try {
        Examination answer = examine(kernel_, facts);
        const Lock lock(mutex_);
        Known& known = known_[facts.generation];
        known.answer = answer;
        known.hasAnswer = true;
        known.isBeingAsked = false;
        return answer;
    } catch (...) { // no memory: the next listing asks
        const Lock lock(mutex_);
        known_[facts.generation].isBeingAsked = false;
        throw;
    }
}

std::vector<Node> V4l2Provider::look() {
    Lock lock(mutex_);
    const unsigned long number = ++looks_;
    lock.unlock();
    std::vector<Node> result;
    std::map<std::string, std::string> paths; // of the cameras, by identifier
    for (const NodeFacts& facts : discovery_->nodes()) {
        lock.lock();
        Known& known = known_[facts.generation];
        known.lastLook = std::max(known.lastLook, number);
        lock.unlock();
        forgetWhatHasLeft(facts.generation);
        Node node;
        node.facts = facts;
        node.answer = answerOf(facts);
        if (node.answer.isCamera || (node.answer.nativeOnly && nativeOnlyIsListed())) {
            node.identifier = identifierOf(facts, node.answer.texts);
            const auto first = paths.emplace(node.identifier, facts.path);
            if (!first.second) {
                node.identifier.clear();
                node.answer.reason =
                    "is by all that is known of it the same camera as " + first.first->second;
            }
        }
        result.push_back(std::move(node));
    }
    lock.lock();
    for (auto known = known_.begin(); known != known_.end();)
        known =
            known->second.lastLook < number && !known->second.isBeingAsked ? known_.erase(known) : ++known;
    return result;
}

std::shared_ptr<Camera> V4l2Provider::cameraOf(const Node& node) {
    const Lock lock(mutex_);
    std::shared_ptr<Camera>& camera = known_[node.facts.generation].camera;
    if (!camera || camera->identifier() != node.identifier)
        camera =
            makeCamera(kernel_, discovery_, node.facts, node.identifier, nameOf(node), node.answer.texts);
    return camera;
}

std::vector<std::shared_ptr<Camera>> V4l2Provider::list() {
    std::vector<std::shared_ptr<Camera>> result;
    for (const Node& node : look())
        if (!node.identifier.empty())
            result.push_back(cameraOf(node));
    return result;
}

std::vector<NodeReport> V4l2Provider::nodes() {
    std::vector<NodeReport> result;
    for (const Node& node : look()) {
        NodeReport report;
        report.path = node.facts.path;
        report.device = node.facts.device;
        report.name = nameOf(node);
        report.identifier = node.identifier;
        report.reason = node.answer.reason;
        if (!node.identifier.empty()) {
            report.formerIdentifiers = formerIdentifiers(node.facts, node.answer.texts);
            report.inAnyPort = identifierInAnyPort(node.facts);
        }
        result.push_back(std::move(report));
    }
    return result;
}

} // namespace

std::shared_ptr<CameraProvider> makeProvider() {
    return makeProvider(std::make_shared<KernelCalls>(), makeDiscovery());
}

std::shared_ptr<CameraProvider> makeProvider(const std::shared_ptr<KernelCalls>& kernel,
                                             const std::shared_ptr<Discovery>& discovery) {
    return std::make_shared<V4l2Provider>(kernel, discovery);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
