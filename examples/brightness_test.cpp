// How a client tests its own code without a camera: it pushes the frames that the code shall see.
#include "brightness.h"

#include <ostrel/virtual_camera.h>

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace {

class BrightnessTest : public testing::Test {
protected:
    BrightnessTest() : camera("brightness-test", "Pushed frames") { camera.attach(); }

    // Shows the camera a picture in one grey. Capturing starts on a thread of its own, so the first push may
    // come too early; it is refused then.
    bool show(uint8_t grey) {
        const std::vector<uint8_t> picture(64 * 48 * 4, grey);
        for (int attempt = 0; attempt < 500; ++attempt) {
            if (camera.push(picture.data(), 64, 48, 64 * 4))
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    ostrel::OVideoPushCamera camera;
};

TEST_F(BrightnessTest, IsUnknownBeforeTheFirstFrame) {
    Brightness brightness(camera.uniqueID());
    EXPECT_EQ(brightness.value(), -1);
}

TEST_F(BrightnessTest, FollowsThePicture) {
    Brightness brightness(camera.uniqueID());
    ASSERT_TRUE(show(0));
    EXPECT_EQ(brightness.value(), 0);
    ASSERT_TRUE(show(200));
    EXPECT_EQ(brightness.value(), 200);
}

TEST_F(BrightnessTest, KeepsTheLastValueWhenTheCameraIsPulledOut) {
    Brightness brightness(camera.uniqueID());
    ASSERT_TRUE(show(100));
    camera.detach();
    EXPECT_EQ(brightness.value(), 100);
}

} // namespace
