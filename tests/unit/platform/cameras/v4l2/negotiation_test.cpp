// What is asked of the driver, and what is made of its answer.
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <linux/videodev2.h>

namespace ostrel::tests {

using cameras::Error;
using cameras::StreamStatistics;

class NegotiationTest : public V4l2CameraTest {
protected:
    std::string grantedFormat() {
        const StreamStatistics figures = camera->statistics();
        return figures.granted.format + ' ' + std::to_string(figures.granted.size.width) + 'x' +
               std::to_string(figures.granted.size.height);
    }
};

TEST_F(NegotiationTest, TakesCompressedPicturesOnlyWhereRawOnesAreSlower) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}, 30),
                      raw(V4L2_PIX_FMT_MJPEG, {only(640, 480)}, 30)};
    start(640, 480);
    EXPECT_EQ(grantedFormat(), "YUYV 640x480");
}

TEST_F(NegotiationTest, TakesCompressedPicturesWhereRawOnesAreSlow) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(1280, 720)}, 10),
                      raw(V4L2_PIX_FMT_MJPEG, {only(1280, 720)}, 30)};
    start(1280, 720);
    EXPECT_EQ(grantedFormat(), "MJPG 1280x720");
    EXPECT_DOUBLE_EQ(kernel->interval(path).rate(), 30);
}

TEST_F(NegotiationTest, AcceptsAStepwiseSizeThatContainsTheRequest) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 8)})};
    start(640, 480);
    EXPECT_EQ(grantedFormat(), "YUYV 640x480");
}

TEST_F(NegotiationTest, AcceptsAContinuousSize) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 1)})};
    start(322, 242);
    EXPECT_EQ(grantedFormat(), "YUYV 322x242");
}

TEST_F(NegotiationTest, AsksForTheRequestWhereTheDriverListsNoSizes) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {})};
    start(640, 480);
    EXPECT_EQ(grantedFormat(), "YUYV 640x480");
}

TEST_F(NegotiationTest, DoesWithoutFrameIntervals) {
    device.formats[0].intervals.clear();
    start();
    deliver(4);
    EXPECT_EQ(brightness(sink->newest()), 4);
}

TEST_F(NegotiationTest, CapturesTheNextLargerSizeAndScales) {
    device.formats = {raw(V4L2_PIX_FMT_GREY, {only(32, 24), only(64, 48), only(640, 480)})};
    start(40, 30);
    EXPECT_EQ(grantedFormat(), "GREY 64x48");
    deliver(99);
    EXPECT_EQ(brightness(sink->newest(), 40, 30), 99);
}

TEST_F(NegotiationTest, CapturesALargerSizeOfTheSameAspect) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(848, 480), only(800, 600)})};
    start(640, 480);
    EXPECT_EQ(grantedFormat(), "YUYV 800x600");
}

TEST_F(NegotiationTest, CapturesTheLargestSizeWhereNoneIsLargeEnough) {
    start(1280, 720);
    EXPECT_EQ(grantedFormat(), "GREY 64x48");
    deliver(99);
    EXPECT_EQ(brightness(sink->newest(), 1280, 720), 99);
}

TEST_F(NegotiationTest, ConvertsFromTheSizeAndFormatThatWereGranted) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(128, 96)})};
    device.adjust = [](v4l2_pix_format& pix) {
        pix.width = 64;
        pix.height = 48;
        pix.pixelformat = V4L2_PIX_FMT_GREY;
        pix.bytesperline = 64;
        pix.sizeimage = 64 * 48;
    };
    start(128, 96);
    EXPECT_EQ(grantedFormat(), "GREY 64x48");
    deliver(55);
    EXPECT_EQ(brightness(sink->newest(), 128, 96), 55);
}

TEST_F(NegotiationTest, UsesTheStrideThatWasGranted) {
    device.padding = 32;
    start();
    FrameScript frame = grey(10);
    for (size_t y = 0; y < 48; ++y)
        for (size_t x = 64; x < 96; ++x)
            frame.bytes[y * 96 + x] = 250; // what must not be seen
    ASSERT_TRUE(kernel->feed(path, frame));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(brightness(sink->newest()), 10);
    EXPECT_EQ(brightness(sink->newest(), 32, 24), 10);
}

TEST_F(NegotiationTest, AStrideOfZeroOrTooLittleMeansNoPadding) {
    for (const uint32_t stride : {0u, 3u}) {
        TearDown();
        kernel = std::make_shared<ScriptedKernel>();
        discovery = std::make_shared<ScriptedDiscovery>();
        sink = std::make_shared<RecordingSink>();
        device.adjust = [stride](v4l2_pix_format& pix) { pix.bytesperline = stride; };
        start();
        deliver(60);
        EXPECT_EQ(brightness(sink->newest()), 60);
    }
}

TEST_F(NegotiationTest, TriesTheNextFormatWhenOneIsGrantedThatCannotBeConverted) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(64, 48)}), raw(V4L2_PIX_FMT_GREY, {only(64, 48)})};
    device.adjust = [](v4l2_pix_format& pix) {
        if (pix.pixelformat == V4L2_PIX_FMT_YUYV)
            pix.pixelformat = V4L2_PIX_FMT_SBGGR8;
    };
    start();
    EXPECT_EQ(grantedFormat(), "GREY 64x48");
}

TEST_F(NegotiationTest, ASizeOfNothingOrBeyondReasonIsRefused) {
    for (const uint32_t side : {0u, 1u << 20}) {
        device.adjust = [side](v4l2_pix_format& pix) {
            pix.width = side;
            pix.sizeimage = 4096;
        };
        plug();
        ASSERT_FALSE(camera->open());
        EXPECT_EQ(camera->start(64, 48, sink).code, EINVAL);
        camera->close();
    }
}

TEST_F(NegotiationTest, ARefusedRateIsNotFatal) {
    kernel->failNext(VIDIOC_S_PARM, EINVAL);
    start();
    deliver(7);
}

TEST_F(NegotiationTest, ADriverWithoutRatesIsNotFatal) {
    device.knowsRates = false;
    start();
    deliver(7);
}

TEST_F(NegotiationTest, HalfPicturesOfInterlacedDriversFillTheWholeFrame) {
    device.adjust = [](v4l2_pix_format& pix) {
        pix.field = V4L2_FIELD_ALTERNATE;
        pix.height = 24; // the lines of one field
        pix.sizeimage = pix.bytesperline * 24;
    };
    start();
    FrameScript field;
    field.bytes.assign(64 * 24, 88);
    ASSERT_TRUE(kernel->feed(path, field));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(brightness(sink->newest()), 88);
}

TEST_F(NegotiationTest, RefusesSeveralPlanesFromTheInterfaceForOne) {
    device.adjust = [](v4l2_pix_format& pix) { pix.pixelformat = V4L2_PIX_FMT_NV12M; };
    plug();
    ASSERT_FALSE(camera->open());
    EXPECT_EQ(camera->start(64, 48, sink).code, EINVAL);
}

TEST_F(NegotiationTest, NamesTheFormatsOfACameraThatHasNoneOfUse) {
    device.formats = {raw(V4L2_PIX_FMT_H264, {only(64, 48)}), raw(V4L2_PIX_FMT_Z16, {only(64, 48)})};
    plug();
    ASSERT_FALSE(camera->open());
    EXPECT_EQ(camera->start(64, 48, sink).text, "HD Webcam (/dev/video0) offers only H264 (compressed "
                                                "video, which is not decoded here), Z16 (depth)");
}

} // namespace ostrel::tests
