// A camera that something goes wrong with, and what the client must see then.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_FAULTS_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_FAULTS_FIXTURE_H

#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <string>

namespace ostrel::tests {

inline bool says(const cameras::Error& error, const std::string& text) {
    return error.text.find(text) != std::string::npos;
}

class FaultsTest : public V4l2CameraTest {
protected:
    // A frame that must not reach the sink; the next one must.
    void expectDropped(const FrameScript& broken, const std::string& reason) {
        deliver(1);
        ASSERT_TRUE(kernel->feed(path, broken));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
        EXPECT_EQ(sink->frames(), 1);
        EXPECT_EQ(brightness(sink->newest()), 1);
        EXPECT_EQ(camera->statistics().dropped[reason], 1u);
        sink->drop();
        EXPECT_EQ(kernel->queued(path), kernel->buffers(path)); // requeued
        deliver(2);
    }
    void expectEnd(const std::string& text) {
        ASSERT_TRUE(sink->waitForEnd());
        EXPECT_TRUE(says(sink->why(), text)) << sink->why().text;
        EXPECT_TRUE(says(sink->why(), "HD Webcam (/dev/video0)")) << sink->why().text;
        EXPECT_EQ(camera->statistics().ended, sink->why().text);
        EXPECT_EQ(sink->ends().size(), 1u);
    }
    cameras::Error startFails() {
        plug();
        const cameras::Error opened = camera->open();
        EXPECT_FALSE(opened) << opened.text;
        const cameras::Error error = camera->start(64, 48, sink);
        EXPECT_TRUE(error);
        EXPECT_EQ(kernel->mappings(), 0);
        return error;
    }
    // A failed start leaves nothing behind: the next one works.
    void expectHealthy() {
        ASSERT_FALSE(camera->start(64, 48, sink));
        deliver(42);
        EXPECT_EQ(brightness(sink->newest()), 42);
    }
};

} // namespace ostrel::tests

#endif
