// Permission, interruptions, stalls and unplugging.
#include "base/monotonic_clock.h"
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <cerrno>

namespace ostrel::tests {

using cameras::Error;
using standin::Trouble;

namespace {

enum Authorization { UNANSWERED, RESTRICTED, DENIED, AUTHORIZED }; // as published

} // namespace

class AvPermission : public AvFoundationTest {
protected:
    AvPermission() {
        device.formats = {format(64, 48)};
        device.period = 1000000;
    }
};

TEST_F(AvPermission, DeniedAndRestrictedAreReasonsThatNameTheSettingsPage) {
    standin::plug(device);
    camera = provider->list().at(0);
    for (const int answer : {DENIED, RESTRICTED}) {
        standin::setAuthorization(answer);
        const Error refused = camera->open();
        EXPECT_EQ(refused.code, EACCES);
        EXPECT_NE(refused.text.find("Camera"), std::string::npos);
        EXPECT_NE(refused.text.find("System Settings, Privacy & Security, Camera"), std::string::npos)
            << refused.text;
        EXPECT_EQ(refused.text.find("manages this Mac") != std::string::npos, answer == RESTRICTED);
    }
    standin::setAuthorization(AUTHORIZED);
    EXPECT_EQ(camera->open().text, "");
}

TEST_F(AvPermission, WithdrawnAfterTheOpeningItRefusesTheStart) {
    open();
    standin::setAuthorization(DENIED);
    EXPECT_EQ(start().code, EACCES);
    EXPECT_FALSE(standin::isStreaming("A"));
}

TEST_F(AvPermission, NotYetAnsweredGivesNoFramesAndSaysSoUntilItIs) {
    cameras::StallWatch::leastPause = 1000000; // it would be a stall
    standin::setAuthorization(UNANSWERED);
    open();
    ASSERT_EQ(start().text, "") << "the answer is not waited for";
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // of black frames
    EXPECT_EQ(sink->frames(), 0);
    EXPECT_NE(stalled().find("question"), std::string::npos) << stalled();
    EXPECT_EQ(camera->statistics().restarts, 0u);
    standin::setAuthorization(AUTHORIZED);
    EXPECT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(stalled(), "");
}

TEST_F(AvPermission, AnsweredWithNoItEndsTheStreamWithTheReason) {
    standin::setAuthorization(UNANSWERED);
    open();
    ASSERT_EQ(start().text, "");
    standin::setAuthorization(DENIED);
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_EQ(sink->why().code, EACCES);
    EXPECT_EQ(sink->frames(), 0);
    EXPECT_TRUE(camera->attached());
}

class AvInterruption : public AvPermission {};

TEST_F(AvInterruption, IsSaidAndNoStallAndOverWhenTheSystemSaysSo) {
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    cameras::StallWatch::leastPause = 1000000;
    standin::interruptSession("A", true);
    standin::setTrouble(Trouble::Silence);
    EXPECT_TRUE(comesTrue([&] { return stalled().find("interrupted") != std::string::npos; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(1300)); // longer than a wait for a frame
    EXPECT_EQ(camera->statistics().restarts, 0u);
    cameras::StallWatch::leastPause = 60 * NANOSECONDS_PER_SECOND;
    standin::interruptSession("A", false);
    standin::setTrouble(Trouble::None);
    EXPECT_TRUE(comesTrue([&] { return stalled().empty(); }));
    EXPECT_TRUE(sink->waitForMoreFrames(1));
}

TEST_F(AvInterruption, SilenceWithoutAWordIsAStallAndTheSessionIsStartedAgain) {
    cameras::StallWatch::leastPause = 10000000;
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    standin::setTrouble(Trouble::Silence);
    EXPECT_TRUE(comesTrue([&] { return camera->statistics().restarts >= 1; }));
    EXPECT_NE(stalled(), "");
    standin::setTrouble(Trouble::None);
    EXPECT_TRUE(sink->waitForMoreFrames(1));
    EXPECT_TRUE(comesTrue([&] { return stalled().empty(); }));
}

TEST_F(AvInterruption, WhatTheSystemSaysOfAFailureIsTheReasonOfTheEnd) {
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    standin::failSession("A", "the media services were reset");
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_NE(sink->why().text.find("the media services were reset"), std::string::npos);
    EXPECT_TRUE(camera->attached());
}

// Nobody turns a run loop here: the device itself is asked.
TEST_F(AvInterruption, UnpluggedAndPluggedInAgainTheNewCameraCaptures) {
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    standin::unplug("A");
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_EQ(sink->why().code, ENODEV);
    camera->close();
    standin::plug(device);
    camera = provider->list().at(0);
    ASSERT_EQ(camera->open().text, "");
    const auto again = std::make_shared<RecordingSink>();
    ASSERT_EQ(camera->start(64, 48, again).text, "");
    EXPECT_TRUE(again->waitForFrames(1));
    camera->stop(again);
}

// The list stands still, the picture with it: the stall rule says what to do, and the next listing the rest.
TEST_F(AvInterruption, UnpluggedUnnoticedItStallsUntilAListingNotices) {
    cameras::StallWatch::leastPause = 10000000;
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    standin::freezeList();
    standin::unplug("A");
    EXPECT_TRUE(comesTrue([&] { return !stalled().empty() || !sink->ends().empty(); }));
    EXPECT_TRUE(provider->list().empty());
    EXPECT_TRUE(sink->waitForEnd());
    EXPECT_FALSE(camera->attached());
}

} // namespace ostrel::tests
