// Modes as drivers list them.
#include "unit/platform/cameras/v4l2/modes_fixture.h"

#include <atomic>
#include <cerrno>
#include <thread>

namespace ostrel::tests {

TEST_F(ModesTest, AreListedAsTheDriverDoes) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_MJPEG, {only(1280, 720), only(640, 480)}), {60, 30}),
                      raw(V4L2_PIX_FMT_SBGGR8, {only(320, 240)}, 15), raw(V4L2_PIX_FMT_H264, {only(64, 48)}),
                      raw(V4L2_PIX_FMT_Y16_BE, {only(64, 48)})};
    plug();
    EXPECT_EQ(modes(),
              (std::vector<std::string>{"MJPG 1280x720 1/60", "MJPG 1280x720 1/30", "MJPG 640x480 1/60",
                                        "MJPG 640x480 1/30", "BA81! 320x240 1/15", "H264! 64x48 1/30",
                                        "Y16-BE 64x48 1/30"}));
}

TEST_F(ModesTest, OfRangesHaveTheirEndsAndSteps) {
    FormatScript steps = raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 8)});
    steps.intervalType = V4L2_FRMIVAL_TYPE_STEPWISE;
    steps.intervals = {perSecond(120), perSecond(5), perSecond(1)};
    device.formats = {steps, raw(V4L2_PIX_FMT_GREY, {stepwise(2, 64, 1)})};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 2048x2048 from 16x16 by 8x8 1/120 to 1/5",
                                                 "GREY 64x64 from 2x2 by 1x1 1/30"}));
}

TEST_F(ModesTest, WithoutSizesOrIntervalsSaySo) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {}), withRates(raw(V4L2_PIX_FMT_GREY, {only(64, 48)}), {})};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 0x0 0/0", "GREY 64x48 0/0"}));
}

TEST_F(ModesTest, WhatADriverListsTwiceOrWithoutSenseIsLeftOut) {
    FormatScript lying =
        raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(640, 480), only(0, 480), only(320, 240)});
    lying.intervals = {perSecond(30), perSecond(30), perSecond(0), perSecond(15)};
    device.formats = {lying, lying};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 640x480 1/30", "YUYV 640x480 1/15",
                                                 "YUYV 320x240 1/30", "YUYV 320x240 1/15"}));
}

TEST_F(ModesTest, OfADriverWithoutEndAreLimited) {
    device.formats.clear();
    for (uint32_t format = 0; format < 300; ++format) {
        FormatScript endless = raw(0x30303030 + format, {});
        for (int size = 1; size <= 300; ++size)
            endless.sizes.push_back(only(size, size));
        for (uint32_t rate = 1; rate <= 300; ++rate)
            endless.intervals.push_back(perSecond(rate));
        device.formats.push_back(endless);
    }
    device.formats.push_back(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}));
    addBare(PATH, device);
    cameras::v4l2::NodeFacts facts = discovery->nodes().at(0);
    const auto camera = cameras::v4l2::makeCamera(kernel, discovery, facts, "endless", "Endless");
    cameras::NativeModes all;
    EXPECT_EQ(camera->modes(all).text, "");
    EXPECT_LT(all.size(), 5000u);
    EXPECT_LT(kernel->callsOn(PATH), 10000);
}

TEST_F(ModesTest, ADriverThatBreaksOffHasToldWhatItToldAndWhy) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(320, 240)}),
                      raw(V4L2_PIX_FMT_GREY, {only(64, 48)})};
    plug();
    const size_t all = modes().size();
    ASSERT_EQ(all, 3u);
    for (const unsigned long call : {VIDIOC_ENUM_FMT, VIDIOC_ENUM_FRAMESIZES, VIDIOC_ENUM_FRAMEINTERVALS})
        for (const int number : {EIO, ENOMEM, EBUSY, EPERM, EFAULT, EAGAIN, ENODEV, ENXIO, EINVAL, ENOTTY}) {
            SCOPED_TRACE(number);
            kernel->failNext(call, number, 1, 1);
            std::string why;
            const std::vector<std::string> found = modes(&why);
            EXPECT_FALSE(found.empty());
            const char* const gone =
                number == ENODEV || number == ENXIO ? "was unplugged" : "did not tell all";
            const bool isEnd = number == EINVAL || number == ENOTTY;
            EXPECT_EQ(why.empty(), isEnd) << why;
            EXPECT_TRUE(isEnd || why.find(gone) != std::string::npos) << why;
            std::string again;
            EXPECT_EQ(modes(&again).size(), all) << "nothing of it stays";
            EXPECT_EQ(again, "");
        }
}

TEST_F(ModesTest, OfANodeThatDoesNotAnswerAreUnknownWithTheReason) {
    plug();
    const struct {
        unsigned long call;
        int number;
        const char* why;
    } cases[] = {{OPEN, EACCES, "No permission to open"}, {OPEN, EBUSY, "in use by another program"},
                 {OPEN, ENODEV, "was unplugged"},         {OPEN, EMFILE, "Cannot open"},
                 {VIDIOC_QUERYCAP, EIO, "Cannot open"},   {VIDIOC_QUERYCAP, ENODEV, "was unplugged"}};
    for (const auto& one : cases) {
        // Once for the listing of a node without a description, which has its answer.
        const auto camera = provider->list().at(0);
        kernel->failNext(one.call, one.number);
        cameras::NativeModes none;
        const Error unknown = camera->modes(none);
        EXPECT_TRUE(none.empty());
        EXPECT_NE(unknown.text.find(one.why), std::string::npos) << unknown.text;
        EXPECT_EQ(kernel->openDescriptors(), 0);
    }
}

TEST_F(ModesTest, ThatWereKnownOnceAreStillToldWhenTheNodeDoesNotAnswer) {
    plug();
    const auto camera = provider->list().at(0);
    cameras::NativeModes before, now;
    ASSERT_FALSE(camera->modes(before));
    kernel->failNext(OPEN, EBUSY);
    EXPECT_EQ(camera->modes(now).code, EBUSY);
    EXPECT_EQ(now.size(), before.size());
}

TEST_F(ModesTest, OfACameraThatStreamsAreToldWithoutACall) {
    plug();
    ASSERT_FALSE(start(640, 480, sink));
    const auto node = provider->list();
    const int before = kernel->callsOn(PATH) - kernel->calls(PATH, POLL);
    EXPECT_EQ(modes(), std::vector<std::string>{"YUYV 640x480 1/30"});
    EXPECT_EQ(request(wish("YUYV")), "");
    EXPECT_EQ(kernel->callsOn(PATH) - kernel->calls(PATH, POLL), before);
}

// A program that has just begun to capture asks next what the camera can do.
class ModesWhileOpening : public ModesTest, public ::testing::WithParamInterface<unsigned long> {};
INSTANTIATE_TEST_SUITE_P(Steps, ModesWhileOpening, ::testing::Values(VIDIOC_QUERYCAP, VIDIOC_ENUM_FMT));

TEST_P(ModesWhileOpening, AreWaitedFor) {
    plug();
    const auto camera = provider->list().at(0);
    const auto gate = kernel->hold(PATH, GetParam());
    std::thread opener([&] { EXPECT_EQ(camera->open().text, ""); });
    gate->awaitArrivals(1);
    std::atomic<bool> told{false};
    std::thread asker([&] {
        cameras::NativeModes all;
        EXPECT_EQ(camera->modes(all).text, "");
        EXPECT_EQ(all.size(), 1u);
        told = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20)); // else it would always be green
    EXPECT_FALSE(told);
    gate->open();
    opener.join();
    asker.join();
    camera->close();
}

TEST_F(ModesTest, ThatAreKnownAreToldAtOnceWhileTheCameraOpensAgain) {
    plug();
    const auto camera = provider->list().at(0);
    ASSERT_EQ(camera->open().text, "");
    camera->close();
    const auto gate = kernel->hold(PATH, VIDIOC_QUERYCAP);
    std::thread opener([&] { EXPECT_EQ(camera->open().text, ""); });
    gate->awaitArrivals(1);
    cameras::NativeModes all;
    EXPECT_EQ(camera->modes(all).text, ""); // would hang here
    EXPECT_EQ(all.size(), 1u);
    gate->open();
    opener.join();
    camera->close();
}

TEST_F(ModesTest, AreToldToAllWhoAskWhileTheNodeIsBeingAsked) {
    plug();
    const auto camera = provider->list().at(0);
    const auto gate = kernel->hold(PATH, VIDIOC_ENUM_FMT);
    std::atomic<int> asking{0};
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i) {
        askers.emplace_back([&] {
            ++asking;
            cameras::NativeModes all;
            EXPECT_EQ(camera->modes(all).text, "");
            EXPECT_EQ(all.size(), 1u);
        });
        gate->awaitArrivals(1);
        while (asking <= i)
            std::this_thread::yield();
    }
    gate->open();
    for (std::thread& asker : askers)
        asker.join();
}

TEST_F(ModesTest, OfNoCameraAreNone) {
    plug();
    QString why;
    EXPECT_TRUE(videoModes(QString::fromLatin1("nobody"), &why).isEmpty());
    EXPECT_EQ(utf8Of(why), "No camera with the identifier \"nobody\" is attached");
    EXPECT_FALSE(requestVideoMode(QString::fromLatin1("nobody"), wish("YUYV"), &why));
    EXPECT_TRUE(requestVideoMode(QString::fromLatin1("nobody"), OVideoMode(), &why)) << "takes nothing back";
}

} // namespace ostrel::tests
