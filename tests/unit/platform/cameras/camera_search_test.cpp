// Which camera a text means.
#include "platform/cameras/camera_search.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel::tests {

using cameras::FoundCamera;
using cameras::NamedCamera;
using cameras::NodeReport;

namespace {

// Devices that every machine has stand in for cameras, so that there are paths to them.
uint64_t numberOf(const char* path) {
    struct stat file = {};
    return ::stat(path, &file) == 0 ? file.st_rdev : 0;
}

const std::string ID_A = "usb-046d:0825-SN0001-at-0000:00:14.0-usb-1:00";
const std::string ID_B = "usb-046d:0825-SN0001-at-0000:00:14.0-usb-2:00";
const std::string ID_C = "usb-046d:0825-C33-at-0000:00:14.0-usb-3:00";

class CameraSearchTest : public testing::Test {
protected:
    std::vector<NamedCamera> cameras;
    std::vector<NodeReport> nodes;

    // A USB camera, plugged in.
    void plug(const std::string& identifier, const std::string& name, const std::string& serial) {
        cameras.push_back({identifier, name});
        NodeReport node;
        node.path = "/dev/video" + std::to_string(nodes.size());
        node.name = name;
        node.identifier = identifier;
        node.formerIdentifiers = {"usb-046d:0825-" + serial + ":00"};
        node.inAnyPort = {"usb-046d:0825-" + serial + "-at-", ":00"};
        nodes.push_back(node);
    }
    void plugAll() {
        plug(ID_A, "Webcam", "SN0001");
        plug(ID_B, "Webcam", "SN0001");
        plug(ID_C, "Infrared", "C33");
    }
    std::string find(const std::string& text) const {
        const FoundCamera found = findCamera(text, cameras, nodes);
        EXPECT_EQ(found.identifier.empty(), !found.why.empty());
        return found.identifier;
    }
    std::string why(const std::string& text) const { return findCamera(text, cameras, nodes).why; }
};

} // namespace

TEST_F(CameraSearchTest, FindsTheIdentifierItself) {
    plugAll();
    for (const std::string& identifier : {ID_A, ID_B, ID_C})
        EXPECT_EQ(find(identifier), identifier);
}

TEST_F(CameraSearchTest, IgnoresLetterCaseOnlyWhereNoIdentifierIsExactlyTheText) {
    cameras = {{"Cam", "1"}, {"cam", "2"}};
    EXPECT_EQ(find("cam"), "cam");
    EXPECT_EQ(why("CAM"), "\"CAM\" fits several cameras: 1 (Cam), 2 (cam)");
    cameras.pop_back();
    EXPECT_EQ(find("cAM"), "Cam");
    cameras = {{"@A-Z[", "1"}};
    EXPECT_EQ(find("@a-z["), "@A-Z[");
    EXPECT_EQ(find("`a-z{"), ""); // no letters, though as far apart
}

TEST_F(CameraSearchTest, FindsTheIdentifierOfTheFirstRelease) {
    plugAll();
    EXPECT_EQ(find("usb-046d:0825-C33:00"), ID_C);
    EXPECT_EQ(find("usb-046d:0825-C33:02"), ""); // another interface
}

TEST_F(CameraSearchTest, FindsTheIdentifierThatTheCameraHadInAnotherPort) {
    plugAll();
    EXPECT_EQ(find("usb-046d:0825-C33-at-0000:00:14.0-usb-7.4:00"), ID_C);
    EXPECT_EQ(find("usb-046d:0825-C33-at-0000:00:14.0-usb-7.4:02"), "");
    EXPECT_EQ(find("usb-046d:0825-C3-at-0000:00:14.0-usb-7.4:00"), ""); // another serial number
}

TEST_F(CameraSearchTest, ChoosesNoneOfTwoCamerasThatFit) {
    plugAll();
    const std::string both = " fits several cameras: Webcam (" + ID_A + "), Webcam (" + ID_B + ')';
    for (const std::string text :
         {"usb-046d:0825-SN0001:00", "usb-046d:0825-SN0001-at-x-usb-9:00", "Webcam"}) {
        EXPECT_EQ(find(text), "");
        EXPECT_EQ(why(text), '"' + text + '"' + both);
    }
}

TEST_F(CameraSearchTest, FindsANameThatOnlyOneCameraBears) {
    plugAll();
    EXPECT_EQ(find("Infrared"), ID_C);
    EXPECT_EQ(find("Infra"), "");
    EXPECT_EQ(find("infrared"), "");
}

TEST_F(CameraSearchTest, AnIdentifierComesBeforeAnotherCamerasName) {
    plug(ID_A, ID_C, "A");
    plug(ID_C, "Infrared", "C33");
    EXPECT_EQ(find(ID_C), ID_C);
}

TEST_F(CameraSearchTest, FindsTheNodeAndEveryLinkToIt) {
    plugAll();
    nodes[1].device = numberOf("/dev/null");
    nodes[2].device = numberOf("/dev/zero");
    EXPECT_EQ(find("/dev/video1"), ID_B);
    const std::string link = testing::TempDir() + "usb-Webcam-index0" + std::to_string(::getpid());
    ASSERT_EQ(::symlink("/dev/zero", link.c_str()), 0);
    EXPECT_EQ(find(link), ID_C);
    std::remove(link.c_str());
}

TEST_F(CameraSearchTest, SaysWhyThereIsNoCameraAtAPath) {
    plugAll();
    nodes[1].identifier.clear();
    nodes[1].reason = "is a touch pad";
    nodes[0].device = nodes[2].device = 0;
    EXPECT_EQ(why("/dev/video1"), "/dev/video1 is no camera: is a touch pad");
    EXPECT_EQ(why("/dev/video-that-is-not-there"), "there is no /dev/video-that-is-not-there");
    EXPECT_EQ(why("/dev/null"), "/dev/null is no video device");
    EXPECT_EQ(why("/"), "/ is no video device");
}

TEST_F(CameraSearchTest, SaysThatNothingFits) {
    plugAll();
    EXPECT_EQ(why("usb-1"), "no attached camera fits \"usb-1\"");
    EXPECT_EQ(why(""), "no attached camera fits \"\"");
}

} // namespace ostrel::tests
