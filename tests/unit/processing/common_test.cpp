#include <ostrel/processing.h>

#include <gtest/gtest.h>

using ostrel::OVideoCommon;

TEST(ResolutionToQuality, AnswersTheLevelOfAnExactSizeOnly) {
    EXPECT_EQ(OVideoCommon::resolutionToQuality(640, 480), 1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(640, 720), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(0, 0), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(480, 640), -1);
}
