#include "bench/capture/timed_kernel.h"

#include "bench/capture/pictures.h"
#include "platform/cameras/registry.h"
#include "platform/cameras/v4l2/v4l2_provider.h"

#include <cerrno>
#include <sys/mman.h>

namespace bench {

using ostrel::cameras::v4l2::NodeFacts;

TimedKernel::TimedKernel(const CameraModel& model)
    : model_(model),
      picture_(std::make_shared<std::vector<uint8_t>>(makePicture(model.fourcc, model.width, model.height))) {
}

std::shared_ptr<TimedCamera> TimedKernel::at(int descriptor) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = open_.find(descriptor);
    return found == open_.end() ? nullptr : found->second;
}

std::shared_ptr<TimedCamera> TimedKernel::camera(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    return last_[path];
}

int TimedKernel::doOpen(const char* path, int) {
    const auto camera = std::make_shared<TimedCamera>(model_, picture_);
    std::lock_guard<std::mutex> lock(mutex_);
    open_[camera->descriptor()] = camera;
    last_[path] = camera;
    return camera->descriptor();
}

int TimedKernel::doClose(int descriptor) {
    std::shared_ptr<TimedCamera> closed;
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = open_.find(descriptor);
    if (found == open_.end()) {
        errno = EBADF;
        return -1;
    }
    closed = found->second;
    open_.erase(found);
    for (auto it = last_.begin(); it != last_.end();)
        it = it->second == closed ? last_.erase(it) : std::next(it);
    return 0;
}

int TimedKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    const auto camera = at(descriptor);
    if (!camera) {
        errno = EBADF;
        return -1;
    }
    return camera->ioctl(request, argument);
}

void* TimedKernel::doMmap(size_t length, int descriptor, long offset) {
    const auto camera = at(descriptor);
    if (!camera) {
        errno = EBADF;
        return MAP_FAILED;
    }
    return camera->mmap(length, offset);
}

TimedDiscovery::TimedDiscovery(int count) {
    for (int i = 0; i < count; ++i) {
        NodeFacts facts;
        const std::string number = std::to_string(i);
        facts.path = "/dev/video" + number;
        facts.incarnation = "timed " + number;
        facts.described = true;
        facts.capabilities = ":capture:";
        facts.isUsb = true;
        facts.model = "1209:0001";
        facts.serial = "serial" + number;
        facts.port = "0000:00:14.0-usb-" + number;
        facts.interface = "00";
        facts.name = "Timed camera " + number;
        nodes_.push_back(facts);
    }
}

std::string TimedDiscovery::incarnation(const std::string& path) {
    for (const NodeFacts& facts : nodes_)
        if (facts.path == path)
            return facts.incarnation;
    return std::string();
}

std::shared_ptr<TimedKernel> plugIn(const CameraModel& model, int count) {
    const auto kernel = std::make_shared<TimedKernel>(model);
    ostrel::cameras::setMachineProvider(
        ostrel::cameras::v4l2::makeProvider(kernel, std::make_shared<TimedDiscovery>(count)));
    return kernel;
}

} // namespace bench
