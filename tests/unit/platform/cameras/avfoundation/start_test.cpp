// Which format is chosen, and what becomes of a start that meets trouble.
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <cerrno>

namespace ostrel::tests {

using cameras::Error;
using standin::Trouble;

class AvStart : public AvFoundationTest {
protected:
    AvStart() {
        device.formats = {format(1920, 1080), format(640, 480), format(1280, 720), format(640, 480, 15)};
    }
};

// Unless the device is locked until it runs, the framework goes back to its first format.
TEST_F(AvStart, TakesTheSmallestFormatThatCoversTheRequestAtFullRate) {
    open();
    ASSERT_EQ(start(640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    const cameras::Mode granted = camera->statistics().granted;
    EXPECT_EQ(granted.size, cameras::Size(640, 480));
    EXPECT_EQ(granted.format, "420v");
    EXPECT_DOUBLE_EQ(granted.rate(), 30);
    EXPECT_EQ(camera->statistics().by, "AVFoundation");
    EXPECT_EQ(standin::activeWidth("A"), 640);
}

TEST_F(AvStart, OneThatWantsMoreGetsItForAllWithoutARestartOfItsNeighbour) {
    const auto larger = std::make_shared<RecordingSink>();
    open();
    ASSERT_EQ(start(320, 240).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    ASSERT_EQ(camera->start(1280, 720, larger).text, "");
    EXPECT_TRUE(larger->waitForFrames(1));
    EXPECT_EQ(camera->statistics().granted.size, cameras::Size(1280, 720));
    EXPECT_TRUE(sink->waitForMoreFrames(1));
    camera->stop(larger);
    EXPECT_TRUE(sink->waitForMoreFrames(1));
}

TEST_F(AvStart, ALargerFormatThatIsSlowerIsNotTakenFromWhoHasAFastOne) {
    device.formats = {format(640, 480), format(1920, 1080, 5)};
    const auto larger = std::make_shared<RecordingSink>();
    open();
    ASSERT_EQ(start(640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    ASSERT_EQ(camera->start(1920, 1080, larger).text, "");
    EXPECT_TRUE(larger->waitForFrames(1));
    EXPECT_EQ(camera->statistics().granted.size, cameras::Size(640, 480));
    EXPECT_NE(camera->statistics().shared.find("is shared at 640x480"), std::string::npos);
    camera->stop(larger);
}

TEST_F(AvStart, AFormatThatRaisesAnExceptionGivesWayToTheNext) {
    device.formats[1].refused = true;
    open();
    ASSERT_EQ(start(640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(camera->statistics().granted.size, cameras::Size(1280, 720)); // the other one is slow
    EXPECT_EQ(bgraOf(*sink->newest(), 64, 48), expected(64, 48));
}

TEST_F(AvStart, ADeviceThatCannotBeLockedRunsAsItIs) {
    standin::setTrouble(Trouble::NotLocked);
    open();
    ASSERT_EQ(start(640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(camera->statistics().granted.size, cameras::Size(1920, 1080));
    EXPECT_EQ(bgraOf(*sink->newest(), 640, 480), expected(640, 480));
}

TEST_F(AvStart, WhatTheFrameworkRefusesIsToldInWordsAndCanBeTriedAgain) {
    const struct {
        Trouble trouble;
        const char* words;
    } refusals[] = {{Trouble::StartRaises, "startRunning has raised an exception"},
                    {Trouble::StartFails, "the camera gave no picture"},
                    {Trouble::NotAdmitted, "does not let it be captured from"}};
    open();
    for (const auto& one : refusals) {
        standin::setTrouble(one.trouble);
        const Error refused = start();
        EXPECT_NE(refused.text.find("Cannot start Camera"), std::string::npos) << refused.text;
        EXPECT_NE(refused.text.find(one.words), std::string::npos) << refused.text;
        standin::setTrouble(Trouble::None);
        ASSERT_EQ(start().text, "");
        EXPECT_TRUE(sink->waitForMoreFrames(1));
        camera->stop(sink);
    }
}

TEST_F(AvStart, ACameraThatWillNotOpenSaysWhy) {
    standin::plug(device);
    camera = provider->list().at(0);
    standin::setTrouble(Trouble::InUse);
    const Error used = camera->open();
    EXPECT_EQ(used.code, EBUSY);
    EXPECT_NE(used.text.find("in use by another program"), std::string::npos) << used.text;
    standin::setTrouble(Trouble::OpenRaises);
    EXPECT_NE(camera->open().text.find("raised an exception"), std::string::npos);
    standin::setTrouble(Trouble::None);
    EXPECT_EQ(camera->open().text, "");
}

TEST_F(AvStart, ASlowStartIsSatOutAndAStopDuringItIsTheEnd) {
    device.startMilliseconds = 200;
    open();
    std::thread starter([&] { start(); });
    camera->stop(sink);
    starter.join();
    camera->stop(sink);
    const int arrived = sink->frames();
    EXPECT_FALSE(standin::isStreaming("A"));
    EXPECT_EQ(sink->frames(), arrived);
}

TEST_F(AvStart, StartsAndStopsAtEveryMomentLeaveNothingBehind) {
    device.formats = {format(64, 48)};
    device.startMilliseconds = 1;
    device.period = 500000;
    open();
    for (int i = 0; i < 60; ++i) {
        ASSERT_EQ(start().text, "");
        std::this_thread::sleep_for(std::chrono::microseconds(100 * (i % 20)));
        camera->stop(sink);
    }
}

} // namespace ostrel::tests
