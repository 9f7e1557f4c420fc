// One to eight readers, while frames come as fast as they can and captures end in every way.
#include "next_frame_fixture.h"

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

} // namespace

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
