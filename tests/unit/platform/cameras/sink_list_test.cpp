#include "platform/cameras/sink_list.h"

#include "support/recording_sink.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace ostrel::tests {

using cameras::Error;
using cameras::SinkList;
using support::RecordingSink;

TEST(SinkList, EverySinkHearsEveryFrameAndTheEnd) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    const auto b = std::make_shared<RecordingSink>();
    list.add(a);
    list.add(b);
    list.deliver(nullptr);
    list.deliver(nullptr);
    list.end(Error("unplugged"));
    EXPECT_EQ(a->frames(), 2);
    EXPECT_EQ(b->frames(), 2);
    EXPECT_EQ(a->ends(), std::vector<std::string>{"unplugged"});
    EXPECT_EQ(b->ends(), std::vector<std::string>{"unplugged"});
}

struct Listener : RecordingSink {
    bool listens() const override { return listening; }
    bool listening = true;
};

TEST(SinkList, AFrameIsDeliveredWhenOneSinkListens) {
    SinkList list;
    const auto a = std::make_shared<Listener>();
    const auto b = std::make_shared<Listener>();
    list.add(a);
    list.add(b);
    b->listening = false;
    EXPECT_TRUE(list.deliver(nullptr));
    a->listening = false;
    EXPECT_FALSE(list.deliver(nullptr));
}

TEST(SinkList, ASinkAddedTwiceHearsEachFrameOnce) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    list.add(a);
    list.add(a);
    list.deliver(nullptr);
    EXPECT_EQ(a->frames(), 1);
    EXPECT_TRUE(list.remove(a));
    EXPECT_TRUE(list.empty());
    EXPECT_FALSE(list.remove(a));
}

TEST(SinkList, ARemovedSinkHearsNothingMore) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    list.add(a);
    list.remove(a);
    list.deliver(nullptr);
    list.end(Error("over"));
    EXPECT_EQ(a->frames(), 0);
    EXPECT_TRUE(a->ends().empty());
}

TEST(SinkList, RemovalWaitsForTheCallInProgress) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    support::Gate gate;
    gate.shut();
    std::atomic<bool> left{false};
    a->onFrame = [&](const RecordingSink::FramePointer&) {
        gate.pass();
        left = true;
    };
    list.add(a);
    std::thread deliverer([&] { list.deliver(nullptr); });
    gate.awaitArrivals(1);
    std::thread releaser([&] { gate.open(); });
    EXPECT_TRUE(list.remove(a));
    EXPECT_TRUE(left);
    releaser.join();
    deliverer.join();
}

TEST(SinkList, RemovalDoesNotWaitForACallOfAnotherSink) {
    SinkList list;
    const auto slow = std::make_shared<RecordingSink>();
    const auto other = std::make_shared<RecordingSink>();
    support::Gate gate;
    gate.shut();
    slow->onFrame = [&](const RecordingSink::FramePointer&) { gate.pass(); };
    list.add(slow);
    list.add(other);
    std::thread deliverer([&] { list.deliver(nullptr); });
    gate.awaitArrivals(1);
    EXPECT_TRUE(list.remove(other)); // would hang here
    gate.open();
    deliverer.join();
    EXPECT_EQ(other->frames(), 0);
}

TEST(SinkList, ASinkMayRemoveItselfAndTheOthersFromInsideItsCall) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    const auto b = std::make_shared<RecordingSink>();
    a->onFrame = [&](const RecordingSink::FramePointer&) {
        list.remove(b);
        list.remove(a);
    };
    list.add(a);
    list.add(b);
    list.deliver(nullptr);
    EXPECT_EQ(a->frames(), 1);
    EXPECT_EQ(b->frames(), 0);
    EXPECT_TRUE(list.empty());
}

TEST(SinkList, ASinkAddedFromInsideACallHearsTheNextFrame) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    const auto late = std::make_shared<RecordingSink>();
    a->onFrame = [&](const RecordingSink::FramePointer&) { list.add(late); };
    list.add(a);
    list.deliver(nullptr);
    EXPECT_EQ(late->frames(), 0);
    list.deliver(nullptr);
    EXPECT_EQ(late->frames(), 1);
}

TEST(SinkList, TwoThreadsDoNotDeliverAtOnce) {
    SinkList list;
    const auto a = std::make_shared<RecordingSink>();
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    a->onFrame = [&](const RecordingSink::FramePointer&) {
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
    EXPECT_EQ(a->frames(), 4000);
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
        const auto a = std::make_shared<RecordingSink>();
        std::atomic<bool> removed{false}, late{false};
        a->onFrame = [&](const RecordingSink::FramePointer&) {
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
