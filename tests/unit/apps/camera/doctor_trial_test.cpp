// What the doctor sees of a camera that it captures from, with cameras that are told to fail.
#include "apps/camera/doctor/checks.h"

#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;
using namespace ostrel::apps::cli;
using namespace ostrel::apps::cli::doctor;

const double LONG = 60; // seconds; a hang, not a measure

class DoctorTrial : public testing::Test {
protected:
    DoctorTrial() { camera_.attach(); }

    Findings examine(double timeout) {
        const Trial trial = tryCamera({"patient", "Patient", {}}, {320, 240}, timeout, stop_);
        return checkCamera(Machine(), trial);
    }

    OVideoTestPatternCamera camera_{"patient", "Patient", 320, 240};
    StopRequest stop_;
};

TEST_F(DoctorTrial, TheTestCameraIsHealthy) {
    const Findings findings = examine(LONG);
    EXPECT_EQ(worst(findings), Verdict::Ok) << findingsText(findings);
    EXPECT_EQ(findings.size(), 5U);
}

TEST_F(DoctorTrial, EachRefusalIsAProblemOfTheStart) {
    for (const VIRTUAL_CAMERA_FAULT fault :
         {VIRTUAL_CAMERA_FAULT_OPEN, VIRTUAL_CAMERA_FAULT_INPUT, VIRTUAL_CAMERA_FAULT_OUTPUT}) {
        camera_.setFault(fault);
        const Findings findings = examine(LONG);
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_EQ(findings[0].verdict, Verdict::Problem);
        EXPECT_EQ(findings[0].fact.find("it does not start: Patient was told "), 0U) << findings[0].fact;
    }
}

TEST_F(DoctorTrial, SilenceIsAProblemOfTheFrames) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    const Findings findings = examine(0.2);
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[1].check, "frames");
    EXPECT_EQ(findings[1].verdict, Verdict::Problem);
    EXPECT_EQ(findings[1].camera, "patient");
}

TEST(Brightest, IsTheLargestColourWhateverTheFourthByteSays) {
    EXPECT_EQ(brightestOf({16, 16, 16, 255, 18, 20, 16, 255}), 20);
    EXPECT_EQ(brightestOf({}), 0);
}

} // namespace
