// The video nodes of a machine of the test's making.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_DISCOVERY_H
#define OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_DISCOVERY_H

#include "platform/cameras/v4l2/discovery.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace ostrel::support {

class ScriptedDiscovery : public cameras::v4l2::Discovery {
public:
    std::vector<cameras::v4l2::NodeFacts> nodes() override {
        std::lock_guard<std::mutex> lock(mutex_);
        return nodes_;
    }
    std::string generation(const std::string& path) override {
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& node : nodes_)
            if (node.path == path)
                return node.generation;
        return std::string();
    }
    bool mayBeOpened(const std::string& path) override {
        std::lock_guard<std::mutex> lock(mutex_);
        return forbidden_.count(path) == 0;
    }
    std::unique_ptr<cameras::ChangeWatch> watch() override { return changes_.watch(); }

    // Plugs it in: it becomes a new generation.
    void add(cameras::v4l2::NodeFacts node) {
        std::lock_guard<std::mutex> lock(mutex_);
        node.generation = "generation " + std::to_string(++plugged_);
        nodes_.push_back(node);
        tell();
    }
    // One of which only its place in /dev is known, and the name that sysfs has for it.
    void add(const std::string& path, const std::string& name = std::string()) {
        cameras::v4l2::NodeFacts node;
        node.path = path;
        node.name = name;
        add(node);
    }
    void remove(const std::string& path) {
        std::lock_guard<std::mutex> lock(mutex_);
        nodes_.erase(std::remove_if(nodes_.begin(), nodes_.end(),
                                    [&](const cameras::v4l2::NodeFacts& node) { return node.path == path; }),
                     nodes_.end());
        tell();
    }
    // Whether this process may open the path; it may at first.
    void permit(const std::string& path, bool permitted) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (permitted)
            forbidden_.erase(path);
        else
            forbidden_.insert(path);
        tell();
    }
    // Nothing is told to watches from now on, as in a container; or it is again.
    void setSilent(bool silent) {
        std::lock_guard<std::mutex> lock(mutex_);
        silent_ = silent;
    }

private:
    void tell() {
        if (!silent_)
            changes_.raise();
    }

    std::mutex mutex_;
    std::vector<cameras::v4l2::NodeFacts> nodes_;
    std::set<std::string> forbidden_;
    int plugged_ = 0;
    bool silent_ = false;
    cameras::ChangeSignal changes_;
};

} // namespace ostrel::support

#endif
