// v4l2loopback, which ffmpeg feeds with motion JPEG: a driver that gives no stride and does not count from
// zero.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <ostrel/device_details.h>

#include <QtCore/QSize>

#include <gtest/gtest.h>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

// This driver lets the feeder write into a picture while somebody reads it. Where the emulated machine pauses
// at the wrong moment, what is read is broken, and nobody could tell: so of several pictures, one has to be
// right.
testing::AssertionResult showsStripesSoon(Capture& capture) {
    testing::AssertionResult result = testing::AssertionFailure() << "no picture";
    for (int attempt = 0; attempt < 10 && !result && capture.waitForPicture(); ++attempt) {
        result = showsStripes(capture.picture());
    }
    return result;
}

} // namespace

TEST(UnfedLoopback, IsNoCameraAndSaysWhy) {
    EXPECT_EQ(cameras(), QStringList());
    const QList<OVideoNode> nodes = videoNodes();
    ASSERT_EQ(nodes.size(), 1);
    EXPECT_EQ(nodes[0].path().toStdString(), "/dev/video9");
    EXPECT_EQ(nodes[0].name().toStdString(), "Loopback");
    EXPECT_EQ(nodes[0].uniqueID().toStdString(), "");
    EXPECT_EQ(nodes[0].reason().toStdString(), "no program gives it pictures at present");
}

TEST(Loopback, HasTheIdentifierOfTheFirstRelease) {
    EXPECT_EQ(onlyCamera().toStdString(), "bus-platform:v4l2loopback-000");
}

TEST(Loopback, MotionJpegShowsTheRightColorsAtItsOwnSize) {
    Capture capture(onlyCamera(), 640, 480);
    EXPECT_TRUE(showsStripesSoon(capture));
    EXPECT_EQ(capture.statistics().grantedFormat.toStdString(), "MJPG");
}

TEST(Loopback, MotionJpegShowsTheRightColorsScaled) {
    for (const QSize& size : {QSize(320, 240), QSize(1280, 720)}) {
        Capture capture(onlyCamera(), size.width(), size.height());
        EXPECT_TRUE(showsStripesSoon(capture));
        EXPECT_EQ(capture.statistics().grantedWidth, 640);
        EXPECT_EQ(capture.statistics().grantedHeight, 480);
    }
}

TEST(Loopback, PicturesMove) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    const std::vector<uint8_t> before = capture.picture().data;
    EXPECT_TRUE(waitUntil([&] { return capture.waitForPicture() && capture.picture().data != before; }));
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}
