// Frames that arrive broken: dropped and counted, and the one before stays.
#include "support/jpeg_pictures.h"
#include "unit/platform/cameras/v4l2/faults_fixture.h"

#include <algorithm>
#include <vector>

namespace ostrel::tests {

TEST_F(FaultsTest, AFrameThatTheDriverCallsDamagedIsDroppedCountedAndRequeued) {
    start();
    FrameScript frame = grey(9);
    frame.flags = V4L2_BUF_FLAG_ERROR;
    expectDropped(frame, "damaged");
}

TEST_F(FaultsTest, ARawFrameWithTooFewBytesIsDroppedCountedAndRequeued) {
    start();
    FrameScript frame = grey(9);
    frame.bytesUsed = 64 * 48 - 1;
    expectDropped(frame, "truncated");
}

TEST_F(FaultsTest, AFrameWithoutBytesIsDroppedCountedAndRequeued) {
    start();
    FrameScript frame = grey(9);
    frame.bytesUsed = 0;
    expectDropped(frame, "empty");
}

TEST_F(FaultsTest, MoreBytesThanTheBufferHasAreNotRead) {
    start();
    FrameScript frame = grey(9);
    frame.bytesUsed = 1 << 30;
    ASSERT_TRUE(kernel->feed(path, frame));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(brightness(sink->newest()), 9);
}

class JpegFaultsTest : public FaultsTest {
protected:
    JpegFaultsTest() { device.formats = {raw(V4L2_PIX_FMT_MJPEG, {only(96, 64)})}; }

    FrameScript whole = frameOf(quadrantsAsJpeg(96, 64));
    std::vector<uint8_t> pixels = std::vector<uint8_t>(96 * 64 * 4);

    static FrameScript frameOf(std::vector<uint8_t> bytes) {
        FrameScript frame;
        frame.bytes = std::move(bytes);
        return frame;
    }
    bool readable() {
        const auto frame = sink->newest();
        if (!frame || !frame->convert(pixels.data(), 96, 64, 96 * 4))
            return false;
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixels[static_cast<size_t>((16 * 96 + 24) * 4 + c)], JPEG_QUADRANTS[0][c], 5);
        return true;
    }
    void expectDroppedJpeg(const FrameScript& broken, const std::string& reason) {
        start(96, 64);
        ASSERT_TRUE(kernel->feed(path, whole));
        ASSERT_TRUE(sink->waitForFrames(1));
        ASSERT_TRUE(kernel->feed(path, broken));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
        EXPECT_EQ(sink->frames(), 1);
        EXPECT_TRUE(readable()); // the frame before
        EXPECT_EQ(camera->statistics().dropped[reason], 1u);
        sink->drop();
        EXPECT_EQ(kernel->queued(path), kernel->buffers(path));
    }
};

TEST_F(JpegFaultsTest, WholePicturesAreDelivered) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, ExtraBytesBehindThePictureAreNormal) {
    whole.bytes.resize(whole.bytes.size() + 2000, 0);
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, ATruncatedPictureIsDropped) {
    FrameScript cut = whole;
    cut.bytes.resize(cut.bytes.size() - 20);
    expectDroppedJpeg(cut, "truncated");
}

TEST_F(JpegFaultsTest, AnEmptyPictureIsDropped) {
    FrameScript empty = whole;
    empty.bytesUsed = 0;
    expectDroppedJpeg(empty, "empty");
}

TEST_F(JpegFaultsTest, APictureWithoutItsStartIsDropped) {
    expectDroppedJpeg(frameOf(std::vector<uint8_t>(whole.bytes.begin() + 2, whole.bytes.end())),
                      "not a JPEG picture");
}

TEST_F(JpegFaultsTest, PicturesOfAnotherSizeThanGrantedAreShownAtTheSizeAskedFor) {
    whole = frameOf(quadrantsAsJpeg(160, 120));
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, PicturesWithoutTheirEndMarkerAreShown) {
    whole.bytes.resize(whole.bytes.size() - 2);
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, ABrokenFirstPictureIsPassedOver) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, frameOf({0, 0, 0})));
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, APictureThatTurnsOutBrokenWhenItIsDecodedIsCountedThen) {
    // Half of its data is missing, but its ends and headers are in order.
    const uint8_t startOfScan[] = {0xFF, 0xDA}, endOfPicture[] = {0xFF, 0xD9};
    const auto scan = std::search(whole.bytes.begin(), whole.bytes.end(), startOfScan, startOfScan + 2);
    FrameScript broken = frameOf({whole.bytes.begin(), scan + (whole.bytes.end() - scan) / 2});
    broken.bytes.insert(broken.bytes.end(), endOfPicture, endOfPicture + 2);
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, broken));
    ASSERT_TRUE(sink->waitForFrames(1));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(readable());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(camera->statistics().dropped["truncated"], 1u);
    EXPECT_EQ(camera->statistics().taken, 0u);
}

TEST_F(JpegFaultsTest, HeldPicturesStayReadableAfterTheStop) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    camera->close();
    EXPECT_TRUE(readable());
}

} // namespace ostrel::tests
