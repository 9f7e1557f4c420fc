// ostrel-camera run as a program: pictures and recordings.
#include "frames.h"
#include "program.h"

#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

#include <QtCore/QFileInfo>
#include <QtGui/QImage>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

using namespace ostrel::tests;

// Colours of the bars from left to right.
const QRgb BARS[] = {0xffffff, 0xffff00, 0x00ffff, 0x00ff00, 0xff00ff, 0xff0000, 0x0000ff, 0x000000};

int distance(QRgb a, QRgb b) {
    return std::max(
        {std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
}

void expectTestPattern(const QImage& image, int width, int height) {
    ASSERT_EQ(image.width(), width);
    ASSERT_EQ(image.height(), height);
    // Two fifths down there is nothing but bars.
    for (int bar = 0; bar < 8; ++bar)
        EXPECT_LE(distance(image.pixel((2 * bar + 1) * width / 16, height * 2 / 5), BARS[bar]), 3)
            << "bar " << bar;
    const QImage pixels = image.convertToFormat(QImage::Format_ARGB32);
    uint32_t counter = 0;
    uint32_t clock = 0;
    EXPECT_TRUE(ostrel::OVideoTestPatternCamera::decode(
        pixels.constBits(), width, height, static_cast<int>(pixels.bytesPerLine()), counter, clock));
    EXPECT_GT(counter, 0U);
}

TEST(CaptureProgram, AModeOfTheCameraIsCapturedInOrRefused) {
    const Outcome watched = run("/", {"watch", "--test-camera", "--mode", "bgra:320x240@60", "-n", "3"});
    EXPECT_EQ(watched.code, 0) << watched.errors;
    EXPECT_TRUE(watched.output.contains("asked 320x240, granted BGRA 320x240 at 60/s"))
        << watched.output.toStdString();
    const Outcome scaled = run("/", {"watch", "--test-camera", "--mode", "@15", "-s", "hd", "-n", "1"});
    EXPECT_TRUE(scaled.output.contains("asked 1280x720, granted BGRA 1280x720 at 15/s"))
        << scaled.output.toStdString();
    Folder folder;
    const Outcome refused = run(folder.path(), {"snapshot", "--test-camera", "--mode", "MJPG:hd"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_EQ(
        refused.errors,
        "ostrel-camera: Test pattern offers no mode that fits MJPG 1280x720: 'ostrel-camera list --modes' "
        "shows what it offers\n");
    EXPECT_EQ(folder.entries(), QStringList());
}

TEST(CaptureProgram, SnapshotShowsTheBarsUprightAndInTheirColours) {
    const struct {
        const char* size;
        int width;
        int height;
    } sizes[] = {
        {"ld", 320, 240}, {"SD", 640, 480}, {"hd", 1280, 720}, {"800x600", 800, 600}, {"641x481", 641, 481}};
    for (const auto& size : sizes) {
        Folder folder;
        const Outcome outcome =
            run(folder.path(), {"snapshot", "--test-camera", "--size", size.size, "-o", "a.png"});
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "saved " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                                      " pixels from Test pattern to 'a.png'\n");
        EXPECT_EQ(folder.entries(), QStringList("a.png"));
        expectTestPattern(QImage(folder.file("a.png")), size.width, size.height);
    }
}

TEST(CaptureProgram, SnapshotGoesToStandardOutput) {
    const Outcome outcome = run("/", {"snapshot", "--test-camera", "-o", "-"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    expectTestPattern(QImage::fromData(outcome.output, "PNG"), 640, 480);
}

TEST(CaptureProgram, SnapshotIsWhatItsSuffixSaysOrIsRefused) {
    Folder folder;
    for (const char* name : {"a.jpg", "a.bmp", "a.ppm", "a"}) {
        EXPECT_EQ(run(folder.path(), {"snapshot", "-q", "--test-camera", name}).code, 0);
        const QImage image = QImage::fromData(folder.read(name));
        EXPECT_EQ(image.size(), QSize(640, 480)) << name;
        EXPECT_LE(distance(image.pixel(120, 192), BARS[1]), 8) << name;
    }
    EXPECT_TRUE(folder.read("a.jpg").startsWith("\xFF\xD8"));
    EXPECT_TRUE(folder.read("a").startsWith("\x89PNG"));
    const Outcome video = run(folder.path(), {"snapshot", "--test-camera", "a.mp4"});
    EXPECT_EQ(video.code, 2);
    EXPECT_EQ(video.errors.find("ostrel-camera: snapshot cannot write 'a.mp4': give it one of the suffixes "),
              0U)
        << video.errors;
    EXPECT_NE(video.errors.find(" jpeg, jpg, "), std::string::npos) << video.errors;
    EXPECT_EQ(run(folder.path(), {"snapshot", "--test-camera", "--quality", "50"}).errors,
              "ostrel-camera: --quality is for JPEG pictures (.jpg)\n");
}

// The pattern shows when each picture was made.
TEST(CaptureProgram, ASeriesKeepsItsTimes) {
    Folder folder;
    const Outcome outcome =
        run(folder.path(), {"snapshot", "--test-camera", "--every", "500ms", "-n", "4", "shot-%02d.png"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors,
              "taking a picture of Test pattern every 0.5 s\nsaved 4 pictures, the last as 'shot-04.png'\n");
    EXPECT_EQ(folder.entries(), (QStringList{"shot-01.png", "shot-02.png", "shot-03.png", "shot-04.png"}));
    uint32_t first = 0;
    for (int number = 1; number <= 4; ++number) {
        const QImage image = QImage(folder.file(QString("shot-%1.png").arg(number, 2, 10, QChar('0'))))
                                 .convertToFormat(QImage::Format_ARGB32);
        uint32_t counter = 0;
        uint32_t clock = 0;
        ASSERT_TRUE(ostrel::OVideoTestPatternCamera::decode(image.constBits(), 640, 480,
                                                            int(image.bytesPerLine()), counter, clock));
        first = number == 1 ? counter : first;
        // Of 30 a second, 15 later each; a busy machine may skip some.
        EXPECT_NEAR(counter - first, 15.0 * (number - 1), 8) << number;
    }
}

TEST(CaptureProgram, WhatIsNoSeriesIsSaid) {
    EXPECT_EQ(
        run("/", {"snapshot", "--test-camera", "--every", "1"}).errors,
        "ostrel-camera: each picture of a series has a name of its own: instead of 'snapshot.png' give one "
        "with a number or the time in it, such as shot-%04d.jpg or shot-%H%M%S.jpg\n");
    EXPECT_EQ(run("/", {"snapshot", "--test-camera", "-n", "2", "a.png"}).errors,
              "ostrel-camera: --frames and --duration end a series: add --every SECONDS\n");
    Folder folder;
    const Outcome twice = run(folder.path(), {"snapshot", "--test-camera", "--every", "50ms", "%Y.png"});
    EXPECT_EQ(twice.code, 2);
    EXPECT_NE(twice.errors.find("two pictures have the name '20"), std::string::npos) << twice.errors;
}

TEST(CaptureProgram, TheCameraIsFoundByAPartOfItsNameInAnyCase) {
    Folder folder;
    const Outcome outcome = run(folder.path(), {"snapshot", "--test-camera", "--camera", "PATT", "-q"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    expectTestPattern(QImage(folder.file("snapshot.png")), 640, 480);
}

// Of a video with a frame every hundred seconds the second one does not come in time.
TEST(CaptureProgram, NoFrameInTimeLeavesNoFileAndAnOldOneAsItWas) {
    Folder videos;
    QFile video(videos.file("slow.y4m"));
    ASSERT_TRUE(video.open(QIODevice::WriteOnly));
    const QByteArray frame = "FRAME\n" + toByteArray(greyI420(16, 16, 100));
    video.write("YUV4MPEG2 W16 H16 F1:100\n" + frame + frame);
    video.close();

    Folder folder;
    const QStringList arguments = {
        "snapshot", "--play", videos.file("slow.y4m"), "--skip", "1", "--timeout", "1", "--size", "ld"};
    const Outcome outcome = run(folder.path(), arguments);
    EXPECT_EQ(outcome.code, 6);
    EXPECT_EQ(
        outcome.errors,
        "ostrel-camera: no frame from 'slow.y4m' within 1 s: check its cable and privacy switch, or allow "
        "more time with --timeout; 'ostrel-camera doctor' examines it\n");
    EXPECT_EQ(folder.entries(), QStringList());

    runShell(folder.path(), "echo old > snapshot.png");
    EXPECT_EQ(run(folder.path(), arguments).code, 6);
    EXPECT_EQ(folder.read("snapshot.png").toStdString(), "old\n");
    EXPECT_EQ(folder.entries(), QStringList("snapshot.png"));
}

TEST(CaptureProgram, SnapshotReplacesTheFileBehindALinkAndKeepsItsMode) {
    Folder folder;
    runShell(folder.path(), "echo old > real.png; chmod 640 real.png; ln -s real.png link.png");
    EXPECT_EQ(run(folder.path(), {"snapshot", "--test-camera", "-o", "link.png"}).code, 0);
    EXPECT_TRUE(QFileInfo(folder.file("link.png")).isSymLink());
    EXPECT_FALSE(QImage(folder.file("real.png")).isNull());
    EXPECT_EQ(QFile::permissions(folder.file("real.png")),
              QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup);
    EXPECT_EQ(folder.entries(), (QStringList{"link.png", "real.png"}));
}

TEST(CaptureProgram, RecordHoldsWholeFramesInTheirOrder) {
    Folder folder;
    const Outcome outcome =
        run(folder.path(), {"record", "--test-camera", "--frames", "12", "--size", "320x240", "-o", "a.y4m"});
    ASSERT_EQ(outcome.code, 0) << outcome.errors;
    const Y4mFile file = readY4m(folder.read("a.y4m"), 320, 240);
    EXPECT_TRUE(file.header.startsWith("YUV4MPEG2 W320 H240 F")) << file.header.toStdString();
    EXPECT_TRUE(file.header.contains(" Ip A1:1 C420jpeg XCOLORRANGE=LIMITED ")) << file.header.toStdString();
    EXPECT_EQ(file.rest.toStdString(), "");
    const std::vector<uint32_t> counters = countersOf(file, 320, 240);
    ASSERT_EQ(counters.size(), 12U);
    EXPECT_GT(counters[0], 0U);
    for (std::size_t at = 1; at < counters.size(); ++at)
        EXPECT_GT(counters[at], counters[at - 1]) << at;
    EXPECT_EQ(outcome.errors.find("recording 320x240 from Test pattern to 'a.y4m'\nrecorded 12 frames in "),
              0U);
}

TEST(CaptureProgram, RecordWritesOddSizes) {
    const Outcome outcome = run("/", {"record", "--test-camera", "-n", "2", "-s", "641x481", "-"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const int frame = 641 * 481 + 2 * 321 * 241;
    EXPECT_TRUE(outcome.output.startsWith("YUV4MPEG2 W641 H481 "));
    EXPECT_EQ(outcome.output.size(), outcome.output.indexOf('\n') + 1 + 2 * (6 + frame));
}

TEST(CaptureProgram, ARecordingIsWhatItsNameSaysOrIsRefused) {
    for (const char* name : {"a.mp4", "b.AVI"}) {
        const Outcome outcome = run("/", {"record", "--test-camera", name});
        EXPECT_EQ(outcome.code, 2);
        EXPECT_EQ(outcome.errors,
                  std::string("ostrel-camera: record writes .mkv and .y4m, not '") + name +
                      "': give it such a name, or pipe: record -o - --format mkv | ffmpeg -i - '" + name +
                      "'\n");
    }
    EXPECT_EQ(run("/", {"record", "--test-camera", "a.png"}).errors,
              "ostrel-camera: record writes video; 'ostrel-camera snapshot' writes pictures\n");
    EXPECT_EQ(run("/", {"record", "--test-camera", "--rate", "5", "a.i420"}).errors,
              "ostrel-camera: --rate is for Y4M files: bare frames do not state a rate\n");
}

TEST(CaptureProgram, RecordStatesTheRateThatItIsGiven) {
    const Outcome outcome =
        run("/", {"record", "--test-camera", "-n", "1", "--size", "ld", "--rate", "29.97", "-o", "-"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_TRUE(readY4m(outcome.output, 320, 240).header.contains(" F30000:1001 "));
}

TEST(CaptureProgram, RecordEndsAfterTheDuration) {
    const Outcome outcome = run("/", {"record", "--test-camera", "-t", "0.3", "--size", "ld", "-o", "-"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_GE(readY4m(outcome.output, 320, 240).frames.size(), 2);
}

TEST(CaptureProgram, RecordWritesBareFramesInEveryLayout) {
    const struct {
        const char* format;
        int frameBytes;
    } formats[] = {{"i420", 115200}, {"yuy2", 153600}, {"rgb24", 230400}, {"argb", 307200}, {"BGRA", 307200}};
    for (const auto& format : formats) {
        const Outcome outcome = run("/", {"record", "--test-camera", "-n", "2", "--size", "ld", "--format",
                                          format.format, "-o", "-"});
        EXPECT_EQ(outcome.code, 0) << outcome.errors;
        EXPECT_EQ(outcome.output.size(), 2 * format.frameBytes) << format.format;
    }
}

TEST(CaptureProgram, RecordedArgbFramesAreTheCamerasOwn) {
    const Outcome outcome =
        run("/", {"record", "--test-camera", "-n", "1", "--size", "ld", "--format", "argb", "-o", "-"});
    ASSERT_EQ(outcome.output.size(), 307200);
    const QImage image(reinterpret_cast<const uchar*>(outcome.output.constData()), 320, 240,
                       QImage::Format_RGB32);
    expectTestPattern(image, 320, 240);
}

TEST(CaptureProgram, RecordScalesBetweenLevels) {
    const Outcome outcome = run("/", {"record", "--test-camera", "-n", "3", "--size", "hd", "--scale", "sd",
                                      "-o", "-", "--filter", "bilinear"});
    ASSERT_EQ(outcome.code, 0) << outcome.errors;
    const Y4mFile file = readY4m(outcome.output, 640, 480);
    EXPECT_EQ(file.frames.size(), 3);
    for (const uint32_t counter : countersOf(file, 640, 480))
        EXPECT_GT(counter, 0U);
}

// Interrupts a recording once its file has grown.
Outcome interrupt(const Folder& folder, const QStringList& arguments, int signal) {
    QProcess process;
    start(process, folder.path(), arguments);
    EXPECT_TRUE(grows(folder.file("a.y4m"), 500000));
    kill(static_cast<pid_t>(process.processId()), signal);
    return finish(process);
}

TEST(CaptureProgram, CtrlCEndsARecordingWithoutALimitProperly) {
    Folder folder;
    const Outcome outcome =
        interrupt(folder, {"record", "--test-camera", "--size", "ld", "-o", "a.y4m"}, SIGINT);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const Y4mFile file = readY4m(folder.read("a.y4m"), 320, 240);
    EXPECT_GE(file.frames.size(), 4);
    EXPECT_EQ(file.rest.toStdString(), "");
    EXPECT_NE(outcome.errors.find("recorded " + std::to_string(file.frames.size()) + " frames in "),
              std::string::npos);
}

TEST(CaptureProgram, ASignalBeforeTheLimitKeepsTheFramesAndShowsInTheExitCode) {
    Folder folder;
    const Outcome outcome = interrupt(
        folder, {"record", "--test-camera", "--size", "ld", "-n", "100000", "-o", "a.y4m"}, SIGTERM);
    EXPECT_EQ(outcome.code, 128 + SIGTERM) << outcome.errors;
    const Y4mFile file = readY4m(folder.read("a.y4m"), 320, 240);
    EXPECT_GE(file.frames.size(), 4);
    EXPECT_EQ(file.rest.toStdString(), "");
}

TEST(CaptureProgram, AReaderThatGoesAwayEndsTheRecordingWithALine) {
    const Outcome outcome =
        runShell("/", "(\"$OSTREL\" record -q --test-camera -o -; echo $? >&2) | head -c 1000 >/dev/null");
    EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write standard output: whatever read it has ended\n7\n");
}

TEST(CaptureProgram, ClosedStandardOutputIsSaid) {
    for (const char* command : {"list --test-camera", "snapshot -o - --test-camera", "--help"}) {
        const Outcome outcome = runShell("/", QString("\"$OSTREL\" -q %1 >&-").arg(command));
        EXPECT_EQ(outcome.code, 7);
        EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write standard output: it is closed\n");
    }
}

TEST(CaptureProgram, AFullDiskEndsTheRecordingWithItsLastWholeFrame) {
    Folder folder;
    // A limit on the size of files stands for the disk.
    const Outcome outcome =
        runShell(folder.path(), "trap '' XFSZ; ulimit -f 1000; exec \"$OSTREL\" record -q "
                                "--test-camera --size ld -n 50 -o a.y4m");
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.errors,
              "ostrel-camera: cannot write 'a.y4m': File too large; it holds the 4 frames before\n");
    const Y4mFile file = readY4m(folder.read("a.y4m"), 320, 240);
    EXPECT_EQ(file.frames.size(), 4);
    EXPECT_EQ(file.rest.toStdString(), "");
}

TEST(CaptureProgram, ADiskThatIsFullFromTheStartLeavesNoPicture) {
    Folder folder;
    const Outcome outcome =
        runShell(folder.path(), "trap '' XFSZ; ulimit -f 1; exec \"$OSTREL\" snapshot -q --test-camera");
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write 'snapshot.png': File too large\n");
    EXPECT_EQ(folder.entries(), QStringList());
}

TEST(CaptureProgram, FilesThatCannotBeWrittenAreNamed) {
    for (const char* command : {"snapshot", "record -n 1"}) {
        Folder folder;
        const QString start = QString("\"$OSTREL\" %1 -q --test-camera -o ").arg(command);
        const Outcome missing = runShell(folder.path(), start + "no/a.y4m.png --size ld " +
                                                            (command[0] == 'r' ? "--format y4m" : ""));
        EXPECT_EQ(missing.code, 7);
        EXPECT_EQ(missing.errors, "ostrel-camera: cannot write 'no/a.y4m.png': No such file or directory\n");
        const Outcome directory = runShell(folder.path(), start + ".");
        EXPECT_EQ(directory.errors, "ostrel-camera: cannot write '.': Is a directory\n");
        const Outcome full = runShell(folder.path(), start + "/dev/full");
        EXPECT_EQ(full.code, 7);
        EXPECT_EQ(full.errors, "ostrel-camera: cannot write '/dev/full': No space left on device\n");
    }
}

TEST(CaptureProgram, TheLibrarysOwnLinesAreShownOnlyWhenAsked) {
    Folder folder;
    const Outcome silent = run(folder.path(), {"snapshot", "--test-camera", "-q"});
    EXPECT_EQ(silent.errors, "");
    const Outcome verbose = run(folder.path(), {"snapshot", "--test-camera", "-q", "--verbose"});
    EXPECT_EQ(verbose.code, 0);
    EXPECT_NE(verbose.errors.find("\n>>> starting session\n"), std::string::npos) << verbose.errors;
    EXPECT_NE(verbose.errors.find("\nremoving input-output\n"), std::string::npos);
}

} // namespace
