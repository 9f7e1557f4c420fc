// One attached and opened test pattern camera for each test.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_CAPTURE_FIXTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_CAPTURE_FIXTURE_H

#include "readings.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

class PatternFixture : public testing::Test {
protected:
    static constexpr int WIDTH = 320, HEIGHT = 240;

    explicit PatternFixture(double framesPerSecond = 1000)
        : virtualCamera(new OVideoTestPatternCamera(QString::fromLatin1("fixture"),
                                                    QString::fromLatin1("Fixture"), WIDTH, HEIGHT,
                                                    framesPerSecond)) {}

    void SetUp() override {
        ASSERT_TRUE(virtualCamera->attach());
        camera = listed("fixture");
        ASSERT_NE(camera, nullptr);
        ASSERT_FALSE(camera->open());
    }
    void TearDown() override {
        if (camera)
            camera->close();
    }

    std::unique_ptr<OVideoTestPatternCamera> virtualCamera;
    std::shared_ptr<cameras::Camera> camera;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
};

} // namespace ostrel::tests

#endif
