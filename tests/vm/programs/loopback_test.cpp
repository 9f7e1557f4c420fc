// v4l2loopback, which ffmpeg feeds with motion JPEG: a driver that gives no stride and does not count from
// zero.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <QtCore/QSize>

#include <gtest/gtest.h>

using namespace ostrel;
using namespace ostrel::vm;

TEST(Loopback, MotionJpegShowsTheRightColorsAtItsOwnSize) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_EQ(capture.statistics().grantedFormat.toStdString(), "MJPG");
    EXPECT_TRUE(showsStripes(capture.picture()));
}

TEST(Loopback, MotionJpegShowsTheRightColorsScaled) {
    for (const QSize& size : {QSize(320, 240), QSize(1280, 720)}) {
        Capture capture(onlyCamera(), size.width(), size.height());
        ASSERT_TRUE(capture.waitForPicture());
        EXPECT_EQ(capture.statistics().grantedWidth, 640);
        EXPECT_EQ(capture.statistics().grantedHeight, 480);
        EXPECT_TRUE(showsStripes(capture.picture()));
    }
}

TEST(Loopback, PicturesMove) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    const std::vector<uint8_t> before = capture.picture().data;
    EXPECT_TRUE(waitUntil([&] { return capture.waitForPicture() && capture.picture().data != before; }));
    EXPECT_EQ(capture.droppedFrames(), 0u);
}
