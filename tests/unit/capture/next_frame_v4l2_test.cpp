// What a driver says and gives, as it arrives at who waits.
#include "next_frame_fixture.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/jpeg_pictures.h"
#include "support/recording_sink.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <ostrel/camera_state.h>
#include <ostrel/devices.h>
#include <ostrel/modes.h>

using namespace ostrel;
using namespace ostrel::support;

namespace {

class NextV4l2Frame : public NextFrameTest {
protected:
    const std::string path = "/dev/video0";
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    DeviceScript device;

    Capture capturing(uint32_t fourcc, int width = 16, int height = 8) {
        device.formats = {raw(fourcc, {only(width, height)})};
        kernel->plug(path, device);
        discovery->remove(path);
        discovery->add(path);
        const auto provider = cameras::v4l2::makeProvider(kernel, discovery);
        machine.has(provider);
        const std::string identifier = provider->list().at(0)->identifier();
        return started(identifier.c_str(), width, height);
    }
    // Different bytes everywhere.
    static FrameScript numbered(size_t bytes) {
        FrameScript frame;
        for (size_t i = 0; i < bytes; ++i)
            frame.bytes.push_back(static_cast<uint8_t>(i * 31 + i / 256));
        return frame;
    }
    static std::vector<uint8_t> bytesOf(const OVideoNativeFrame& frame) {
        return std::vector<uint8_t>(frame.data(), frame.data() + frame.bytesUsed());
    }
};

} // namespace

TEST_F(NextV4l2Frame, SaysWhenTheDriverCapturedItAndUnderWhichNumber) {
    const struct {
        uint32_t flags;
        OVideoFrameFacts::TimeSource source;
        long microseconds;
    } kinds[] = {{V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_TSTAMP_SRC_SOE,
                  OVideoFrameFacts::START_OF_EXPOSURE, 345678},
                 {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, OVideoFrameFacts::END_OF_FRAME, 345678},
                 {V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC, OVideoFrameFacts::ARRIVAL, 1000000}, // is no time
                 {V4L2_BUF_FLAG_TIMESTAMP_COPY, OVideoFrameFacts::ARRIVAL, 345678}};
    for (const auto& kind : kinds) {
        device.timestamps = kind.flags;
        const Capture capture = capturing(V4L2_PIX_FMT_GREY);
        OVideoFrameReader reader(capture);
        FrameScript frame = numbered(16 * 8);
        frame.sequence = 41;
        frame.time.tv_sec = 12;
        frame.time.tv_usec = kind.microseconds;
        const int64_t before = monotonicNanoseconds();
        ASSERT_TRUE(kernel->feed(path, frame));
        VideoFrame shown;
        OVideoFrameFacts facts;
        ASSERT_EQ(nextVideoFrame(reader, shown, LONG, &facts), 1);
        EXPECT_EQ(facts.number(), 1u);
        EXPECT_EQ(facts.sequence(), 41u);
        EXPECT_EQ(facts.timeSource(), kind.source);
        if (kind.source == OVideoFrameFacts::ARRIVAL)
            EXPECT_GE(facts.captureTime(), before);
        else
            EXPECT_EQ(facts.captureTime(), INT64_C(12345678000));
        EXPECT_EQ(utf8Of(facts.nativeFormat()), "GREY");
        EXPECT_EQ(facts.nativeWidth(), 16);
        EXPECT_EQ(facts.nativeHeight(), 8);
    }
}

TEST_F(NextV4l2Frame, NativeBytesAreTheDriversInEveryLayout) {
    const struct {
        uint32_t fourcc;
        const char* name;
        size_t bytes;
        std::vector<size_t> offsets;
        std::vector<int> strides;
    } layouts[] = {{V4L2_PIX_FMT_YUYV, "YUYV", 256, {0}, {32}},
                   {V4L2_PIX_FMT_NV12, "NV12", 192, {0, 128}, {16, 16}},
                   {V4L2_PIX_FMT_YUV420, "YU12", 192, {0, 128, 160}, {16, 8, 8}},
                   {V4L2_PIX_FMT_YUV422P, "422P", 256, {0, 128, 192}, {16, 8, 8}},
                   {V4L2_PIX_FMT_GREY, "GREY", 128, {0}, {16}},
                   {V4L2_PIX_FMT_Y16, "Y16", 256, {0}, {32}},
                   {V4L2_PIX_FMT_Y16_BE, "Y16-BE", 256, {0}, {32}},
                   {V4L2_PIX_FMT_NV21, "NV21", 192, {0, 128}, {16, 16}},
                   {V4L2_PIX_FMT_RGB24, "RGB3", 384, {0}, {48}}};
    OVideoNativeFrame frame;
    for (const auto& layout : layouts) {
        const Capture capture = capturing(layout.fourcc);
        OVideoFrameReader reader(capture);
        const FrameScript fed = numbered(layout.bytes);
        ASSERT_TRUE(kernel->feed(path, fed));
        ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1) << layout.name;
        EXPECT_EQ(utf8Of(frame.format()), layout.name);
        EXPECT_EQ(bytesOf(frame), fed.bytes) << layout.name;
        ASSERT_EQ(frame.planes(), static_cast<int>(layout.offsets.size())) << layout.name;
        for (int i = 0; i < frame.planes(); ++i) {
            EXPECT_EQ(frame.planeOffset(i), layout.offsets[static_cast<size_t>(i)]) << layout.name;
            EXPECT_EQ(frame.bytesPerLine(i), layout.strides[static_cast<size_t>(i)]) << layout.name;
        }
    }
}

TEST_F(NextV4l2Frame, NativeJpegIsTheWholePictureAsItCame) {
    const Capture capture = capturing(V4L2_PIX_FMT_MJPEG, 64, 48);
    OVideoFrameReader reader(capture);
    FrameScript fed;
    fed.bytes = quadrantsAsJpeg(64, 48);
    ASSERT_TRUE(kernel->feed(path, fed));
    OVideoNativeFrame frame;
    ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
    EXPECT_EQ(utf8Of(frame.format()), "MJPG");
    EXPECT_EQ(frame.width(), 64);
    EXPECT_EQ(frame.bytesPerLine(0), 0);
    EXPECT_EQ(bytesOf(frame), fed.bytes);
}

// The encoder writes the standard tables in the same place and order, so that the bytes can be compared.
TEST_F(NextV4l2Frame, NativeJpegForOtherProgramsHasItsTables) {
    const Capture capture = capturing(V4L2_PIX_FMT_MJPEG, 64, 48);
    OVideoFrameReader reader(capture);
    OVideoNativeFrame frame;
    EXPECT_TRUE(frame.jpeg().isEmpty());
    JpegOptions bare;
    bare.tables = false;
    FrameScript fed;
    fed.bytes = quadrantsAsJpeg(64, 48, bare);
    ASSERT_TRUE(kernel->feed(path, fed));
    ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
    const QByteArray whole = frame.jpeg();
    EXPECT_EQ(std::vector<uint8_t>(whole.begin(), whole.end()), quadrantsAsJpeg(64, 48));
}

TEST_F(NextV4l2Frame, NativeRowsKeepTheirPaddingAndTheColoursTheirMeaning) {
    device.padding = 12;
    device.adjust = [](v4l2_pix_format& format) {
        format.colorspace = V4L2_COLORSPACE_REC709;
        format.ycbcr_enc = V4L2_YCBCR_ENC_709;
        format.quantization = V4L2_QUANTIZATION_FULL_RANGE;
    };
    const Capture capture = capturing(V4L2_PIX_FMT_NV12);
    OVideoFrameReader reader(capture);
    const FrameScript fed = numbered(28 * 12);
    ASSERT_TRUE(kernel->feed(path, fed));
    OVideoNativeFrame frame;
    ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
    EXPECT_EQ(frame.encoding(), OVideoNativeFrame::BT709);
    EXPECT_TRUE(frame.isFullRange());
    ASSERT_EQ(frame.planeOffset(1), 28u * 8);
    ASSERT_EQ(frame.bytesUsed(), 28u * 12 - 12); // to the last pixel
    for (int plane = 0; plane < 2; ++plane)
        for (size_t row = 0; row < (plane ? 4u : 8u); ++row) {
            const size_t at = frame.planeOffset(plane) + row * 28;
            EXPECT_TRUE(std::equal(frame.data() + at, frame.data() + at + 16, fed.bytes.data() + at));
        }
}

TEST_F(NextV4l2Frame, IsNotHeldFromTheDriverOnceItWasStopped) {
    const Capture capture = capturing(V4L2_PIX_FMT_GREY);
    OVideoFrameReader reader(capture);
    OVideoNativeFrame frame;
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(kernel->feed(path, numbered(16 * 8)));
        ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
        ASSERT_TRUE(kernel->waitUntilIdle(path));
        EXPECT_EQ(kernel->queued(path), 4u); // one is the newest
    }
    capture->stopVideoCapture();
    EXPECT_EQ(kernel->mappings(), 0);
    EXPECT_EQ(kernel->openDescriptors(), 0);
    EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
}

TEST_F(NextV4l2Frame, UnpluggedCameraEndsTheWaiting) {
    const Capture capture = capturing(V4L2_PIX_FMT_GREY);
    OVideoFrameReader reader(capture);
    discovery->remove(path);
    kernel->unplug(path);
    EXPECT_TRUE(mentions(reason(reader, -1), "was unplugged"));
}

TEST_F(NextV4l2Frame, NodeThatDoesNotOpenIsSaidToWhoWaits) {
    kernel->failNext(VIDIOC_STREAMON, EBUSY);
    const Capture capture = capturing(V4L2_PIX_FMT_GREY);
    OVideoFrameReader reader(capture);
    EXPECT_TRUE(mentions(reason(reader), "in use by another program"));
}

namespace {

// Cameras of whose formats none has a picture, listed while the test runs.
class NativeOnly : public NextV4l2Frame {
protected:
    NativeOnly() { listNativeOnlyCameras(true); }
    ~NativeOnly() override {
        listNativeOnlyCameras(false);
        requestVideoMode(identifier, OVideoMode());
    }
    // Plugs it in; its identifier, empty when it is not listed.
    QString plugged(const std::vector<FormatScript>& formats) {
        device.formats = formats;
        kernel->plug(path, device);
        discovery->add(path);
        machine.has(cameras::v4l2::makeProvider(kernel, discovery));
        const QMap<QString, QString> listed = videoDevices();
        identifier = listed.isEmpty() ? QString() : listed.keys().at(0);
        return identifier;
    }
    Capture capturing() { return started(identifier.toLatin1().constData()); }

    QString identifier;
};

} // namespace

TEST_F(NativeOnly, CameraIsListedWhenThatWasAskedForOnly) {
    listNativeOnlyCameras(false);
    EXPECT_TRUE(plugged({raw(V4L2_PIX_FMT_SBGGR8, {only(16, 8)})}).isEmpty());
    listNativeOnlyCameras(true);
    EXPECT_EQ(videoDevices().size(), 1);
    listNativeOnlyCameras(false);
    EXPECT_TRUE(videoDevices().isEmpty());
}

TEST_F(NativeOnly, CameraWithoutAnyFormatIsNone) {
    EXPECT_TRUE(plugged({}).isEmpty());
}

TEST_F(NativeOnly, FramesGoToWhoTakesTheirBytesAndToNobodyElse) {
    device.padding = 4;
    ASSERT_FALSE(plugged({raw(V4L2_PIX_FMT_SBGGR8, {only(16, 8)})}).isEmpty());
    const Capture capture = capturing();
    OVideoFrameReader bytes(capture), pictures(capture);
    for (uint32_t number = 1; number <= 3; ++number) {
        FrameScript fed = numbered((16 + 4) * 8);
        fed.bytes[0] = static_cast<uint8_t>(number);
        ASSERT_TRUE(kernel->feed(path, fed));
        OVideoNativeFrame frame;
        ASSERT_EQ(nextNativeFrame(bytes, frame, LONG), 1);
        EXPECT_EQ(utf8Of(frame.format()), "BA81");
        EXPECT_EQ(frame.width(), 16);
        EXPECT_EQ(frame.height(), 8);
        EXPECT_EQ(frame.planes(), 1);
        EXPECT_EQ(bytesOf(frame), fed.bytes);
        EXPECT_EQ(frame.facts().number(), number);
    }
    EXPECT_TRUE(mentions(reason(pictures), "No picture can be made of BA81"));
    std::vector<uint8_t> bgra(16 * 8 * 4);
    QString why;
    EXPECT_EQ(nextVideoFrame(pictures, bgra.data(), bgra.size(), 64, OVIDEO_PIXELS_BGRA, LONG, nullptr, &why),
              -1);
    EXPECT_TRUE(mentions(utf8Of(why), "native frames"));
    VideoFrame polled;
    polled.formatId = 0;
    capture->selfVideoFrame(polled);
    EXPECT_EQ(polled.formatId, 0) << "nothing comes to who polls";
    EXPECT_TRUE(OVideoCameraState(identifier).statistics().dropped.isEmpty())
        << "nobody has tried to convert it";
    OVideoNativeFrame still;
    EXPECT_EQ(nextNativeFrame(pictures, still, LONG), 1) << "the reader has not had it yet";
}

TEST_F(NativeOnly, BytesOfACompressedVideoAreAsManyAsCame) {
    ASSERT_FALSE(plugged({raw(V4L2_PIX_FMT_H264, {only(16, 8)})}).isEmpty());
    const Capture capture = capturing();
    OVideoFrameReader reader(capture);
    OVideoNativeFrame frame;
    for (const size_t size : {100u, 3u, 77u}) {
        const FrameScript fed = numbered(size);
        ASSERT_TRUE(kernel->feed(path, fed));
        ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
        EXPECT_EQ(bytesOf(frame), fed.bytes);
    }
    EXPECT_FALSE(OVideoCameraState(identifier).grantedMode().hasPicture());
}

TEST_F(NativeOnly, EmptyFrameIsDroppedAndCounted) {
    ASSERT_FALSE(plugged({raw(V4L2_PIX_FMT_H264, {only(16, 8)})}).isEmpty());
    const Capture capture = capturing();
    OVideoFrameReader reader(capture);
    FrameScript empty;
    empty.bytesUsed = 0;
    ASSERT_TRUE(kernel->feed(path, empty));
    ASSERT_TRUE(kernel->feed(path, numbered(9)));
    OVideoNativeFrame frame;
    ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
    EXPECT_EQ(frame.bytesUsed(), 9u);
    EXPECT_EQ(OVideoCameraState(identifier).statistics().dropped.value(QString::fromLatin1("empty")), 1u);
}

TEST_F(NativeOnly, FormatIsTakenFromACameraThatHasPicturesWhenItIsWishedFor) {
    ASSERT_FALSE(
        plugged({raw(V4L2_PIX_FMT_YUYV, {only(16, 8)}), raw(V4L2_PIX_FMT_SBGGR8, {only(16, 8)})}).isEmpty());
    {
        const Capture capture = capturing();
        EXPECT_EQ(kernel->format(path).pixelformat, V4L2_PIX_FMT_YUYV);
    }
    listNativeOnlyCameras(false); // the wish is enough
    OVideoMode bayer;
    bayer.setFormat(QString::fromLatin1("BA81"));
    ASSERT_TRUE(requestVideoMode(identifier, bayer));
    const Capture capture = capturing();
    OVideoFrameReader reader(capture);
    const FrameScript fed = numbered(16 * 8);
    ASSERT_TRUE(kernel->feed(path, fed));
    OVideoNativeFrame frame;
    ASSERT_EQ(nextNativeFrame(reader, frame, LONG), 1);
    EXPECT_EQ(bytesOf(frame), fed.bytes);
    EXPECT_EQ(utf8Of(OVideoCameraState(identifier).grantedMode().format()), "BA81");
}

TEST_F(NativeOnly, FramesThatAreHeldWhenTheStreamStopsKeepTheirBytes) {
    ASSERT_FALSE(plugged({raw(V4L2_PIX_FMT_SBGGR8, {only(16, 8)})}).isEmpty());
    const auto camera = cameras::attachedCamera(utf8Of(identifier));
    const auto sink = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->open());
    ASSERT_FALSE(camera->start(16, 8, sink));
    const FrameScript fed = numbered(16 * 8);
    ASSERT_TRUE(kernel->feed(path, fed));
    ASSERT_TRUE(sink->waitForFrames(1));
    const auto held = sink->newest();
    camera->stop(sink);
    camera->close();
    sink->drop();
    std::vector<uint8_t> shown;
    EXPECT_TRUE(held->show([&](const cameras::pixels::Picture& picture) {
        shown.assign(picture.planes[0].data, picture.planes[0].data + picture.planes[0].bytes);
    }));
    EXPECT_EQ(shown, fed.bytes);
    std::vector<uint8_t> bgra(16 * 8 * 4);
    EXPECT_FALSE(held->convert(bgra.data(), 16, 8, 64));
}
