// The fixture of tests that need cameras: a machine that has the cameras that the test attaches, and no
// others.
#ifndef OSTREL_TESTS_SUPPORT_CAMERA_TEST_H
#define OSTREL_TESTS_SUPPORT_CAMERA_TEST_H

#include "support/machine.h"
#include "support/scripted_camera.h"
#include "support/stderr_capture.h"

#include <gtest/gtest.h>

#include <iostream>

namespace ostrel::support {

using Lines = std::vector<std::string>;

class CameraTest : public ::testing::Test {
protected:
    ~CameraTest() override {
        for (const auto& camera : added_)
            cameras::removeCamera(camera);
        if (HasFailure())
            for (const std::string& line : err.takeLines())
                std::cout << "  standard error: " << line << "\n";
    }

    std::shared_ptr<ScriptedCamera> attach(const std::string& identifier,
                                           const std::string& name = "Scripted") {
        const auto camera = std::make_shared<ScriptedCamera>(identifier, name);
        EXPECT_TRUE(cameras::addCamera(camera));
        added_.push_back(camera);
        return camera;
    }

    void detach(const std::shared_ptr<ScriptedCamera>& camera) {
        cameras::removeCamera(camera);
        camera->unplug();
    }

    Machine machine;
    StderrCapture err;

private:
    std::vector<std::shared_ptr<cameras::Camera>> added_;
};

} // namespace ostrel::support

#endif
