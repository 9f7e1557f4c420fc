// ostrel-camera run as a program: what cameras there are, and how they do.
#include "program.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

using namespace ostrel::tests;

TEST(CamerasProgram, ListShowsTheTestCameraInAlignedColumns) {
    const Outcome outcome = run("/", {"list", "--test-camera", "-q"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    const QList<QByteArray> lines = outcome.output.split('\n');
    ASSERT_GE(lines.size(), 3);
    int row = 1;
    while (row < lines.size() && !lines[row].startsWith("Test pattern "))
        ++row;
    ASSERT_LT(row, lines.size()) << outcome.output.toStdString();
    EXPECT_EQ(lines[row].indexOf("ostrel-test-pattern"), lines[0].indexOf("IDENTIFIER"));
    EXPECT_EQ(lines[row].indexOf("320x240 640x480 1280x720"), lines[0].indexOf("SIZES"));
}

TEST(CamerasProgram, ListAsJsonHoldsIdNameAndFormats) {
    const Outcome outcome = run("/", {"--test-camera", "list", "--json"});
    EXPECT_EQ(outcome.code, 0);
    const QJsonArray cameras = QJsonDocument::fromJson(outcome.output).array();
    ASSERT_GE(cameras.size(), 1);
    for (const QJsonValue& value : cameras) {
        const QJsonObject camera = value.toObject();
        if (camera["id"].toString() != "ostrel-test-pattern")
            continue;
        EXPECT_EQ(camera["name"].toString(), "Test pattern");
        EXPECT_EQ(camera["formats"].toArray().size(), 3);
        EXPECT_EQ(camera["formats"].toArray()[2].toObject()["width"].toInt(), 1280);
        EXPECT_EQ(camera["device"].toObject(), QJsonObject({{"kind", "virtual"}}));
        EXPECT_EQ(camera["modes"].toArray().size(), 4 * 3);
        EXPECT_EQ(camera["modes"].toArray()[0].toObject()["width"].toInt(), 640);
        return;
    }
    FAIL() << outcome.output.toStdString();
}

TEST(CamerasProgram, ListShowsTheModesOfEachCamera) {
    const Outcome outcome = run("/", {"--test-camera", "list", "--modes"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(outcome.output.contains("Test pattern (ostrel-test-pattern)\n"
                                        "  BGRA  640x480    30/s 15/s 60/s\n"
                                        "  BGRA  320x240    30/s 15/s 60/s\n"))
        << outcome.output.toStdString();
}

TEST(CamerasProgram, AMachineWithoutCamerasSaysSoAndHowToGoOn) {
    const bool attached = run("/", {"list", "--json"}).output != "[\n]\n";
    EXPECT_EQ(run("/", {"list"}).code, attached ? 0 : 3);
    if (attached) // then there is nothing more to say
        return;
    const std::string line = "ostrel-camera: no camera is attached: plug one in, or use --test-camera for "
                             "the built-in test picture\n";
    for (const QString command : {"list", "snapshot", "record", "watch"}) {
        Folder folder;
        const Outcome outcome = run(folder.path(), {command});
        EXPECT_EQ(outcome.code, 3) << command.toStdString();
        EXPECT_EQ(outcome.errors, line);
        EXPECT_EQ(outcome.output.toStdString(), "");
        EXPECT_EQ(folder.entries(), QStringList());
    }
    EXPECT_EQ(run("/", {"doctor"}).code, 8);
}

TEST(CamerasProgram, AnUnknownCameraIsAnsweredWithThoseThatThereAre) {
    const Outcome outcome = run("/", {"snapshot", "--camera", "nobody", "--test-camera"});
    EXPECT_EQ(outcome.code, 4);
    EXPECT_EQ(outcome.errors.find("ostrel-camera: no attached camera fits \"nobody\"; attached: "), 0U)
        << outcome.errors;
    EXPECT_NE(outcome.errors.find("Test pattern (ostrel-test-pattern)"), std::string::npos);
    EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1);
}

TEST(CamerasProgram, ListAllSaysOfEachNodeWhyItIsNoCamera) {
    const Outcome outcome = run("/", {"list", "--all", "--json", "--test-camera"});
    EXPECT_EQ(outcome.code, 0);
    const QJsonObject all = QJsonDocument::fromJson(outcome.output).object();
    EXPECT_GE(all["cameras"].toArray().size(), 1);
    EXPECT_TRUE(all["others"].isArray());
    for (const QJsonValue& node : all["others"].toArray())
        EXPECT_NE(node.toObject()["reason"].toString().toStdString(), "");
}

TEST(CamerasProgram, ANodeThatIsNotThereIsSaid) {
    Folder folder;
    const Outcome outcome = run(folder.path(), {"snapshot", "--test-camera", "-c", "/dev/video987"});
    EXPECT_EQ(outcome.code, 4);
    EXPECT_EQ(outcome.errors.find("ostrel-camera: there is no /dev/video987; attached: "), 0U)
        << outcome.errors;
}

TEST(CamerasProgram, DoctorFindsTheTestCameraHealthy) {
    const Outcome outcome = run("/", {"doctor", "--test", "--json"});
    EXPECT_EQ(outcome.code, 0) << outcome.output.toStdString();
    EXPECT_EQ(outcome.errors, "examining Test pattern\n");
    const QJsonObject all = QJsonDocument::fromJson(outcome.output).object();
    EXPECT_EQ(all["verdict"].toString().toStdString(), "ok");
    QStringList checks;
    for (const QJsonValue& check : all["checks"].toArray()) {
        checks += check.toObject()["check"].toString();
        EXPECT_EQ(check.toObject()["camera"].toString().toStdString(), "ostrel-test-pattern");
    }
    EXPECT_EQ(checks.join(' ').toStdString(), "start frames broken rate picture");
    const Outcome text = run("/", {"doctor", "--test-camera", "-q"});
    EXPECT_TRUE(text.output.startsWith("ostrel-test-pattern:\nok       start        it starts at 640x480\n"))
        << text.output.toStdString();
}

TEST(CamerasProgram, WatchReportsWhatTheCameraGrants) {
    const Outcome outcome = run("/", {"watch", "--test-camera", "--size", "ld", "-n", "10"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const QList<QByteArray> lines = outcome.output.trimmed().split('\n');
    EXPECT_TRUE(lines.last().contains("  taken 10  skipped ")) << lines.last().toStdString();
    EXPECT_TRUE(lines.last().endsWith("  asked 320x240, granted BGRA 320x240 at 30/s"))
        << lines.last().toStdString();
    EXPECT_EQ(outcome.errors, "watching Test pattern at 320x240\n");
}

} // namespace
