// What every kind of camera offers can be had.
#include "unit/platform/cameras/contract/kinds.h"

#include "platform/cameras/wishes.h"

#include <atomic>
#include <cerrno>
#include <thread>

namespace ostrel::tests {

using cameras::ModeWish;
using cameras::NativeMode;
using cameras::NativeModes;
using support::RecordingSink;

class OfferedModes : public Contract {
protected:
    void TearDown() override {
        cameras::setModeWish(camera->identifier(), ModeWish());
        Contract::TearDown();
    }
    static ModeWish wishOf(const NativeMode& mode) {
        ModeWish wish;
        wish.format = mode.format;
        wish.size = mode.sizes.most;
        wish.interval = mode.intervals.shortest;
        return wish;
    }
    NativeModes modes() {
        NativeModes all;
        EXPECT_EQ(camera->modes(all).text, "");
        return all;
    }
};
OSTREL_FOR_EACH_KIND(OfferedModes);

TEST_P(OfferedModes, AreTheSameWhetherTheCameraIsClosedOpenOrStreams) {
    const NativeModes open = modes();
    ASSERT_EQ(start(sink).text, "");
    EXPECT_EQ(modes().size(), open.size());
    camera->close();
    const NativeModes closed = modes();
    ASSERT_EQ(closed.size(), open.size());
    for (size_t i = 0; i < open.size(); ++i)
        EXPECT_TRUE(offers(open[i], wishOf(closed[i]))) << i;
    EXPECT_TRUE(becomesStreaming(false));
}

TEST_P(OfferedModes, CanEachBeHad) {
    for (const NativeMode& mode : modes()) {
        cameras::setModeWish(camera->identifier(), wishOf(mode));
        const auto one = std::make_shared<RecordingSink>();
        ASSERT_EQ(start(one).text, "");
        EXPECT_TRUE(one->waitForFrames(1));
        const cameras::Mode granted = camera->statistics().granted;
        camera->stop(one);
        EXPECT_EQ(granted.format, mode.format);
        EXPECT_EQ(granted.size.width, mode.sizes.most.width);
        EXPECT_EQ(granted.size.height, mode.sizes.most.height);
        EXPECT_DOUBLE_EQ(granted.rate(), mode.intervals.shortest.rate());
        EXPECT_EQ(granted.hasPicture, mode.hasPicture);
    }
}

TEST_P(OfferedModes, AnswerAtOnceFromInsideACall) {
    const size_t expected = modes().size();
    std::atomic<size_t> inside{1000000};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        NativeModes all;
        camera->modes(all);
        inside = all.size();
    };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    camera->stop(sink);
    EXPECT_EQ(inside, expected);
}

TEST_P(OfferedModes, AreAskedForByManyWhileTheCameraOpensAndCloses) {
    camera->close();
    const size_t expected = modes().size();
    std::atomic<bool> over{false};
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i)
        askers.emplace_back([&] {
            while (!over) {
                NativeModes all;
                camera->modes(all);
                EXPECT_EQ(all.size(), expected);
            }
        });
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(camera->open().text, "");
        camera->close();
    }
    over = true;
    for (std::thread& asker : askers)
        asker.join();
}

TEST_P(OfferedModes, OfACameraThatHasLeftAreAnError) {
    camera->close();
    kind->unplug();
    NativeModes all;
    EXPECT_EQ(camera->modes(all).code, ENODEV);
}

} // namespace ostrel::tests
