// What a test does to the scripted kernel and sees of it.
#include "support/v4l2/scripted_kernel.h"

#include <thread>
#include <unistd.h>

namespace ostrel::support {

ScriptedKernel::~ScriptedKernel() {
    for (const auto& descriptor : open_)
        ::close(descriptor.first);
}

void ScriptedKernel::plug(const std::string& path, const DeviceScript& device) {
    std::lock_guard<std::mutex> lock(mutex_);
    plugged_[path] = std::make_shared<Driver>(device, journal_);
}

void ScriptedKernel::unplug(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    plugged_.at(path)->unplug();
    plugged_.erase(path);
}

void ScriptedKernel::failNext(unsigned long call, int error, int times, int after) {
    CallRule rule;
    rule.call = call;
    rule.error = error;
    rule.times = times;
    rule.after = after;
    script_.add(rule);
}

void ScriptedKernel::delay(const std::string& path, unsigned long call, std::chrono::milliseconds time) {
    CallRule rule;
    rule.path = path;
    rule.call = call;
    rule.times = FOREVER;
    rule.before = [time] { std::this_thread::sleep_for(time); };
    script_.add(rule);
}

std::shared_ptr<Gate> ScriptedKernel::hold(const std::string& path, unsigned long call) {
    const auto gate = std::make_shared<Gate>();
    gate->shut();
    CallRule rule;
    rule.path = path;
    rule.call = call;
    rule.times = FOREVER;
    rule.before = [gate] { gate->pass(); };
    script_.add(rule);
    return gate;
}

bool ScriptedKernel::waitUntilIdle(const std::string& path) {
    std::unique_lock<std::mutex> lock(mutex_);
    const std::shared_ptr<Driver> driver = plugged_.at(path);
    return idle_.wait_for(lock, HANG, [&driver] { return driver->idle; });
}

int ScriptedKernel::openDescriptors() {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(open_.size());
}

int ScriptedKernel::mappings() {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(mappings_.size());
}

std::vector<std::string> ScriptedKernel::misuse() {
    std::lock_guard<std::mutex> lock(mutex_);
    return journal_.misuse;
}

std::vector<std::string> ScriptedKernel::journal() {
    std::lock_guard<std::mutex> lock(mutex_);
    return journal_.calls;
}

} // namespace ostrel::support
