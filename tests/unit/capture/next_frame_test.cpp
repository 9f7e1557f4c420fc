#include "next_frame_fixture.h"

#include <ostrel/virtual_camera.h>

#include "base/monotonic_clock.h"
#include "platform/QTKit/frame_slot.h"
#include "platform/QTKit/slot_reader.h"
#include "support/eager_pictures.h"

#include <pthread.h>
#include <sys/resource.h>
#include <thread>

using namespace ostrel;
using support::numberIn;

namespace {
class NextFrame : public support::NextFrameTest {};
} // namespace

TEST_F(NextFrame, IsTheNewestAndComesOnceToEachReader) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader one(capture), other(capture);
    VideoFrame frame;
    OVideoFrameFacts facts;
    EXPECT_EQ(nextVideoFrame(one, frame, 0), 0);
    for (uint32_t number : {1u, 2u, 3u})
        camera->deliver(number);
    ASSERT_EQ(nextVideoFrame(one, frame, 0, &facts), 1);
    EXPECT_EQ(numberIn(frame.data), 3);
    EXPECT_EQ(frame.frameNumber, 3u);
    EXPECT_EQ(frame.width, 16);
    EXPECT_EQ(frame.height, 8);
    EXPECT_EQ(frame.formatId, 4);
    EXPECT_EQ(facts.number(), 3u);
    EXPECT_EQ(facts.passedOver(), 2u);
    EXPECT_EQ(nextVideoFrame(one, frame, 0), 0);
    EXPECT_EQ(nextVideoFrame(other, frame, 0), 1);
    camera->deliver(4);
    ASSERT_EQ(nextVideoFrame(one, frame, 0, &facts), 1);
    EXPECT_EQ(facts.number(), 4u);
    EXPECT_EQ(facts.passedOver(), 0u);
}

TEST_F(NextFrame, IsHadByAReaderThatIsMadeAfterItCame) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    camera->deliver(1);
    camera->deliver(2);
    VideoFrame frame;
    capture->selfVideoFrame(frame);
    OVideoFrameReader reader(capture);
    OVideoFrameFacts facts;
    ASSERT_EQ(nextVideoFrame(reader, frame, 0, &facts), 1);
    EXPECT_EQ(numberIn(frame.data), 2);
    EXPECT_EQ(facts.number(), 2u);
    EXPECT_EQ(facts.passedOver(), 0u);
}

TEST_F(NextFrame, IsWaitedForNoLongerThanTheTimeLimit) {
    attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    VideoFrame frame;
    frame.data = {1, 2, 3};
    const int64_t before = monotonicNanoseconds();
    EXPECT_EQ(nextVideoFrame(reader, frame, 30), 0);
    EXPECT_GE(monotonicNanoseconds() - before, 30 * NANOSECONDS_PER_MILLISECOND);
    EXPECT_EQ(frame.data, (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_EQ(frame.width, 0);
}

TEST_F(NextFrame, IsConvertedOnceStraightIntoTheMemoryOfTheOnlyReader) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    camera->deliver(0x00A1B2C3);
    std::vector<uint8_t> memory(8 * 70, 7);
    ASSERT_EQ(nextVideoFrame(reader, memory.data(), memory.size(), 70, OVIDEO_PIXELS_BGRA, 0), 1);
    EXPECT_EQ(camera->frames().conversions, 1);
    for (size_t i = 0; i < memory.size(); ++i) {
        const uint8_t pixel[] = {0xC3, 0xB2, 0xA1, 255};
        ASSERT_EQ(memory[i], i % 70 < 64 ? pixel[i % 70 % 4] : 7) << i;
    }
}

TEST_F(NextFrame, IsMadeOnceForSeveralReadersAndCopiedFromWhatAPollHasMade) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader first(capture), second(capture), third(capture);
    VideoFrame frame;
    camera->deliver(1);
    for (OVideoFrameReader* reader : {&first, &second, &third})
        ASSERT_EQ(nextVideoFrame(*reader, frame, 0), 1);
    EXPECT_EQ(camera->frames().conversions, 1);
    EXPECT_EQ(numberIn(frame.data), 1);
    camera->deliver(2);
    capture->selfVideoFrame(frame);
    EXPECT_EQ(camera->frames().conversions, 2);
    for (OVideoFrameReader* reader : {&first, &second, &third}) {
        frame = VideoFrame();
        ASSERT_EQ(nextVideoFrame(*reader, frame, 0), 1);
        EXPECT_EQ(numberIn(frame.data), 2);
    }
    EXPECT_EQ(camera->frames().conversions, 2);
}

TEST_F(NextFrame, PassesOverBrokenPicturesAndNeverShowsAnOlderOneInstead) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    VideoFrame frame;
    camera->deliver(1);
    capture->selfVideoFrame(frame); // there is a last good picture now
    ASSERT_EQ(nextVideoFrame(reader, frame, 0), 1);
    camera->breakPictures(true);
    camera->deliver(2);
    capture->selfVideoFrame(frame);
    EXPECT_EQ(numberIn(frame.data), 1); // who polls sees the older one
    frame.data = {1};
    EXPECT_EQ(nextVideoFrame(reader, frame, 0), 0);
    EXPECT_EQ(frame.data, std::vector<uint8_t>{1});
    camera->breakPictures(false);
    camera->deliver(3);
    OVideoFrameFacts facts;
    ASSERT_EQ(nextVideoFrame(reader, frame, 0, &facts), 1);
    EXPECT_EQ(numberIn(frame.data), 3);
    EXPECT_EQ(facts.number(), 3u);
    EXPECT_EQ(facts.passedOver(), 1u);
}

TEST_F(NextFrame, IsStillThereWhenTheMemoryDidNotFit) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    camera->deliver(1);
    std::vector<uint8_t> memory(16 * 8 * 3);
    QString why;
    const auto next = [&](size_t bytes, int stride) {
        return nextVideoFrame(reader, memory.data(), bytes, stride, OVIDEO_PIXELS_BGR, 0, nullptr, &why);
    };
    EXPECT_EQ(next(memory.size() - 1, 48), -1);
    EXPECT_TRUE(mentions(utf8Of(why), "16 x 8"));
    EXPECT_EQ(next(memory.size(), 47), -1);
    EXPECT_EQ(next(memory.size(), -48), -1);
    EXPECT_EQ(nextVideoFrame(reader, nullptr, 0, 0, OVIDEO_PIXELS_BGR, 0), -1);
    EXPECT_EQ(next(memory.size(), 48), 1);
}

TEST_F(NextFrame, ReaderMadeBeforeTheStartIsToldWhenTheCameraIsRefused) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("it is locked away"));
    const Capture capture = quietVideoCapture();
    OVideoFrameReader before(capture);
    EXPECT_EQ(reason(before, 0), "");
    capture->startCapture("camera", 16, 8);
    EXPECT_EQ(reason(before), "it is locked away");
    OVideoFrameReader after(capture);
    EXPECT_EQ(reason(after), "it is locked away");
    EXPECT_TRUE(isReadable(after));
    camera->refuseOpen(cameras::Error());
    camera->refuseStart(cameras::Error("no mode"));
    const Capture another = started("camera");
    OVideoFrameReader third(another);
    EXPECT_EQ(reason(third), "no mode");
}

TEST_F(NextFrame, ReaderIsToldThatNoCameraHasTheIdentifier) {
    const Capture capture = quietVideoCapture();
    capture->startCapture("nobody", 16, 8);
    OVideoFrameReader reader(capture);
    EXPECT_TRUE(mentions(reason(reader), "nobody"));
    const auto camera = attach("camera");
    capture->startCapture("camera", 16, 8); // and all is well again
    capture->wait();
    EXPECT_FALSE(isReadable(reader));
    camera->deliver(1);
    EXPECT_EQ(reason(reader), "");
}

// A program that the system gives nothing more hears of it, and may start a camera later.
TEST_F(NextFrame, StartWithoutADescriptorOrAThreadIsRefused) {
    const auto camera = attach("camera");
    started("camera"); // a sanitizer needs descriptors itself at the first
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const Capture poor = started("camera");
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    OVideoFrameReader first(poor);
    EXPECT_TRUE(mentions(reason(first), "descriptors"));

    pthread_attr_t usual, huge;
    ASSERT_EQ(::pthread_getattr_default_np(&usual), 0);
    ::pthread_attr_init(&huge);
    ASSERT_EQ(::pthread_attr_setstacksize(&huge, size_t(1) << 62), 0);
    ASSERT_EQ(::pthread_setattr_default_np(&huge), 0);
    const Capture alone = started("camera");
    ASSERT_EQ(::pthread_setattr_default_np(&usual), 0);
    OVideoFrameReader second(alone);
    EXPECT_TRUE(mentions(reason(second), "thread"));

    const Capture rich = started("camera");
    OVideoFrameReader third(rich);
    camera->deliver(1);
    EXPECT_EQ(reason(third), "");
}

TEST_F(NextFrame, LastOneIsHadAfterTheCameraWasUnpluggedAndThenTheReason) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    camera->deliver(1);
    detach(camera);
    VideoFrame frame;
    EXPECT_EQ(nextVideoFrame(reader, frame, 0), 1);
    EXPECT_EQ(reason(reader), "unplugged");
    EXPECT_TRUE(isReadable(reader));
}

TEST_F(NextFrame, StopAndDropWakeWhoWaitsForEver) {
    const auto camera = attach("camera");
    for (const bool drop : {false, true}) {
        Capture capture = started("camera");
        OVideoFrameReader reader(capture);
        std::string why;
        std::thread waiting([&] { why = reason(reader, -1); });
        if (drop)
            capture.clear();
        else
            capture->stopVideoCapture();
        waiting.join();
        EXPECT_EQ(why, "The capture was stopped");
        EXPECT_TRUE(isReadable(reader));
    }
    Capture never = quietVideoCapture();
    OVideoFrameReader reader(never);
    never.clear();
    EXPECT_EQ(reason(reader), "The capture was stopped");
    OVideoFrameReader none{Capture()};
    EXPECT_NE(reason(none), "");
    EXPECT_EQ(camera->frames().alive, 0);
}

TEST_F(NextFrame, StopLetsGoOfTheFrameThoughReadersRemain) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    camera->deliver(1);
    EXPECT_EQ(camera->frames().alive, 1);
    capture->stopVideoCapture();
    EXPECT_EQ(camera->frames().alive, 0);
    EXPECT_NE(reason(reader), "");
}

TEST_F(NextFrame, DescriptorIsReadableWhileThereIsNews) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture), other(capture);
    ASSERT_GE(reader.descriptor(), 0);
    EXPECT_EQ(reader.descriptor(), reader.descriptor());
    EXPECT_NE(reader.descriptor(), other.descriptor());
    EXPECT_FALSE(isReadable(reader));
    camera->deliver(1);
    camera->deliver(2);
    EXPECT_TRUE(isReadable(reader));
    EXPECT_TRUE(isReadable(reader));
    VideoFrame frame;
    ASSERT_EQ(nextVideoFrame(reader, frame, 0), 1);
    EXPECT_FALSE(isReadable(reader));
    EXPECT_TRUE(isReadable(other));
    OVideoFrameReader late(capture);
    EXPECT_TRUE(isReadable(late));
    std::thread later([&] { camera->deliver(3); });
    EXPECT_TRUE(isReadable(reader, LONG));
    later.join();
}

TEST_F(NextFrame, NumbersBeginAgainWithTheNextStart) {
    const auto camera = attach("camera");
    const Capture capture = started("camera");
    OVideoFrameReader reader(capture);
    VideoFrame frame;
    camera->deliver(10);
    camera->deliver(11);
    ASSERT_EQ(nextVideoFrame(reader, frame, 0), 1);
    EXPECT_EQ(frame.frameNumber, 2u);
    detach(camera);
    const auto again = attach("again");
    capture->startCapture("again", 16, 8);
    capture->wait();
    again->deliver(12);
    ASSERT_EQ(nextVideoFrame(reader, frame, 0), 1);
    EXPECT_EQ(frame.frameNumber, 1u);
    EXPECT_EQ(numberIn(frame.data), 12);
}

TEST_F(NextFrame, QuietCaptureWritesNothingAndOthersAsEver) {
    const auto camera = attach("camera");
    camera->refuseStart(cameras::Error("no mode"));
    { const Capture refused = started("camera"); }
    camera->refuseStart(cameras::Error());
    {
        const Capture capture = started("camera");
        VideoFrame frame;
        camera->padRows(16); // polled, such a frame is a line
        camera->deliver(1);
        capture->selfVideoFrame(frame);
        capture->stopVideoCapture();
    }
    EXPECT_EQ(err.takeLines(), support::Lines());
    { const Capture loud = OVideoCaptureUnix::ptr(); }
    EXPECT_EQ(err.takeLines().size(), 3u);
}

TEST_F(NextFrame, PushedColoursComeAsBgrAndGrey) {
    OVideoPushCamera camera(QString::fromLatin1("push"), QString());
    ASSERT_TRUE(camera.attach());
    const Capture capture = started("push", 2, 2);
    OVideoFrameReader reader(capture);
    const uint8_t bgra[] = {0, 0, 255, 9, 255, 255, 255, 9, 0, 0, 0, 9, 128, 128, 128, 9};
    uint8_t bgr[12] = {}, grey[4] = {};
    ASSERT_TRUE(camera.push(bgra, 2, 2, 8));
    OVideoFrameFacts facts;
    const int64_t now = monotonicNanoseconds();
    ASSERT_EQ(nextVideoFrame(reader, bgr, sizeof bgr, 6, OVIDEO_PIXELS_BGR, 0, &facts), 1);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(bgr[i], bgra[i / 3 * 4 + i % 3]) << i;
    EXPECT_EQ(camera.framesTaken(), support::PICTURES_ARE_EAGER ? 2u : 1u);
    EXPECT_EQ(facts.number(), 1u);
    EXPECT_EQ(facts.sequence(), 0u);
    EXPECT_EQ(facts.timeSource(), OVideoFrameFacts::ARRIVAL);
    EXPECT_LE(facts.captureTime(), now);
    EXPECT_GT(facts.captureTime(), now - 60 * NANOSECONDS_PER_SECOND);
    EXPECT_EQ(utf8Of(facts.nativeFormat()), "BGRA");
    EXPECT_EQ(facts.nativeWidth(), 2);
    ASSERT_TRUE(camera.push(bgra, 2, 2, 8));
    ASSERT_EQ(nextVideoFrame(reader, grey, sizeof grey, 2, OVIDEO_PIXELS_GREY, 0, &facts), 1);
    EXPECT_EQ(facts.sequence(), 1u);
    EXPECT_NEAR(grey[0], 0.299 * 255, 1);
    EXPECT_EQ(grey[1], 255);
    EXPECT_EQ(grey[2], 0);
    EXPECT_NEAR(grey[3], 128, 1);
}

TEST_F(NextFrame, NativeBytesAreThoseThatWerePushed) {
    OVideoPushCamera camera(QString::fromLatin1("push"), QString());
    ASSERT_TRUE(camera.attach());
    const Capture capture = started("push", 64, 64);
    OVideoFrameReader reader(capture);
    std::vector<uint8_t> i420(5 * 3 + 2 * 3 * 2);
    for (size_t i = 0; i < i420.size(); ++i)
        i420[i] = static_cast<uint8_t>(i * 7);
    ASSERT_TRUE(camera.pushI420(i420.data(), 5, 3));
    OVideoNativeFrame frame;
    ASSERT_EQ(nextNativeFrame(reader, frame, 0), 1);
    EXPECT_EQ(utf8Of(frame.format()), "I420");
    EXPECT_EQ(frame.width(), 5);
    EXPECT_EQ(frame.height(), 3);
    ASSERT_EQ(frame.planes(), 3);
    EXPECT_EQ(frame.planeOffset(1), 15u);
    EXPECT_EQ(frame.planeOffset(2), 21u);
    EXPECT_EQ(frame.bytesPerLine(0), 5);
    EXPECT_EQ(frame.bytesPerLine(2), 3);
    EXPECT_EQ(frame.bytesPerLine(3), 0);
    EXPECT_EQ(std::vector<uint8_t>(frame.data(), frame.data() + frame.bytesUsed()), i420);
    EXPECT_EQ(frame.facts().number(), 1u);
    EXPECT_EQ(camera.framesTaken(), support::PICTURES_ARE_EAGER ? 1u : 0u);
    VideoFrame shown;
    EXPECT_EQ(nextVideoFrame(reader, shown, 0), 0); // one place for both
}

TEST_F(NextFrame, NativePatternAndItsGreyAreThePatternsOwn) {
    OVideoTestPatternCamera camera(QString::fromLatin1("pattern"), QString(), 320, 240, 100);
    ASSERT_TRUE(camera.attach());
    const Capture capture = started("pattern", 320, 240);
    OVideoFrameReader reader(capture);
    OVideoNativeFrame native;
    ASSERT_EQ(nextNativeFrame(reader, native, LONG), 1);
    uint32_t counter = 0, clock = 0;
    ASSERT_TRUE(
        OVideoTestPatternCamera::decode(native.data(), 320, 240, native.bytesPerLine(0), counter, clock));
    EXPECT_EQ(counter, native.facts().sequence());
    std::vector<uint8_t> grey(320 * 240);
    ASSERT_EQ(nextVideoFrame(reader, grey.data(), grey.size(), 320, OVIDEO_PIXELS_GREY, LONG), 1);
    const double yellow = 0.299 * 255 + 0.587 * 255;
    EXPECT_NEAR(grey[30 * 320 + 20], 255, 1); // the bars are white, yellow, ...
    EXPECT_NEAR(grey[30 * 320 + 60], yellow, 2);
}

namespace {

class NoPicture : public cameras::CameraFrame {
public:
    bool convert(const cameras::pixels::Output&) override { return true; }
};

} // namespace

TEST_F(NextFrame, NumbersWrap) {
    const auto pool = std::make_shared<cameras::pixels::PixelPool>();
    const int delegate = 0;
    FrameSlot::expect(&delegate);
    const std::shared_ptr<FrameSlot> slot = FrameSlot::of(&delegate);
    slot->countFrom(0xFFFFFFFE);
    SlotReader reader(slot);
    for (const uint32_t expected : {0xFFFFFFFFu, 0u, 1u}) {
        slot->put(std::make_shared<SlotFrame>(std::make_shared<NoPicture>(), 1, 1, pool));
        SlotReader::Taken taken;
        ASSERT_EQ(reader.take(0, taken), SlotReader::Found::Frame);
        EXPECT_EQ(taken.frame->number, expected);
        EXPECT_EQ(reader.passedOver(*taken.frame), 0u);
        reader.got(*taken.frame);
    }
    FrameSlot::forget(&delegate);
}
