// What is shown of a stream while it runs.
#include "apps/camera/progress.h"
#include "apps/camera/stream_report.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(Progress, BarFillsWithTheFraction) {
    EXPECT_EQ(progressLine(0, "x", 80), "[" + std::string(30, ' ') + "]   0%  x");
    EXPECT_EQ(progressLine(0.5, "x", 80), "[" + std::string(15, '#') + std::string(15, ' ') + "]  50%  x");
    EXPECT_EQ(progressLine(1.7, "x", 80), "[" + std::string(30, '#') + "] 100%  x");
    EXPECT_EQ(progressLine(-1, "only text", 80), "only text");
    EXPECT_EQ(progressLine(0.5, "x", 10).size(), 9U);
}

TEST(StreamReport, HoldsEveryFigureWithReasonsAndWhatWasGranted) {
    StreamFigures figures;
    figures.taken = 301;
    figures.missed = 1;
    figures.seconds = 10;
    OVideoStatistics statistics;
    statistics.skipped = 2;
    statistics.lost = 3;
    statistics.dropped["short frame"] = 4;
    statistics.dropped["broken picture"] = 1;
    statistics.grantedFormat = "MJPG";
    statistics.grantedWidth = 1280;
    statistics.grantedHeight = 720;
    statistics.grantedRate = 30;
    EXPECT_EQ(
        streamReport(figures, statistics, {640, 480}),
        "10.0 s  30.0/s  taken 301  skipped 3  dropped 5 (broken picture 1, short frame 4)  lost 3  asked "
        "640x480, granted MJPG 1280x720 at 30/s");
    EXPECT_EQ(streamReport(StreamFigures(), OVideoStatistics(), {640, 480}),
              "0.0 s  0.0/s  taken 0  skipped 0  dropped 0  lost 0  asked 640x480, granted unknown");
}

} // namespace ostrel::tests
