// A node is opened for the listing only when there is no other way: opening wakes the camera and may take
// long. Whatever udev says of a USB camera stays true while it is plugged in. Other hardware is asked once, a
// virtual device each time: it becomes a camera when somebody begins to feed it.
#include "platform/cameras/v4l2/v4l2_provider.h"

#include "platform/cameras/v4l2/identity.h"
#include "platform/cameras/v4l2/v4l2_backend.h"
#include "platform/cameras/v4l2/video_node.h"

#include <cerrno>
#include <map>
#include <mutex>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

struct Answer {
    bool listed = false;
    bool final = false; // the node itself has answered
    std::string card, driver, busInfo;
};

bool saysCapture(const NodeFacts& facts) {
    const auto has = [&facts](const char* word) {
        return facts.capabilities.find(word) != std::string::npos;
    };
    return has(":capture:") && !has(":video_output:");
}

class V4l2Provider : public CameraProvider {
public:
    V4l2Provider(const std::shared_ptr<KernelCalls>& kernel, const std::shared_ptr<Discovery>& discovery)
        : kernel_(kernel), discovery_(discovery) {}

    std::vector<std::shared_ptr<Camera>> list() override;

private:
    Answer answerOf(const NodeFacts& facts);
    Answer ask(const NodeFacts& facts) const;

    struct Known {
        std::string identifier;
        std::shared_ptr<Camera> camera;
    };

    const std::shared_ptr<KernelCalls> kernel_;
    const std::shared_ptr<Discovery> discovery_;
    std::mutex mutex_;
    Identifiers identifiers_;
    std::map<std::string, Answer> answers_; // by incarnation
    std::map<std::string, Known> known_;    // by incarnation
};

// What the node itself says.
Answer V4l2Provider::ask(const NodeFacts& facts) const {
    Answer answer;
    const std::shared_ptr<VideoNode> node = VideoNode::open(kernel_, facts.path);
    if (!node) {
        // A camera that may not be opened, or not now, is listed all the same: opening it tells what to do
        // about it. Only its first node, since the others are mostly metadata.
        const bool refused = errno == EACCES || errno == EPERM || errno == EBUSY;
        answer.listed = refused && (facts.described ? saysCapture(facts) : facts.index == 0);
        return answer;
    }
    Abilities abilities;
    if (node->ask(abilities) != 0)
        return answer;
    answer.final = true;
    answer.card = abilities.card;
    answer.driver = abilities.driver;
    answer.busInfo = abilities.busInfo;
    answer.listed = abilities.capture && abilities.streaming && !node->formats(abilities.multiplanar).empty();
    return answer;
}

Answer V4l2Provider::answerOf(const NodeFacts& facts) {
    if (facts.described && facts.isUsb) {
        Answer answer;
        answer.listed = saysCapture(facts);
        return answer;
    }
    const auto known = known_.find(facts.incarnation);
    if (known != known_.end() && !known->second.camera->attached())
        answers_.erase(facts.incarnation); // its device has left, though the node is still there
    const auto before = answers_.find(facts.incarnation);
    if (before != answers_.end() && !facts.isVirtual)
        return before->second;
    const Answer answer = ask(facts);
    if (answer.final)
        answers_[facts.incarnation] = answer;
    return answer;
}

std::vector<std::shared_ptr<Camera>> V4l2Provider::list() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<NamedNode> nodes;
    std::vector<Answer> answers;
    std::map<std::string, Answer> current;
    for (const NodeFacts& facts : discovery_->nodes()) {
        const Answer answer = answerOf(facts);
        const auto kept = answers_.find(facts.incarnation);
        if (kept != answers_.end())
            current.insert(*kept);
        if (!answer.listed)
            continue;
        NamedNode node;
        node.facts = facts;
        node.busInfo = answer.busInfo;
        nodes.push_back(node);
        answers.push_back(answer);
    }
    answers_.swap(current);

    const std::vector<std::string> identifiers = identifiers_.assign(nodes);
    std::map<std::string, Known> attached;
    std::vector<std::shared_ptr<Camera>> result;
    for (size_t i = 0; i < nodes.size(); ++i) {
        const NodeFacts& facts = nodes[i].facts;
        const auto before = known_.find(facts.incarnation);
        Known known;
        if (before != known_.end() && before->second.identifier == identifiers[i] &&
            before->second.camera->attached()) {
            known = before->second;
        } else {
            known.identifier = identifiers[i];
            known.camera = makeCamera(kernel_, discovery_, facts, identifiers[i],
                                      displayName(facts.name, answers[i].card,
                                                  facts.driver.empty() ? answers[i].driver : facts.driver));
        }
        attached[facts.incarnation] = known;
        result.push_back(known.camera);
    }
    known_.swap(attached);
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
