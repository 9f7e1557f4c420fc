// A camera that has a node, which is in use or not permitted, and that PipeWire offers as well.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "platform/cameras/registry.h"
#include "platform/cameras/v4l2/v4l2_backend.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <cerrno>
#include <csignal>
#include <sys/stat.h>

namespace ostrel::tests {

using support::PipeWireCamera;

class Fallback : public PipeWireTest {
protected:
    const std::string path = "/dev/null"; // any device number does
    const std::shared_ptr<support::ScriptedKernel> kernel = std::make_shared<support::ScriptedKernel>();
    const std::shared_ptr<support::ScriptedDiscovery> discovery =
        std::make_shared<support::ScriptedDiscovery>();
    cameras::Providers before;

    void SetUp() override {
        support::DeviceScript device;
        device.formats.push_back(support::raw(V4L2_PIX_FMT_GREY, {support::only(64, 48)}));
        device.period = 1000000;
        device.picture = std::make_shared<std::vector<uint8_t>>(64 * 48, uint8_t(77));
        kernel->plug(path, device);
        cameras::v4l2::NodeFacts facts;
        facts.path = path;
        facts.name = "Webcam";
        struct stat file = {};
        ASSERT_EQ(::stat(path.c_str(), &file), 0);
        facts.device = file.st_rdev;
        discovery->add(facts);
        before = cameras::setProviders({cameras::v4l2::makeProvider(kernel, discovery), provider});
        const auto all = cameras::attachedCameras();
        ASSERT_EQ(all.size(), 1u);
        camera = all.front();
    }
    void TearDown() override {
        PipeWireTest::TearDown();
        cameras::setProviders(before);
        EXPECT_EQ(kernel->openDescriptors(), 0);
    }
    std::string way() { return camera->statistics().by; }

    const PipeWireCamera pipewire{"one", {"path=/dev/null", "sizes=64x48", "format=GREY"}};
};

TEST_F(Fallback, TheNodeIsTheFirstWay) {
    ASSERT_EQ(camera->open().text, "");
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    EXPECT_EQ(way(), "V4L2 (/dev/null)");
}

TEST_F(Fallback, BusyAtTheNodeItIsCapturedThroughPipeWireUntilItsNextStart) {
    ASSERT_EQ(camera->open().text, "");
    kernel->failNext(VIDIOC_REQBUFS, EBUSY);
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    EXPECT_EQ(way(), "PipeWire (one)");
    EXPECT_EQ(camera->identifier(), cameras::attachedCameras().front()->identifier());
    camera->stop(sink);
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForMoreFrames(2));
    EXPECT_EQ(way(), "V4L2 (/dev/null)");
}

TEST_F(Fallback, WhoMayNotOpenTheNodeCapturesThroughPipeWire) {
    kernel->failNext(support::OPEN, EACCES);
    ASSERT_EQ(camera->open().text, "");
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    EXPECT_EQ(way(), "PipeWire (one)");
    EXPECT_TRUE(camera->attached());
}

TEST_F(Fallback, RefusedBothWaysItSaysBoth) {
    session.manager().end(SIGKILL);
    ASSERT_EQ(camera->open().text, "");
    kernel->failNext(VIDIOC_REQBUFS, EBUSY);
    const cameras::Error refused = camera->start(64, 48, sink);
    EXPECT_EQ(refused.code, EBUSY);
    EXPECT_EQ(refused.text.find("Webcam (/dev/null) is in use by another program"), 0u) << refused.text;
    EXPECT_NE(refused.text.find("; and by another way: PipeWire offers one (PipeWire), but nobody connects"),
              std::string::npos)
        << refused.text;
    ASSERT_EQ(camera->start(64, 48, sink).text, "") << "the node is free again";
}

TEST_F(Fallback, APipeWireThatLeavesEndsTheStreamAndTheNodeStays) {
    ASSERT_EQ(camera->open().text, "");
    kernel->failNext(VIDIOC_REQBUFS, EBUSY);
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    session.daemon().end(SIGKILL);
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_TRUE(camera->attached());
    ASSERT_EQ(camera->start(64, 48, sink).text, "");
    ASSERT_TRUE(sink->waitForMoreFrames(2));
    EXPECT_EQ(way(), "V4L2 (/dev/null)");
}

} // namespace ostrel::tests
