// Modes that are asked for, and what is told of a device.
#include "platform/cameras/messages.h"
#include "platform/cameras/wishes.h"
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <tuple>

namespace ostrel::tests {

using cameras::ModeWish;
using cameras::NativeMode;
using cameras::NativeModes;
using cameras::Size;

class AvModes : public AvFoundationTest {
protected:
    AvModes() {
        device.formats = {format(1280, 720), format(640, 480), format(640, 480, 60)};
        device.formats[1].subtype = 0x79757673; // "yuvs"
    }
    ~AvModes() override { cameras::setModeWish("A", ModeWish()); }

    static ModeWish wish(const std::string& format, const Size& size = Size(), double rate = 0) {
        ModeWish one;
        one.format = format;
        one.size = size;
        one.interval = cameras::intervalOf(rate);
        return one;
    }
    // What a start with the wish is granted.
    cameras::Mode granted(const ModeWish& one) {
        cameras::setModeWish("A", one);
        EXPECT_EQ(start(320, 240).text, "");
        EXPECT_TRUE(sink->waitForMoreFrames(1));
        const cameras::Mode mode = camera->statistics().granted;
        camera->stop(sink);
        return mode;
    }
};

TEST_F(AvModes, AreTheDevicesFormatsWithTheirRangesOfRates) {
    device.formats[0].slowest = 15;
    device.formats[0].otherRates = {7.5};
    device.formats[1].subtype = 0x64766320; // "dvc ", without its blank
    device.formats[1].width = 0;            // no picture can have it
    device.formats[2].subtype = 0x64766320;
    open();
    NativeModes modes;
    EXPECT_EQ(camera->modes(modes).text, "");
    std::vector<std::tuple<std::string, int, double, double>> told;
    for (const NativeMode& mode : modes) {
        EXPECT_TRUE(mode.hasPicture);
        EXPECT_EQ(mode.sizes.least, mode.sizes.most);
        told.emplace_back(mode.format, mode.sizes.most.width, mode.intervals.shortest.rate(),
                          mode.intervals.longest.rate());
    }
    const decltype(told) expected = {{"420v", 1280, 30, 15}, {"420v", 1280, 7.5, 7.5}, {"dvc", 640, 60, 1}};
    EXPECT_EQ(told, expected);
}

TEST_F(AvModes, AWishDecidesOverSizeFormatAndRate) {
    open();
    EXPECT_EQ(granted(wish("", Size(1280, 720))).size, Size(1280, 720));
    EXPECT_EQ(granted(wish("yuvs")).format, "yuvs");
    EXPECT_DOUBLE_EQ(granted(wish("", Size(), 60)).rate(), 60);
    EXPECT_DOUBLE_EQ(granted(wish("yuvs", Size(640, 480), 12)).rate(), 12);
}

// Devices raise an exception for a duration that is the least bit beside those on offer.
TEST_F(AvModes, AWishedRateIsAskedForAsTheDeviceHasIt) {
    device.formats = {format(640, 480, 59.94)};
    device.formats[0].slowest = 59.94;
    device.formats[0].otherRates = {29.97};
    open();
    EXPECT_DOUBLE_EQ(granted(wish("", Size(), 30)).rate(), 29.97);
}

TEST_F(AvModes, AWishThatIsTakenBackLeavesNothingWithTheDevice) {
    device.formats = {format(640, 480)};
    open();
    EXPECT_DOUBLE_EQ(granted(wish("", Size(), 5)).rate(), 5);
    EXPECT_DOUBLE_EQ(granted(ModeWish()).rate(), 30);
}

TEST_F(AvModes, AWishThatNothingFitsIsRefusedInWords) {
    open();
    for (const ModeWish& one : {wish("MJPG"), wish("", Size(800, 600)), wish("yuvs", Size(), 60)}) {
        cameras::setModeWish("A", one);
        EXPECT_EQ(start().text, cameras::modeNotOffered("Camera", one).text);
        EXPECT_FALSE(standin::isStreaming("A"));
    }
    standin::unplug("A");
    EXPECT_EQ(start().code, ENODEV);
}

TEST_F(AvModes, TheDeviceOfACameraIsToldByItsModelAndItHasNoControls) {
    open();
    EXPECT_EQ(camera->details().kind, "AVFoundation");
    EXPECT_EQ(camera->details().vendor, 0x05ac);
    EXPECT_EQ(camera->details().product, 0x8600);
    EXPECT_EQ(camera->details().node, "");
    EXPECT_EQ(camera->controls(), nullptr);
    device.identifier = "B";
    device.model = "FaceTime HD Camera (Built-in)";
    standin::plug(device);
    for (const auto& one : provider->list())
        if (one->identifier() == "B") {
            EXPECT_EQ(one->details().vendor, 0);
            EXPECT_EQ(one->details().product, 0);
        }
}

} // namespace ostrel::tests
