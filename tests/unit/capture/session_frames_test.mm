#import "session_test.h"

#include "support/eager_pictures.h"

#include <thread>

using namespace ostrel;
using support::Lines;

namespace {

const int WIDTH = 16, HEIGHT = 8;
const int64_t BYTES = WIDTH * HEIGHT * 4;

void noteRelease(void* count, const void*) {
    ++*static_cast<int*>(count);
}

// Frames that the test hands to the object itself, as the framework would.
class SessionFrames : public support::SessionTest {
protected:
    ~SessionFrames() override { release(); }

    // releases counts how often the buffer made here was given back.
    CVPixelBufferRef makeBuffer(uint8_t value, int& releases, std::size_t bytesPerRow = WIDTH * 4) {
        memory_.emplace_back(std::make_unique<std::vector<uint8_t>>(bytesPerRow * HEIGHT, value));
        CVPixelBufferRef made = nullptr;
        EXPECT_EQ(CVPixelBufferCreateWithBytes(kCFAllocatorDefault, WIDTH, HEIGHT, kCVPixelFormatType_32BGRA,
                                               memory_.back()->data(), bytesPerRow, noteRelease, &releases,
                                               nullptr, &made),
                  kCVReturnSuccess);
        return made;
    }

    void hand(CVPixelBufferRef frame) {
        [object captureOutput:nil didOutputVideoFrame:frame withSampleBuffer:nil fromConnection:nil];
    }

    int someReleases = 0; // for buffers that the object still has when the test is over

private:
    std::vector<std::unique_ptr<std::vector<uint8_t>>> memory_;
};

} // namespace

TEST_F(SessionFrames, BeforeTheFirstTheSizeIsZeroAndTheDestinationUntouched) {
    attach("camera");
    EXPECT_EQ(copy(BYTES), 0);
    start("camera", WIDTH, HEIGHT);
    err.takeLines();
    EXPECT_EQ(copy(BYTES), 0);
    EXPECT_TRUE(bufferUntouched());
    EXPECT_EQ(err.takeLines(), Lines());
}

TEST_F(SessionFrames, NewestReplacesTheOneBefore) {
    const auto camera = attach("camera");
    start("camera", WIDTH, HEIGHT);
    for (uint32_t number : {11u, 12u, 13u})
        camera->deliver(number);
    EXPECT_EQ(copy(BYTES), BYTES);
    EXPECT_EQ(numberCopied(BYTES), 13);
    EXPECT_EQ(counter(), 3u);
    EXPECT_EQ(camera->frames().alive, 0); // the newest was converted, the others are gone
    EXPECT_EQ(camera->frames().conversions, support::PICTURES_ARE_EAGER ? 3 : 1);
}

TEST_F(SessionFrames, OnlyTheExactCapacityIsAnswered) {
    const auto camera = attach("camera");
    start("camera", WIDTH, HEIGHT);
    camera->deliver(1);
    err.takeLines();
    for (int64_t capacity : {BYTES - 1, BYTES + 1, BYTES - WIDTH * 4, int64_t{0}}) {
        EXPECT_EQ(copy(capacity), 0) << capacity;
        EXPECT_TRUE(bufferUntouched());
        EXPECT_EQ(err.takeLines(), Lines{"512"});
    }
    EXPECT_EQ(copy(BYTES), BYTES);
    EXPECT_EQ(err.takeLines(), Lines());
}

TEST_F(SessionFrames, PaddedRowsNeverYieldAFrameAndWriteTheirByteCountEachTime) {
    const auto camera = attach("camera");
    camera->padRows(64);
    start("camera", 320, 240);
    camera->deliver(1);
    err.takeLines();
    EXPECT_EQ(copy(320 * 240 * 4), 0);
    EXPECT_TRUE(bufferUntouched());
    EXPECT_EQ(copy(320 * 240 * 4), 0);
    EXPECT_EQ(err.takeLines(), (Lines{"322560", "322560"})); // (320 * 4 + 64) * 240
}

TEST_F(SessionFrames, AreCopiedInOnePieceRowsAsTheyLie) {
    CVPixelBufferRef frame = makeBuffer(0x5A, someReleases, WIDTH * 4 + 8);
    hand(frame);
    CVBufferRelease(frame);
    EXPECT_EQ(copy((WIDTH * 4 + 8) * HEIGHT), (WIDTH * 4 + 8) * HEIGHT);
    EXPECT_EQ(buffer.front(), 0x5A);
    EXPECT_EQ(buffer[static_cast<std::size_t>((WIDTH * 4 + 8) * HEIGHT - 1)], 0x5A);
    EXPECT_EQ(buffer[static_cast<std::size_t>((WIDTH * 4 + 8) * HEIGHT)], 0xEE);
}

TEST_F(SessionFrames, AFrameWithoutPixelsWritesItsByteCount) {
    const auto camera = attach("camera");
    camera->breakPictures(true);
    start("camera", WIDTH, HEIGHT);
    camera->deliver(1);
    err.takeLines();
    EXPECT_EQ(copy(BYTES), 0);
    EXPECT_TRUE(bufferUntouched());
    // A frame whose picture was tried before is not handed on without one.
    EXPECT_EQ(err.takeLines(), support::PICTURES_ARE_EAGER ? Lines() : Lines{"512"});
}

TEST_F(SessionFrames, AfterAStopTheLastOneStaysAvailable) {
    const auto camera = attach("camera");
    start("camera", WIDTH, HEIGHT);
    camera->deliver(21);
    [object stopObjCapture];
    EXPECT_FALSE(camera->isRunning());
    EXPECT_TRUE(camera->isOpen());
    camera->deliver(22);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(copy(BYTES), BYTES);
        EXPECT_EQ(numberCopied(BYTES), 21);
        EXPECT_EQ(counter(), 1u);
    }
    [object stopObjCapture]; // harmless
    release();
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(SessionFrames, AreRetainedOnceAndReleasedWhenReplacedOrAtTheEnd) {
    int first = 0, second = 0;
    CVPixelBufferRef one = makeBuffer(1, first);
    CVPixelBufferRef two = makeBuffer(2, second);
    hand(one);
    CVBufferRelease(one);
    EXPECT_EQ(first, 0); // the object has it
    EXPECT_EQ(copy(BYTES), BYTES);
    EXPECT_EQ(first, 0); // reading gives back what it took
    hand(two);
    EXPECT_EQ(first, 1);
    CVBufferRelease(two);
    EXPECT_EQ(second, 0);
    release();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST_F(SessionFrames, TheSameBufferTwiceIsStillHeldOnce) {
    int releases = 0;
    CVPixelBufferRef frame = makeBuffer(1, releases);
    hand(frame);
    hand(frame);
    EXPECT_EQ(counter(), 2u);
    CVBufferRelease(frame);
    EXPECT_EQ(releases, 0);
    release();
    EXPECT_EQ(releases, 1);
}

TEST_F(SessionFrames, CounterWrapsToZero) {
    CVPixelBufferRef frame = makeBuffer(1, someReleases);
    object->m_capturedFrameCounter = 0xFFFFFFFF;
    hand(frame);
    EXPECT_EQ(counter(), 0u);
    CVBufferRelease(frame);
}

TEST_F(SessionFrames, SwapAndCountHappenUnderTheObjectsOwnLock) {
    CVPixelBufferRef frame = makeBuffer(1, someReleases);
    std::atomic<bool> entered{false}, done{false};
    std::thread delivery;
    @synchronized(object) {
        delivery = std::thread([&] {
            entered = true;
            hand(frame);
            done = true;
        });
        while (!entered)
            std::this_thread::yield();
        for (int i = 0; i < 1000; ++i) {
            std::this_thread::yield();
            EXPECT_FALSE(done);
            EXPECT_EQ(counter(), 0u);
        }
    }
    delivery.join();
    EXPECT_EQ(counter(), 1u);
    CVBufferRelease(frame);
}
