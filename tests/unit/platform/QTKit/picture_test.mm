// When a frame's picture is made, and what stands in for one that cannot be.
#import "recording_delegate.h"

using namespace ostrel;
using support::Rig;

namespace {

class Pictures : public support::OpenDeviceTest {
protected:
    int conversions() const { return camera->frames().conversions; }
};

} // namespace

TEST_F(Pictures, AreNeverMadeForFramesThatNobodyLocks) {
    Rig rig(opened, 16, 8);
    rig.run();
    for (uint32_t number = 1; number <= 100; ++number)
        camera->deliver(number);
    EXPECT_EQ(rig.seen.calls, 100);
    EXPECT_EQ(conversions(), 0);
    EXPECT_EQ(camera->frames().alive, 1); // the newest
}

TEST_F(Pictures, AreMadeOnceByTheFirstLock) {
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(5);
    EXPECT_EQ(CVPixelBufferGetBaseAddress(rig.seen.newest), nullptr); // not yet
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(rig.newestNumber(), 5);
    EXPECT_EQ(conversions(), 1);
    EXPECT_EQ(camera->frames().alive, 0); // the camera's buffer is free again
}

TEST_F(Pictures, OfTwoThreadsThatLockOneOnlyOneMakesIt) {
    Rig rig(opened, 320, 240);
    rig.run();
    for (uint32_t number = 1; number <= 50; ++number) {
        camera->deliver(number);
        CVPixelBufferRef const frame = rig.seen.newest;
        const auto lock = [&] { EXPECT_EQ(CVPixelBufferLockBaseAddress(frame, 0), kCVReturnSuccess); };
        std::thread one(lock), two(lock);
        one.join();
        two.join();
        EXPECT_EQ(conversions(), static_cast<int>(number));
        EXPECT_EQ(rig.newestNumber(), static_cast<int>(number));
    }
}

TEST_F(Pictures, BrokenOneShowsTheLastGoodOne) {
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(1);
    EXPECT_EQ(rig.newestNumber(), 1);
    camera->breakPictures(true);
    for (uint32_t number : {2u, 3u}) {
        camera->deliver(number);
        EXPECT_EQ(rig.newestNumber(), 1);
    }
    camera->breakPictures(false);
    camera->deliver(4);
    EXPECT_EQ(rig.newestNumber(), 4);
}

TEST_F(Pictures, BrokenOneWithoutAGoodOneBeforeHasNoBaseAddress) {
    camera->breakPictures(true);
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(1);
    EXPECT_NE(CVPixelBufferLockBaseAddress(rig.seen.newest, 0), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetBaseAddress(rig.seen.newest), nullptr);
    EXPECT_EQ(CVPixelBufferGetBytesPerRow(rig.seen.newest), 64u);
    EXPECT_EQ(conversions(), 1);
}

TEST_F(Pictures, BrokenOneDoesNotShowOneWithOtherRows) {
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(1);
    EXPECT_EQ(rig.newestNumber(), 1);
    camera->padRows(12);
    camera->breakPictures(true);
    camera->deliver(2);
    EXPECT_NE(CVPixelBufferLockBaseAddress(rig.seen.newest, 0), kCVReturnSuccess);
}

TEST_F(Pictures, PaddingOfACameraStandsBehindEachRow) {
    camera->padRows(12);
    Rig rig(opened, 16, 8);
    rig.run();
    camera->deliver(9);
    ASSERT_EQ(CVPixelBufferLockBaseAddress(rig.seen.newest, 0), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetBytesPerRow(rig.seen.newest), 16u * 4 + 12);
    const auto* const base = static_cast<const uint8_t*>(CVPixelBufferGetBaseAddress(rig.seen.newest));
    for (std::size_t row = 0; row < 8; ++row)
        EXPECT_EQ(support::numberIn(base + row * 76, 64), 9);
}

TEST_F(Pictures, OfTwoSessionsEachIsMadeForItsOwn) {
    Rig one(opened, 16, 8), two(opened, 32, 16);
    one.run();
    two.run();
    camera->deliver(3);
    EXPECT_EQ(one.newestNumber(), 3);
    EXPECT_EQ(conversions(), 1);
    EXPECT_EQ(two.newestNumber(), 3);
    EXPECT_EQ(conversions(), 2);
}

TEST_F(Pictures, MemoryIsGivenBackWhenTheSessionStopsAndTheLastFrameGoes) {
    {
        Rig rig(opened, 16, 8);
        rig.run();
        camera->deliver(1);
        camera->deliver(2);
        EXPECT_EQ(camera->frames().alive, 1);
    }
    EXPECT_EQ(camera->frames().alive, 0);
}
