// One camera on a fake kernel, and what every test of it needs.
#ifndef OSTREL_TESTS_UNIT_V4L2_CAMERA_FIXTURE_H
#define OSTREL_TESTS_UNIT_V4L2_CAMERA_FIXTURE_H

#include "platform/cameras/v4l2/v4l2_camera.h"
#include "unit/v4l2/fake_discovery.h"
#include "unit/v4l2/fake_kernel.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace tests {

// Keeps the newest frame, as a capture does, and counts.
class RecordingSink : public cameras::FrameSink {
public:
    void frameArrived(const std::shared_ptr<cameras::CameraFrame>& frame) override {
        std::shared_ptr<cameras::CameraFrame> before;
        std::function<void()> action;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++frames_;
            if (keepAll)
                all_.push_back(frame);
            before.swap(newest_);
            newest_ = frame;
            action = onFrame;
        }
        before.reset();
        changed_.notify_all();
        if (action)
            action();
    }
    void streamEnded(const cameras::Error& why) override {
        std::function<void()> action;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++ends_;
            why_ = why;
            action = onEnd;
        }
        changed_.notify_all();
        if (action)
            action();
    }
    bool waitForFrames(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(20), [&] { return frames_ >= count; });
    }
    bool waitForEnd() {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(20), [&] { return ends_ > 0; });
    }
    int frames() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return frames_;
    }
    int ends() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ends_;
    }
    cameras::Error why() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return why_;
    }
    std::shared_ptr<cameras::CameraFrame> newest() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return newest_;
    }
    std::vector<std::shared_ptr<cameras::CameraFrame>> takeAll() {
        std::lock_guard<std::mutex> lock(mutex_);
        newest_.reset();
        return std::move(all_);
    }
    void drop() {
        std::lock_guard<std::mutex> lock(mutex_);
        newest_.reset();
        all_.clear();
    }

    bool keepAll = false;          // set these before the start
    std::function<void()> onFrame; // called on the delivery thread
    std::function<void()> onEnd;

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int frames_ = 0;
    int ends_ = 0;
    cameras::Error why_;
    std::shared_ptr<cameras::CameraFrame> newest_;
    std::vector<std::shared_ptr<cameras::CameraFrame>> all_;
};

inline FakeFormat raw(uint32_t fourcc, std::vector<cameras::v4l2::SizeRange> sizes, uint32_t rate = 30) {
    FakeFormat format;
    format.fourcc = fourcc;
    format.sizes = std::move(sizes);
    format.intervals.push_back(perSecond(rate));
    return format;
}

class V4l2CameraTest : public testing::Test {
protected:
    const std::string path = "/dev/video0";
    std::shared_ptr<FakeKernel> kernel = std::make_shared<FakeKernel>();
    std::shared_ptr<FakeDiscovery> discovery = std::make_shared<FakeDiscovery>();
    FakeDevice device;
    std::shared_ptr<cameras::v4l2::V4l2Camera> camera;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();

    V4l2CameraTest() { device.formats.push_back(raw(V4L2_PIX_FMT_GREY, {only(64, 48)})); }

    void plug() {
        kernel->plug(path, device);
        cameras::v4l2::NodeFacts facts;
        facts.path = path;
        discovery->remove(path);
        discovery->add(facts);
        camera = std::make_shared<cameras::v4l2::V4l2Camera>(kernel, discovery, discovery->nodes().back(),
                                                             "identifier", "HD Webcam");
    }
    void unplug() {
        discovery->remove(path);
        kernel->unplug(path);
    }
    void start(int width = 64, int height = 48) {
        plug();
        const cameras::Error opened = camera->open();
        ASSERT_FALSE(opened) << opened.text;
        const cameras::Error started = camera->start(width, height, sink);
        ASSERT_FALSE(started) << started.text;
    }
    // A picture with every byte the same: in the grey format, that is the brightness.
    FakeFrame grey(uint8_t value) const {
        FakeFrame frame;
        frame.bytes.assign((64 + device.padding) * 48, value);
        return frame;
    }
    void deliver(uint8_t value) {
        const int before = sink->frames();
        ASSERT_TRUE(kernel->feed(path, grey(value)));
        ASSERT_TRUE(sink->waitForFrames(before + 1));
    }
    // The brightness of the picture, -1 when it is not the same everywhere or does not convert.
    static int brightness(const std::shared_ptr<cameras::CameraFrame>& frame, int width = 64,
                          int height = 48) {
        std::vector<uint8_t> bgra(static_cast<size_t>(width * height * 4), 1);
        if (!frame || !frame->convert(bgra.data(), width, height, width * 4))
            return -1;
        for (size_t i = 0; i < bgra.size(); ++i)
            if (bgra[i] != (i % 4 == 3 ? 255 : bgra[0]))
                return -1;
        return bgra[0];
    }
    void TearDown() override {
        if (camera) {
            camera->stop(sink);
            camera->close();
        }
        EXPECT_EQ(kernel->openDescriptors(), 0);
        EXPECT_EQ(kernel->mappings(), 0);
        EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
        sink->drop();
    }
};

} // namespace tests
} // namespace ostrel

#endif
