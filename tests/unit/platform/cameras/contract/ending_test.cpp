// The hardware leaves or gives up, in every state and at every moment.
#include "unit/platform/cameras/contract/kinds.h"

#include "support/gate.h"

#include <cerrno>
#include <thread>

namespace ostrel::tests {

using cameras::Error;
using support::RecordingSink;

class Ending : public Contract {
protected:
    void plugAgain() {
        camera->close();
        camera = kind->plug();
        sink = std::make_shared<RecordingSink>();
        ASSERT_EQ(camera->open().text, "");
    }
    void expectLikeNew() {
        plugAgain();
        ASSERT_EQ(start(sink).text, "");
        EXPECT_TRUE(sink->waitForFrames(2));
        EXPECT_EQ(camera->statistics().ended, "");
    }
};
OSTREL_FOR_EACH_KIND(Ending);

TEST_P(Ending, UnpluggedWhileClosedItCannotBeOpened) {
    camera->close();
    kind->unplug();
    EXPECT_FALSE(camera->attached());
    const Error refused = camera->open();
    EXPECT_EQ(refused.code, ENODEV);
    EXPECT_NE(refused.text.find("was unplugged"), std::string::npos) << refused.text;
    expectLikeNew();
}

TEST_P(Ending, UnpluggedWhileOpenItCannotBeStarted) {
    kind->unplug();
    EXPECT_FALSE(camera->attached());
    EXPECT_EQ(camera->admitInput().code, ENODEV);
    const Error refused = start(sink);
    EXPECT_EQ(refused.code, ENODEV);
    EXPECT_NE(refused.text.find("was unplugged"), std::string::npos) << refused.text;
    EXPECT_TRUE(sink->ends().empty());
    expectLikeNew();
}

TEST_P(Ending, UnpluggedWhileRunningEverySinkIsToldOnceAndFramesStay) {
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(sink).text, "");
    ASSERT_EQ(start(second).text, "");
    ASSERT_TRUE(second->waitForFrames(1));
    kind->unplug();
    for (const auto& one : {sink, second}) {
        ASSERT_TRUE(one->waitForEnd());
        EXPECT_EQ(one->why().code, ENODEV);
        EXPECT_NE(one->ends().front().find("was unplugged"), std::string::npos);
    }
    EXPECT_FALSE(camera->attached());
    EXPECT_EQ(camera->statistics().ended, sink->ends().front());
    EXPECT_TRUE(converts(second->newest()));
    EXPECT_TRUE(becomesStreaming(false));
    camera->stop(sink);
    camera->stop(second);
    EXPECT_EQ(sink->ends().size(), 1u);
    EXPECT_EQ(second->ends().size(), 1u);
    EXPECT_EQ(start(sink).code, ENODEV);
    expectLikeNew();
}

TEST_P(Ending, ASinkMayStopAndCloseWhenItIsToldTheEnd) {
    sink->onEnd = [&] {
        camera->stop(sink);
        camera->close();
    };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    kind->unplug();
    ASSERT_TRUE(sink->waitForEnd());
    camera->stop(sink); // waits for that call
    EXPECT_EQ(kind->leftBehind(), "");
    expectLikeNew();
}

TEST_P(Ending, UnpluggedFromInsideACallTheSinksAreToldWhenItReturns) {
    support::Gate unplugged;
    std::atomic<bool> first{true};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        if (first.exchange(false))
            kind->unplug();
        EXPECT_TRUE(sink->ends().empty());
    };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForEnd());
    camera->stop(sink);
    EXPECT_EQ(sink->ends().size(), 1u);
    expectLikeNew();
}

TEST_P(Ending, UnplugCloseAndStopAtOnceDoNotHang) {
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(start(sink).text, "");
        std::thread unplugger([&] { kind->unplug(); });
        std::thread closer([&] { camera->close(); });
        camera->stop(sink);
        const int arrived = sink->frames();
        const size_t told = sink->ends().size();
        unplugger.join();
        closer.join();
        ASSERT_EQ(sink->frames(), arrived);
        ASSERT_EQ(sink->ends().size(), told);
        ASSERT_LE(told, 1u);
        plugAgain();
    }
}

// Started or refused; either way nothing comes after the stop, not even word of the end.
TEST_P(Ending, UnplugAndStartAtOnceDoNotHang) {
    for (int i = 0; i < 50; ++i) {
        std::thread unplugger([&] { kind->unplug(); });
        const Error refused = start(sink);
        EXPECT_TRUE(!refused || refused.code == ENODEV) << refused.text;
        camera->stop(sink);
        const int arrived = sink->frames();
        const size_t told = sink->ends().size();
        unplugger.join();
        ASSERT_EQ(sink->frames(), arrived);
        ASSERT_EQ(sink->ends().size(), told);
        ASSERT_LE(told, 1u);
        plugAgain();
    }
}

TEST_P(Ending, AStreamThatBrokeDownSaysWhyAndCanBeStartedAgain) {
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    if (!kind->breakDown())
        return; // this kind never does
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_NE(sink->ends().front(), "");
    EXPECT_EQ(camera->statistics().ended, sink->ends().front());
    EXPECT_TRUE(camera->attached());
    const auto again = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(again).text, "") << "though the first has not stopped";
    EXPECT_TRUE(again->waitForFrames(2));
    EXPECT_EQ(camera->statistics().ended, "");
    camera->stop(sink);
    camera->stop(again);
    EXPECT_EQ(sink->ends().size(), 1u);
}

} // namespace ostrel::tests
