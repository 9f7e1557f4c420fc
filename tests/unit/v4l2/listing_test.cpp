// Which nodes are cameras, and which calls it takes to find out.
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "unit/v4l2/camera_fixture.h"

namespace ostrel {
namespace tests {

using cameras::Camera;
using cameras::v4l2::NodeFacts;

namespace {

class ListingTest : public testing::Test {
protected:
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    std::shared_ptr<cameras::CameraProvider> provider = cameras::v4l2::makeProvider(kernel, discovery);

    static DeviceScript camera() {
        DeviceScript device;
        device.formats.push_back(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}));
        return device;
    }
    // A node of which only its place in /dev is known.
    void addBare(const std::string& path, const DeviceScript& device) {
        kernel->plug(path, device);
        NodeFacts facts;
        facts.path = path;
        discovery->add(facts);
    }
    static NodeFacts described(const std::string& path, const std::string& capabilities,
                               const std::string& port) {
        NodeFacts facts;
        facts.path = path;
        facts.described = true;
        facts.capabilities = capabilities;
        facts.isUsb = true;
        facts.model = "046d:0825";
        facts.port = port;
        facts.interface = "00";
        facts.name = "HD Webcam";
        facts.driver = "uvcvideo";
        return facts;
    }
    std::vector<std::string> identifiers() {
        std::vector<std::string> result;
        for (const auto& one : provider->list())
            result.push_back(one->identifier());
        return result;
    }
    void TearDown() override {
        EXPECT_EQ(kernel->openDescriptors(), 0);
        EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
    }
};

using List = std::vector<std::string>;

} // namespace

TEST_F(ListingTest, IsEmptyWithoutNodes) {
    EXPECT_TRUE(provider->list().empty());
}

TEST_F(ListingTest, NeedsNoMoreThanTheNodeInDev) {
    DeviceScript device = camera();
    device.card = "Some Camera";
    device.busInfo = "usb-0000:00:14.0-2";
    addBare("/dev/video0", device);
    const auto list = provider->list();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]->identifier(), "bus-usb-0000:00:14.0-2");
    EXPECT_EQ(list[0]->displayName(), "Some Camera");
}

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
    EXPECT_EQ(identifiers(), (List{"bus-old"}));
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

TEST_F(ListingTest, ListsMultiplanarDevicesWithAFormatOfOnePlane) {
    DeviceScript device = camera();
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.busInfo = "mp";
    addBare("/dev/video0", device);
    device.formats = {raw(V4L2_PIX_FMT_NV12M, {only(640, 480)})};
    addBare("/dev/video1", device);
    EXPECT_EQ(identifiers(), (List{"bus-mp"}));
}

TEST_F(ListingTest, OpensNoUsbCameraThatUdevDescribes) {
    discovery->add(described("/dev/video0", ":capture:", "p-1"));
    discovery->add(described("/dev/video1", ":", "p-1")); // metadata
    discovery->add(described("/dev/video2", ":video_output:", "p-2"));
    discovery->add(described("/dev/video3", ":capture:video_output:", "p-3"));
    EXPECT_EQ(identifiers(), (List{"usb-046d:0825-at-p-1:00"}));
    EXPECT_EQ(provider->list()[0]->displayName(), "HD Webcam");
    EXPECT_EQ(kernel->calls(kOpen), 0);
}

TEST_F(ListingTest, OpensOtherHardwareOnceAndNotForEachListing) {
    addBare("/dev/video0", camera());
    DeviceScript metadata = camera();
    metadata.capabilities = V4L2_CAP_META_CAPTURE;
    addBare("/dev/video1", metadata);
    provider->list();
    provider->list();
    EXPECT_EQ(provider->list().size(), 1u);
    EXPECT_EQ(kernel->calls(kOpen), 2);
}

TEST_F(ListingTest, AsksVirtualDevicesEachTimeSinceTheyChange) {
    DeviceScript loopback = camera();
    loopback.capabilities = V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING;
    kernel->plug("/dev/video0", loopback);
    NodeFacts facts;
    facts.path = "/dev/video0";
    facts.isVirtual = true;
    facts.described = true; // when nobody fed it yet
    facts.capabilities = ":video_output:";
    discovery->add(facts);
    EXPECT_TRUE(provider->list().empty());
    loopback.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    kernel->plug("/dev/video0", loopback);
    EXPECT_EQ(provider->list().size(), 1u);
}

TEST_F(ListingTest, ListsEachCaptureNodeOfACamera) {
    NodeFacts colour = described("/dev/video0", ":capture:", "p-1"), infrared = colour;
    infrared.path = "/dev/video2";
    infrared.interface = "02";
    discovery->add(colour);
    discovery->add(infrared);
    EXPECT_EQ(identifiers(), (List{"usb-046d:0825-at-p-1:00", "usb-046d:0825-at-p-1:02"}));
}

TEST_F(ListingTest, ListsTwoCamerasOfOneModelWithTheSameOrNoSerialNumber) {
    for (const char* serial : {"0001", ""}) {
        discovery = std::make_shared<ScriptedDiscovery>();
        provider = cameras::v4l2::makeProvider(kernel, discovery);
        NodeFacts a = described("/dev/video0", ":capture:", "p-1"),
                  b = described("/dev/video2", ":capture:", "p-2");
        a.serial = b.serial = serial;
        discovery->add(a);
        discovery->add(b);
        EXPECT_EQ(identifiers(), (List{"usb-046d:0825-at-p-1:00", "usb-046d:0825-at-p-2:00"}));
    }
}

TEST_F(ListingTest, LeavesDuplicateNamesAlone) {
    discovery->add(described("/dev/video0", ":capture:", "p-1"));
    discovery->add(described("/dev/video2", ":capture:", "p-2"));
    const auto list = provider->list();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]->displayName(), list[1]->displayName());
}

TEST_F(ListingTest, MakesNamesValid) {
    NodeFacts broken = described("/dev/video0", ":capture:", "p-1");
    broken.name = "Cam\xE9ra";
    NodeFacts empty = described("/dev/video1", ":capture:", "p-2");
    empty.name = "";
    discovery->add(broken);
    discovery->add(empty);
    const auto list = provider->list();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0]->displayName(), "Cam\xEF\xBF\xBDra");
    EXPECT_EQ(list[1]->displayName(), "uvcvideo");
}

TEST_F(ListingTest, ListsACameraThatMayNotBeOpened) {
    addBare("/dev/video0", camera());
    kernel->failNext(kOpen, EACCES, 2);
    const auto list = provider->list();
    ASSERT_EQ(list.size(), 1u);
    const cameras::Error error = list[0]->open();
    EXPECT_EQ(error.code, EACCES);
}

TEST_F(ListingTest, GivesTheSameObjectWhileTheCameraStays) {
    addBare("/dev/video0", camera());
    EXPECT_EQ(provider->list()[0], provider->list()[0]);
}

TEST_F(ListingTest, AReplugGivesANewObjectUnderTheSameIdentifier) {
    addBare("/dev/video0", camera());
    const auto before = provider->list()[0];
    EXPECT_TRUE(before->attached());
    discovery->remove("/dev/video0");
    kernel->unplug("/dev/video0");
    EXPECT_TRUE(provider->list().empty());
    EXPECT_FALSE(before->attached());
    addBare("/dev/video0", camera());
    const auto after = provider->list()[0];
    EXPECT_NE(after, before);
    EXPECT_EQ(after->identifier(), before->identifier());
    EXPECT_FALSE(before->attached()); // it has taken its node, but is another device
    EXPECT_EQ(before->open().code, ENODEV);
    EXPECT_FALSE(after->open());
    after->close();
}

TEST_F(ListingTest, SurvivesNodesThatVanishMeanwhile) {
    NodeFacts facts;
    facts.path = "/dev/video9"; // not in the kernel any more
    discovery->add(facts);
    addBare("/dev/video0", camera());
    kernel->failNext(VIDIOC_QUERYCAP, ENODEV);
    EXPECT_EQ(identifiers(), List());
    EXPECT_EQ(identifiers().size(), 1u);
}

TEST(SystemDiscovery, DescribesWhateverThisMachineHas) {
    const auto discovery = cameras::v4l2::makeDiscovery();
    for (const NodeFacts& facts : discovery->nodes()) {
        EXPECT_EQ(facts.path.rfind("/dev/video", 0), 0u);
        EXPECT_EQ(facts.incarnation, discovery->incarnation(facts.path));
    }
    EXPECT_EQ(discovery->incarnation("/dev/video-that-is-not-there"), "");
    EXPECT_EQ(discovery->incarnation("/dev"), "");
}

} // namespace tests
} // namespace ostrel
