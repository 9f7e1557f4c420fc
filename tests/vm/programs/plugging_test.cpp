// Cameras of the kernel's that come and go, as a monitor tells of them. The case chooses by filters what fits
// the machine: one vivid camera, or the emulated webcam.
#include "vm/programs/capture.h"

#include <ostrel/device_details.h>
#include <ostrel/device_monitor.h>
#include <ostrel/devices.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

const int HANG_MS = 120000;
const int CYCLES = 100;

// Each change that comes next, as "+identifier" and "-identifier".
QStringList next(OVideoDeviceMonitor& monitor) {
    QStringList lines;
    EXPECT_EQ(monitor.wait(HANG_MS), 1);
    const QList<OVideoDeviceChange> changes = monitor.take();
    for (const OVideoDeviceChange& change : changes)
        lines.append((change.kind() == OVideoDeviceChange::ADDED ? "+" : "-") + change.uniqueID());
    return lines;
}

// Takes what comes until nothing comes any more and the cameras are those of the listing.
bool settles(OVideoDeviceMonitor& monitor) {
    return waitUntil([&] {
        monitor.take();
        return monitor.cameras() == videoDevices();
    });
}

// Without the shell, which takes longer than the camera.
void order(const char* text) {
    std::ofstream("/tmp/webcam-orders") << text << std::endl;
}

void bindVivid(bool bound) {
    std::ofstream(std::string("/sys/bus/platform/drivers/vivid/") + (bound ? "bind" : "unbind"))
        << "vivid.0" << std::endl;
}

} // namespace

TEST(VividPlugging, TellsOfEachOfAHundredUnbindingsAndBindings) {
    const QString camera = onlyCamera();
    OVideoDeviceMonitor monitor;
    for (int cycle = 0; cycle < CYCLES; ++cycle) {
        bindVivid(false);
        ASSERT_EQ(next(monitor), QStringList("-" + camera)) << cycle;
        bindVivid(true);
        ASSERT_EQ(next(monitor), QStringList("+" + camera)) << cycle;
    }
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

TEST(VividPlugging, ACameraThatIsCapturedFromAndLeavesIsGoneAtOnce) {
    const QString camera = onlyCamera();
    OVideoDeviceMonitor monitor;
    Capture capture(camera, 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    bindVivid(false);
    EXPECT_EQ(next(monitor), QStringList("-" + camera));
    bindVivid(true);
    EXPECT_EQ(next(monitor), QStringList("+" + camera)) << "though the old capture still holds the old one";
    capture.stop();
}

TEST(VividPlugging, ANodeIsNoCameraUntilItMayBeOpened) {
    const QString camera = onlyCamera();
    ::unlink("/tmp/waits");
    ASSERT_EQ(videoNodes().size(), 1);
    const std::string node = videoNodes().first().path().toStdString();
    EXPECT_EQ(::chmod(node.c_str(), 0600), 0);
    // Permissions do not bind root.
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(2);
        OVideoDeviceMonitor monitor;
        if (!monitor.cameras().isEmpty() || videoDevices().size() != 1)
            ::_exit(3);
        std::ofstream("/tmp/waits") << "yes";
        ::_exit(next(monitor) == QStringList("+" + camera) ? 0 : 4);
    }
    EXPECT_TRUE(waitUntil([] { return ::access("/tmp/waits", F_OK) == 0; }));
    EXPECT_EQ(::chmod(node.c_str(), 0666), 0);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(WebcamPlugging, TellsOfEachOfAHundredCycles) {
    const QString camera = onlyCamera();
    OVideoDeviceMonitor monitor;
    for (int cycle = 0; cycle < CYCLES; ++cycle) {
        order("unplug");
        ASSERT_EQ(next(monitor), QStringList("-" + camera)) << cycle;
        order("plug");
        ASSERT_EQ(next(monitor), QStringList("+" + camera)) << cycle;
    }
    EXPECT_EQ(monitor.cameras(), videoDevices());
    Capture capture(camera, 640, 480);
    EXPECT_TRUE(capture.waitForPicture());
}

TEST(WebcamPlugging, AStormEndsWithTheCamerasThatAreThere) {
    const QString camera = onlyCamera();
    OVideoDeviceMonitor monitor;
    for (int cycle = 0; cycle < 10; ++cycle) {
        order("plug twin");
        order("unplug");
        monitor.take();
        order("unplug twin");
        order("plug");
    }
    order("plug twin");
    EXPECT_TRUE(waitUntil([] { return videoDevices().size() == 2; }));
    EXPECT_TRUE(settles(monitor));
    order("unplug twin");
    EXPECT_TRUE(waitUntil([&] { return cameras() == QStringList(camera); }));
    EXPECT_TRUE(settles(monitor));
}

// In a /dev of its own: nobody makes or removes the node in it, and no message of udev arrives.
TEST(ContainerPlugging, TellsOfACameraWhoseNodeStays) {
    const QString camera = onlyCamera();
    OVideoDeviceMonitor monitor;
    for (int cycle = 0; cycle < 3; ++cycle) {
        order("unplug");
        ASSERT_EQ(next(monitor), QStringList("-" + camera));
        order("plug");
        ASSERT_EQ(next(monitor), QStringList("+" + camera));
    }
    EXPECT_EQ(monitor.cameras(), videoDevices());
}
