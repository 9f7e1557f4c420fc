// Every pixel format that is taken, from the driver's code for it to the colours, through both interfaces.
#include "platform/cameras/pixels/pixel_format.h"
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <cstdlib>
#include <linux/videodev2.h>

namespace ostrel::tests {

using cameras::CameraFrame;

namespace {

using Bytes = std::vector<uint8_t>;

// Red is 81, 90, 240 in BT.601; formats without colours show its brightness.
struct Colours {
    uint32_t fourcc;
    bool grey;
    size_t planesOfMemory;
    std::vector<Bytes> planes; // what fills them
    std::vector<size_t> parts; // of the first plane's bytes, in quarters, padding and all
};

const uint32_t P010 = v4l2_fourcc('P', '0', '1', '0');

const Colours COLOURS[] = {
    {V4L2_PIX_FMT_YUYV, false, 1, {{81, 90, 81, 240}}, {4}},
    {V4L2_PIX_FMT_UYVY, false, 1, {{90, 81, 240, 81}}, {4}},
    {V4L2_PIX_FMT_YVYU, false, 1, {{81, 240, 81, 90}}, {4}},
    {V4L2_PIX_FMT_VYUY, false, 1, {{240, 81, 90, 81}}, {4}},
    {V4L2_PIX_FMT_NV12, false, 1, {{81}, {90, 240}}, {4, 2}},
    {V4L2_PIX_FMT_NV12M, false, 2, {{81}, {90, 240}}, {4, 2}},
    {V4L2_PIX_FMT_NV21, false, 1, {{81}, {240, 90}}, {4, 2}},
    {V4L2_PIX_FMT_NV21M, false, 2, {{81}, {240, 90}}, {4, 2}},
    {V4L2_PIX_FMT_NV16, false, 1, {{81}, {90, 240}}, {4, 4}},
    {V4L2_PIX_FMT_NV16M, false, 2, {{81}, {90, 240}}, {4, 4}},
    {V4L2_PIX_FMT_NV24, false, 1, {{81}, {90, 240}}, {4, 8}},
    {P010, false, 1, {{0, 81}, {0, 90, 0, 240}}, {4, 2}},
    {V4L2_PIX_FMT_YUV420, false, 1, {{81}, {90}, {240}}, {4, 1, 1}},
    {V4L2_PIX_FMT_YUV420M, false, 3, {{81}, {90}, {240}}, {4, 1, 1}},
    {V4L2_PIX_FMT_YVU420, false, 1, {{81}, {240}, {90}}, {4, 1, 1}},
    {V4L2_PIX_FMT_YVU420M, false, 3, {{81}, {240}, {90}}, {4, 1, 1}},
    {V4L2_PIX_FMT_YUV422P, false, 1, {{81}, {90}, {240}}, {4, 2, 2}},
    {V4L2_PIX_FMT_YUV422M, false, 3, {{81}, {90}, {240}}, {4, 2, 2}},
    {V4L2_PIX_FMT_YUV444M, false, 3, {{81}, {90}, {240}}, {4, 4, 4}},
    {V4L2_PIX_FMT_RGB24, false, 1, {{255, 0, 0}}, {4}},
    {V4L2_PIX_FMT_BGR24, false, 1, {{0, 0, 255}}, {4}},
    {V4L2_PIX_FMT_XBGR32, false, 1, {{0, 0, 255, 9}}, {4}},
    {V4L2_PIX_FMT_BGR32, false, 1, {{0, 0, 255, 9}}, {4}},
    {V4L2_PIX_FMT_RGB565, false, 1, {{0x00, 0xF8}}, {4}},
    {V4L2_PIX_FMT_RGB565X, false, 1, {{0xF8, 0x00}}, {4}},
    {V4L2_PIX_FMT_GREY, true, 1, {{81}}, {4}},
    {V4L2_PIX_FMT_Y10, true, 1, {{0x45, 0x01}}, {4}}, // 325 of 1023
    {V4L2_PIX_FMT_Y12, true, 1, {{0x16, 0x05}}, {4}}, // 1302 of 4095
    {V4L2_PIX_FMT_Y16, true, 1, {{0xEE, 0x51}}, {4}},
    {V4L2_PIX_FMT_Y16_BE, true, 1, {{0x51, 0xEE}}, {4}},
};

// Every pixel within rounding of red, or of grey 81.
testing::AssertionResult shows(const std::shared_ptr<CameraFrame>& frame, bool grey) {
    Bytes bgra(64 * 48 * 4);
    if (!frame || !frame->convert(bgra.data(), 64, 48, 64 * 4))
        return testing::AssertionFailure() << "no picture";
    const int red[] = {0, 0, 255, 255}, brightness[] = {81, 81, 81, 255};
    for (size_t i = 0; i < bgra.size(); ++i)
        if (std::abs(bgra[i] - (grey ? brightness : red)[i % 4]) > 3)
            return testing::AssertionFailure()
                   << static_cast<int>(bgra[i]) << " in byte " << i % 4 << " of pixel " << i / 4;
    return testing::AssertionSuccess();
}

class FormatsTest : public V4l2CameraTest {
protected:
    FormatsTest() { device.padding = 12; }

    // The bytes of all planes, one after the other.
    FrameScript picture(const Colours& colours) {
        const size_t first = static_cast<size_t>(kernel->format(path).bytesperline) * 48;
        FrameScript frame;
        for (size_t plane = 0; plane < colours.planes.size(); ++plane)
            for (size_t i = 0; i < first * colours.parts[plane] / 4; ++i)
                frame.bytes.push_back(colours.planes[plane][i % colours.planes[plane].size()]);
        return frame;
    }
    void captureInto(std::shared_ptr<CameraFrame>& frame, const Colours& colours) {
        device.formats = {raw(colours.fourcc, {only(64, 48)})};
        start();
        ASSERT_TRUE(kernel->feed(path, picture(colours)));
        ASSERT_TRUE(sink->waitForFrames(1));
        frame = sink->newest();
    }
    void expectColours(const Colours& colours) {
        SCOPED_TRACE(cameras::pixels::fourccText(colours.fourcc));
        std::shared_ptr<CameraFrame> frame;
        captureInto(frame, colours);
        EXPECT_TRUE(shows(frame, colours.grey));
        sink->drop();
        TearDown();
        EXPECT_TRUE(shows(frame, colours.grey)) << "once the camera is closed";
        sink = std::make_shared<RecordingSink>();
    }
    void speakOfSeveralPlanes() {
        device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
        device.dataOffset = 16;
    }
};

} // namespace

TEST_F(FormatsTest, ShowTheirColours) {
    for (const Colours& colours : COLOURS)
        if (colours.planesOfMemory == 1)
            expectColours(colours);
}

TEST_F(FormatsTest, ShowTheirColoursFromOneBlockOfMemoryOrOneForEachPlane) {
    speakOfSeveralPlanes();
    for (const Colours& colours : COLOURS)
        expectColours(colours);
}

TEST_F(FormatsTest, APlaneThatIsCutOffMakesTheFrameATruncatedOne) {
    speakOfSeveralPlanes();
    device.formats = {raw(V4L2_PIX_FMT_YUV420M, {only(64, 48)})};
    start();
    FrameScript frame;
    for (const size_t missing : {1u + 12 / 2, 19u * 48}) { // more than a row's padding; the whole last plane
        frame.bytes.assign(76 * 48 + 38 * 24 * 2 - missing, 81);
        ASSERT_TRUE(kernel->feed(path, frame));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
    }
    EXPECT_EQ(sink->frames(), 0);
    EXPECT_EQ(camera->statistics().dropped["truncated"], 2u);
    EXPECT_EQ(kernel->queued(path), kernel->buffers(path));
}

TEST_F(FormatsTest, APlaneThatCannotBeMappedGivesTheOthersBack) {
    speakOfSeveralPlanes();
    device.formats = {raw(V4L2_PIX_FMT_YUV420M, {only(64, 48)})};
    plug();
    ASSERT_FALSE(camera->open());
    kernel->failNext(MMAP, EPERM, 1, 4); // in the middle of the second buffer
    EXPECT_EQ(camera->start(64, 48, sink).code, EPERM);
    EXPECT_EQ(kernel->mappings(), 0);
    EXPECT_EQ(kernel->buffers(path), 0u);
}

TEST_F(FormatsTest, FieldsOneAfterTheOtherAreWoven) {
    device.padding = 0;
    for (const uint32_t field : {V4L2_FIELD_SEQ_TB, V4L2_FIELD_SEQ_BT}) {
        device.adjust = [field](v4l2_pix_format& pix) { pix.field = field; };
        start();
        FrameScript frame = grey(40); // the field that comes first
        std::fill(frame.bytes.begin() + 64 * 24, frame.bytes.end(), static_cast<uint8_t>(200));
        ASSERT_TRUE(kernel->feed(path, frame));
        ASSERT_TRUE(sink->waitForFrames(1));
        Bytes bgra(64 * 48 * 4);
        ASSERT_TRUE(sink->newest()->convert(bgra.data(), 64, 48, 64 * 4));
        const bool topFirst = field == V4L2_FIELD_SEQ_TB;
        for (size_t row = 0; row < 48; ++row)
            ASSERT_EQ(bgra[row * 64 * 4], (row % 2 == 0) == topFirst ? 40 : 200) << "row " << row;
        TearDown();
        sink = std::make_shared<RecordingSink>();
    }
}

} // namespace ostrel::tests
