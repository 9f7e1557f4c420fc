#include "apps/camera/camera_choice.h"

#include "apps/common/failure.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

namespace {

// The failure of a choice as "code: line", or the identifier of the camera chosen.
std::string choose(const std::vector<Camera>& cameras, const std::string& wanted,
                   const QStringList& added = {}, const std::vector<ClosedNode>& closed = {}) {
    try {
        return chooseCamera(cameras, wanted, added, closed).identifier;
    } catch (const Failure& failure) {
        return std::to_string(failure.code()) + ": " + failure.what();
    }
}

const std::vector<Camera> CAMERAS = {
    {"usb-1", "Webcam Left", {}}, {"usb-10", "Webcam Right", {}}, {"USB-1", "Built-in", {}},
    {"pci-7", "Cam", {}},         {"pci-8", "Cam Pro", {}},
};

} // namespace

TEST(CameraChoice, WithoutAWishTheAddedCameraElseTheFirst) {
    EXPECT_EQ(choose(CAMERAS, ""), "usb-1");
    EXPECT_EQ(choose(CAMERAS, "", {"pci-8"}), "pci-8");
    EXPECT_EQ(choose(CAMERAS, "", {"a", "b"}),
              "2: several cameras are added: say with --camera which of a, b is meant");
}

TEST(CameraChoice, AWholeIdentifierIsNeverTakenForItsPrefix) {
    EXPECT_EQ(choose(CAMERAS, "usb-1"), "usb-1");
    EXPECT_EQ(choose(CAMERAS, "USB-10"), "usb-10");
    EXPECT_EQ(choose(CAMERAS, "USB-1"), "USB-1");
}

TEST(CameraChoice, APartOfANameIsEnoughWhenItIsUnique) {
    EXPECT_EQ(choose(CAMERAS, "right"), "usb-10");
    EXPECT_EQ(choose(CAMERAS, "BUILT"), "USB-1");
    EXPECT_EQ(choose(CAMERAS, "cam"), "pci-7"); // a whole name before a part of another
    EXPECT_EQ(choose(CAMERAS, "webcam"),
              "4: 'webcam' fits several cameras, give the identifier of one: Webcam Left (usb-1), "
              "Webcam Right "
              "(usb-10)");
}

TEST(CameraChoice, WhatFitsNothingIsAnsweredWithTheList) {
    EXPECT_EQ(choose({CAMERAS[3]}, "x"), "4: no attached camera fits \"x\"; attached: Cam (pci-7)");
    EXPECT_EQ(choose({}, "x"),
              "3: no camera is attached: plug one in, or use --test-camera for the built-in test picture");
    EXPECT_EQ(choose({}, "", {}, {{"/dev/video0", "video"}}),
              "5: no permission to use /dev/video0: join the group video (sudo usermod -aG video \"$USER\") "
              "and log in "
              "again");
}

TEST(CameraChoice, AVideoNodeThatIsNoneIsSaid) {
    EXPECT_EQ(choose({CAMERAS[3]}, "/dev/video987"), "4: there is no /dev/video987; attached: Cam (pci-7)");
    EXPECT_EQ(choose({CAMERAS[3]}, "/dev/null"), "4: /dev/null is no video device; attached: Cam (pci-7)");
}

} // namespace ostrel::tests
