#include "unit/failure/failing_allocations.h"

#include <ostrel/devices.h>

#include "platform/cameras/v4l2/discovery.h"
#include "support/camera_test.h"

#include <filesystem>
#include <unistd.h>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

const char* const FIRST = "camera-with-an-identifier-too-long-for-the-string-object-itself";
const char* const SECOND = "another-camera-with-an-identifier-too-long-for-the-string-object";

class ListingWithoutMemory : public support::CameraTest {
protected:
    void SetUp() override {
        attach(FIRST, "A name too long for the string object itself");
        attach(SECOND, "Another name too long for the string object itself");
    }

    static void expectBothListed() {
        const QMap<QString, QString> cameras = videoDevices();
        EXPECT_EQ(cameras.size(), 2);
        EXPECT_TRUE(cameras.contains(FIRST) && cameras.contains(SECOND));
    }
};

} // namespace

TEST_F(ListingWithoutMemory, TheMapOfCameras) {
    EXPECT_GE(failEachInTurn([](int n) {
                  const Outcome outcome = runFailingAt(n, [] { videoDevices(); });
                  expectBothListed();
                  return outcome;
              }),
              4);
}

// The framework keeps an object for each camera that it has ever listed: what stays of a first listing must
// not depend on where it failed.
TEST_F(ListingWithoutMemory, CamerasListedForTheFirstTime) {
    int fresh = 0;
    EXPECT_GE(failEachInTurn([&](int n) {
                  const auto camera = std::make_shared<support::ScriptedCamera>(
                      FIRST + std::to_string(fresh++), "A new camera with a long name");
                  EXPECT_TRUE(cameras::addCamera(camera));
                  const Outcome outcome = runFailingAt(n, [] { videoDevices(); });
                  EXPECT_EQ(videoDevices().size(), 3);
                  cameras::removeCamera(camera);
                  return outcome;
              }),
              6);
}

TEST_F(ListingWithoutMemory, TheListOfDevices) {
    OVideoInfoMacX info;
    EXPECT_GE(failEachInTurn([&](int n) {
                  QList<OVideoDeviceUnix*> devices;
                  const Outcome outcome = runFailingAt(n, [&] { devices = info.devices(); });
                  EXPECT_EQ(devices.size(), outcome.thrown ? 0 : 2);
                  qDeleteAll(devices);
                  expectBothListed();
                  return outcome;
              }),
              8);
}

TEST_F(ListingWithoutMemory, OneDeviceByItsIdentifier) {
    OVideoInfoMacX info;
    EXPECT_GE(failEachInTurn([&](int n) {
                  const Outcome outcome = runFailingAt(n, [&] { info.deviceByID(FIRST); });
                  EXPECT_TRUE(info.deviceByID(FIRST));
                  return outcome;
              }),
              9);
}

TEST_F(ListingWithoutMemory, TheObjectThatLists) {
    EXPECT_GE(failEachInTurn([](int n) { return runFailingAt(n, [] { OVideoInfoUnix::ptr(); }); }), 3);
}

TEST_F(ListingWithoutMemory, ADeviceRecord) {
    EXPECT_GE(failEachInTurn([](int n) {
                  return runFailingAt(n, [] {
                      OVideoDeviceUnix device;
                      device.setName("A name");
                      device.setUniqueID("An identifier");
                      device.setDeviceFile("A file");
                      const OVideoFormat format = {4, 320, 240};
                      device.addVideoFormat(format);
                      QList<OVideoFormat> formats = device.videoFormats();
                      formats.append(format);
                      device.setVideoFormats(formats);
                  });
              }),
              1);
}

TEST_F(ListingWithoutMemory, ADeviceRecordKeepsWhatItHadWhenAFormatCannotBeAdded) {
    const int failures = failEachInTurn([](int n) {
        OVideoDeviceUnix device;
        device.setName("A name");
        const OVideoFormat format = {4, 320, 240};
        device.addVideoFormat(format);
        const Outcome outcome = runFailingAt(n, [&] { device.addVideoFormat(format); });
        EXPECT_EQ(device.name(), QString("A name"));
        EXPECT_EQ(device.videoFormats().size(), outcome.thrown ? 1 : 2);
        return outcome;
    });
    // A format is a block of its own in Qt 5. In Qt 6 the list is one, taken inside of Qt.
    EXPECT_EQ(failures, QT_VERSION < QT_VERSION_CHECK(6, 0, 0) ? 1 : 0);
}

TEST(DiscoveryWithoutMemory, VideoNodes) {
    const std::string folder = testing::TempDir() + "nodes" + std::to_string(::getpid());
    std::filesystem::create_directory(folder);
    std::filesystem::create_symlink("/dev/null", folder + "/video0"); // devices that every machine has
    std::filesystem::create_symlink("/dev/zero", folder + "/video1");
    const auto discovery = cameras::v4l2::makeDiscovery(folder);
    EXPECT_EQ(discovery->nodes().size(), 2U);
    EXPECT_GE(failEachInTurn([&](int n) { return runFailingAt(n, [&] { discovery->nodes(); }); }), 4);
    std::filesystem::remove_all(folder);
}
