// Which nodes are cameras, and which calls it takes to find out.
#include "unit/platform/cameras/v4l2/listing_fixture.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace ostrel::tests {

using cameras::v4l2::NodeFacts;

namespace {

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
    EXPECT_EQ(list[0]->identifier(), "bus-usb-0000:00:14.0-2-Some%20Camera");
    EXPECT_EQ(list[0]->displayName(), "Some Camera");
}

TEST_F(ListingTest, OpensNoUsbCameraThatUdevDescribes) {
    discovery->add(described("/dev/video0", ":capture:", "p-1"));
    discovery->add(described("/dev/video1", ":", "p-1")); // metadata
    discovery->add(described("/dev/video2", ":video_output:", "p-2"));
    discovery->add(described("/dev/video3", ":capture:video_output:", "p-3"));
    EXPECT_EQ(identifiers(), (List{"usb-046d:0825-at-p-1:00"}));
    EXPECT_EQ(provider->list()[0]->displayName(), "HD Webcam");
    EXPECT_EQ(kernel->calls(OPEN), 0);
}

TEST_F(ListingTest, OpensOtherHardwareOnceAndNotForEachListing) {
    addBare("/dev/video0", camera());
    DeviceScript metadata = camera();
    metadata.capabilities = V4L2_CAP_META_CAPTURE;
    addBare("/dev/video1", metadata);
    provider->list();
    provider->list();
    EXPECT_EQ(provider->list().size(), 1u);
    EXPECT_EQ(kernel->calls(OPEN), 2);
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

TEST_F(ListingTest, AnIdentifierNeverNamesTheOtherOfTwoCamerasWithOneSerialNumber) {
    NodeFacts a = described("/dev/video0", ":capture:", "p-1"),
              b = described("/dev/video2", ":capture:", "p-2");
    for (const char* serial : {"SN0001", ""}) {
        a.serial = b.serial = serial;
        const std::string model = std::string("usb-046d:0825") + (*serial ? "-SN0001" : "");
        const std::string ofA = model + "-at-p-1:00", ofB = model + "-at-p-2:00";
        // Who is plugged in, step by step. The program starts anew with each line.
        for (const std::string plugged :
             {"A AB B AB A", "B AB A AB B", "AB A AB B AB", "BA B A BA", "A B A"}) {
            provider = cameras::v4l2::makeProvider(kernel, discovery);
            for (size_t at = 0; at < plugged.size();) {
                discovery->remove(a.path);
                discovery->remove(b.path);
                List expected;
                for (; at < plugged.size() && plugged[at] != ' '; ++at) {
                    discovery->add(plugged[at] == 'A' ? a : b);
                    expected.push_back(plugged[at] == 'A' ? ofA : ofB);
                }
                EXPECT_EQ(identifiers(), expected) << plugged << " up to " << at;
                ++at;
            }
        }
    }
}

TEST_F(ListingTest, ListsTwoNodesOfWhichAllIsTheSameAsOneCamera) {
    addBare("/dev/video0", camera());
    addBare("/dev/video1", camera());
    EXPECT_EQ(identifiers().size(), 1u);
    EXPECT_EQ(reason("/dev/video0"), "camera");
    EXPECT_EQ(reason("/dev/video1"), "is by all that is known of it the same camera as /dev/video0");
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
    kernel->failNext(OPEN, EACCES, 2);
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
    discovery->add("/dev/video9"); // not in the kernel any more
    addBare("/dev/video0", camera());
    kernel->failNext(VIDIOC_QUERYCAP, ENODEV);
    EXPECT_EQ(identifiers(), List());
    EXPECT_EQ(identifiers().size(), 1u);
}

namespace {

// A folder as a container's /dev may be. Devices that every machine has stand in for cameras.
class DeviceFolder : public testing::Test {
protected:
    const std::string folder = testing::TempDir() + "dev" + std::to_string(::getpid());
    const std::unique_ptr<cameras::v4l2::Discovery> discovery = cameras::v4l2::makeDiscovery(folder);

    DeviceFolder() { std::filesystem::create_directory(folder); }
    ~DeviceFolder() override { std::filesystem::remove_all(folder); }

    std::string link(const std::string& name, const std::string& device) {
        std::filesystem::remove(folder + '/' + name);
        std::filesystem::create_symlink(device, folder + '/' + name);
        return folder + '/' + name;
    }
};

} // namespace

TEST_F(DeviceFolder, KnowsADeviceByItsNumberWhateverItsNodeIsCalled) {
    const std::string path = link("video7", "/dev/null");
    const std::vector<NodeFacts> nodes = discovery->nodes();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].path, path);
    EXPECT_TRUE(nodes[0].isVirtual); // as /sys/dev/char/1:3 says; there is no /sys/class/video4linux/video7
    EXPECT_EQ(nodes[0].generation, discovery->generation("/dev/null"));
}

TEST_F(DeviceFolder, NoticesThatAnotherDeviceHasTakenTheNode) {
    const std::string path = link("video0", "/dev/null");
    const std::string before = discovery->generation(path);
    link("video0", "/dev/zero");
    EXPECT_NE(discovery->generation(path), before);
    EXPECT_NE(discovery->generation(path), "");
    link("video0", "/nowhere");
    EXPECT_EQ(discovery->generation(path), "");
    EXPECT_TRUE(discovery->nodes().empty());
}

TEST_F(DeviceFolder, ListsADeviceWithSeveralNodesOnceAndInTheOrderOfTheirNumbers) {
    link("video10", "/dev/null");
    link("video9", "/dev/zero");
    link("video2", "/dev/null");
    link("vbi0", "/dev/full");
    link("video", "/dev/full");
    std::vector<std::string> paths;
    for (const NodeFacts& facts : discovery->nodes())
        paths.push_back(facts.path.substr(folder.size()));
    EXPECT_EQ(paths, (List{"/video2", "/video9"}));
}

TEST_F(DeviceFolder, KnowsWhatMayBeOpened) {
    EXPECT_TRUE(discovery->mayBeOpened(link("video0", "/dev/null")));
    EXPECT_FALSE(discovery->mayBeOpened(link("video0", "/nowhere")));
}

TEST(SystemDiscovery, DescribesWhateverThisMachineHas) {
    const auto discovery = cameras::v4l2::makeDiscovery();
    for (const NodeFacts& facts : discovery->nodes()) {
        EXPECT_EQ(facts.path.rfind("/dev/video", 0), 0u);
        EXPECT_EQ(facts.generation, discovery->generation(facts.path));
    }
    EXPECT_EQ(discovery->generation("/dev/video-that-is-not-there"), "");
    EXPECT_EQ(discovery->generation("/dev"), "");
}

} // namespace ostrel::tests
