// Pictures, sizes and rates, and what another program makes of them.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "platform/cameras/messages.h"
#include "platform/cameras/pixels/picture.h"
#include "support/jpeg_pictures.h"
#include "support/process_figures.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace ostrel::tests {

using support::PipeWireCamera;
using support::RecordingSink;

class PipeWireCapture : public PipeWireTest {
protected:
    // Whether the picture is of one colour throughout, as the program draws it.
    static bool isEven(const FramePointer& frame, int width, int height) {
        std::vector<uint8_t> bgra(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
        if (!frame || !frame->convert(bgra.data(), width, height, width * 4))
            return false;
        for (size_t i = 4; i < bgra.size(); ++i)
            if (bgra[i] != bgra[i % 4])
                return false;
        return true;
    }
    uint64_t dropped(const std::string& reason) { return camera->statistics().dropped[reason]; }
};

TEST_F(PipeWireCapture, EveryLayoutHasAPictureInOneBlockAndInSeveral) {
    for (const std::string format : {"YUYV", "UYVY", "NV12", "YU12", "BGRx", "RGBx", "RGB3", "BGR3", "GREY"})
        for (const std::string planes : {"planes=one", "planes=separate"})
            for (const std::string padding : {"padding=0", "padding=64"}) {
                SCOPED_TRACE(format + ' ' + planes + ' ' + padding);
                const PipeWireCamera one("one", {"format=" + format, planes, padding, "sizes=64x48"});
                sink = std::make_shared<RecordingSink>();
                ASSERT_EQ(start("one", 64, 48).text, "");
                ASSERT_TRUE(sink->waitForFrames(2));
                EXPECT_TRUE(isEven(sink->newest(), 64, 48));
                EXPECT_TRUE(isEven(sink->newest(), 40, 30)) << "scaled";
                const auto facts = sink->newest()->facts();
                EXPECT_EQ(facts.format.substr(0, 2), format == "BGRx"   ? "XR"
                                                     : format == "RGBx" ? "XB"
                                                                        : format.substr(0, 2));
                EXPECT_EQ(facts.source, cameras::TimeSource::EndOfFrame) << "the program tells the time";
                EXPECT_TRUE(camera->statistics().dropped.empty());
                camera->close();
            }
}

TEST_F(PipeWireCapture, APictureIsFoundWhereItsStrideSays) {
    // Two bytes of padding that belong to no pixel would tilt the picture if they were taken for some.
    const PipeWireCamera one("one", {"format=RGB3", "padding=2", "sizes=64x48"});
    ASSERT_EQ(start("one", 64, 48).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    int stride = 0;
    sink->newest()->show([&](const cameras::pixels::Picture& picture) { stride = picture.planes[0].stride; });
    EXPECT_EQ(stride, 64 * 3 + 2);
}

TEST_F(PipeWireCapture, TheSizeAndTheRateAreChosenAsForANode) {
    const PipeWireCamera one("one", {"rates=1,15,30,60"});
    struct Case {
        int width, height, granted;
    };
    for (const Case& each : {Case{640, 480, 640}, Case{800, 600, 1280}, Case{1280, 720, 1280},
                             Case{320, 240, 640}, Case{1920, 1080, 1280}}) {
        sink = std::make_shared<RecordingSink>();
        ASSERT_EQ(start("one", each.width, each.height).text, "");
        ASSERT_TRUE(sink->waitForFrames(1));
        const auto granted = camera->statistics().granted;
        EXPECT_EQ(granted.size.width, each.granted) << each.width;
        EXPECT_EQ(granted.format, "YUYV");
        EXPECT_EQ(granted.rate(), 30) << "the slowest that is enough";
        EXPECT_EQ(camera->statistics().by, "PipeWire (one)");
        camera->close();
    }
}

TEST_F(PipeWireCapture, JpegPicturesAreDecoded) {
    const std::string path = ::testing::TempDir() + "pipewire-" + std::to_string(::getpid()) + ".jpg";
    const std::vector<uint8_t> jpeg = support::encodeJpeg(64, 48, support::JpegOptions(), [](int, int) {
        return std::array<uint8_t, 3>{200, 200, 200};
    });
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(jpeg.data()), static_cast<std::streamsize>(jpeg.size()));
    const PipeWireCamera one("one", {"format=MJPG", "jpeg=" + path, "sizes=64x48"});
    ASSERT_EQ(start("one", 64, 48).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    EXPECT_TRUE(isEven(sink->newest(), 64, 48));
    EXPECT_EQ(camera->statistics().granted.format, "MJPG");
    std::remove(path.c_str());
}

TEST_F(PipeWireCapture, AFormatWithoutAPictureIsNamed) {
    const PipeWireCamera one("one", {"format=v210"});
    EXPECT_EQ(start("one").text, "one (PipeWire) offers only v210");
}

TEST_F(PipeWireCapture, TwoConsumersShareThePictureOfTheFirst) {
    PipeWireCamera one("one");
    ASSERT_EQ(start("one", 640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    const auto other = listed("one"); // an object of its own, as another program would have it
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(other->open().text, "");
    ASSERT_EQ(other->start(1280, 720, second).text, "");
    ASSERT_TRUE(second->waitForFrames(10));
    EXPECT_EQ(other->statistics().granted.size.width, 640) << "the size that runs";
    EXPECT_TRUE(isEven(second->newest(), 640, 480));
    ASSERT_TRUE(sink->waitForMoreFrames(5));
    EXPECT_EQ(camera->statistics().granted.size.width, 640);
    // Who wants more than what is shared is told why it is not had, and no frame is lost for it.
    const auto third = std::make_shared<RecordingSink>();
    ASSERT_EQ(camera->start(1280, 720, third).text, "");
    ASSERT_TRUE(third->waitForFrames(2));
    EXPECT_NE(camera->statistics().shared.find("is shared at 640x480"), std::string::npos);
    // Whoever leaves takes nothing from who stays.
    for (int i = 0; i < 20; ++i) {
        other->close();
        ASSERT_EQ(other->open().text, "");
        ASSERT_EQ(other->start(640, 480, second).text, "");
    }
    other->close();
    EXPECT_TRUE(sink->waitForMoreFrames(20));
    // A stall of its own, on a busy machine, has it started again as well.
    const uint64_t restarts = camera->statistics().restarts;
    EXPECT_LE(static_cast<uint64_t>(one.program().linesOf("streaming")), 1 + restarts)
        << "the camera was stopped by who left";
}

TEST_F(PipeWireCapture, AJoinWidensACameraThatNobodyElseUses) {
    const PipeWireCamera one("one");
    ASSERT_EQ(start("one", 640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(camera->start(1280, 720, second).text, "");
    ASSERT_TRUE(second->waitForFrames(2));
    EXPECT_EQ(camera->statistics().granted.size.width, 1280);
    EXPECT_EQ(camera->statistics().shared, "");
}

TEST_F(PipeWireCapture, FramesThatAreHeldOutliveANewFormat) {
    PipeWireCamera one("one", {"sizes=640x480"});
    ASSERT_EQ(start("one", 640, 480).text, "");
    ASSERT_TRUE(sink->waitForFrames(3));
    const FramePointer held = sink->newest();
    EXPECT_TRUE(isEven(held, 64, 48));
    one.program().tell("size 320x240");
    ASSERT_TRUE(one.program().waitForLine("granted 320x240"));
    ASSERT_TRUE(comesTrue([&] { return sink->newest()->facts().size.width == 320; }));
    EXPECT_TRUE(isEven(held, 64, 48));
    EXPECT_TRUE(isEven(sink->newest(), 64, 48));
    EXPECT_EQ(camera->statistics().granted.size.width, 320);
}

TEST_F(PipeWireCapture, FramesAndNewFormatsNeedTheMappingsOfTheFirst) {
    const auto alone = support::processFigures();
    PipeWireCamera one("one", {"sizes=640x480", "rates=200"});
    ASSERT_EQ(start("one", 640, 480).text, "");
    const auto take = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            ASSERT_TRUE(sink->waitForMoreFrames(1));
            ASSERT_TRUE(isEven(sink->newest(), 64, 48));
        }
    };
    take(50);
    const auto first = support::processFigures();
    EXPECT_GT(first.sharedMappings, alone.sharedMappings) << "the camera's memory";
    take(500);
    const auto later = support::processFigures();
    EXPECT_EQ(later.sharedMappings, first.sharedMappings);
    EXPECT_LT(later.mappings, first.mappings + 50) << "the heap's may come and go";
    for (const std::string size : {"320x240", "640x480", "320x240", "640x480"}) {
        const FramePointer held = sink->newest();
        one.program().tell("size " + size);
        ASSERT_TRUE(comesTrue([&] { return cameras::text(sink->newest()->facts().size) == size; }));
        EXPECT_TRUE(isEven(held, 64, 48));
    }
    EXPECT_EQ(support::processFigures().sharedMappings, first.sharedMappings);
    const FramePointer held = sink->newest();
    camera->close();
    EXPECT_EQ(support::processFigures().sharedMappings, alone.sharedMappings) << "with a frame held";
    EXPECT_TRUE(isEven(held, 64, 48));
}

TEST_F(PipeWireCapture, MoreFramesThanBuffersCanBeHeld) {
    const PipeWireCamera one("one", {"sizes=64x48", "rates=200"});
    sink->keepAll = true;
    ASSERT_EQ(start("one", 64, 48).text, "");
    ASSERT_TRUE(sink->waitForFrames(40));
    camera->close();
    int newest = -1;
    for (const FramePointer& frame : sink->takeAll()) {
        EXPECT_TRUE(isEven(frame, 64, 48)) << "none was written over";
        EXPECT_GT(static_cast<int>(frame->facts().sequence), newest);
        newest = static_cast<int>(frame->facts().sequence);
    }
}

TEST_F(PipeWireCapture, WhatAProgramLiesAboutItsPicturesIsNotBelieved) {
    struct Case {
        const char* lie;
        const char* dropped; // null: the picture is whole all the same
    };
    const Case cases[] = {{"offset", "empty"},     {"size", nullptr},      {"stride", "truncated"},
                          {"negative", nullptr},   {"short", "truncated"}, {"empty", "empty"},
                          {"corrupted", "damaged"}};
    for (const Case& each : cases)
        for (const std::string planes : {"planes=one", "planes=separate"}) {
            SCOPED_TRACE(each.lie + (' ' + planes));
            const PipeWireCamera one("one",
                                     {"format=YU12", "sizes=64x48", planes, std::string("lie=") + each.lie});
            sink = std::make_shared<RecordingSink>();
            ASSERT_EQ(start("one", 64, 48).text, "");
            if (each.dropped) {
                EXPECT_TRUE(comesTrue([&] { return dropped(each.dropped) > 3; }));
                EXPECT_EQ(sink->frames(), 0);
            } else {
                ASSERT_TRUE(sink->waitForFrames(2));
                EXPECT_TRUE(isEven(sink->newest(), 64, 48));
            }
            camera->close();
        }
}

// Of each capture that ends some buffers are with the consumer; a camera gets them back for the next.
TEST_F(PipeWireCapture, StartsThatFollowEachOtherAtOnceAllHaveFrames) {
    const PipeWireCamera one("one", {"sizes=64x48", "rates=200"});
    for (int i = 0; i < 30; ++i) {
        sink = std::make_shared<RecordingSink>();
        ASSERT_EQ(start("one", 64, 48).text, "") << i;
        if (i % 2) {
            ASSERT_TRUE(sink->waitForFrames(1)) << i;
        }
        camera->close();
    }
}

// Each capture leaves buffers on their way; a camera that still had the old ones would have fewer each time.
TEST_F(PipeWireCapture, TheCameraHasNewBuffersForEachCapture) {
    PipeWireCamera one("one", {"sizes=64x48", "rates=200"});
    for (int i = 1; i <= 20; ++i) {
        sink = std::make_shared<RecordingSink>();
        ASSERT_EQ(start("one", 64, 48).text, "") << i;
        ASSERT_TRUE(sink->waitForFrames(2)) << i;
        camera->close();
        camera.reset(); // with the connection
        ASSERT_TRUE(comesTrue([&] { return one.program().linesOf("granted 64x48 at 200") == i; })) << i;
    }
}

TEST_F(PipeWireCapture, AThousandStartsLeaveNothingBehind) {
    const PipeWireCamera one("one", {"sizes=64x48", "rates=200"});
    const auto run = [&](int times) {
        for (int i = 0; i < times; ++i) {
            const auto fresh = std::make_shared<RecordingSink>();
            ASSERT_EQ(start("one", 64, 48).text, "") << i;
            camera->stop(fresh);
            camera->stop(sink);
            camera->close();
            sink->drop(); // a frame that came in time keeps a descriptor
        }
    };
    run(20);
    const auto before = support::processFigures();
    run(OSTREL_TEST_TIMES);
    const auto after = support::processFigures();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_TRUE(support::threadsComeDownTo(before.threads));
    EXPECT_EQ(after.sharedMappings, before.sharedMappings);
    EXPECT_LT(after.heapBytes, before.heapBytes + OSTREL_TEST_TIMES * 500); // libpipewire keeps some
}

} // namespace ostrel::tests
