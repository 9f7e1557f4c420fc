// The framework's buffers as pictures.
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <atomic>

namespace ostrel::tests {

class AvFrames : public AvFoundationTest {};

TEST_F(AvFrames, PaddedRowsAndAnyFourthByteBecomeTheExactPicture) {
    device.formats = {format(66, 50)};
    open();
    ASSERT_EQ(start(66, 50).text, "");
    ASSERT_TRUE(sink->waitForFrames(3));
    const auto frame = sink->newest();
    EXPECT_EQ(bgraOf(*frame, 66, 50), expected(66, 50));
    EXPECT_EQ(bgraOf(*frame, 32, 24), expected(32, 24)) << "scaled";
    EXPECT_EQ(bgraOf(*frame, 133, 99), expected(133, 99)) << "and enlarged";
    EXPECT_EQ(camera->statistics().taken, 1u);
}

TEST_F(AvFrames, SaysWhatItIsAndShowsTheRowsAsTheyLie) {
    device.formats = {format(64, 48)};
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    const auto frame = sink->newest();
    EXPECT_EQ(frame->facts().format, "BGRA");
    EXPECT_EQ(frame->facts().size, cameras::Size(64, 48));
    EXPECT_EQ(frame->facts().source, cameras::TimeSource::Arrival);
    EXPECT_GT(frame->facts().time, 0);
    int shown = 0;
    EXPECT_TRUE(frame->show([&](const cameras::pixels::Picture& picture) {
        ++shown;
        EXPECT_EQ(picture.layout, cameras::pixels::Layout::Bgrx);
        EXPECT_EQ(picture.planes[0].stride, 64 * 4 + 64);
        EXPECT_EQ(picture.planes[0].bytes, (64u * 4 + 64) * 47 + 64 * 4) << "nothing is behind the last row";
        EXPECT_EQ(picture.planes[0].data[0], device.grey);
    }));
    EXPECT_EQ(shown, 1);
}

TEST_F(AvFrames, AFrameOfAnotherSizeThanTheFormatsIsShownWholeAndTold) {
    device.formats = {format(64, 48)};
    device.formats[0].sentWidth = 40;
    device.formats[0].sentHeight = 40;
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    EXPECT_EQ(bgraOf(*sink->newest(), 64, 48), expected(64, 48));
    EXPECT_EQ(camera->statistics().granted.size, cameras::Size(40, 40));
}

TEST_F(AvFrames, SamplesWithoutAPictureAreCountedAndCostNothingElse) {
    device.formats = {format(64, 48)};
    device.nilFrames = 2;
    device.period = 1000000;
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(20));
    camera->stop(sink);
    EXPECT_GE(camera->statistics().dropped["damaged"], 5u);
    EXPECT_EQ(camera->statistics().restarts, 0u);
}

// The stand-in sends nothing while eight of its buffers are held.
TEST_F(AvFrames, HoweverManyAreHeldTheFrameworkKeepsItsBuffers) {
    device.formats = {format(64, 48)};
    device.period = 1000000;
    sink->keepAll = true;
    open();
    ASSERT_EQ(start().text, "");
    ASSERT_TRUE(sink->waitForFrames(30));
    EXPECT_EQ(camera->statistics().restarts, 0u) << "each would bring new buffers";
    camera->stop(sink);
    camera->close();
    const auto frames = sink->takeAll();
    for (const auto& frame : frames)
        EXPECT_EQ(bgraOf(*frame, 64, 48), expected(64, 48));
}

TEST_F(AvFrames, WhoFallsBehindGetsTheNewestAndTheRestIsCounted) {
    device.formats = {format(64, 48)};
    device.period = 1000000;
    std::atomic<bool> first{true};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        if (first.exchange(false)) {
            EXPECT_TRUE(comesTrue([&] { return camera->statistics().skipped >= 3; }));
        }
    };
    open();
    ASSERT_EQ(start().text, "");
    EXPECT_TRUE(sink->waitForFrames(2));
    camera->stop(sink);
}

TEST_F(AvFrames, CallsThatComeAfterTheStopReachNobody) {
    device.formats = {format(64, 48)};
    device.period = 1000000;
    open();
    for (int i = 0; i < 30; ++i) {
        ASSERT_EQ(start().text, "");
        ASSERT_TRUE(sink->waitForMoreFrames(1));
        camera->stop(sink);
        const int arrived = sink->frames();
        std::this_thread::yield();
        ASSERT_EQ(sink->frames(), arrived);
    }
    EXPECT_EQ(standin::leftBehind().find("queues"), std::string::npos) << "every late call has been made";
}

} // namespace ostrel::tests
