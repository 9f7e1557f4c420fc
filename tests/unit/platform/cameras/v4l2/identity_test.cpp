#include "platform/cameras/device_texts.h"
#include "platform/cameras/v4l2/identity.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using cameras::validUtf8;
using namespace cameras::v4l2;

namespace {

NodeFacts usb(const std::string& serial, const std::string& port, const std::string& interface = "00") {
    NodeFacts facts;
    facts.path = "/dev/video" + port;
    facts.isUsb = true;
    facts.model = "046d:0825";
    facts.serial = serial;
    facts.port = "0000:00:14.0-usb-" + port;
    facts.interface = interface;
    facts.driver = "uvcvideo";
    return facts;
}

NodeTexts texts(const std::string& busInfo, const std::string& card, const std::string& driver) {
    NodeTexts result;
    result.busInfo = busInfo;
    result.card = card;
    result.driver = driver;
    return result;
}

std::string idOf(const NodeFacts& facts, const NodeTexts& said = NodeTexts()) {
    return identifierOf(facts, said);
}

using List = std::vector<std::string>;

} // namespace

TEST(Identifier, OfAUsbCameraIsItsModelItsSerialNumberItsPortAndItsInterface) {
    EXPECT_EQ(idOf(usb("A1B2C3", "3")), "usb-046d:0825-A1B2C3-at-0000:00:14.0-usb-3:00");
    EXPECT_EQ(idOf(usb("", "2.4.1", "02")), "usb-046d:0825-at-0000:00:14.0-usb-2.4.1:02");
}

TEST(Identifier, OfTwoCamerasWithOneSerialNumberDiffersWhereverTheyArePlugged) {
    EXPECT_NE(idOf(usb("SN0001", "3")), idOf(usb("SN0001", "4")));
}

TEST(Identifier, DoesNotDependOnTheNumberOfTheNode) {
    NodeFacts facts = usb("", "3");
    const std::string before = idOf(facts);
    facts.path = "/dev/video17";
    facts.generation = "another";
    EXPECT_EQ(idOf(facts), before);
}

TEST(Identifier, OfAUsbCameraIsTheSameWhetherItsNodeCouldBeAskedOrNot) {
    EXPECT_EQ(idOf(usb("A1", "3"), texts("usb-0000:00:14.0-3", "HD Webcam", "uvcvideo")),
              idOf(usb("A1", "3")));
}

TEST(Identifier, CarriesTheOrderAmongSeveralNodesOfOneInterface) {
    NodeFacts second = usb("A1", "3");
    second.index = 2;
    EXPECT_EQ(idOf(second), "usb-046d:0825-A1-at-0000:00:14.0-usb-3:00.2");
}

TEST(Identifier, OfAPciCardIsItsPlaceAndItsModelSinceAnotherCardMayTakeThePlace) {
    NodeFacts facts;
    facts.bus = "PCI:0000:03:00.0";
    facts.port = "0000:03:00.0";
    facts.model = "14f1:8880";
    facts.driver = "cx23885";
    EXPECT_EQ(idOf(facts, texts("PCIe:0000:03:00.0", "Some Grabber", "cx23885")),
              "bus-PCIe:0000:03:00.0-14f1:8880");
    EXPECT_EQ(idOf(facts), "bus-PCI:0000:03:00.0-14f1:8880"); // not asked: what most drivers say
    facts.index = 1;
    EXPECT_EQ(idOf(facts), "bus-PCI:0000:03:00.0-14f1:8880.1");
}

TEST(Identifier, OfAPlatformDeviceIsItsPlaceAndItsDriver) {
    NodeFacts facts;
    facts.bus = "platform:fe801000.csi";
    facts.port = "fe801000.csi";
    facts.driver = "unicam";
    EXPECT_EQ(idOf(facts, texts("platform:fe801000.csi", "unicam-image", "unicam")),
              "bus-platform:fe801000.csi-unicam");
    EXPECT_EQ(idOf(facts), "bus-platform:fe801000.csi-unicam");
}

TEST(Identifier, OfDevicesWithoutHardwareIsTheBusAsInTheFirstRelease) {
    NodeFacts vivid;
    vivid.bus = "platform:vivid.0";
    vivid.port = "vivid.0";
    vivid.driver = "vivid";
    EXPECT_EQ(idOf(vivid, texts("platform:vivid-000", "vivid", "vivid")), "bus-platform:vivid-000");
    NodeFacts loopback;
    loopback.isVirtual = true;
    EXPECT_EQ(idOf(loopback, texts("platform:v4l2loopback-003", "OBS", "v4l2 loopback")),
              "bus-platform:v4l2loopback-003");
    EXPECT_EQ(idOf(NodeFacts(), texts("platform:v4l2loopback-003", "OBS", "v4l2 loopback")),
              "bus-platform:v4l2loopback-003"); // without sysfs
}

TEST(Identifier, OfACameraWithoutSysfsIsItsBusAndItsCard) {
    EXPECT_EQ(idOf(NodeFacts(), texts("usb-0000:00:14.0-2", "HD Webcam", "uvcvideo")),
              "bus-usb-0000:00:14.0-2-HD%20Webcam");
}

TEST(Identifier, IsWhatIsLeftOfACameraOfWhichLittleIsKnown) {
    NodeFacts facts;
    facts.port = "spi0.0";
    facts.driver = "spicam";
    EXPECT_EQ(idOf(facts), "port-spi0.0-spicam");
    facts.port.clear();
    facts.name = "Dummy device";
    EXPECT_EQ(idOf(facts), "name-Dummy%20device");
}

TEST(Identifier, IsPrintableAsciiWhateverTheDeviceSays) {
    EXPECT_EQ(idOf(usb("S\xC3\xA9r/1 %\n", "3")),
              "usb-046d:0825-S%C3%A9r%2F1%20%25%0A-at-0000:00:14.0-usb-3:00");
    EXPECT_EQ(idOf(usb("  ", "3")), "usb-046d:0825-%20%20-at-0000:00:14.0-usb-3:00");
}

TEST(Identifier, TellsSerialNumbersApartHoweverLongTheyAre) {
    const std::string most(126, 'x'); // the characters of a USB string
    EXPECT_EQ(idOf(usb(most + "1", "3")), "usb-046d:0825-" + most + "1-at-0000:00:14.0-usb-3:00");
    EXPECT_NE(idOf(usb(most + "1", "3")), idOf(usb(most + "2", "3")));
}

TEST(FormerIdentifiers, OfAUsbCameraAreThoseBySerialNumberAndByPort) {
    EXPECT_EQ(formerIdentifiers(usb("A1", "3", "02"), NodeTexts()),
              (List{"usb-046d:0825-A1:02", "usb-046d:0825-at-0000:00:14.0-usb-3:02"}));
    EXPECT_EQ(formerIdentifiers(usb("", "3"), NodeTexts()), (List{"usb-046d:0825-at-0000:00:14.0-usb-3:00"}));
}

TEST(FormerIdentifiers, OfOtherHardwareAreThoseByBusAndByPort) {
    NodeFacts facts;
    facts.port = "0000:03:00.0";
    facts.model = "14f1:8880";
    facts.index = 1;
    EXPECT_EQ(formerIdentifiers(facts, texts("PCI:0000:03:00.0", "Grabber", "cx")),
              (List{"bus-PCI:0000:03:00.0.1", "port-0000:03:00.0.1"}));
}

TEST(IdentifierInAnyPort, IsAllOfItButThePort) {
    using Pair = std::pair<std::string, std::string>;
    EXPECT_EQ(identifierInAnyPort(usb("A1", "3", "02")), Pair("usb-046d:0825-A1-at-", ":02"));
    EXPECT_EQ(identifierInAnyPort(usb("", "3")), Pair()); // only the port tells it from others of its model
}

TEST(IdentifierInAnyPort, NeverBeginsAsThatOfAnotherSerialNumber) {
    EXPECT_EQ(idOf(usb("A-at-B-at-", "3")), "usb-046d:0825-A%2Dat-B%2Dat--at-0000:00:14.0-usb-3:00");
    EXPECT_NE(idOf(usb("A-at-B", "3")).find("usb-046d:0825-A%"), std::string::npos);
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
    EXPECT_EQ(validUtf8("\xC2\x9B"
                        "2J\xC2\x85next\xC2\xA0"),
              "2J next\xC2\xA0"); // those of eight bits
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

} // namespace ostrel::tests
