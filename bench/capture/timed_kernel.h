// A machine with timed cameras for the library's own V4L2 code.
#ifndef OSTREL_BENCH_CAPTURE_TIMED_KERNEL_H
#define OSTREL_BENCH_CAPTURE_TIMED_KERNEL_H

#include "bench/capture/timed_camera.h"
#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/kernel_calls.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace bench {

// All cameras are of one model: /dev/video0 and on. Thread-safe.
class TimedKernel : public ostrel::cameras::v4l2::KernelCalls {
public:
    explicit TimedKernel(const CameraModel& model);

    // Where its clock can be read: the camera that this path was last opened as.
    std::shared_ptr<TimedCamera> camera(const std::string& path);

protected:
    int doOpen(const char* path, int flags) override;
    int doClose(int descriptor) override;
    int doIoctl(int descriptor, unsigned long request, void* argument) override;
    void* doMmap(size_t length, int descriptor, long offset) override;

private:
    std::shared_ptr<TimedCamera> at(int descriptor);

    const CameraModel model_;
    const std::shared_ptr<const std::vector<uint8_t>> picture_;
    std::mutex mutex_;
    std::map<int, std::shared_ptr<TimedCamera>> open_;
    std::map<std::string, std::shared_ptr<TimedCamera>> last_;
};

// Lists `count` of them. As udev would: with the facts of USB cameras.
class TimedDiscovery : public ostrel::cameras::v4l2::Discovery {
public:
    explicit TimedDiscovery(int count);
    std::vector<ostrel::cameras::v4l2::NodeFacts> nodes() override { return nodes_; }
    std::string incarnation(const std::string& path) override;

private:
    std::vector<ostrel::cameras::v4l2::NodeFacts> nodes_;
};

// Makes `count` timed cameras the machine's only ones.
std::shared_ptr<TimedKernel> plugIn(const CameraModel& model, int count = 1);

} // namespace bench

#endif
