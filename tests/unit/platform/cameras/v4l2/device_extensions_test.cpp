// The public extensions that tell of devices, over a machine of the test's making.
#include "support/machine.h"
#include "unit/platform/cameras/v4l2/listing_fixture.h"

#include "base/qt_text.h"

#include <ostrel/device_details.h>
#include <ostrel/device_id.h>
#include <ostrel/virtual_camera.h>

namespace ostrel::tests {

namespace {

class DeviceExtensions : public ListingTest {
protected:
    const Machine machine{provider};

    static std::string idOf(const char* text, std::string* why = nullptr) {
        QString reason(QLatin1String("stale"));
        const QString found = videoDeviceID(QString::fromUtf8(text), &reason);
        if (why)
            *why = reason.toUtf8().constData();
        EXPECT_EQ(videoDeviceID(QString::fromUtf8(text)), found);
        return found.toUtf8().constData();
    }
    void plugWebcam(const std::string& path, const std::string& serial, const std::string& port) {
        cameras::v4l2::NodeFacts facts = described(path, ":capture:", port);
        facts.serial = serial;
        discovery->add(facts);
    }
};

} // namespace

TEST_F(DeviceExtensions, TurnWhatPeopleHaveSavedIntoTodaysIdentifier) {
    plugWebcam("/dev/video0", "A1", "p-1");
    plugWebcam("/dev/video2", "", "p-2");
    const std::string a = "usb-046d:0825-A1-at-p-1:00";
    EXPECT_EQ(idOf(a.c_str()), a);
    EXPECT_EQ(idOf("USB-046D:0825-a1-at-p-1:00"), a);
    EXPECT_EQ(idOf("usb-046d:0825-A1:00"), a);          // 1.0.0: the only one with this serial number
    EXPECT_EQ(idOf("usb-046d:0825-at-p-1:00"), a);      // 1.0.0: one of several
    EXPECT_EQ(idOf("usb-046d:0825-A1-at-p-9.1:00"), a); // in another port
    EXPECT_EQ(idOf("/dev/video0"), a);
    EXPECT_EQ(idOf("/dev/video2"), "usb-046d:0825-at-p-2:00");
    EXPECT_EQ(idOf("usb-046d:0825-at-p-9.1:00"), ""); // nothing tells it from others of its model
}

TEST_F(DeviceExtensions, TurnWhatPeopleHaveSavedOfOtherHardwareIntoTodaysIdentifier) {
    kernel->plug("/dev/video0", cameraWith("PCI:0000:03:00.0"));
    cameras::v4l2::NodeFacts facts;
    facts.path = "/dev/video0";
    facts.port = "0000:03:00.0";
    facts.model = "14f1:8880";
    discovery->add(facts);
    for (const char* text : {"bus-PCI:0000:03:00.0", "port-0000:03:00.0", "Scripted Camera"})
        EXPECT_EQ(idOf(text), "bus-PCI:0000:03:00.0-14f1:8880") << text;
}

TEST_F(DeviceExtensions, SayWhyTheyFindNoCamera) {
    plugWebcam("/dev/video0", "", "p-1");
    plugWebcam("/dev/video2", "", "p-2");
    std::string why;
    EXPECT_EQ(idOf("HD Webcam", &why), "");
    EXPECT_EQ(why, "\"HD Webcam\" fits several cameras: HD Webcam (usb-046d:0825-at-p-1:00), HD Webcam "
                   "(usb-046d:0825-at-p-2:00)");
    EXPECT_NE(idOf("/dev/video0", &why), "");
    EXPECT_EQ(why, "");
}

TEST_F(DeviceExtensions, FindVirtualCamerasToo) {
    OVideoPushCamera camera(QString::fromUtf8("push-1"), QString::fromUtf8("K\xC3\xBC"
                                                                           "che"));
    ASSERT_TRUE(camera.attach());
    EXPECT_EQ(idOf("push-1"), "push-1");
    EXPECT_EQ(idOf("PUSH-1"), "push-1");
    EXPECT_EQ(idOf("K\xC3\xBC"
                   "che"),
              "push-1");
}

TEST_F(DeviceExtensions, ListEachNodeWithItsIdentifierOrTheReasonWhyItHasNone) {
    plugWebcam("/dev/video0", "A1", "p-1");
    DeviceScript metadata = camera();
    metadata.capabilities = V4L2_CAP_META_CAPTURE;
    addBare("/dev/video1", metadata);
    addBare("/dev/video2", camera());
    kernel->failNext(OPEN, EACCES, 1, 1);
    const QList<OVideoNode> nodes = videoNodes();
    ASSERT_EQ(nodes.size(), 3);
    EXPECT_EQ(nodes[0].path(), QString("/dev/video0"));
    EXPECT_EQ(nodes[0].name(), QString("HD Webcam"));
    EXPECT_EQ(nodes[0].uniqueID(), QString("usb-046d:0825-A1-at-p-1:00"));
    EXPECT_EQ(nodes[0].reason(), QString());
    EXPECT_EQ(nodes[1].path(), QString("/dev/video1"));
    EXPECT_EQ(nodes[1].name(), QString("Scripted Camera"));
    EXPECT_EQ(nodes[1].uniqueID(), QString());
    EXPECT_TRUE(nodes[1].reason().contains("metadata"));
    EXPECT_FALSE(nodes[2].uniqueID().isEmpty()); // it may not be opened, which is said
    EXPECT_TRUE(nodes[2].reason().contains("group \"video\""));
    OVideoNode copy = nodes[0];
    copy = nodes[1];
    EXPECT_EQ(copy.path(), QString("/dev/video1"));
}

TEST_F(DeviceExtensions, TellWhatIsKnownOfACamerasDevice) {
    cameras::v4l2::NodeFacts facts = described("/dev/video7", ":capture:", "0000:00:14.0-usb-2");
    facts.serial = "A\xFF"; // bytes of a maker that knows no UTF-8
    discovery->add(facts);
    const OVideoDeviceDetails webcam = videoDeviceDetails(textOf(provider->list().at(0)->identifier()));
    EXPECT_TRUE(webcam.isAttached());
    EXPECT_EQ(utf8Of(webcam.kind()), "V4L2");
    EXPECT_EQ(utf8Of(webcam.node()), "/dev/video7");
    EXPECT_EQ(utf8Of(webcam.driver()), "uvcvideo");
    EXPECT_EQ(utf8Of(webcam.bus()), "0000:00:14.0-usb-2");
    EXPECT_EQ(webcam.vendorID(), 0x046d);
    EXPECT_EQ(webcam.productID(), 0x0825);
    EXPECT_EQ(utf8Of(webcam.serialNumber()), "A\xEF\xBF\xBD");
}

TEST_F(DeviceExtensions, TellWhatTheNodeSaysWhereTheSystemSaysNothing) {
    addBare("/dev/video0", cameraWith("PCI:0000:03:00.0"));
    OVideoDeviceDetails details = videoDeviceDetails(textOf(provider->list().at(0)->identifier()));
    EXPECT_EQ(utf8Of(details.driver()), "scripted");
    EXPECT_EQ(utf8Of(details.bus()), "PCI:0000:03:00.0");
    EXPECT_EQ(details.vendorID(), 0);
    EXPECT_EQ(details.productID(), 0);
    EXPECT_EQ(utf8Of(details.serialNumber()), "");
    details = videoDeviceDetails(textOf("nobody"));
    EXPECT_FALSE(details.isAttached());
    EXPECT_EQ(utf8Of(details.kind() + details.node() + details.driver() + details.bus()), "");
    OVideoPushCamera pushed(textOf("push-1"), textOf("Kitchen"));
    ASSERT_TRUE(pushed.attach());
    EXPECT_EQ(utf8Of(videoDeviceDetails(textOf("push-1")).kind()), "virtual");
}

TEST_F(DeviceExtensions, ListNothingWithoutAMachine) {
    const Machine none;
    EXPECT_TRUE(videoNodes().isEmpty());
    EXPECT_EQ(idOf("/dev/video0"), "");
}

} // namespace ostrel::tests
