// A machine of the test's making, and its listing.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_LISTING_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_V4L2_LISTING_FIXTURE_H

#include "platform/cameras/v4l2/v4l2_provider.h"
#include "unit/platform/cameras/v4l2/camera_fixture.h"

namespace ostrel::tests {

class ListingTest : public testing::Test {
protected:
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    std::shared_ptr<cameras::CameraProvider> provider = cameras::v4l2::makeProvider(kernel, discovery);

    static DeviceScript camera() {
        DeviceScript device;
        device.formats.push_back(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}));
        return device;
    }
    static DeviceScript cameraWith(const std::string& busInfo) {
        DeviceScript device = camera();
        device.busInfo = busInfo;
        return device;
    }
    // A node of which only its place in /dev is known.
    void addBare(const std::string& path, const DeviceScript& device) {
        kernel->plug(path, device);
        discovery->add(path);
    }
    static cameras::v4l2::NodeFacts described(const std::string& path, const std::string& capabilities,
                                              const std::string& port) {
        cameras::v4l2::NodeFacts facts;
        facts.path = path;
        facts.described = true;
        facts.capabilities = capabilities;
        facts.isUsb = true;
        facts.model = "046d:0825";
        facts.port = port;
        facts.interface = "00";
        facts.name = "HD Webcam";
        facts.driver = "uvcvideo";
        return facts;
    }
    std::vector<std::string> identifiers() {
        std::vector<std::string> result;
        for (const auto& one : provider->list())
            result.push_back(one->identifier());
        return result;
    }
    // What is said of the node; "camera" when nothing.
    std::string reason(const std::string& path) {
        for (const cameras::NodeReport& node : provider->nodes())
            if (node.path == path)
                return node.reason.empty() ? "camera" : node.reason;
        return "not found";
    }
    void TearDown() override {
        EXPECT_EQ(kernel->openDescriptors(), 0);
        EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
    }
};

} // namespace ostrel::tests

#endif
