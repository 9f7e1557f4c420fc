// The video nodes of a machine of the test's making.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_DISCOVERY_H
#define OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_DISCOVERY_H

#include "platform/cameras/v4l2/discovery.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace ostrel::support {

class ScriptedDiscovery : public cameras::v4l2::Discovery {
public:
    std::vector<cameras::v4l2::NodeFacts> nodes() override {
        std::lock_guard<std::mutex> lock(mutex_);
        return nodes_;
    }
    std::string incarnation(const std::string& path) override {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& node : nodes_)
            if (node.path == path)
                return node.incarnation;
        return std::string();
    }
    // Plugs it in: it becomes a new incarnation.
    void add(cameras::v4l2::NodeFacts node) {
        std::lock_guard<std::mutex> lock(mutex_);
        node.incarnation = "incarnation " + std::to_string(++plugged_);
        nodes_.push_back(node);
    }
    void remove(const std::string& path) {
        std::lock_guard<std::mutex> lock(mutex_);
        nodes_.erase(std::remove_if(nodes_.begin(), nodes_.end(),
                                    [&](const cameras::v4l2::NodeFacts& node) { return node.path == path; }),
                     nodes_.end());
    }

private:
    std::mutex mutex_;
    std::vector<cameras::v4l2::NodeFacts> nodes_;
    int plugged_ = 0;
};

} // namespace ostrel::support

#endif
