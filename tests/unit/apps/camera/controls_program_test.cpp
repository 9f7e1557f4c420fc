// ostrel-camera controls run as a program, on the test camera.
#include "program.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

using namespace ostrel::tests;

const QStringList CONTROLS = {"controls", "--test-camera"};

QJsonObject brightness(const QByteArray& json) {
    for (const QJsonValue& value : QJsonDocument::fromJson(json).array())
        if (value.toObject()["name"].toString() == "brightness")
            return value.toObject();
    return QJsonObject();
}

TEST(ControlsProgram, ShowsATable) {
    const Outcome outcome = run("/", CONTROLS);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output.toStdString(), "NAME           VALUE  DEFAULT  RANGE     STATE\n"
                                            "brightness     128    128      0 to 255\n"
                                            "pattern_speed  1      1        0 to 10\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(ControlsProgram, WritesJsonWithTheValueThatItHasSet) {
    const Outcome outcome = run("/", CONTROLS + QStringList{"--json", "brightness=40"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const QJsonObject control = brightness(outcome.output);
    EXPECT_EQ(control["value"].toInt(), 40);
    EXPECT_EQ(control["default"].toInt(), 128);
    EXPECT_EQ(control["id"].toInt(), 0x00980900);
    EXPECT_EQ(control["type"].toString(), "integer");
    EXPECT_EQ(control["label"].toString(), "Brightness");
    EXPECT_FALSE(control["inactive"].toBool(true));
}

TEST(ControlsProgram, SavesAndLoadsByIdentifierAndLeavesOtherCamerasInTheFile) {
    const Folder folder;
    QFile file(folder.file("desk.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "{\"other\": {\"name\": \"Other\", \"controls\": [{\"id\": 1, \"name\": \"x\", \"value\": 2}]}}");
    file.close();
    Outcome outcome = run(folder.path(), CONTROLS + QStringList{"brightness=77", "--save", "desk.json"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output.toStdString(), "");
    const QJsonObject saved = QJsonDocument::fromJson(folder.read("desk.json")).object();
    EXPECT_EQ(saved.keys(), QStringList({"ostrel-test-pattern", "other"}));
    EXPECT_EQ(saved["other"].toObject()["controls"].toArray()[0].toObject()["value"].toInt(), 2);

    outcome = run(folder.path(), CONTROLS + QStringList{"--load", "desk.json", "--json"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(brightness(outcome.output)["value"].toInt(), 77);
}

TEST(ControlsProgram, SaysWhatCouldNotBeLoadedAndSetsTheRest) {
    const Folder folder;
    QFile file(folder.file("desk.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"ostrel-test-pattern\": {\"controls\": ["
               "{\"id\": 1, \"name\": \"sparkle\", \"value\": 2},"
               "{\"id\": 9963776, \"name\": \"brightness\", \"value\": 9}]}}");
    file.close();
    Outcome outcome = run(folder.path(), CONTROLS + QStringList{"--load", "desk.json", "--json"});
    EXPECT_EQ(outcome.code, 9);
    EXPECT_EQ(outcome.errors, "ostrel-camera: the camera has no control sparkle\n");
    EXPECT_EQ(brightness(outcome.output)["value"].toInt(), 9);
    outcome = run(folder.path(), {"controls", "--play", "nothing.y4m"});
    EXPECT_EQ(outcome.code, 7);
}

TEST(ControlsProgram, SavesToAndLoadsFromStandardStreams) {
    Outcome outcome = run("/", CONTROLS + QStringList{"brightness=77", "--save", "-"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    outcome = run("/", CONTROLS + QStringList{"--load", "-", "--json"}, outcome.output);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(brightness(outcome.output)["value"].toInt(), 77);
}

TEST(ControlsProgram, SavesWhereThereIsNothingToKeep) {
    const Folder folder;
    QFile file(folder.file("empty"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    Outcome outcome = run(folder.path(), CONTROLS + QStringList{"--save", "empty"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_TRUE(folder.read("empty").contains("ostrel-test-pattern"));
    outcome = run(folder.path(), CONTROLS + QStringList{"--save", "/dev/full"});
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write '/dev/full': No space left on device\n");
}

TEST(ControlsProgram, ReadsNoFileWithoutEnd) {
    const Outcome outcome = run("/", CONTROLS + QStringList{"--load", "/dev/zero"});
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.errors,
              "ostrel-camera: '/dev/zero' is no file that 'ostrel-camera controls --save' has written\n");
}

TEST(ControlsProgram, RefusesInOneLine) {
    const struct {
        QStringList arguments;
        int code;
        const char* line;
    } cases[] = {
        {{"brightness"}, 2, "ostrel-camera: 'brightness' is no setting: write NAME=VALUE\n"},
        {{"brightness=dark"}, 2, "ostrel-camera: 'dark' is no value of brightness: 0 to 255, default\n"},
        {{"brightness=auto"}, 2, "ostrel-camera: brightness has no automatic mode\n"},
        {{"brightnes=1"},
         9,
         "ostrel-camera: the camera has no control 'brightnes'; did you mean 'brightness'?\n"},
        {{"zoom=1"},
         9,
         "ostrel-camera: the camera has no control 'zoom': it has brightness, pattern_speed\n"},
        {{"brightness=256"}, 9, "ostrel-camera: Brightness of Test pattern takes 0 to 255\n"},
        {{"brightness=1", "brightness=2"},
         9,
         "ostrel-camera: Brightness of Test pattern is to be set twice at once\n"},
        {{"--load", "no-such-file"},
         7,
         "ostrel-camera: cannot read 'no-such-file': No such file or directory\n"},
    };
    for (const auto& one : cases) {
        const Outcome outcome = run("/", CONTROLS + one.arguments);
        EXPECT_EQ(outcome.code, one.code) << one.line;
        EXPECT_EQ(outcome.errors, one.line);
    }
}

} // namespace
