// What a stopped session leaves behind: no call in progress, and none to come.
#import "recording_delegate.h"

using namespace ostrel;
using support::Feeder;
using support::Gate;
using support::Rig;

using Stopping = support::OpenDeviceTest;

TEST_F(Stopping, WaitsForTheCallInProgress) {
    Rig rig(opened, 16, 8);
    Gate inDelegate;
    std::atomic<bool> over{false};
    rig.seen.onFrame = [&](CVImageBufferRef) {
        inDelegate.pass();
        over = true;
    };
    rig.run();
    inDelegate.shut();
    std::thread delivery([&] { camera->deliver(1); });
    inDelegate.awaitArrivals(1);
    std::thread stopper([&] {
        [rig.session stopRunning];
        EXPECT_TRUE(over);
    });
    inDelegate.open();
    stopper.join();
    delivery.join();
}

TEST_F(Stopping, LeavesNoCallInProgressAndNoneToComeUnderAFastFeeder) {
    Rig rig(opened, 16, 8);
    Feeder feeder(camera);
    for (int i = 0; i < 200; ++i) {
        rig.run();
        feeder.awaitMore(2);
        [rig.session stopRunning];
        ASSERT_EQ(rig.seen.inProgress, 0);
        const int calls = rig.seen.calls;
        feeder.awaitMore(3);
        ASSERT_EQ(rig.seen.calls, calls);
    }
    EXPECT_GT(rig.seen.calls, 0);
}

TEST_F(Stopping, FromInsideTheDelegateReturnsAtOnceAndNoCallFollows) {
    Rig rig(opened, 16, 8);
    rig.seen.onFrame = [&](CVImageBufferRef) { [rig.session stopRunning]; };
    rig.run();
    camera->deliver(1);
    EXPECT_FALSE([rig.session isRunning]);
    camera->deliver(2);
    EXPECT_EQ(rig.seen.calls, 1);
    EXPECT_FALSE(camera->isRunning());
}

TEST_F(Stopping, AndClosingFromInsideTheDelegateClosesTheCamera) {
    Rig rig(opened, 16, 8);
    rig.seen.onFrame = [&](CVImageBufferRef) {
        [rig.session stopRunning];
        [opened close];
    };
    rig.run();
    camera->deliver(1);
    EXPECT_FALSE(camera->isOpen());
    camera->deliver(2);
    EXPECT_EQ(rig.seen.calls, 1);
    [opened open:NULL];
}

TEST_F(Stopping, ByTwoThreadsAtOnceBothWait) {
    Rig rig(opened, 16, 8);
    Feeder feeder(camera);
    for (int i = 0; i < 50; ++i) {
        rig.run();
        feeder.awaitMore(1);
        const auto stop = [&] {
            [rig.session stopRunning];
            EXPECT_EQ(rig.seen.inProgress, 0);
        };
        std::thread one(stop), two(stop);
        one.join();
        two.join();
        ASSERT_FALSE(camera->isRunning());
    }
}

TEST_F(Stopping, RacingWithAStartNeverLeavesTheCameraRunning) {
    for (int i = 0; i < 300; ++i) {
        Rig rig(opened, 16, 8);
        [rig.session stopRunning];
        std::thread starter([&] { [rig.session startRunning]; });
        [rig.session stopRunning];
        starter.join();
        [rig.session stopRunning];
        ASSERT_FALSE(camera->isRunning()) << i;
    }
}

TEST_F(Stopping, OneSessionLeavesTheOtherDelivering) {
    Rig one(opened, 16, 8), two(opened, 32, 16);
    Feeder feeder(camera);
    one.run();
    two.run();
    feeder.awaitMore(10);
    [one.session stopRunning];
    const int ones = one.seen.calls, twos = two.seen.calls;
    feeder.awaitMore(10);
    EXPECT_EQ(one.seen.calls, ones);
    EXPECT_GT(two.seen.calls, twos);
}

TEST_F(Stopping, ReleasesTheCameraBeforeItReturnsThoughTheFeederGoesOn) {
    Feeder feeder(camera);
    for (int i = 0; i < 100; ++i) {
        Rig rig(opened, 16, 8);
        rig.run();
        feeder.awaitMore(1);
        [opened close];
        [rig.session stopRunning];
        ASSERT_FALSE(camera->isOpen());
        ASSERT_TRUE([opened open:NULL]);
    }
}

TEST_F(Stopping, HeldFramesStayReadableAfterStopAndClose) {
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(77);
    [rig.session stopRunning];
    [opened close];
    EXPECT_FALSE(camera->isOpen());
    EXPECT_EQ(rig.newestNumber(), 77);
    [opened open:NULL];
}
