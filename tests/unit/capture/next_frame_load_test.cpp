// One to eight readers, while frames come as fast as they can and captures end in every way.
#include "next_frame_fixture.h"

#include "platform/cameras/virtual/pattern_painter.h"

#include <ostrel/virtual_camera.h>

#include <atomic>
#include <thread>

using namespace ostrel;
using support::numberIn;

namespace {

class NextFrameLoad : public support::NextFrameTest {
protected:
    // Reads until there is no more. What was read: whole pictures whose number is the facts', each newer.
    static void readAll(OVideoFrameReader& reader, bool byDescriptor, std::atomic<int>& frames) {
        VideoFrame frame;
        OVideoFrameFacts facts;
        uint32_t before = 0;
        for (;;) {
            ASSERT_TRUE(!byDescriptor || isReadable(reader, LONG));
            const int result = nextVideoFrame(reader, frame, byDescriptor ? 0 : -1, &facts);
            if (result < 0)
                return;
            if (result == 0)
                continue;
            ASSERT_EQ(static_cast<uint32_t>(numberIn(frame.data)), facts.number());
            ASSERT_EQ(frame.frameNumber, facts.number());
            ASSERT_GT(facts.number(), before);
            ASSERT_EQ(facts.passedOver(), facts.number() - before - 1);
            before = facts.number();
            ++frames;
        }
    }
    enum End { STOP, DROP, UNPLUG };
};

#ifdef __SANITIZE_THREAD__
constexpr uint32_t FRAMES = 2000; // drawing takes ten times as long
#else
constexpr uint32_t FRAMES = 20000;
#endif
constexpr uint32_t TAKEN = 500; // of which so many at least, or a busy machine makes the test easy
constexpr int WIDTH = 160, HEIGHT = 120;

// Pictures of the test pattern, counted from 1, as fast as they can be drawn.
void pushPatterns(OVideoPushCamera& camera, const std::atomic<bool>& ended) {
    cameras::PatternPainter painter(WIDTH, HEIGHT);
    std::vector<uint8_t> picture(static_cast<size_t>(WIDTH * HEIGHT * 4));
    for (uint32_t counter = 1; !ended; ++counter) {
        ASSERT_TRUE(painter.paint({counter, 0}, picture.data(), WIDTH, HEIGHT, WIDTH * 4));
        ASSERT_TRUE(camera.push(picture.data(), WIDTH, HEIGHT, WIDTH * 4));
    }
}

void readPatterns(OVideoFrameReader& reader) {
    VideoFrame frame;
    OVideoFrameFacts facts;
    uint32_t taken = 0;
    uint64_t passedOver = 0;
    while (facts.number() < FRAMES || taken < TAKEN) {
        ASSERT_EQ(nextVideoFrame(reader, frame, 20000, &facts), 1);
        uint32_t counter = 0, clock = 0;
        ASSERT_TRUE(
            OVideoTestPatternCamera::decode(frame.data.data(), WIDTH, HEIGHT, WIDTH * 4, counter, clock));
        ASSERT_EQ(counter, facts.number());
        ASSERT_EQ(counter, frame.frameNumber);
        passedOver += facts.passedOver();
        ASSERT_EQ(counter, ++taken + passedOver);
        if (taken % 16 == 0) // lets some go by
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_GT(passedOver, 0U);
}

} // namespace

TEST_F(NextFrameLoad, CounterInThePictureIsTheFactsNumberWhateverWasPassedOver) {
    OVideoPushCamera camera("push", "Push");
    camera.attach();
    Capture capture = started("push", WIDTH, HEIGHT);
    OVideoFrameReader reader(capture);
    std::atomic<bool> ended{false};
    std::thread feeder([&] { pushPatterns(camera, ended); });
    readPatterns(reader);
    ended = true;
    feeder.join();
}

TEST_F(NextFrameLoad, EveryReaderSeesWholeFramesUnderTheirOwnNumberUntilTheEnd) {
    for (const int readers : {1, 2, 8}) {
        for (const End end : {STOP, DROP, UNPLUG}) {
            const auto camera = attach("camera");
            Capture capture = started("camera");
            std::vector<std::unique_ptr<OVideoFrameReader>> all;
            for (int i = 0; i < readers; ++i)
                all.push_back(std::make_unique<OVideoFrameReader>(capture));
            std::atomic<int> frames{0};
            std::vector<std::thread> threads;
            for (int i = 0; i < readers; ++i)
                threads.emplace_back([&, i] { readAll(*all[static_cast<size_t>(i)], i % 2 == 1, frames); });
            {
                const support::Feeder feeder(camera);
                VideoFrame polled;
                while (frames < 200 * readers) {
                    capture->selfVideoFrame(polled);
                    std::this_thread::yield();
                }
                if (end == STOP)
                    capture->stopVideoCapture();
                else if (end == DROP)
                    capture.clear();
                else
                    detach(camera);
                for (std::thread& thread : threads)
                    thread.join();
            }
            cameras::removeCamera(camera);
        }
    }
}
