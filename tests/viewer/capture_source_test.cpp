// How frames are taken: memory is used again, and no picture is lost.
#include "apps/viewer/capture_source.h"
#include "apps/viewer/picture_scaler.h"

#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

#include <QtTest/QTest>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

namespace {

const std::size_t PIXEL_SIZE = 64 * 1024; // a frame of the smallest size has 300 kB
std::atomic<int> bigAllocations{0};

} // namespace

// The library's allocations come here as well.
void* operator new(std::size_t size) {
    if (size >= PIXEL_SIZE)
        ++bigAllocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace ostrel::apps::viewer {

TEST(CaptureSource, FramesAndScaledPicturesTakeNoFreshMemory) {
    OVideoTestPatternCamera camera("viewer-test-memory", "Memory");
    camera.attach();
    CaptureSource source;
    PictureScaler scaler;
    scaler.setLevel(VIDEO_QUALITY_HD);
    source.start(camera.uniqueID(), {640, 480});

    int frames = 0;
    Picture picture;
    const auto take = [&](int wanted) {
        return QTest::qWaitFor(
            [&] {
                if (source.look()) {
                    picture = scaler.scale(source.frame());
                    ++frames;
                }
                return frames >= wanted;
            },
            30000);
    };
    ASSERT_TRUE(take(3)); // the buffers are there now
    const int before = bigAllocations;
    const uint8_t* pixels = picture.pixels;
    EXPECT_GT(before, 0) << "the counter does not count";
    ASSERT_TRUE(take(20));
    EXPECT_EQ(bigAllocations, before);
    EXPECT_EQ(picture.pixels, pixels);
    EXPECT_EQ(picture.width, 1280);
}

TEST(CaptureSource, TellsOfEveryFrameAndOnceOfTheEnd) {
    OVideoTestPatternCamera camera("viewer-test-tell", "Tell");
    camera.attach();
    CaptureSource source;
    int told = 0, frames = 0;
    QObject::connect(&source, &CaptureSource::frameArrived, [&] {
        ++told;
        frames += source.look();
    });
    source.start(camera.uniqueID(), {320, 240});
    ASSERT_TRUE(QTest::qWaitFor([&] { return frames >= 10; }, 30000));
    EXPECT_LE(told, frames + 1);
    camera.detach();
    ASSERT_TRUE(QTest::qWaitFor([&] { return told > frames; }, 30000));
    const int atTheEnd = told;
    for (int i = 0; i < 100; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(told, atTheEnd);
    ASSERT_TRUE(QTest::qWaitFor([&] { return source.look() || !source.why().isEmpty(); }, 30000));
    EXPECT_EQ(source.state(), CaptureSource::State::Stalled);
}

TEST(CaptureSource, LastPushedPictureIsShown) {
    OVideoPushCamera camera("viewer-test-push", "Push");
    camera.attach();
    CaptureSource source;
    source.start(camera.uniqueID(), {320, 240});
    std::vector<uint8_t> picture(320 * 240 * 4, 10);
    int shown = -1;
    const auto shows = [&](int value) {
        return QTest::qWaitFor(
            [&] {
                if (source.look())
                    shown = source.frame().data[0];
                return shown == value;
            },
            30000);
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return camera.push(picture.data(), 320, 240, 320 * 4); }, 30000));
    EXPECT_TRUE(shows(10)) << shown;
    for (int value = 20; value < 60; ++value) {
        picture.assign(picture.size(), uint8_t(value));
        ASSERT_TRUE(camera.push(picture.data(), 320, 240, 320 * 4));
        EXPECT_TRUE(shows(value)) << shown;
    }
}

TEST(CaptureSource, EndedCaptureYieldsNothing) {
    OVideoTestPatternCamera camera("viewer-test-end", "End");
    camera.attach();
    CaptureSource source;
    EXPECT_FALSE(source.look());
    source.start(camera.uniqueID(), {320, 240});
    ASSERT_TRUE(QTest::qWaitFor([&] { return source.look(); }, 30000));
    source.stop();
    EXPECT_EQ(source.state(), CaptureSource::State::Idle);
    EXPECT_FALSE(source.look());
}

TEST(CaptureSource, CameraThatIsNotAttachedIsGone) {
    CaptureSource source;
    source.start("viewer-test-nobody", {320, 240});
    EXPECT_EQ(source.state(), CaptureSource::State::Gone);
    EXPECT_FALSE(source.look());
}

} // namespace ostrel::apps::viewer
