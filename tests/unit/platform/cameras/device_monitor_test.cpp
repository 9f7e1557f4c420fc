#include <ostrel/device_monitor.h>
#include <ostrel/devices.h>
#include <ostrel/virtual_camera.h>

#include "support/camera_test.h"
#include "support/process_figures.h"
#include "support/recording_sink.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include "platform/cameras/streaming_camera.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "platform/cameras/virtual/push_backend.h"

#include <chrono>
#include <poll.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace ostrel::tests {

namespace {

using Names = QMap<QString, QString>;

const int HANG_MS = static_cast<int>(std::chrono::milliseconds(support::HANG).count());

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

bool isReadable(const OVideoDeviceMonitor& monitor) {
    pollfd descriptor = {monitor.descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
}

// "+ identifier (name)"
QStringList take(OVideoDeviceMonitor& monitor) {
    QStringList lines;
    const QList<OVideoDeviceChange> changes = monitor.take();
    for (const OVideoDeviceChange& change : changes)
        lines.append(QString("%1 %2 (%3)")
                         .arg(change.kind() == OVideoDeviceChange::ADDED ? "+" : "-", change.uniqueID(),
                              change.name()));
    return lines;
}

class DeviceMonitor : public support::CameraTest {};

// A machine with nodes, which may be forbidden and may come without a word.
class MonitorOfNodes : public support::CameraTest {
protected:
    const std::shared_ptr<support::ScriptedKernel> kernel = std::make_shared<support::ScriptedKernel>();
    const std::shared_ptr<support::ScriptedDiscovery> discovery =
        std::make_shared<support::ScriptedDiscovery>();

    MonitorOfNodes() { machine.has(cameras::v4l2::makeProvider(kernel, discovery)); }

    void plug(const std::string& path) {
        support::DeviceScript device;
        device.formats.push_back(support::raw(V4L2_PIX_FMT_YUYV, {support::only(640, 480)}));
        device.busInfo = path;
        kernel->plug(path, device);
        discovery->add(path, "Webcam");
    }
    void unplug(const std::string& path) {
        discovery->remove(path);
        kernel->unplug(path);
    }
};

} // namespace

TEST_F(DeviceMonitor, StandsOnTheCamerasThatWereThereAtItsConstruction) {
    attach("camera-1", "Eins \xC3\xA4");
    OVideoDeviceMonitor monitor;
    EXPECT_EQ(monitor.cameras(), (Names{{"camera-1", text("Eins \xC3\xA4")}}));
    EXPECT_EQ(take(monitor), QStringList());
    EXPECT_FALSE(isReadable(monitor));
    EXPECT_EQ(monitor.wait(0), 0);
}

TEST_F(DeviceMonitor, TellsOfEachCameraWithItsNameRemovalsFirst) {
    const auto one = attach("camera-1", "Eins \xC3\xA4");
    OVideoDeviceMonitor monitor;
    attach("camera-2", "Zwei");
    attach("camera-0", "Null");
    detach(one);
    EXPECT_EQ(monitor.wait(-1), 1);
    EXPECT_EQ(monitor.cameras().size(), 1) << "until they are taken";
    EXPECT_EQ(take(monitor),
              (QStringList{text("- camera-1 (Eins \xC3\xA4)"), "+ camera-0 (Null)", "+ camera-2 (Zwei)"}));
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

TEST_F(DeviceMonitor, AnotherNameIsAnotherCamera) {
    const auto before = attach("camera-1", "Before");
    OVideoDeviceMonitor monitor;
    cameras::removeCamera(before);
    attach("camera-1", "After");
    EXPECT_EQ(take(monitor), (QStringList{"- camera-1 (Before)", "+ camera-1 (After)"}));
}

TEST_F(DeviceMonitor, AfterAWaitThatFoundSomethingThereIsSomethingToTake) {
    OVideoDeviceMonitor monitor;
    const auto camera = attach("camera-1");
    ASSERT_EQ(monitor.wait(-1), 1);
    detach(camera);
    EXPECT_EQ(monitor.wait(0), 1);
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(take(monitor), QStringList("+ camera-1 (Scripted)"));
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(take(monitor), QStringList("- camera-1 (Scripted)"));
    EXPECT_FALSE(isReadable(monitor));
}

TEST_F(DeviceMonitor, AWaitEndsWhenACameraComes) {
    OVideoDeviceMonitor monitor;
    std::thread other([this] { attach("camera-1"); });
    EXPECT_EQ(monitor.wait(HANG_MS), 1);
    other.join();
    EXPECT_EQ(monitor.take().size(), 1);
}

TEST_F(DeviceMonitor, AWaitInVainTakesItsTime) {
    OVideoDeviceMonitor monitor;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(monitor.wait(50), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
}

TEST_F(DeviceMonitor, EachMonitorTellsItsOwner) {
    OVideoDeviceMonitor first;
    OVideoTestPatternCamera camera("pattern-1", "Pattern");
    camera.attach();
    OVideoDeviceMonitor second;
    EXPECT_EQ(take(first), QStringList("+ pattern-1 (Pattern)"));
    EXPECT_EQ(take(second), QStringList());
    camera.detach();
    EXPECT_EQ(take(second), QStringList("- pattern-1 (Pattern)"));
    EXPECT_TRUE(isReadable(first));
    EXPECT_EQ(take(first), QStringList("- pattern-1 (Pattern)"));
}

TEST_F(DeviceMonitor, AChangeOutlivesTheMonitor) {
    QList<OVideoDeviceChange> changes;
    {
        OVideoDeviceMonitor monitor;
        attach("camera-1", "Eins");
        changes = monitor.take();
    }
    ASSERT_EQ(changes.size(), 1);
    const OVideoDeviceChange copy = changes.takeFirst();
    EXPECT_EQ(copy.uniqueID(), text("camera-1"));
    EXPECT_EQ(copy.name(), text("Eins"));
}

TEST_F(DeviceMonitor, LooksEachTimeWhereTheSystemHasNoDescriptorsLeft) {
    {
        // A sanitizer needs descriptors itself when it meets a class for the first time.
        OVideoDeviceMonitor first;
        attach("camera-0");
        EXPECT_EQ(first.wait(0), 1);
        EXPECT_EQ(take(first).size(), 1);
    }
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    OVideoDeviceMonitor monitor;
    attach("camera-1");
    QString why;
    EXPECT_EQ(monitor.descriptor(), -1);
    EXPECT_EQ(monitor.wait(0), 1) << "there is something already";
    EXPECT_EQ(take(monitor), QStringList("+ camera-1 (Scripted)"));
    EXPECT_EQ(monitor.wait(-1, &why), -1);
    EXPECT_TRUE(why.contains("descriptor")) << why.toUtf8().constData();
    EXPECT_EQ(monitor.wait(-1), -1);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

// A kind may make a new object of its cameras for each listing.
TEST_F(DeviceMonitor, AnotherObjectForTheSameCameraIsNoOtherCamera) {
    struct Fresh : cameras::CameraProvider {
        std::vector<std::shared_ptr<cameras::Camera>> list() override {
            return {std::make_shared<support::ScriptedCamera>("fresh")};
        }
    };
    machine.has(std::make_shared<Fresh>());
    OVideoDeviceMonitor monitor;
    attach("camera-1");
    EXPECT_EQ(take(monitor), QStringList("+ camera-1 (Scripted)"));
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

// Between the moment in which a camera leaves the listing and the one in which it learns of that, another
// thread may plug it in again.
TEST_F(DeviceMonitor, ACameraThatLearnsLateThatItHasLeftIsToldOfAllTheSame) {
    const auto plug = [] {
        const cameras::StreamingCamera::Identity identity = {"camera-1", "Camera", "Camera"};
        const auto camera =
            std::make_shared<cameras::StreamingCamera>(identity, std::make_shared<cameras::PushBackend>());
        EXPECT_TRUE(cameras::addCamera(camera));
        return camera;
    };
    const auto before = plug();
    OVideoDeviceMonitor monitor;
    cameras::removeCamera(before);
    const auto after = plug();
    EXPECT_EQ(take(monitor), QStringList());
    before->unplug();
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(take(monitor), (QStringList{"- camera-1 (Camera)", "+ camera-1 (Camera)"}));
    cameras::removeCamera(after);
}

TEST_F(DeviceMonitor, AThousandCyclesLeaveNothingBehind) {
    const auto cycles = [](int count) {
        OVideoTestPatternCamera camera("pattern-1", "Pattern");
        OVideoDeviceMonitor monitor;
        for (int cycle = 0; cycle < count; ++cycle) {
            camera.attach();
            ASSERT_EQ(monitor.wait(HANG_MS), 1);
            ASSERT_EQ(take(monitor), QStringList("+ pattern-1 (Pattern)"));
            camera.detach();
            ASSERT_EQ(monitor.wait(HANG_MS), 1);
            ASSERT_EQ(take(monitor), QStringList("- pattern-1 (Pattern)"));
        }
    };
    cycles(10);
    const auto before = support::processFigures();
    cycles(1000);
    const auto after = support::processFigures();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_TRUE(support::threadsComeDownTo(before.threads));
    EXPECT_LE(after.heapBytes, before.heapBytes + 16 * 1024);
}

TEST_F(MonitorOfNodes, ACameraIsAddedOnceItMayBeOpened) {
    OVideoDeviceMonitor monitor;
    discovery->permit("/dev/video0", false);
    plug("/dev/video0");
    EXPECT_EQ(videoDevices().size(), 1);
    EXPECT_EQ(take(monitor), QStringList());
    discovery->permit("/dev/video0", true);
    EXPECT_EQ(monitor.take().size(), 1);
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

TEST_F(MonitorOfNodes, ACameraPluggedInAnewIsNotThereUntilItMayBeOpened) {
    plug("/dev/video0");
    OVideoDeviceMonitor monitor;
    unplug("/dev/video0");
    discovery->permit("/dev/video0", false);
    plug("/dev/video0");
    ASSERT_EQ(take(monitor).size(), 1);
    EXPECT_EQ(monitor.cameras(), Names());
    discovery->permit("/dev/video0", true);
    EXPECT_EQ(monitor.take().size(), 1);
}

TEST_F(MonitorOfNodes, PermissionsThatAreTakenBackRemoveNoCamera) {
    plug("/dev/video0");
    OVideoDeviceMonitor monitor;
    discovery->permit("/dev/video0", false);
    EXPECT_EQ(take(monitor), QStringList());
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

TEST_F(MonitorOfNodes, AChangeThatNobodyToldOfIsFoundWithTheNext) {
    OVideoDeviceMonitor monitor;
    discovery->setSilent(true);
    plug("/dev/video0");
    EXPECT_EQ(take(monitor), QStringList());
    discovery->setSilent(false);
    plug("/dev/video1");
    EXPECT_EQ(take(monitor).size(), 2);
    EXPECT_EQ(monitor.cameras(), videoDevices());
}

TEST_F(MonitorOfNodes, MessagesOfSeveralKindsAreTakenTogether) {
    OVideoDeviceMonitor monitor;
    plug("/dev/video0");
    attach("camera-1");
    EXPECT_EQ(monitor.take().size(), 2);
    EXPECT_FALSE(isReadable(monitor));
}

// As in a container, where no message arrives.
TEST_F(MonitorOfNodes, ACameraThatLeavesWhileItIsCapturedFromTellsItself) {
    plug("/dev/video0");
    OVideoDeviceMonitor monitor;
    const auto camera = cameras::attachedCameras().front();
    const auto sink = std::make_shared<support::RecordingSink>();
    ASSERT_EQ(camera->open().text, "");
    ASSERT_EQ(camera->start(640, 480, sink).text, "");
    discovery->setSilent(true);
    unplug("/dev/video0");
    EXPECT_EQ(monitor.wait(HANG_MS), 1);
    EXPECT_EQ(take(monitor).size(), 1);
    camera->stop(sink);
    camera->close();
}

TEST_F(MonitorOfNodes, FollowsAMachineThatHasOtherKindsOfCameraNow) {
    OVideoDeviceMonitor monitor;
    plug("/dev/video0");
    EXPECT_EQ(monitor.take().size(), 1);
    machine.has(nullptr);
    EXPECT_EQ(monitor.wait(HANG_MS), 1);
    EXPECT_EQ(take(monitor).size(), 1);
    plug("/dev/video1");
    EXPECT_FALSE(isReadable(monitor)) << "of no concern any more";
    machine.has(cameras::v4l2::makeProvider(kernel, discovery));
    EXPECT_EQ(monitor.take().size(), 2);
    plug("/dev/video2");
    EXPECT_TRUE(isReadable(monitor));
    EXPECT_EQ(monitor.take().size(), 1);
}

} // namespace ostrel::tests
