#include "platform/cameras/sink_list.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace ostrel::tests {

using cameras::CameraFrame;
using cameras::Error;
using cameras::FrameSink;
using cameras::SinkList;

namespace {

class Listener : public FrameSink {
public:
    void frameArrived(const std::shared_ptr<CameraFrame>&) override {
        ++frames;
        if (onFrame)
            onFrame();
    }
    void streamEnded(const Error& why) override {
        ++ends;
        reason = why.text;
    }
    std::atomic<int> frames{0};
    std::atomic<int> ends{0};
    std::string reason;
    std::function<void()> onFrame;
};

// Until the condition holds; a test that waits in vain fails by its own checks.
template <typename Condition>
void await(Condition condition) {
    for (int i = 0; i < 20000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace

TEST(SinkList, EverySinkHearsEveryFrameAndTheEnd) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    const auto b = std::make_shared<Listener>();
    list.add(a);
    list.add(b);
    list.deliver(nullptr);
    list.deliver(nullptr);
    list.end(Error("unplugged"));
    EXPECT_EQ(a->frames, 2);
    EXPECT_EQ(b->frames, 2);
    EXPECT_EQ(a->ends, 1);
    EXPECT_EQ(b->reason, "unplugged");
}

TEST(SinkList, ASinkAddedTwiceHearsEachFrameOnce) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    list.add(a);
    list.add(a);
    list.deliver(nullptr);
    EXPECT_EQ(a->frames, 1);
    EXPECT_TRUE(list.remove(a));
    EXPECT_TRUE(list.empty());
    EXPECT_FALSE(list.remove(a));
}

TEST(SinkList, ARemovedSinkHearsNothingMore) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    list.add(a);
    list.remove(a);
    list.deliver(nullptr);
    list.end(Error("over"));
    EXPECT_EQ(a->frames, 0);
    EXPECT_EQ(a->ends, 0);
}

TEST(SinkList, RemovalWaitsForTheCallInProgress) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    std::atomic<bool> release{false}, left{false};
    a->onFrame = [&] {
        await([&] { return release.load(); });
        left = true;
    };
    list.add(a);
    std::thread deliverer([&] { list.deliver(nullptr); });
    await([&] { return a->frames == 1; });
    std::thread releaser([&] { release = true; });
    EXPECT_TRUE(list.remove(a));
    EXPECT_TRUE(left);
    releaser.join();
    deliverer.join();
}

TEST(SinkList, RemovalDoesNotWaitForACallOfAnotherSink) {
    SinkList list;
    const auto slow = std::make_shared<Listener>();
    const auto other = std::make_shared<Listener>();
    std::atomic<bool> release{false};
    slow->onFrame = [&] { await([&] { return release.load(); }); };
    list.add(slow);
    list.add(other);
    std::thread deliverer([&] { list.deliver(nullptr); });
    await([&] { return slow->frames == 1; });
    EXPECT_TRUE(list.remove(other)); // would hang here
    release = true;
    deliverer.join();
    EXPECT_EQ(other->frames, 0);
}

TEST(SinkList, ASinkMayRemoveItselfAndTheOthersFromInsideItsCall) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    const auto b = std::make_shared<Listener>();
    a->onFrame = [&] {
        list.remove(b);
        list.remove(a);
    };
    list.add(a);
    list.add(b);
    list.deliver(nullptr);
    EXPECT_EQ(a->frames, 1);
    EXPECT_EQ(b->frames, 0);
    EXPECT_TRUE(list.empty());
}

TEST(SinkList, ASinkAddedFromInsideACallHearsTheNextFrame) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    const auto late = std::make_shared<Listener>();
    a->onFrame = [&] { list.add(late); };
    list.add(a);
    list.deliver(nullptr);
    EXPECT_EQ(late->frames, 0);
    list.deliver(nullptr);
    EXPECT_EQ(late->frames, 1);
}

TEST(SinkList, TwoThreadsDoNotDeliverAtOnce) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    a->onFrame = [&] {
        if (++inside != 1)
            overlapped = true;
        std::this_thread::yield();
        --inside;
    };
    list.add(a);
    const auto deliverMany = [&] {
        for (int i = 0; i < 2000; ++i)
            list.deliver(nullptr);
    };
    std::thread first(deliverMany), second(deliverMany);
    first.join();
    second.join();
    EXPECT_EQ(a->frames, 4000);
    EXPECT_FALSE(overlapped);
}

TEST(SinkList, NoCallComesAfterARemovalHoweverFastTheDelivery) {
    SinkList list;
    std::atomic<bool> done{false};
    std::thread deliverer([&] {
        while (!done)
            list.deliver(nullptr);
    });
    for (int i = 0; i < 2000; ++i) {
        const auto a = std::make_shared<Listener>();
        std::atomic<bool> removed{false}, late{false};
        a->onFrame = [&] {
            if (removed)
                late = true;
        };
        list.add(a);
        list.remove(a);
        removed = true;
        ASSERT_FALSE(late);
    }
    done = true;
    deliverer.join();
}

} // namespace ostrel::tests
