// One camera on a scripted kernel, and what every test of it needs.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_CAMERA_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_CAMERA_FIXTURE_H

#include "platform/cameras/v4l2/v4l2_backend.h"
#include "support/recording_sink.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace ostrel::tests {

using namespace support;

class V4l2CameraTest : public testing::Test {
protected:
    const std::string path = "/dev/video0";
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    DeviceScript device;
    std::shared_ptr<cameras::Camera> camera;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();

    V4l2CameraTest() { device.formats.push_back(raw(V4L2_PIX_FMT_GREY, {only(64, 48)})); }

    void plug() {
        kernel->plug(path, device);
        discovery->remove(path);
        discovery->add(path);
        camera = cameras::v4l2::makeCamera(kernel, discovery, discovery->nodes().back(), "identifier",
                                           "HD Webcam");
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
    FrameScript grey(uint8_t value) const {
        FrameScript frame;
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

} // namespace ostrel::tests

#endif
