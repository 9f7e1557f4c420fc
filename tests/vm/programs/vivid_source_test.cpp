// An HDMI source that changes its mode while it is captured from. One vivid camera with an HDMI input is
// there, which does not scale: its pictures have the size of what comes in.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <gtest/gtest.h>

#include <string>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

// By the name that the driver's menu has for it. "Selected" timings come in whatever was set before.
void sendTimings(const std::string& name) {
    shell("index=$(v4l2-ctl -L | sed -n 's/^[[:space:]]*\\([0-9]*\\): " + name +
          "$/\\1/p' | head -1) && v4l2-ctl -c dv_timings=$index,dv_timings_signal_mode=4");
}

bool becomes(const Capture& capture, int width, int height) {
    return waitUntil([&] {
        const OVideoStatistics now = capture.statistics();
        return now.grantedWidth == width && now.grantedHeight == height;
    });
}

} // namespace

TEST(VividSource, OfAnotherModeIsFollowedBeforeTheStartAndWhileItRuns) {
    sendTimings("1280x720p60");
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(becomes(capture, 1280, 720));
    for (const auto& mode : {std::string("720x480p59"), std::string("1920x1080p60")}) {
        sendTimings(mode);
        EXPECT_TRUE(mode[0] == '7' ? becomes(capture, 720, 480) : becomes(capture, 1920, 1080)) << mode;
        EXPECT_TRUE(capture.waitForFrames(3));
        ASSERT_TRUE(capture.waitForPicture());
        EXPECT_TRUE(showsColorBars(capture.picture())) << mode;
    }
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}

TEST(VividSource, ThatComesBackAfterItWasGoneIsCapturedFromAgain) {
    sendTimings("1280x720p60");
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    shell("v4l2-ctl -c dv_timings_signal_mode=1"); // no signal
    sendTimings("720x480p59");
    EXPECT_TRUE(becomes(capture, 720, 480));
    EXPECT_TRUE(capture.waitForFrames(3)); // the newest may still be the noise that came without a signal
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}
