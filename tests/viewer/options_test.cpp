#include "apps/viewer/options.h"

#include <gtest/gtest.h>

namespace ostrel::apps::viewer {

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
    EXPECT_EQ(toString(request.options->size), "640x480");
}

TEST(ViewerOptions, AllAreRead) {
    const Request request =
        parse({"--test-camera", "--play", "a b.y4m", "--camera=Front", "--size", "HD", "--full-screen"});
    ASSERT_TRUE(request.options);
    EXPECT_TRUE(request.options->testCamera);
    EXPECT_TRUE(request.options->fullScreen);
    EXPECT_EQ(request.options->play.toStdString(), "a b.y4m");
    EXPECT_EQ(request.options->camera.toStdString(), "Front");
    EXPECT_EQ(toString(request.options->size), "1280x720");
}

TEST(ViewerOptions, UsualWritingsAreUnderstood) {
    EXPECT_EQ(toString(parse({"-s", "640X480"}).options->size), "640x480");
    EXPECT_EQ(toString(parse({"--size", "720p"}).options->size), "1280x720");
    EXPECT_EQ(toString(parse({"--size", "641x481"}).options->size), "641x481");
    EXPECT_EQ(parse({"-c", "Front"}).options->camera.toStdString(), "Front");
    EXPECT_EQ(parse({"clip.y4m"}).options->play.toStdString(), "clip.y4m");
    EXPECT_TRUE(parse({"--fullscreen"}).options->fullScreen);
}

TEST(ViewerOptions, WrongOnesAreRefusedWithOneLineThatNamesThem) {
    const struct {
        QStringList arguments;
        const char* line;
    } cases[] = {
        {{"--size", "7"}, "'7' is no size: WIDTHxHEIGHT, ld (320x240), sd (640x480), hd (1280x720) or 1080p"},
        {{"--colour"}, "'--colour' is no option"},
        {{"--cmaera", "x"}, "'--cmaera' is no option; did you mean '--camera'?"},
        {{"a.y4m", "b.y4m"}, "one file can be played, 'b.y4m' is one too many"},
        {{"--play", "a.y4m", "b.y4m"}, "one file can be played, 'b.y4m' is one too many"},
    };
    for (const auto& wrong : cases) {
        const Request request = parse(wrong.arguments);
        EXPECT_FALSE(request.options);
        EXPECT_EQ(request.exitCode, 2);
        EXPECT_EQ(request.answer.toStdString(),
                  "ostrel-viewer: " + std::string(wrong.line) + "\nTry 'ostrel-viewer --help'.\n");
    }
    EXPECT_EQ(parse({"--play"}).exitCode, 2);
}

} // namespace ostrel::apps::viewer
