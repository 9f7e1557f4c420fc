// The fixture of tests with cameras that PipeWire offers: a session of their own.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_TEST_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_PIPEWIRE_PIPEWIRE_TEST_H

#include "platform/cameras/pipewire/pipewire_provider.h"
#include "platform/cameras/pipewire/remote.h"
#include "platform/cameras/provider.h"
#include "support/pipewire/session.h"
#include "support/recording_sink.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace ostrel::tests {

using support::comesTrue;

class PipeWireTest : public ::testing::Test {
protected:
    using Words = std::vector<std::string>;
    using FramePointer = support::RecordingSink::FramePointer;

    support::PipeWireSession session;
    const std::shared_ptr<cameras::pipewire::Remote> remote = std::make_shared<cameras::pipewire::Remote>();
    const std::shared_ptr<cameras::CameraProvider> provider = cameras::pipewire::makeProvider(remote);
    std::shared_ptr<support::RecordingSink> sink = std::make_shared<support::RecordingSink>();
    std::shared_ptr<cameras::Camera> camera;

    void TearDown() override {
        if (camera)
            camera->close();
    }

    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const auto& one : provider->list())
            result.push_back(one->displayName());
        return result;
    }
    std::shared_ptr<cameras::Camera> listed(const std::string& name) {
        for (const auto& one : provider->list())
            if (one->displayName() == name)
                return one;
        return nullptr;
    }
    // Opens and starts the camera of that name.
    cameras::Error start(const std::string& name, int width = 640, int height = 480) {
        camera = listed(name);
        if (!camera)
            return cameras::Error("not listed");
        if (const cameras::Error refused = camera->open())
            return refused;
        return camera->start(width, height, sink);
    }
};

} // namespace ostrel::tests

#endif
