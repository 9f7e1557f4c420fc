// Which nodes are cameras, and what is said of those that are none.
#include "platform/cameras/unusable_formats.h"
#include "platform/cameras/v4l2/examination.h"
#include "unit/platform/cameras/v4l2/listing_fixture.h"

namespace ostrel::tests {

using cameras::v4l2::NodeFacts;

namespace {

using List = std::vector<std::string>;
const char* const UNFED = "no program gives it pictures at present";

} // namespace

TEST_F(ListingTest, LeavesOutWhatIsNoCamera) {
    const uint32_t none[] = {V4L2_CAP_META_CAPTURE,
                             V4L2_CAP_VIDEO_OUTPUT,
                             V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_OUTPUT,
                             V4L2_CAP_VIDEO_M2M,
                             V4L2_CAP_VIDEO_M2M_MPLANE,
                             V4L2_CAP_VIDEO_OVERLAY,
                             V4L2_CAP_VBI_CAPTURE,
                             V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_TOUCH};
    int number = 0;
    for (const uint32_t capabilities : none) {
        DeviceScript device = camera();
        device.capabilities = capabilities | V4L2_CAP_STREAMING;
        addBare("/dev/video" + std::to_string(number++), device);
    }
    EXPECT_EQ(identifiers(), List());
}

TEST_F(ListingTest, AsksTheNodeAndNotTheWholeDeviceWhatItCanDo) {
    DeviceScript metadata = camera();
    metadata.wholeDevice = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    metadata.capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    addBare("/dev/video1", metadata);
    DeviceScript old = camera();
    old.hasDeviceCaps = false;
    old.busInfo = "old";
    addBare("/dev/video2", old);
    EXPECT_EQ(identifiers(), (List{"bus-old-Scripted%20Camera"}));
}

TEST_F(ListingTest, LeavesOutNodesWithoutAUsableFormat) {
    DeviceScript device = camera();
    device.formats.clear();
    addBare("/dev/video0", device);
    device.formats.push_back(raw(V4L2_PIX_FMT_H264, {only(640, 480)}));
    device.formats.push_back(raw(V4L2_PIX_FMT_SBGGR8, {only(640, 480)}));
    addBare("/dev/video1", device);
    EXPECT_EQ(identifiers(), List());
}

TEST_F(ListingTest, ListsMultiplanarDevicesWithFormatsOfOnePlaneOrSeveral) {
    DeviceScript device = camera();
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.busInfo = "mp";
    addBare("/dev/video0", device);
    device.busInfo = "several";
    device.formats = {raw(V4L2_PIX_FMT_NV12M, {only(640, 480)})};
    addBare("/dev/video1", device);
    device.busInfo = "none";
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING; // by which no such format can be had
    addBare("/dev/video2", device);
    EXPECT_EQ(identifiers(), (List{"bus-mp-Scripted%20Camera", "bus-several-Scripted%20Camera"}));
}

TEST_F(ListingTest, LeavesOutTheNodesOfTheMediaControllerAndSaysWhatWouldHelp) {
    DeviceScript part = camera();
    part.driver = "isys";
    part.capabilities = 0x24200001; // as the drivers of Intel's IPU6 and IPU7 say, some 48 times
    for (int i = 0; i < 48; ++i)
        addBare("/dev/video" + std::to_string(i), part);
    EXPECT_EQ(identifiers(), List());
    EXPECT_EQ(reason("/dev/video47"),
              "is a part of a camera that other programs must set up (media controller): "
              "needs libcamera, for example through PipeWire");
}

TEST_F(ListingTest, LeavesOutImageProcessorsThatLookLikeCameras) {
    for (const char* driver : {"bcm2835-isp", "pispbe", "ipu3-imgu"}) {
        DeviceScript processor = camera();
        processor.driver = driver;
        addBare("/dev/video13", processor);
        EXPECT_EQ(identifiers(), List());
        EXPECT_EQ(reason("/dev/video13"), "processes pictures of other devices");
        discovery->remove("/dev/video13");
    }
}

TEST_F(ListingTest, ListsALoopbackDeviceOfEitherKindWhileItIsFed) {
    struct {
        uint32_t fed, unfed;
    } const kinds[] = {{0x05208003, 0x05208003},  // its default: says that it does everything
                       {0x05200001, 0x05200002}}; // exclusive_caps=1
    for (const auto& kind : kinds) {
        DeviceScript loopback = camera();
        loopback.driver = "v4l2 loopback";
        loopback.busInfo = "platform:v4l2loopback-000";
        NodeFacts facts;
        facts.path = "/dev/video0";
        facts.isVirtual = true;
        discovery->remove(facts.path);
        discovery->add(facts);
        for (const bool fed : {false, true, false, true}) {
            DeviceScript now = loopback;
            now.capabilities = fed ? kind.fed : kind.unfed;
            if (!fed)
                now.formats.clear();
            kernel->plug(facts.path, now);
            EXPECT_EQ(identifiers(), fed ? List{"bus-platform:v4l2loopback-000"} : List());
            EXPECT_EQ(reason(facts.path), fed ? "camera" : UNFED);
        }
    }
}

TEST_F(ListingTest, LeavesOutALoopbackDeviceThatSysfsCallsUnfedThoughItListsFormats) {
    DeviceScript loopback = camera();
    loopback.driver = "v4l2 loopback";
    loopback.capabilities = 0x05208003;
    kernel->plug("/dev/video0", loopback);
    NodeFacts facts;
    facts.path = "/dev/video0";
    facts.isVirtual = facts.isUnfed = true;
    discovery->add(facts);
    EXPECT_EQ(identifiers(), List());
    EXPECT_EQ(reason("/dev/video0"), UNFED);
}

TEST_F(ListingTest, SaysOfEachNodeWhyItIsNoCamera) {
    const struct {
        uint32_t capabilities;
        const char* reason;
    } kinds[] = {
        {V4L2_CAP_META_CAPTURE, "delivers data about pictures, not pictures (metadata)"},
        {V4L2_CAP_META_OUTPUT, "delivers data about pictures, not pictures (metadata)"},
        {V4L2_CAP_VIDEO_OUTPUT, "shows pictures that programs give it (output)"},
        {V4L2_CAP_VIDEO_OUTPUT_MPLANE, "shows pictures that programs give it (output)"},
        {V4L2_CAP_VIDEO_M2M, "converts pictures that programs give it (codec)"},
        {V4L2_CAP_VIDEO_M2M_MPLANE, "converts pictures that programs give it (codec)"},
        {V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_TOUCH, "is a touch pad"},
        {V4L2_CAP_VBI_CAPTURE, "delivers no pictures"},
    };
    for (const auto& kind : kinds) {
        DeviceScript device = camera();
        device.capabilities = kind.capabilities | V4L2_CAP_STREAMING;
        addBare("/dev/video0", device);
        EXPECT_EQ(reason("/dev/video0"), kind.reason);
        discovery->remove("/dev/video0");
    }
    DeviceScript reader = camera();
    reader.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_READWRITE;
    addBare("/dev/video0", reader);
    EXPECT_EQ(reason("/dev/video0"), "delivers no streams (only single pictures, by read)");
}

TEST_F(ListingTest, SaysOfUsbNodesWhyTheyAreNoCameraWithoutOpeningThem) {
    discovery->add(described("/dev/video0", ":capture:", "p-1"));
    discovery->add(described("/dev/video1", ":", "p-1"));
    discovery->add(described("/dev/video2", ":capture:video_output:", "p-2"));
    EXPECT_EQ(reason("/dev/video0"), "camera");
    EXPECT_EQ(reason("/dev/video1"), "delivers no pictures (on most cameras, metadata)");
    EXPECT_EQ(reason("/dev/video2"), "shows pictures that programs give it (output)");
    EXPECT_EQ(kernel->calls(OPEN), 0);
}

TEST_F(ListingTest, SaysWhyANodeCannotBeAsked) {
    addBare("/dev/video0", camera());
    kernel->failNext(OPEN, EPERM);
    EXPECT_EQ(reason("/dev/video0"),
              "The container or service that this program runs in may not use /dev/video0: "
              "give it the device (--device for a container, DeviceAllow= for a service)");
    kernel->failNext(OPEN, ENODEV);
    EXPECT_EQ(reason("/dev/video0"), "/dev/video0 was unplugged");
}

TEST_F(ListingTest, NamesTheFormatsOfANodeThatOffersNoUsableOne) {
    DeviceScript device = camera();
    device.formats = {raw(V4L2_PIX_FMT_SBGGR8, {only(640, 480)}), raw(V4L2_PIX_FMT_H264, {only(640, 480)})};
    addBare("/dev/video0", device);
    EXPECT_EQ(reason("/dev/video0"),
              "offers only BA81 (raw Bayer), H264 (compressed video, which is not decoded "
              "here)");
}

TEST(UnusableFormats, AreToldApart) {
    using cameras::unusableFormats;
    EXPECT_EQ(unusableFormats({V4L2_PIX_FMT_SBGGR8}),
              "offers only BA81 (raw Bayer): needs libcamera, for example through PipeWire");
    EXPECT_EQ(unusableFormats({V4L2_PIX_FMT_SRGGB10P, V4L2_PIX_FMT_SGRBG12}),
              "offers only pRAA, BA12 (raw Bayer): needs libcamera, for example through PipeWire");
    EXPECT_EQ(unusableFormats({V4L2_PIX_FMT_Z16}), "offers only Z16 (depth)");
    EXPECT_EQ(unusableFormats({V4L2_PIX_FMT_H264}),
              "offers only H264 (compressed video, which is not decoded here)");
    for (const uint32_t format : {V4L2_PIX_FMT_PJPG, V4L2_PIX_FMT_SN9C10X})
        EXPECT_NE(unusableFormats({format}).find("(its maker's own format, which is not decoded here)"),
                  std::string::npos);
    EXPECT_EQ(unusableFormats({V4L2_PIX_FMT_Y10}), "offers only Y10");
    EXPECT_EQ(unusableFormats({}), "offers no pixel format");
}

} // namespace ostrel::tests
