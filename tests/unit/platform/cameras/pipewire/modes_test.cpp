// What a node offers, and a mode of the program's choice.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "platform/cameras/pipewire/video_formats.h"
#include "platform/cameras/wishes.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <spa/pod/builder.h>
#include <unistd.h>

namespace ostrel::tests {

using cameras::ModeWish;
using cameras::NativeMode;
using cameras::NativeModes;
using support::PipeWireCamera;
using support::RecordingSink;

class PipeWireModes : public PipeWireTest {
protected:
    const std::string file = ::testing::TempDir() + "pipewire-" + std::to_string(::getpid()) + ".h264";

    void SetUp() override { std::ofstream(file) << "not decoded here"; }
    void TearDown() override {
        cameras::setModeWish("pipewire-one", ModeWish());
        cameras::listNativeOnly(false);
        std::remove(file.c_str());
        PipeWireTest::TearDown();
    }
    // "YUYV 640x480 at 30", in the order in which they are told; a '-' before what has no picture.
    static Words words(const NativeModes& modes) {
        Words result;
        for (const NativeMode& mode : modes) {
            EXPECT_EQ(mode.sizes.least, mode.sizes.most);
            EXPECT_EQ(mode.intervals.shortest, mode.intervals.longest);
            char text[64];
            std::snprintf(text, sizeof text, "%s%s %dx%d at %g", mode.hasPicture ? "" : "-",
                          mode.format.c_str(), mode.sizes.most.width, mode.sizes.most.height,
                          mode.intervals.shortest.rate());
            result.push_back(text);
        }
        return result;
    }
    static Words modesOf(cameras::Camera& camera) {
        NativeModes modes;
        EXPECT_EQ(camera.modes(modes).text, "");
        return words(modes);
    }
    static void wish(const std::string& format, int width, int height, uint32_t rate) {
        ModeWish wish;
        wish.format = format;
        wish.size = cameras::Size(width, height);
        if (rate != 0)
            wish.interval = cameras::intervalOf(rate);
        cameras::setModeWish("pipewire-one", wish);
    }
    // Starts with what is wished for, and tells what was granted.
    std::string granted() {
        sink = std::make_shared<RecordingSink>();
        const cameras::Error refused = start("one");
        if (refused)
            return refused.text;
        EXPECT_TRUE(sink->waitForFrames(1));
        const cameras::Mode mode = camera->statistics().granted;
        camera->close();
        char text[64];
        std::snprintf(text, sizeof text, "%s%s %dx%d at %g", mode.hasPicture ? "" : "-", mode.format.c_str(),
                      mode.size.width, mode.size.height, mode.rate());
        return text;
    }
};

TEST_F(PipeWireModes, EveryFormatSizeAndRateIsToldAndThoseWithoutAPictureAreSaidToBe) {
    const PipeWireCamera one("one", {"format=YUYV,v210,H264", "sizes=640x480,1280x720", "rates=30,60"});
    const Words all = {"YUYV 640x480 at 30",   "YUYV 640x480 at 60",   "YUYV 1280x720 at 30",
                       "YUYV 1280x720 at 60",  "-v210 640x480 at 30",  "-v210 640x480 at 60",
                       "-v210 1280x720 at 30", "-v210 1280x720 at 60", "-H264 640x480 at 30",
                       "-H264 640x480 at 60",  "-H264 1280x720 at 30", "-H264 1280x720 at 60"};
    camera = listed("one");
    EXPECT_EQ(modesOf(*camera), all) << "closed";
    ASSERT_EQ(camera->open().text, "");
    EXPECT_EQ(modesOf(*camera), all) << "open";
    ASSERT_EQ(camera->start(640, 480, sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(modesOf(*camera), all) << "running";
    EXPECT_EQ(modesOf(*listed("one")), all) << "running for another one";
}

TEST_F(PipeWireModes, ManyWhoAskAtOnceGetTheWholeAnswerEach) {
    const PipeWireCamera one("one", {"format=YUYV,GREY", "rates=5,10,15,20,25,30"});
    std::vector<std::thread> askers;
    for (int i = 0; i < 4; ++i)
        askers.emplace_back([this] {
            for (int times = 0; times < 25; ++times)
                EXPECT_EQ(modesOf(*listed("one")).size(), 24u);
        });
    for (std::thread& asker : askers)
        asker.join();
}

TEST_F(PipeWireModes, ADaemonThatDoesNotAnswerOrHasGoneIsAnError) {
    const PipeWireCamera one("one");
    camera = listed("one");
    NativeModes modes;
    cameras::pipewire::Remote::timeout = 100000000;
    session.daemon().kill(SIGSTOP);
    EXPECT_EQ(camera->modes(modes).code, ETIMEDOUT);
    EXPECT_TRUE(modes.empty());
    session.daemon().end(SIGKILL);
    EXPECT_TRUE(comesTrue([&] { return camera->modes(modes).code == ENODEV; }));
    EXPECT_TRUE(modes.empty());
}

TEST_F(PipeWireModes, TheModeThatIsWishedForIsTheOneThatRuns) {
    const PipeWireCamera one("one", {"format=YUYV,GREY", "sizes=640x480,1280x720", "rates=15,30,60"});
    EXPECT_EQ(granted(), "YUYV 640x480 at 30") << "without a wish";
    wish("", 0, 0, 60);
    EXPECT_EQ(granted(), "YUYV 640x480 at 60");
    wish("", 0, 0, 15);
    EXPECT_EQ(granted(), "YUYV 640x480 at 15");
    wish("GREY", 0, 0, 0);
    EXPECT_EQ(granted(), "GREY 640x480 at 30");
    wish("", 1280, 720, 0);
    EXPECT_EQ(granted(), "YUYV 1280x720 at 30");
    wish("GREY", 1280, 720, 60);
    EXPECT_EQ(granted(), "GREY 1280x720 at 60");
}

TEST_F(PipeWireModes, AWishThatIsNotOfferedIsRefusedByName) {
    const PipeWireCamera one("one", {"format=YUYV", "sizes=640x480", "rates=30"});
    wish("YUYV", 640, 480, 60);
    EXPECT_EQ(granted(), "one (PipeWire) offers no mode that fits YUYV 640x480 at 60/s");
    wish("", 1280, 720, 0);
    EXPECT_EQ(granted(), "one (PipeWire) offers no mode that fits 1280x720");
    wish("MJPG", 0, 0, 0);
    EXPECT_EQ(granted(), "one (PipeWire) offers no mode that fits MJPG");
}

TEST_F(PipeWireModes, OfACameraThatRunsInAnotherModeAWishIsNotGrantedAndOneThatFitsIs) {
    const PipeWireCamera one("one", {"sizes=640x480,1280x720", "rates=30,60"});
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    const auto first = camera; // another program
    const auto firstSink = sink;
    wish("", 1280, 720, 0);
    EXPECT_EQ(granted(), "one (PipeWire) runs for another program as YUYV 640x480 at 30/s, which does not "
                         "fit 1280x720");
    wish("", 0, 0, 60);
    EXPECT_NE(granted().find("does not fit at 60/s"), std::string::npos);
    wish("YUYV", 0, 0, 30);
    EXPECT_EQ(granted(), "YUYV 640x480 at 30");
    EXPECT_TRUE(firstSink->waitForMoreFrames(2));
    EXPECT_EQ(first->statistics().granted.size.width, 640);
    first->close();
}

TEST_F(PipeWireModes, AFormatWithoutAPictureIsHadWhereItIsWishedForOrTheOnlyOneThatIsAllowed) {
    const PipeWireCamera one("one", {"format=H264", "sizes=640x480", "jpeg=" + file});
    EXPECT_EQ(granted(), "one (PipeWire) offers only H264 (compressed video, which is not decoded here)");
    cameras::listNativeOnly(true);
    EXPECT_EQ(granted(), "-H264 640x480 at 30");
    cameras::listNativeOnly(false);
    wish("H264", 0, 0, 0);
    EXPECT_EQ(granted(), "-H264 640x480 at 30");
    ASSERT_TRUE(sink->newest());
    EXPECT_FALSE(sink->newest()->hasPicture());
    std::string bytes;
    sink->newest()->show([&](const cameras::pixels::Picture& picture) {
        bytes.assign(reinterpret_cast<const char*>(picture.planes[0].data), picture.planes[0].bytes);
    });
    EXPECT_EQ(bytes, "not decoded here");
}

TEST_F(PipeWireModes, ARawFormatWithoutAPictureIsHadAsItIs) {
    const PipeWireCamera one("one", {"format=v210,GREY", "sizes=64x48"});
    EXPECT_EQ(granted(), "GREY 64x48 at 30");
    wish("v210", 0, 0, 0);
    EXPECT_EQ(granted(), "-v210 64x48 at 30");
    size_t bytes = 0;
    sink->newest()->show([&](const cameras::pixels::Picture& picture) { bytes = picture.planes[0].bytes; });
    EXPECT_EQ(bytes, 64u * 8 * 48);
}

// The size that is asked for where a camera offers those from 16x16 to 16384x8640 in such a step.
cameras::Size chosenOf(const spa_rectangle& step, int width, int height) {
    const spa_rectangle least = {16, 16}, most = {16384, 8640};
    uint8_t memory[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(memory, sizeof memory);
    spa_pod_frame object, choice;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
                        SPA_POD_Id(SPA_VIDEO_FORMAT_YUY2), 0);
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_size, 0);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Step, 0);
    for (const spa_rectangle& one : {least, least, most, step})
        spa_pod_builder_rectangle(&builder, one.width, one.height);
    spa_pod_builder_pop(&builder, &choice);
    std::vector<cameras::pipewire::Offer> offers;
    cameras::pipewire::addOffers(static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object)), offers);
    cameras::Request request;
    request.size = cameras::Size(width, height);
    const auto candidates = cameras::pipewire::candidates(offers, request, false);
    EXPECT_EQ(candidates.size(), 1u);
    return candidates.empty() ? cameras::Size() : candidates.front().size;
}

// The ranges of capture cards, whose largest picture would take all memory.
TEST(PipeWireSteps, OneThatLeadsNowhereIsNotBelieved) {
    EXPECT_EQ(chosenOf({16, 8}, 100, 100), cameras::Size(112, 104)) << "as it is told";
    EXPECT_EQ(chosenOf({16384, 8640}, 640, 480), cameras::Size(640, 480)) << "the largest size";
    EXPECT_EQ(chosenOf({16384, 8640}, 641, 479), cameras::Size(642, 480));
    EXPECT_EQ(chosenOf({0, 0}, 640, 480), cameras::Size(640, 480));
    EXPECT_EQ(chosenOf({0x80000000u, 0xFFFFFFFFu}, 640, 480), cameras::Size(640, 480));
}

} // namespace ostrel::tests
