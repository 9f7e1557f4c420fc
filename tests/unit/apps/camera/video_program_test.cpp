// Compressed recordings of the program, as players find them, whatever becomes of it.
#include "frames.h"
#include "program.h"
#include "video.h"

#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <random>
#include <sys/types.h>
#include <vector>

namespace {

using namespace ostrel::tests;

TEST(VideoProgram, AMatroskaFileHoldsEveryFrameAndItsDuration) {
    Folder folder;
    const Outcome outcome =
        run(folder.path(), {"record", "--test-camera", "-t", "2.2", "-s", "ld", "clip.mkv"});
    ASSERT_EQ(outcome.code, 0) << outcome.errors;
    const Video video = readVideo(folder.file("clip.mkv"));
    const QByteArray said = QByteArray::fromStdString(outcome.errors);
    EXPECT_TRUE(said.contains("recorded " + QByteArray::number(video.decoded) + " frames in "))
        << said.toStdString();
    EXPECT_TRUE(said.contains(" MB), ")) << said.toStdString();
    EXPECT_EQ(video.errors.toStdString(), "");
    EXPECT_EQ(video.width, 320);
    EXPECT_EQ(video.height, 240);
    ASSERT_GE(video.times.size(), 2U);
    EXPECT_EQ(video.times.front(), 0);
    EXPECT_GE(video.times.back(), 2.199);
    EXPECT_GT(video.duration, video.times.back());
    EXPECT_LT(video.duration, video.times.back() + 0.5);
}

TEST(VideoProgram, APipeIsGivenTheSameVideoWithoutWhatComesLater) {
    Folder folder;
    const Outcome outcome = runShell(
        folder.path(), "\"$OSTREL\" record --test-camera -q -n 40 -s ld --format mkv - | cat > piped.mkv");
    EXPECT_EQ(outcome.errors, "");
    const Video video = readVideo(folder.file("piped.mkv"));
    EXPECT_EQ(video.decoded, 40);
    EXPECT_EQ(video.errors.toStdString(), "");
    EXPECT_EQ(video.duration, -1);
}

TEST(VideoProgram, PicturesAreScaledAndOfTheQualityThatIsAskedFor) {
    Folder folder;
    qint64 bytes[2];
    for (int at = 0; at < 2; ++at) {
        const Outcome outcome =
            run(folder.path(), {"record", "--test-camera", "-n", "3", "-s", "hd", "--scale", "sd",
                                "--quality", at ? "95" : "20", "clip.mkv"});
        ASSERT_EQ(outcome.code, 0) << outcome.errors;
        const Video video = readVideo(folder.file("clip.mkv"));
        EXPECT_EQ(video.decoded, 3);
        EXPECT_EQ(video.width, 640);
        EXPECT_EQ(video.height, 480);
        bytes[at] = video.pictures.size();
    }
    EXPECT_LT(3 * bytes[0], 2 * bytes[1]);
}

TEST(VideoProgram, WhatMeansNothingForAVideoIsRefused) {
    EXPECT_EQ(run("/", {"record", "--test-camera", "--rate", "5", "a.mkv"}).errors,
              "ostrel-camera: --rate is for Y4M files: in a Matroska file each frame has its own time\n");
    EXPECT_EQ(run("/", {"record", "--test-camera", "--quality", "5", "a.y4m"}).errors,
              "ostrel-camera: --quality is for Matroska files (.mkv): the others are not compressed\n");
}

TEST(VideoProgram, CtrlCFinishesTheFile) {
    Folder folder;
    QProcess process;
    start(process, folder.path(), {"record", "--test-camera", "-s", "ld", "clip.mkv"});
    ASSERT_TRUE(grows(folder.file("clip.mkv"), 100000));
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    EXPECT_EQ(finish(process).code, 0);
    const Video video = readVideo(folder.file("clip.mkv"));
    EXPECT_GT(video.duration, 0);
    EXPECT_EQ(video.errors.toStdString(), "");
}

// Ten at a time, since each has to run for a while.
TEST(VideoProgram, KilledAtAnyMomentItCanBePlayed) {
    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> bytes(1, 250000);
    for (int round = 0; round < 5; ++round) {
        Folder folder;
        std::vector<std::unique_ptr<QProcess>> programs;
        for (int at = 0; at < 10; ++at) {
            programs.push_back(std::make_unique<QProcess>());
            start(*programs.back(), folder.path(),
                  {"record", "--test-camera", "-s", "ld", QString("%1.mkv").arg(at)});
        }
        for (int at = 0; at < 10; ++at) {
            const int least = bytes(random);
            const QString path = folder.file(QString("%1.mkv").arg(at));
            EXPECT_TRUE(grows(path, least));
            programs[static_cast<std::size_t>(at)]->kill();
            programs[static_cast<std::size_t>(at)]->waitForFinished();
            const Video video = readVideo(path);
            // The header, and at most the torn picture, are no whole pictures.
            EXPECT_GE(video.decoded, least > 20000 ? 1 : 0) << least;
            EXPECT_GE(video.decoded + 1, static_cast<int>(video.times.size())) << least;
        }
    }
}

TEST(VideoProgram, AFullDiskEndsItWithALineAndAFileThatPlays) {
    Folder folder;
    const Outcome outcome =
        runShell(folder.path(), "trap '' XFSZ; ulimit -f 1000; exec \"$OSTREL\" record -q "
                                "--test-camera --size ld clip.mkv");
    EXPECT_EQ(outcome.code, 7);
    const Video video = readVideo(folder.file("clip.mkv"));
    EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write 'clip.mkv': File too large; it holds the " +
                                  std::to_string(video.decoded) + " frames before\n");
    EXPECT_GE(video.decoded, 10);
    EXPECT_EQ(video.errors.toStdString(), "");
    EXPECT_GT(video.duration, 0);
}

// A file system of one megabyte, where the machine lets one be mounted.
TEST(VideoProgram, AFileSystemOfOneMegabyteFillsUp) {
    Folder folder;
    const QString mount = "mkdir disk && mount -t tmpfs -o size=1m none disk";
    const QString inside = "unshare --mount --map-root-user sh -c '" + mount + " && ";
    if (runShell(folder.path(), inside + "rm -rf disk/* && umount disk'; rmdir disk").code != 0) {
        std::cout
            << "nothing can be mounted here; a limit on the size of files stands for it in the test above\n";
        return;
    }
    const Outcome outcome = runShell(
        folder.path(), inside + "\"$OSTREL\" record -q --test-camera --size ld disk/clip.mkv; code=$?; "
                                "cp disk/clip.mkv . && exit $code'");
    EXPECT_EQ(outcome.code, 7);
    const Video video = readVideo(folder.file("clip.mkv"));
    EXPECT_EQ(outcome.errors,
              "ostrel-camera: cannot write 'disk/clip.mkv': No space left on device; it holds the " +
                  std::to_string(video.decoded) + " frames before\n");
    EXPECT_GE(video.decoded, 10);
    EXPECT_EQ(video.errors.toStdString(), "");
}

TEST(VideoProgram, ADeviceThatIsFullLeavesALine) {
    const Outcome outcome = run("/", {"record", "-q", "--test-camera", "--format", "mkv", "/dev/full"});
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.errors, "ostrel-camera: cannot write '/dev/full': No space left on device\n");
}

} // namespace
