#include "support/v4l2/call_script.h"

#include <iterator>

namespace ostrel::support {

namespace {

int countOf(const std::map<unsigned long, int>& calls, unsigned long call) {
    const auto found = calls.find(call);
    return found == calls.end() ? 0 : found->second;
}

} // namespace

void CallScript::add(const CallRule& rule) {
    std::lock_guard<std::mutex> lock(mutex_);
    rules_.push_back(rule);
}

bool CallScript::hits(CallRule& rule, unsigned long call, const std::string& path) {
    const bool fits = rule.call == call || (rule.call == ANY_CALL && call != POLL);
    if (!fits || (!rule.path.empty() && rule.path != path))
        return false;
    if (rule.after == 0)
        return true;
    --rule.after;
    return false;
}

int CallScript::enter(unsigned long call, const std::string& path) {
    int error = 0;
    std::vector<std::function<void()>> before;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++calls_[path][call];
        for (auto rule = rules_.begin(); rule != rules_.end();) {
            // One failure answers a call: the next one is for the next call.
            if ((error && rule->error) || !hits(*rule, call, path)) {
                ++rule;
                continue;
            }
            if (rule->error)
                error = rule->error;
            if (rule->before)
                before.push_back(rule->before);
            const bool last = rule->times != FOREVER && --rule->times == 0;
            rule = last ? rules_.erase(rule) : std::next(rule);
        }
    }
    for (const auto& step : before)
        step();
    return error;
}

int CallScript::calls(unsigned long call) const {
    std::lock_guard<std::mutex> lock(mutex_);
    int sum = 0;
    for (const auto& node : calls_)
        sum += countOf(node.second, call);
    return sum;
}

int CallScript::calls(const std::string& path, unsigned long call) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto node = calls_.find(path);
    return node == calls_.end() ? 0 : countOf(node->second, call);
}

int CallScript::calls(const std::string& path) const {
    std::lock_guard<std::mutex> lock(mutex_);
    int sum = 0;
    const auto node = calls_.find(path);
    if (node != calls_.end())
        for (const auto& entry : node->second)
            sum += entry.second;
    return sum;
}

} // namespace ostrel::support
