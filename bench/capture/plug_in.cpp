#include "bench/capture/timed_kernel.h"

#include "platform/cameras/registry.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "platform/cameras/virtual/virtual_provider.h"
#include "support/v4l2/scripted_discovery.h"

namespace bench {

std::shared_ptr<TimedKernel> plugIn(const CameraModel& model, int count) {
    const auto kernel = std::make_shared<TimedKernel>();
    const auto discovery = std::make_shared<ostrel::support::ScriptedDiscovery>();
    const ostrel::support::DeviceScript camera = timedCamera(model);
    for (int i = 0; i < count; ++i) {
        ostrel::cameras::v4l2::NodeFacts facts;
        const std::string number = std::to_string(i);
        facts.path = "/dev/video" + number;
        facts.described = true;
        facts.capabilities = ":capture:";
        facts.isUsb = true;
        facts.model = "1209:0001";
        facts.serial = "serial" + number;
        facts.port = "0000:00:14.0-usb-" + number;
        facts.interface = "00";
        facts.name = "Timed camera " + number;
        kernel->plug(facts.path, camera);
        discovery->add(facts);
    }
    ostrel::cameras::setProviders(
        {ostrel::cameras::v4l2::makeProvider(kernel, discovery), ostrel::cameras::virtualProvider()});
    return kernel;
}

} // namespace bench
