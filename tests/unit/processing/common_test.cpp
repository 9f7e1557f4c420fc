#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <limits.h>

using ostrel::OVideoCommon;

namespace {

const int NO_LEVELS[] = {3, -1, 4, 320, INT_MAX, INT_MIN};

} // namespace

TEST(Levels, HaveTheNumbersThatClientsStore) {
    EXPECT_EQ(ostrel::VIDEO_QUALITY_LD, 0);
    EXPECT_EQ(ostrel::VIDEO_QUALITY_SD, 1);
    EXPECT_EQ(ostrel::VIDEO_QUALITY_HD, 2);
    EXPECT_EQ(sizeof(ostrel::VIDEO_QUALITY), 4u);
}

TEST(ResolutionToQuality, AnswersTheLevelOfAnExactSize) {
    EXPECT_EQ(OVideoCommon::resolutionToQuality(320, 240), 0);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(640, 480), 1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(1280, 720), 2);
}

TEST(ResolutionToQuality, RefusesTheHeightOfAnotherLevel) {
    EXPECT_EQ(OVideoCommon::resolutionToQuality(640, 720), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(1280, 480), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(320, 480), -1);
}

TEST(ResolutionToQuality, RefusesASizeTurnedOnItsSide) {
    EXPECT_EQ(OVideoCommon::resolutionToQuality(240, 320), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(480, 640), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(720, 1280), -1);
}

TEST(ResolutionToQuality, DoesNotRoundToTheNearestLevel) {
    EXPECT_EQ(OVideoCommon::resolutionToQuality(640, 479), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(641, 480), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(0, 0), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(-640, -480), -1);
    EXPECT_EQ(OVideoCommon::resolutionToQuality(INT_MIN, INT_MAX), -1);
}

TEST(QualityToResolution, AnswersTheSizeOfALevel) {
    const int sizes[3][2] = {{320, 240}, {640, 480}, {1280, 720}};
    for (int quality = 0; quality < 3; ++quality) {
        int width = 7;
        int height = 7;
        OVideoCommon::qualityToResolution(quality, width, height);
        EXPECT_EQ(width, sizes[quality][0]);
        EXPECT_EQ(height, sizes[quality][1]);
    }
}

TEST(QualityToResolution, OverwritesWithZerosForAnUnknownLevel) {
    for (int quality : NO_LEVELS) {
        int width = 7;
        int height = 8;
        OVideoCommon::qualityToResolution(quality, width, height);
        EXPECT_EQ(width, 0) << quality;
        EXPECT_EQ(height, 0) << quality;
    }
}

TEST(QualityToResolution, IsUndoneByResolutionToQuality) {
    for (int quality = 0; quality < 3; ++quality) {
        int width = 0;
        int height = 0;
        OVideoCommon::qualityToResolution(quality, width, height);
        EXPECT_EQ(OVideoCommon::resolutionToQuality(width, height), quality);
    }
}

TEST(QualityToString, IsWidthBlankXBlankHeight) {
    EXPECT_EQ(OVideoCommon::qualityToString(0).toStdString(), "320 x 240");
    EXPECT_EQ(OVideoCommon::qualityToString(1).toStdString(), "640 x 480");
    EXPECT_EQ(OVideoCommon::qualityToString(2).toStdString(), "1280 x 720");
}

TEST(QualityToString, IsNullAndNotJustEmptyForAnUnknownLevel) {
    for (int quality : NO_LEVELS)
        EXPECT_TRUE(OVideoCommon::qualityToString(quality).isNull()) << quality;
}
