#include "apps/viewer/options.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace viewer {

namespace {

Request parse(const QStringList& arguments) {
    return parseCommandLine(QStringList("ostrel-viewer") + arguments);
}

} // namespace

TEST(ViewerOptions, DefaultsAreTheFirstCameraInTheMiddleSize) {
    const Request request = parse({});
    ASSERT_TRUE(request.options);
    EXPECT_FALSE(request.options->testCamera);
    EXPECT_FALSE(request.options->fullScreen);
    EXPECT_TRUE(request.options->camera.isEmpty());
    EXPECT_TRUE(request.options->play.isEmpty());
    EXPECT_EQ(request.options->size, VIDEO_QUALITY_SD);
}

TEST(ViewerOptions, AllAreRead) {
    const Request request =
        parse({"--test-camera", "--play", "a b.y4m", "--camera=Front", "--size", "HD", "--full-screen"});
    ASSERT_TRUE(request.options);
    EXPECT_TRUE(request.options->testCamera);
    EXPECT_TRUE(request.options->fullScreen);
    EXPECT_EQ(request.options->play.toStdString(), "a b.y4m");
    EXPECT_EQ(request.options->camera.toStdString(), "Front");
    EXPECT_EQ(request.options->size, VIDEO_QUALITY_HD);
}

TEST(ViewerOptions, SizesHaveTwoSpellings) {
    EXPECT_EQ(parse({"--size", "320x240"}).options->size, VIDEO_QUALITY_LD);
    EXPECT_EQ(parse({"--size", "640X480"}).options->size, VIDEO_QUALITY_SD);
    EXPECT_EQ(parse({"--size", "1280x720"}).options->size, VIDEO_QUALITY_HD);
    EXPECT_EQ(parse({"--size", "ld"}).options->size, VIDEO_QUALITY_LD);
}

TEST(ViewerOptions, WrongOnesAreRefusedWithOneLineThatNamesThem) {
    const QStringList wrong[] = {{"--size", "641x480"}, {"--size", ""}, {"--colour"}, {"stray"}, {"--play"}};
    for (const QStringList& arguments : wrong) {
        const Request request = parse(arguments);
        EXPECT_FALSE(request.options) << arguments.join(' ').toStdString();
        EXPECT_EQ(request.exitCode, 2);
        EXPECT_TRUE(request.answer.startsWith("ostrel-viewer: ")) << request.answer.toStdString();
    }
    EXPECT_TRUE(parse({"--size", "641x480"}).answer.contains("'641x480'"));
    EXPECT_TRUE(parse({"stray"}).answer.contains("'stray'"));
}

} // namespace viewer
} // namespace ostrel
