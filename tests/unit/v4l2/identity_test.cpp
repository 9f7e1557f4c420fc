#include "platform/cameras/v4l2/identity.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace ostrel {
namespace tests {

using namespace cameras::v4l2;

namespace {

NamedNode usb(const std::string& serial, const std::string& port, const std::string& interface = "00") {
    NamedNode node;
    node.facts.path = "/dev/video" + port;
    node.facts.isUsb = true;
    node.facts.model = "046d:0825";
    node.facts.serial = serial;
    node.facts.port = "0000:00:14.0-usb-" + port;
    node.facts.interface = interface;
    return node;
}

std::string one(const NamedNode& node) {
    Identifiers identifiers;
    return identifiers.assign({node}).front();
}

using List = std::vector<std::string>;

} // namespace

TEST(Identifier, IsTheSerialNumberWhereThatIsUnique) {
    EXPECT_EQ(one(usb("A1B2C3", "3")), "usb-046d:0825-A1B2C3:00");
}

TEST(Identifier, OfASerialNumberIsTheSameInEveryPort) {
    EXPECT_EQ(one(usb("A1B2C3", "3")), one(usb("A1B2C3", "1.4")));
}

TEST(Identifier, IsThePortWhereThereIsNoSerialNumber) {
    EXPECT_EQ(one(usb("", "3")), "usb-046d:0825-at-0000:00:14.0-usb-3:00");
    EXPECT_NE(one(usb("", "3")), one(usb("", "4")));
}

TEST(Identifier, DoesNotDependOnTheNumberOfTheNode) {
    NamedNode node = usb("", "3");
    const std::string before = one(node);
    node.facts.path = "/dev/video17";
    node.facts.incarnation = "another";
    EXPECT_EQ(one(node), before);
}

TEST(Identifier, TellsTwoCamerasOfOneModelWithTheSameSerialNumberApartByTheirPorts) {
    Identifiers identifiers;
    EXPECT_EQ(identifiers.assign({usb("0001", "3"), usb("0001", "4")}),
              (List{"usb-046d:0825-at-0000:00:14.0-usb-3:00", "usb-046d:0825-at-0000:00:14.0-usb-4:00"}));
}

TEST(Identifier, StaysWhenAnotherCameraWithTheSameSerialNumberComes) {
    Identifiers identifiers;
    const std::string first = identifiers.assign({usb("0001", "3")})[0];
    const List both = identifiers.assign({usb("0001", "4"), usb("0001", "3")});
    EXPECT_EQ(both[1], first);
    EXPECT_NE(both[0], first);
    // The first is unplugged and plugged in again; the second stays what it was meanwhile.
    EXPECT_EQ(identifiers.assign({usb("0001", "4")})[0], both[0]);
    EXPECT_EQ(identifiers.assign({usb("0001", "4"), usb("0001", "3")}), both);
}

TEST(Identifier, CarriesTheInterfaceOfEachNodeOfACamera) {
    Identifiers identifiers;
    EXPECT_EQ(identifiers.assign({usb("A1", "3", "00"), usb("A1", "3", "02")}),
              (List{"usb-046d:0825-A1:00", "usb-046d:0825-A1:02"}));
    NamedNode second = usb("A1", "3");
    second.facts.index = 2;
    EXPECT_EQ(identifiers.assign({usb("A1", "3"), second}),
              (List{"usb-046d:0825-A1:00", "usb-046d:0825-A1:00.2"}));
}

TEST(Identifier, NeverDependsOnTheOtherNodesOfTheCamera) {
    // While it is plugged in, the nodes appear one after the other.
    Identifiers identifiers;
    const std::string alone = identifiers.assign({usb("A1", "3", "00")})[0];
    EXPECT_EQ(identifiers.assign({usb("A1", "3", "00"), usb("A1", "3", "02")})[0], alone);
}

TEST(Identifier, IsTheBusWhereNothingElseIsKnown) {
    NamedNode node;
    node.facts.path = "/dev/video0";
    node.busInfo = "platform:vivid-000";
    EXPECT_EQ(one(node), "bus-platform:vivid-000");
    node.facts.port = "fe801000.csi"; // what the driver says is finer
    EXPECT_EQ(one(node), "bus-platform:vivid-000");
    node.busInfo.clear();
    EXPECT_EQ(one(node), "port-fe801000.csi");
    node.facts.port.clear();
    node.facts.name = "Dummy device";
    EXPECT_EQ(one(node), "name-Dummy%20device");
}

TEST(Identifier, IsNeverGivenTwice) {
    NamedNode node;
    node.facts.name = "Camera";
    Identifiers identifiers;
    const List three = identifiers.assign({node, node, node});
    EXPECT_EQ(three, (List{"name-Camera", "name-Camera-2", "name-Camera-3"}));
}

TEST(Identifier, IsAsciiWhateverTheDeviceSays) {
    NamedNode node = usb("S\xC3\xA9r/1 %\n", "3");
    EXPECT_EQ(one(node), "usb-046d:0825-S%C3%A9r%2F1%20%25%0A:00");
}

TEST(DisplayName, IsTheDevicesOwn) {
    EXPECT_EQ(displayName("HD Webcam", "card", "uvcvideo"), "HD Webcam");
    EXPECT_EQ(displayName("Kamera f\xC3\xBCr alle", "", ""), "Kamera f\xC3\xBCr alle");
}

TEST(DisplayName, BecomesTheDriversWhenItIsEmpty) {
    EXPECT_EQ(displayName("", "", "uvcvideo"), "uvcvideo");
    EXPECT_EQ(displayName("  ", "\n", "uvcvideo"), "uvcvideo");
    EXPECT_EQ(displayName("", "Card", "uvcvideo"), "Card");
    EXPECT_EQ(displayName("", "", ""), "Camera");
}

TEST(DisplayName, BecomesValidUtf8) {
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(validUtf8("a\xFF"
                        "b"),
              "a" + mark + "b");
    EXPECT_EQ(validUtf8("caf\xE9"), "caf" + mark);              // Latin-1
    EXPECT_EQ(validUtf8("cut \xE2\x82"), "cut " + mark + mark); // a driver's 32 bytes end within a character
    EXPECT_EQ(validUtf8("\xC0\xAF"), mark + mark);              // too long for its character
    EXPECT_EQ(validUtf8("\xED\xA0\x80"), mark + mark + mark);   // half of a surrogate pair
    EXPECT_EQ(validUtf8("\xF5\x80\x80\x80"), mark + mark + mark + mark);
    EXPECT_EQ(validUtf8("tab\there "), "tab here");
    EXPECT_EQ(validUtf8("\xF0\x9F\x93\xB7 cam"), "\xF0\x9F\x93\xB7 cam");
}

TEST(Port, IsTheControllerAndTheChainOfPorts) {
    EXPECT_EQ(portOfSysfsPath("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/video4linux/video0"),
              "0000:00:14.0-usb-3");
    EXPECT_EQ(portOfSysfsPath("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3.2/1-3.2.4/1-3.2.4:1.2/"
                              "video4linux/video5"),
              "0000:00:14.0-usb-3.2.4");
}

TEST(Port, DoesNotDependOnTheOrderInWhichTheBusesWereFound) {
    EXPECT_EQ(portOfSysfsPath("/sys/devices/pci0000:00/0000:00:14.0/usb2/2-3/2-3:1.0/video4linux/video0"),
              portOfSysfsPath("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/video4linux/video7"));
}

TEST(Port, OfOtherHardwareIsItsParent) {
    EXPECT_EQ(portOfSysfsPath("/sys/devices/platform/vivid.0/video4linux/video0"), "vivid.0");
    EXPECT_EQ(portOfSysfsPath("/sys/devices/pci0000:00/0000:03:00.0/video4linux/video1"), "0000:03:00.0");
}

TEST(Port, OfAVirtualDeviceIsUnknown) {
    EXPECT_EQ(portOfSysfsPath("/sys/devices/virtual/video4linux/video0"), "");
    EXPECT_EQ(portOfSysfsPath(""), "");
    EXPECT_EQ(portOfSysfsPath("/dev/video0"), "");
}

} // namespace tests
} // namespace ostrel
