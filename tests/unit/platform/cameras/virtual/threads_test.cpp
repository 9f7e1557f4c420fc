// One delivery thread for each running camera, whoever shares it.
#include "capture_fixture.h"

#include <filesystem>
#include <fstream>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

class Threads : public PatternFixture {};

// Waits for it, as a thread that was joined is still listed for a moment.
bool becomesTheNumberOfDeliveryThreads(int expected) {
    return support::comesTrue([&] {
        int count = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::string name;
            std::getline(std::ifstream(task.path() / "comm"), name);
            count += name == "ostrel-virtual";
        }
        return count == expected;
    });
}

TEST_F(Threads, ASecondSinkJoinsTheRunningPicturesAndStartsNoneOfItsOwn) {
    auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(3));
    ASSERT_FALSE(camera->start(640, 480, second));
    ASSERT_TRUE(second->waitForFrames(3));
    EXPECT_GT(read(second->newest()).counter, 3u) << "the running stream, not one of its own";
    camera->stop(second);
    const int stopped = second->frames();
    ASSERT_TRUE(sink->waitForMoreFrames(10));
    EXPECT_EQ(second->frames(), stopped);
    camera->stop(sink);
}

TEST_F(Threads, TheThreadEndsWithTheLastSink) {
    auto second = std::make_shared<RecordingSink>();
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(0));
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, second));
    ASSERT_TRUE(sink->waitForFrames(2));
    ASSERT_TRUE(second->waitForFrames(2));
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(1)) << "one for both";
    camera->stop(sink);
    ASSERT_TRUE(second->waitForMoreFrames(2));
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(1));
    camera->stop(second);
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(0));
}

} // namespace
