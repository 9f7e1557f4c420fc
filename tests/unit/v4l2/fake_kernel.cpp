// What a test does to the fake kernel and sees of it.
#include "unit/v4l2/fake_kernel.h"

#include <algorithm>
#include <chrono>
#include <sys/mman.h>
#include <unistd.h>

namespace ostrel {
namespace tests {

using cameras::v4l2::Interval;
using cameras::v4l2::SizeRange;

SizeRange only(int width, int height) {
    SizeRange range;
    range.least.width = range.most.width = width;
    range.least.height = range.most.height = height;
    return range;
}

SizeRange stepwise(int least, int most, int step) {
    SizeRange range;
    range.least.width = range.least.height = least;
    range.most.width = range.most.height = most;
    range.step.width = range.step.height = step;
    return range;
}

Interval perSecond(uint32_t frames) {
    Interval interval;
    interval.numerator = 1;
    interval.denominator = frames;
    return interval;
}

FakeKernel::~FakeKernel() {
    for (const auto& mapping : mappings_)
        ::munmap(mapping.first, mapping.second.length);
    for (const auto& descriptor : open_)
        ::close(descriptor.first);
}

void FakeKernel::plug(const std::string& path, const FakeDevice& device) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto camera = std::make_unique<Camera>();
    camera->device = device;
    cameras_[path].swap(camera);
    if (camera)
        unplugged_.push_back(std::move(camera)); // somebody may still have it open
}

void FakeKernel::unplug(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    Camera& camera = at(path);
    camera.gone = true;
    camera.streaming = false;
    wake(camera);
    unplugged_.push_back(std::move(cameras_[path]));
    cameras_.erase(path);
}

FakeKernel::Camera& FakeKernel::at(const std::string& path) {
    return *cameras_.at(path);
}

void FakeKernel::failNext(unsigned long call, int number, int times, int after) {
    std::lock_guard<std::mutex> lock(mutex_);
    failures_[call].push_back({number, times, after});
}

void FakeKernel::setPollEvents(const std::string& path, short events) {
    std::lock_guard<std::mutex> lock(mutex_);
    at(path).events = events;
    wake(at(path));
}

bool FakeKernel::feed(const std::string& path, const FakeFrame& frame) {
    std::lock_guard<std::mutex> lock(mutex_);
    Camera& camera = at(path);
    const uint32_t sequence = camera.sequence++;
    if (!camera.streaming || camera.waiting.empty())
        return false;
    const unsigned index = camera.waiting.front();
    camera.waiting.pop_front();
    Buffer& buffer = camera.buffers[index];
    buffer.frame = frame;
    if (frame.sequence < 0)
        buffer.frame.sequence = static_cast<int>(sequence);
    else
        camera.sequence = static_cast<uint32_t>(frame.sequence) + 1;
    if (frame.bytesUsed < 0)
        buffer.frame.bytesUsed = static_cast<int>(frame.bytes.size());
    const size_t room = camera.format.fmt.pix.sizeimage;
    if (buffer.memory && frame.bytes.size() + camera.device.dataOffset <= room)
        std::copy(frame.bytes.begin(), frame.bytes.end(), buffer.memory + camera.device.dataOffset);
    camera.done.push_back(index);
    idlePolls_[&camera] = 0;
    wake(camera);
    return true;
}

bool FakeKernel::waitUntilIdle(const std::string& path) {
    std::unique_lock<std::mutex> lock(mutex_);
    Camera& camera = at(path);
    return idle_.wait_for(lock, std::chrono::seconds(20), [&] { return idlePolls_[&camera] > 0; });
}

v4l2_format FakeKernel::format(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return at(path).format;
}

Interval FakeKernel::interval(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return at(path).interval;
}

unsigned FakeKernel::queued(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto& buffers = at(path).buffers;
    return static_cast<unsigned>(
        std::count_if(buffers.begin(), buffers.end(), [](const Buffer& b) { return b.queued; }));
}

unsigned FakeKernel::buffers(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<unsigned>(at(path).buffers.size());
}

bool FakeKernel::isStreaming(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return at(path).streaming;
}

int FakeKernel::openDescriptors() {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(open_.size());
}

int FakeKernel::mappings() {
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(mappings_.size());
}

int FakeKernel::calls(unsigned long call) {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_[call];
}

std::vector<std::string> FakeKernel::misuse() {
    std::lock_guard<std::mutex> lock(mutex_);
    return misuse_;
}

std::vector<std::string> FakeKernel::journal() {
    std::lock_guard<std::mutex> lock(mutex_);
    return journal_;
}

} // namespace tests
} // namespace ostrel
