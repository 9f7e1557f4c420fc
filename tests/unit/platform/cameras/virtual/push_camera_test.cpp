// The camera whose frames the client pushes.
#include "readings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

class PushCamera : public testing::Test {
protected:
    PushCamera() : pushed(QString::fromLatin1("pushed"), QString::fromLatin1("Pushed")) {}

    void SetUp() override {
        ASSERT_TRUE(pushed.attach());
        camera = listed("pushed");
        ASSERT_NE(camera, nullptr);
        ASSERT_FALSE(camera->open());
    }
    void TearDown() override { camera->close(); }

    bool push(const Bgra& picture) {
        return pushed.push(picture.bytes.data(), picture.width, picture.height, picture.stride);
    }

    OVideoPushCamera pushed;
    std::shared_ptr<cameras::Camera> camera;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
};

Bgra noise(int width, int height, int padding = 0) {
    Bgra picture(width, height, padding);
    uint32_t state = 12345;
    for (uint8_t& byte : picture.bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return picture;
}

TEST_F(PushCamera, RefusesFramesThatNobodyCaptures) {
    const Bgra picture = noise(8, 8);
    EXPECT_FALSE(push(picture)) << "opened, not started";
    ASSERT_FALSE(camera->start(8, 8, sink));
    EXPECT_TRUE(push(picture));
    camera->stop(sink);
    EXPECT_FALSE(push(picture)) << "stopped";
    EXPECT_EQ(sink->frames(), 1);
    EXPECT_EQ(pushed.framesDelivered(), 1u);
    pushed.detach();
    EXPECT_FALSE(push(picture)) << "detached";
}

// As while a capture is being started: who pushes once must not wait in vain for that frame.
TEST_F(PushCamera, RefusesFramesThatAreHeldBack) {
    struct HeldBack : RecordingSink {
        bool listens() const override { return false; }
    };
    ASSERT_FALSE(camera->start(8, 8, std::make_shared<HeldBack>()));
    EXPECT_FALSE(push(noise(8, 8)));
    ASSERT_FALSE(camera->start(8, 8, sink));
    EXPECT_TRUE(push(noise(8, 8)));
}

TEST_F(PushCamera, DeliversOnTheCallersThread) {
    std::thread::id on;
    sink->onFrame = [&](const RecordingSink::FramePointer&) { on = std::this_thread::get_id(); };
    ASSERT_FALSE(camera->start(8, 8, sink));
    ASSERT_TRUE(push(noise(8, 8)));
    EXPECT_EQ(on, std::this_thread::get_id());
    std::thread other([&] {
        ASSERT_TRUE(push(noise(8, 8)));
        EXPECT_EQ(on, std::this_thread::get_id());
    });
    other.join();
}

TEST_F(PushCamera, CopiesThePictureByteForByteAndMakesItOpaque) {
    ASSERT_FALSE(camera->start(37, 21, sink));
    for (const int padding : {0, 4, 7}) {
        const Bgra original = noise(37, 21, padding);
        Bgra reused = original;
        ASSERT_TRUE(push(reused));
        std::fill(reused.bytes.begin(), reused.bytes.end(), uint8_t(0));
        Bgra got(37, 21);
        ASSERT_TRUE(sink->newest()->convert(got.bytes.data(), 37, 21, got.stride));
        for (int y = 0; y < 21; ++y)
            for (int x = 0; x < 37; ++x) {
                ASSERT_TRUE(std::equal(original.at(x, y), original.at(x, y) + 3, got.at(x, y)));
                ASSERT_EQ(got.at(x, y)[3], 255);
            }
    }
}

TEST_F(PushCamera, ScalesToWhatEachCaptureAsksFor) {
    auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->start(320, 240, sink));
    ASSERT_FALSE(camera->start(1280, 720, second));
    ASSERT_TRUE(push(pattern(640, 480, 42, 43)));
    const Reading small = read(sink->newest(), 320, 240), large = read(second->newest(), 1280, 720);
    EXPECT_TRUE(small.decoded && large.decoded);
    EXPECT_EQ(small.counter, 42u);
    EXPECT_EQ(large.clock, 43u);
    EXPECT_EQ(pushed.framesDelivered(), 1u);
    EXPECT_EQ(pushed.framesTaken(), 2u);
}

TEST_F(PushCamera, WhiteStaysWhiteAtEverySize) {
    ASSERT_FALSE(camera->start(320, 240, sink));
    Bgra white(128, 96);
    std::fill(white.bytes.begin(), white.bytes.end(), uint8_t(255));
    const std::vector<uint8_t> i420White = [] {
        std::vector<uint8_t> planes(128 * 96 * 3 / 2, 128);
        std::fill_n(planes.begin(), 128 * 96, uint8_t(235));
        return planes;
    }();
    for (const auto& size :
         {std::pair<int, int>(128, 96), {320, 240}, {64, 48}, {48, 36}, {43, 29}, {9, 8}}) {
        const auto expectWhite = [&] {
            Bgra got(size.first, size.second);
            ASSERT_TRUE(sink->newest()->convert(got.bytes.data(), got.width, got.height, got.stride));
            EXPECT_EQ(got.bytes, std::vector<uint8_t>(got.bytes.size(), 255)) << got.width;
        };
        ASSERT_TRUE(push(white));
        expectWhite();
        ASSERT_TRUE(pushed.pushI420(i420White.data(), 128, 96));
        expectWhite();
    }
}

TEST_F(PushCamera, TakesAnotherSizeWithEachFrame) {
    ASSERT_FALSE(camera->start(320, 240, sink));
    uint32_t counter = 0;
    for (const auto& size : {std::pair<int, int>(160, 120), {1280, 720}, {320, 240}, {640, 360}}) {
        ASSERT_TRUE(push(pattern(size.first, size.second, ++counter, 7)));
        EXPECT_EQ(camera->statistics().granted.size.width, size.first);
        EXPECT_EQ(read(sink->newest()).counter, counter);
    }
    EXPECT_EQ(camera->statistics().granted.format, "BGRA");
}

// 4 x 4, one colour for each quarter: Y, U and V of BT.601 with limited range, from its definition.
TEST_F(PushCamera, TakesI420) {
    const uint8_t i420[] = {81, 81, 145, 145, 81, 81, 145, 145, 41,  41, 235, 235,
                            41, 41, 235, 235, 90, 54, 240, 128, 240, 34, 110, 128};
    ASSERT_FALSE(camera->start(4, 4, sink));
    ASSERT_TRUE(pushed.pushI420(i420, 4, 4));
    Bgra got(4, 4);
    ASSERT_TRUE(sink->newest()->convert(got.bytes.data(), 4, 4, got.stride));
    const int expected[4][3] = {
        {0, 0, 255}, {0, 255, 0}, {255, 0, 0}, {255, 255, 255}}; // red, green, blue, white
    for (int quarter = 0; quarter < 4; ++quarter) {
        const uint8_t* p = got.at(quarter % 2 * 3, quarter / 2 * 3);
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(p[c], expected[quarter][c], 3) << "quarter " << quarter << ", byte " << c;
        EXPECT_EQ(p[3], 255);
    }
    EXPECT_EQ(camera->statistics().granted.format, "I420");
}

TEST_F(PushCamera, TakesI420OfOddSizes) {
    ASSERT_FALSE(camera->start(5, 3, sink));
    std::vector<uint8_t> i420(5 * 3 + 2 * 3 * 2, 128); // exactly what it may read
    std::fill_n(i420.begin(), 15, uint8_t(235));
    ASSERT_TRUE(pushed.pushI420(i420.data(), 5, 3));
    for (const auto& size : {std::pair<int, int>(5, 3), {10, 6}, {1, 1}}) {
        Bgra got(size.first, size.second);
        ASSERT_TRUE(sink->newest()->convert(got.bytes.data(), got.width, got.height, got.stride));
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(got.at(got.width - 1, got.height - 1)[c], 255, 3);
    }
}

TEST_F(PushCamera, RefusesArgumentsThatAreNoPicture) {
    ASSERT_FALSE(camera->start(8, 8, sink));
    const Bgra picture = noise(8, 8);
    const uint8_t* p = picture.bytes.data();
    const int greatest = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    EXPECT_FALSE(pushed.push(nullptr, 8, 8, 32));
    EXPECT_FALSE(pushed.pushI420(nullptr, 8, 8));
    for (const int bad : {0, -8, 16385, greatest, least}) {
        EXPECT_FALSE(pushed.push(p, bad, 8, greatest)) << bad;
        EXPECT_FALSE(pushed.push(p, 8, bad, 32)) << bad;
        EXPECT_FALSE(pushed.pushI420(p, bad, 8)) << bad;
        EXPECT_FALSE(pushed.pushI420(p, 8, bad)) << bad;
    }
    for (const int stride : {31, 0, -32, least})
        EXPECT_FALSE(pushed.push(p, 8, 8, stride)) << stride;
    EXPECT_EQ(sink->frames(), 0);
    EXPECT_EQ(pushed.framesDelivered(), 0u);
}

TEST_F(PushCamera, StalledItRefusesAndHealedItGoesOn) {
    ASSERT_FALSE(camera->start(8, 8, sink));
    pushed.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    EXPECT_FALSE(push(noise(8, 8)));
    pushed.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_TRUE(push(noise(8, 8)));
    EXPECT_EQ(sink->frames(), 1);
}

TEST_F(PushCamera, PaddedRowsShowInTheNextFrame) {
    ASSERT_FALSE(camera->start(8, 8, sink));
    pushed.setFault(VIRTUAL_CAMERA_FAULT_PADDED_ROWS);
    ASSERT_TRUE(push(noise(8, 8)));
    EXPECT_EQ(sink->newest()->rowBytes(8), 8 * 4 + 64);
}

TEST_F(PushCamera, APushFromInsideTheDeliveryIsRefused) {
    bool inner = true;
    sink->onFrame = [&](const RecordingSink::FramePointer&) { inner = push(noise(8, 8)); };
    ASSERT_FALSE(camera->start(8, 8, sink));
    EXPECT_TRUE(push(noise(8, 8)));
    EXPECT_FALSE(inner);
    EXPECT_EQ(sink->frames(), 1);
}

TEST_F(PushCamera, DetachingTellsTheCaptureAndKeepsTheLastFrame) {
    ASSERT_FALSE(camera->start(320, 240, sink));
    ASSERT_TRUE(push(pattern(320, 240, 9, 10)));
    pushed.detach();
    EXPECT_EQ(sink->ends(), std::vector<std::string>{"Pushed was unplugged"});
    EXPECT_EQ(read(sink->newest()).counter, 9u);
}

TEST_F(PushCamera, DetachingFromInsideTheDeliveryEndsWhenItReturns) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        pushed.detach();
        EXPECT_TRUE(sink->ends().empty());
    };
    ASSERT_FALSE(camera->start(8, 8, sink));
    EXPECT_TRUE(push(noise(8, 8)));
    EXPECT_EQ(sink->ends().size(), 1u);
    EXPECT_FALSE(push(noise(8, 8)));
}

TEST_F(PushCamera, StopAndCloseFromInsideTheDelivery) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        camera->stop(sink);
        camera->close();
    };
    ASSERT_FALSE(camera->start(8, 8, sink));
    EXPECT_TRUE(push(noise(8, 8)));
    EXPECT_FALSE(push(noise(8, 8)));
    EXPECT_EQ(sink->frames(), 1);
}

TEST_F(PushCamera, ThreadsMayPushWhileOthersStartAndStop) {
    std::atomic<bool> done{false};
    std::vector<std::thread> pushers;
    const Bgra picture = pattern(160, 120, 11, 12);
    for (int i = 0; i < 2; ++i)
        pushers.emplace_back([&] {
            while (!done)
                push(picture);
        });
    for (int i = 0; i < 100; ++i) {
        auto fresh = std::make_shared<RecordingSink>();
        ASSERT_FALSE(camera->start(160, 120, fresh));
        if (i % 4 == 0) {
            ASSERT_TRUE(fresh->waitForFrames(1));
            EXPECT_EQ(read(fresh->newest()).counter, 11u);
        }
        camera->stop(fresh);
        const int arrived = fresh->frames();
        std::this_thread::yield();
        ASSERT_EQ(fresh->frames(), arrived);
    }
    done = true;
    for (std::thread& pusher : pushers)
        pusher.join();
}

} // namespace
