// A machine whose cameras are AVFoundation's, by the stand-in.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_AVFOUNDATION_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_AVFOUNDATION_FIXTURE_H

#include "platform/cameras/avfoundation/av_provider.h"
#include "platform/cameras/stall_watch.h"
#include "support/avfoundation/standin.h"
#include "support/recording_sink.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace ostrel::tests {

namespace standin = support::avfoundation;
using support::comesTrue;
using support::RecordingSink;

inline standin::Format format(int width, int height, double rate = 30) {
    standin::Format one;
    one.width = width;
    one.height = height;
    one.rate = rate;
    return one;
}

class AvFoundationTest : public testing::Test {
protected:
    AvFoundationTest() {
        standin::reset();
        device.identifier = "A";
    }
    ~AvFoundationTest() override {
        if (camera) {
            camera->close();
            camera.reset();
        }
        sink->drop();
        provider.reset();
        EXPECT_EQ(standin::leftBehind(), "");
        standin::reset();
        cameras::StallWatch::leastPause = pause_;
    }

    // Plugs the device in, and opens its camera.
    void open() {
        standin::plug(device);
        camera = provider->list().at(0);
        ASSERT_EQ(camera->open().text, "");
    }
    cameras::Error start(int width = 64, int height = 48) { return camera->start(width, height, sink); }
    std::string stalled() const { return camera->statistics().stalled; }
    static std::vector<uint8_t> bgraOf(cameras::CameraFrame& frame, int width, int height) {
        std::vector<uint8_t> bgra(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
        EXPECT_TRUE(frame.convert(bgra.data(), width, height, width * 4));
        return bgra;
    }
    // What every pixel of the stand-in's pictures is.
    std::vector<uint8_t> expected(int width, int height) const {
        std::vector<uint8_t> bgra;
        for (int i = 0; i < width * height; ++i)
            bgra.insert(bgra.end(), {device.grey, device.grey, device.grey, 255});
        return bgra;
    }

    standin::Device device;
    std::shared_ptr<cameras::CameraProvider> provider = cameras::avfoundation::makeProvider();
    std::shared_ptr<cameras::Camera> camera;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();

private:
    const int64_t pause_ = cameras::StallWatch::leastPause;
};

} // namespace ostrel::tests

#endif
