// Modes of the kernel's own drivers: one camera is there, vivid as a webcam or the emulated one.
#include "vm/programs/capture.h"

#include <ostrel/camera_state.h>
#include <ostrel/device_details.h>
#include <ostrel/modes.h>
#include <ostrel/native_frame.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

std::vector<std::string> linesOf(const std::string& command) {
    shell(command + " >/tmp/lines");
    std::vector<std::string> lines;
    std::ifstream file("/tmp/lines");
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

// "YUYV 640x480 30.000", one for each mode.
std::vector<std::string> modes() {
    std::vector<std::string> result;
    QString why;
    for (const OVideoMode& mode : videoModes(onlyCamera(), &why))
        result.push_back(QString("%1 %2x%3 %4")
                             .arg(mode.format())
                             .arg(mode.width())
                             .arg(mode.height())
                             .arg(mode.framesPerSecond(), 0, 'f', 3)
                             .toStdString());
    EXPECT_EQ(why.toStdString(), "");
    return result;
}

OVideoMode wish(const char* format, int width, int height, uint32_t rate) {
    OVideoMode mode;
    mode.setFormat(format);
    mode.setSize(width, height);
    mode.setInterval(rate ? 1 : 0, rate);
    return mode;
}

// What the driver says that it runs in, while it is captured from: "YUYV 640/360 30.000".
std::string driversMode() {
    const std::vector<std::string> lines = // the size comes first
        linesOf("v4l2-ctl --get-fmt-video --get-parm | sed -n \"s/.*Pixel Format *: '\\([^']*\\)'.*/\\1/p; "
                "s/.*Width.Height *: *//p; s/.*Frames per second: \\([0-9.]*\\).*/\\1/p\"");
    return lines.size() == 3 ? lines[1] + ' ' + lines[0] + ' ' + lines[2] : std::string("unknown");
}

std::string granted() {
    const OVideoMode mode = OVideoCameraState(onlyCamera()).grantedMode();
    return QString("%1 %2/%3 %4")
        .arg(mode.format())
        .arg(mode.width())
        .arg(mode.height())
        .arg(mode.framesPerSecond(), 0, 'f', 3)
        .toStdString();
}

// The mode of a capture of this size with the wish, as the library and the driver say it.
std::string captured(const OVideoMode& wished, int width, int height) {
    const QString camera = onlyCamera();
    QString why;
    if (!requestVideoMode(camera, wished, &why))
        return why.toStdString();
    Capture capture(camera, width, height);
    EXPECT_TRUE(capture.waitForPicture());
    const std::string mode = granted();
    EXPECT_EQ(mode, driversMode());
    capture.stop();
    requestVideoMode(camera, OVideoMode());
    return mode;
}

} // namespace

TEST(DriverModes, AreTheOnesThatAnotherProgramFinds) {
    std::vector<std::string> found = modes();
    std::vector<std::string> expected =
        linesOf("v4l2-ctl --list-formats-ext | sed -n \"s/.*\\[[0-9]*\\]: '\\([^']*\\)'.*/F \\1/p; "
                "s/.*Size: Discrete /S /p; s/.*(\\([0-9.]*\\) fps).*/I \\1/p\" | "
                "awk '/^F/ { gsub(/^F| /, \"\"); format = $0 } /^S/ { size = $2 } "
                "/^I/ { print format, size, $2 }'");
    EXPECT_GT(expected.size(), 10u);
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
}

TEST(VividModes, SixtyFramesASecondComeWhenTheyAreAskedForAndThirtyWhenNot) {
    EXPECT_EQ(captured(wish("YUYV", 0, 0, 0), 320, 180), "YUYV 320/180 30.000");
    EXPECT_EQ(captured(wish("YUYV", 0, 0, 60), 320, 180), "YUYV 320/180 60.000");
    EXPECT_EQ(captured(wish("YUYV", 0, 0, 0), 640, 360), "YUYV 640/360 30.000");
    EXPECT_EQ(captured(wish("YUYV", 0, 0, 60), 640, 360), "YUYV 320/180 60.000") << "no larger one has it";
    EXPECT_EQ(captured(wish("NV12", 320, 180, 15), 640, 480), "NV12 320/180 15.000");
}

TEST(VividModes, EveryListedRateOfASizeIsGranted) {
    int rates = 0;
    for (const OVideoMode& mode : videoModes(onlyCamera()))
        if (mode.format() == "YUYV" && mode.width() == 320 && mode.framesPerSecond() >= 10) {
            EXPECT_EQ(captured(mode, 320, 180), QString("YUYV %1/%2 %3")
                                                    .arg(mode.width())
                                                    .arg(mode.height())
                                                    .arg(mode.framesPerSecond(), 0, 'f', 3)
                                                    .toStdString());
            ++rates;
        }
    EXPECT_GE(rates, 4);
}

TEST(VividModes, WhatItDoesNotOfferIsRefused) {
    QString why;
    EXPECT_FALSE(requestVideoMode(onlyCamera(), wish("", 641, 360, 0), &why));
    EXPECT_TRUE(why.contains("641x360")) << why.toStdString();
    EXPECT_FALSE(requestVideoMode(onlyCamera(), wish("", 640, 360, 59), &why));
    EXPECT_FALSE(requestVideoMode(onlyCamera(), wish("H264", 0, 0, 0), &why));
}

// Of 100 % red, Bayer data has light in one pixel of four: in the second one of every second row.
TEST(VividModes, RawBayerIsCapturedAsItIs) {
    shell("index=$(v4l2-ctl -L | sed -n 's/^[[:space:]]*\\([0-9]*\\): 100% Red$/\\1/p') && "
          "v4l2-ctl -c test_pattern=$index");
    const QString camera = onlyCamera();
    ASSERT_TRUE(requestVideoMode(camera, wish("BA81", 320, 180, 0)));
    QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
    capture->startCapture(camera.toLatin1().constData(), 320, 180);
    OVideoFrameReader reader(capture);
    OVideoNativeFrame frame;
    QString why;
    ASSERT_EQ(nextNativeFrame(reader, frame, 120000, &why), 1) << why.toStdString();
    EXPECT_EQ(frame.format().toStdString(), "BA81");
    EXPECT_EQ(frame.width(), 320);
    EXPECT_EQ(frame.height(), 180);
    ASSERT_EQ(frame.bytesUsed(), static_cast<size_t>(frame.bytesPerLine(0)) * 180);
    int wrong = 0;
    for (int y = 0; y < 180; ++y)
        for (int x = 0; x < 320; ++x) {
            const uint8_t value = frame.data()[y * frame.bytesPerLine(0) + x];
            wrong += x % 2 == 1 && y % 2 == 1 ? value < 200 : value > 40;
        }
    EXPECT_EQ(wrong, 0);
    EXPECT_FALSE(OVideoCameraState(camera).grantedMode().hasPicture());
    VideoFrame picture;
    EXPECT_EQ(nextVideoFrame(reader, picture, 120000, nullptr, &why), -1);
    capture->stopVideoCapture();
    requestVideoMode(camera, OVideoMode());
}

TEST(VividModes, ItsDeviceIsTold) {
    const OVideoDeviceDetails device = videoDeviceDetails(onlyCamera());
    EXPECT_EQ(device.kind().toStdString(), "V4L2");
    EXPECT_EQ(device.node().toStdString(), "/dev/video0");
    EXPECT_EQ(device.driver().toStdString(), "vivid");
}

TEST(WebcamModes, AreGrantedOneByOne) {
    for (const OVideoMode& mode : videoModes(onlyCamera()))
        EXPECT_EQ(captured(mode, 320, 240), QString("%1 %2/%3 %4")
                                                .arg(mode.format())
                                                .arg(mode.width())
                                                .arg(mode.height())
                                                .arg(mode.framesPerSecond(), 0, 'f', 3)
                                                .toStdString());
}

TEST(WebcamModes, ItsDeviceIsTold) {
    const OVideoDeviceDetails device = videoDeviceDetails(onlyCamera());
    EXPECT_EQ(device.driver().toStdString(), "uvcvideo");
    EXPECT_EQ(device.vendorID(), 0x1209);
    EXPECT_EQ(device.productID(), 0x0001);
    EXPECT_EQ(device.serialNumber().toStdString(), "0001");
    EXPECT_TRUE(device.bus().contains("usb")) << device.bus().toStdString();
}
