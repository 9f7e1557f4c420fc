// ostrel-camera run as a program with a video as its camera.
#include "frames.h"
#include "program.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtGui/QImage>

#include <algorithm>
#include <vector>

namespace {

using namespace ostrel::tests;

class PlayProgram : public testing::Test {
protected:
    void SetUp() override {
        QByteArray video = "YUV4MPEG2 W320 H240 F50:1 Ip A1:1 C420jpeg\n";
        for (const int level : LEVELS)
            video += "FRAME\n" + toByteArray(greyI420(320, 240, static_cast<uint8_t>(level)));
        QFile file(folder_.file("clip.y4m"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(video), video.size());
    }

    // The grey of each frame of a recording.
    std::vector<int> levels(const QString& name) const {
        std::vector<int> found;
        for (const QByteArray& frame : readY4m(folder_.read(name), 320, 240).frames)
            found.push_back(static_cast<uint8_t>(frame[1000]));
        return found;
    }

    const std::vector<int> LEVELS = {40, 80, 120, 160, 200};
    Folder folder_;
};

TEST_F(PlayProgram, AFileIsACameraThatIsListedAndUsed) {
    const Outcome list = run(folder_.path(), {"list", "--play", "clip.y4m"});
    EXPECT_TRUE(list.output.contains("clip.y4m")) << list.output.toStdString();
    const Outcome outcome = run(folder_.path(), {"snapshot", "--play", "clip.y4m", "--size", "ld"});
    EXPECT_EQ(outcome.errors, "saved 320x240 pixels from clip.y4m to 'snapshot.png'\n");
    const QImage image(folder_.file("snapshot.png"));
    EXPECT_EQ(image.width(), 320);
    EXPECT_TRUE(image.allGray());
}

TEST_F(PlayProgram, ItGoesOnOverAndOver) {
    const Outcome outcome =
        run(folder_.path(), {"record", "--play", "clip.y4m", "--size", "ld", "-n", "12", "-o", "a.y4m"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(levels("a.y4m").size(), 12U);
}

TEST_F(PlayProgram, PlayedOnceTheRecordingEndsWithTheFile) {
    const Outcome outcome =
        run(folder_.path(), {"record", "--play", "clip.y4m", "--once", "--size", "ld", "-o", "a.y4m"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const std::vector<int> recorded = levels("a.y4m");
    ASSERT_FALSE(recorded.empty());
    EXPECT_LE(recorded.size(), LEVELS.size());
    EXPECT_NEAR(recorded.back(), LEVELS.back(), 2);
    EXPECT_TRUE(std::is_sorted(recorded.begin(), recorded.end()));
    EXPECT_EQ(run(folder_.path(), {"watch", "--play", "clip.y4m", "--once", "--size", "ld"}).code, 0);
}

TEST_F(PlayProgram, WhatIsBeingPlayedIsNotRecordedOver) {
    const QByteArray before = folder_.read("clip.y4m");
    ASSERT_TRUE(QFile::link("clip.y4m", folder_.file("recording.y4m")));
    for (const QStringList& output : {QStringList{"clip.y4m"}, QStringList()}) {
        const Outcome outcome = run(
            folder_.path(), QStringList{"record", "--play", "clip.y4m", "--size", "ld", "-n", "2"} + output);
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.errors, "ostrel-camera: '" + output.value(0, "recording.y4m").toStdString() +
                                      "' is being played: record to another file\n");
    }
    EXPECT_EQ(before, folder_.read("clip.y4m"));
}

TEST_F(PlayProgram, AFileThatCannotBePlayedIsNamed) {
    const Outcome gone = run(folder_.path(), {"record", "--play", "gone.y4m"});
    EXPECT_EQ(gone.code, 7);
    EXPECT_EQ(gone.errors.find("ostrel-camera: cannot play 'gone.y4m': "), 0U) << gone.errors;
    EXPECT_EQ(gone.errors.find('\n'), gone.errors.size() - 1);
    EXPECT_EQ(folder_.entries(), QStringList("clip.y4m"));
}

TEST_F(PlayProgram, TwoAddedCamerasNeedAChoice) {
    const Outcome both = run(folder_.path(), {"snapshot", "--play", "clip.y4m", "--test-camera"});
    EXPECT_EQ(both.code, 2);
    EXPECT_EQ(both.errors,
              "ostrel-camera: several cameras are added: say with --camera which of ostrel-test-pattern, "
              "ostrel-file "
              "is meant\n");
    EXPECT_EQ(
        run(folder_.path(), {"snapshot", "--play", "clip.y4m", "--test-camera", "--camera", "clip"}).code, 0);
}

} // namespace
