// ostrel-camera run as a program: convert and scale.
#include "frames.h"
#include "program.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtGui/QImage>

namespace {

using namespace ostrel::tests;

void write(const Folder& folder, const QString& name, const QByteArray& bytes) {
    QFile file(folder.file(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray y4m(int width, int height, const QList<Bytes>& frames) {
    QByteArray file =
        "YUV4MPEG2 W" + QByteArray::number(width) + " H" + QByteArray::number(height) + " F25:1 C420\n";
    for (const Bytes& frame : frames)
        file += "FRAME\n" + toByteArray(frame);
    return file;
}

// Fails unless the program ended with the code and this one line.
void expectError(int code, const std::string& line, const Outcome& outcome) {
    EXPECT_EQ(outcome.code, code);
    EXPECT_EQ(outcome.errors, "ostrel-camera: " + line + "\n");
}

TEST(ConvertProgram, APngBecomesItsPixelsTopRowFirst) {
    Folder folder;
    const Bytes argb = flagArgb(34, 18);
    const QImage image(argb.data(), 34, 18, QImage::Format_RGB32);
    ASSERT_TRUE(image.save(folder.file("a.png")));
    const Outcome outcome = run(folder.path(), {"convert", "a.png", "a.argb"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "wrote 1 frame of 34x18 to 'a.argb'\n");
    EXPECT_EQ(folder.read("a.argb"), toByteArray(argb));
    EXPECT_EQ(run(folder.path(), {"convert", "a.png", "a.rgb24"}).code, 0);
    EXPECT_EQ(folder.read("a.rgb24"), toByteArray(flagRgb24(34, 18, false)));
}

TEST(ConvertProgram, Rgb24IsReadFromEitherEnd) {
    Folder folder;
    write(folder, "up.rgb24", toByteArray(flagRgb24(16, 8, true)));
    write(folder, "down.rgb24", toByteArray(flagRgb24(16, 8, false)));
    EXPECT_EQ(run(folder.path(), {"convert", "--size", "16x8", "--bottom-up", "up.rgb24", "up.png"}).code, 0);
    EXPECT_EQ(run(folder.path(), {"convert", "--size", "16x8", "down.rgb24", "down.png"}).code, 0);
    const Bytes argb = flagArgb(16, 8);
    const QImage expected(argb.data(), 16, 8, QImage::Format_RGB32);
    EXPECT_EQ(QImage(folder.file("up.png")).convertToFormat(QImage::Format_RGB32), expected);
    EXPECT_EQ(QImage(folder.file("down.png")).convertToFormat(QImage::Format_RGB32), expected);
}

TEST(ConvertProgram, EveryFrameOfAY4mIsConvertedAsTheLibraryDoesIt) {
    Folder folder;
    const QList<Bytes> frames = {greyI420(8, 4, 16), greyI420(8, 4, 128), greyI420(8, 4, 235)};
    write(folder, "a.y4m", y4m(8, 4, frames));
    const Outcome outcome = run(folder.path(), {"convert", "-q", "a.y4m", "a.yuy2"});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    QByteArray expected;
    for (const Bytes& frame : frames) {
        Bytes yuy2(64);
        ostrel::OVideoConverter::I420ToYUY2(frame.data(), yuy2.data(), 8, 4, 0);
        expected += toByteArray(yuy2);
    }
    EXPECT_EQ(folder.read("a.yuy2"), expected);
    EXPECT_EQ(run(folder.path(), {"convert", "-q", "--size", "8x4", "a.yuy2", "b.y4m"}).code, 0);
    const Y4mFile back = readY4m(folder.read("b.y4m"), 8, 4);
    ASSERT_EQ(back.frames.size(), 3);
    EXPECT_EQ(back.frames[2], toByteArray(frames[2]));
}

TEST(ConvertProgram, AY4mKeepsItsRate) {
    const Outcome outcome = run("/", {"convert", "-q", "--from", "y4m", "--to", "y4m", "-", "-"},
                                y4m(4, 2, {greyI420(4, 2, 99)}));
    EXPECT_TRUE(readY4m(outcome.output, 4, 2).header.contains(" F25:1 ")) << outcome.errors;
}

TEST(ConvertProgram, OneFrameIsChosenByItsNumber) {
    Folder folder;
    write(folder, "a.y4m", y4m(4, 2, {greyI420(4, 2, 16), greyI420(4, 2, 235)}));
    EXPECT_EQ(run(folder.path(), {"convert", "--frame", "2", "a.y4m", "a.png"}).code, 0);
    EXPECT_EQ(QImage(folder.file("a.png")).pixel(0, 0), qRgb(255, 255, 255));
    expectError(7, "there is no frame 3: the input has 2 frames",
                run(folder.path(), {"convert", "--frame", "3", "a.y4m", "b.png"}));
    EXPECT_EQ(folder.entries(), (QStringList{"a.png", "a.y4m"}));
}

TEST(ConvertProgram, ManyFramesBecomeNumberedPictures) {
    Folder folder;
    write(folder, "a.y4m", y4m(4, 2, {greyI420(4, 2, 16), greyI420(4, 2, 235)}));
    EXPECT_EQ(run(folder.path(), {"convert", "a.y4m", "p-%03d.png"}).code, 0);
    EXPECT_EQ(folder.entries(), (QStringList{"a.y4m", "p-001.png", "p-002.png"}));
    EXPECT_EQ(QImage(folder.file("p-002.png")).pixel(3, 1), qRgb(255, 255, 255));
    expectError(2,
                "a PNG file holds one picture: choose one with --frame, or give a numbered name such as "
                "out-%04d.png",
                run(folder.path(), {"convert", "a.y4m", "p.png"}));
    EXPECT_FALSE(folder.entries().contains("p.png"));
}

TEST(ConvertProgram, AWrongLengthIsAnsweredWithTheRightOne) {
    Folder folder;
    write(folder, "a.i420", QByteArray(460801, 'x'));
    expectError(
        7,
        "cannot read 'a.i420': it has 460801 bytes (1 frame and 1 byte), but a frame of 640x480 i420 takes "
        "460800: check --size and --from",
        run(folder.path(), {"convert", "--size", "sd", "a.i420", "a.y4m"}));
    expectError(
        7,
        "cannot read 'a.i420': it has 460801 bytes, but a frame of 1280x720 yuy2 takes 1843200: check "
        "--size and --from",
        run(folder.path(), {"convert", "--size", "hd", "--from", "yuy2", "a.i420", "a.y4m"}));
    expectError(
        7,
        "cannot read standard input: it has 5 bytes, but a frame of 4x2 i420 takes 12: check --size and "
        "--from",
        run(folder.path(), {"convert", "--size", "4x2", "--from", "i420", "-", "a.y4m"}, "12345"));
    expectError(
        7,
        "cannot read standard input: it has 0 bytes, but a frame of 4x2 i420 takes 12: check --size and "
        "--from",
        run(folder.path(), {"convert", "--size", "4x2", "--from", "i420", "-", "a.y4m"}));
    EXPECT_EQ(folder.entries(), QStringList("a.i420"));
}

TEST(ConvertProgram, BrokenFilesAreNamedWithWhatIsWrong) {
    Folder folder;
    write(folder, "cut.y4m", y4m(4, 2, {greyI420(4, 2, 16), greyI420(4, 2, 16)}).chopped(1));
    write(folder, "torn.y4m", y4m(4, 2, {greyI420(4, 2, 16)}) + "FRUME\n");
    write(folder, "empty.y4m", y4m(4, 2, {}));
    write(folder, "deep.y4m", "YUV4MPEG2 W4 H2 F25:1 C420p10\n");
    write(folder, "huge.y4m", "YUV4MPEG2 W99999999 H2 F25:1\n");
    write(folder, "no.y4m", "hello\n");
    write(folder, "no.png", "hello\n");
    const struct {
        const char* file;
        const char* error;
    } cases[] = {
        {"cut.y4m", "it ends in the middle of frame 2"},
        {"torn.y4m", "where frame 2 should start there is something else"},
        {"empty.y4m", "it holds no frame"},
        {"deep.y4m", "the pixel layout \"C420p10\" is not one of C420, C422, C444 and Cmono with 8 bits"},
        {"huge.y4m", "the width \"99999999\" is not from 1 to 16384"},
        {"no.y4m", "not a Y4M file: it does not begin with YUV4MPEG2"},
        {"no.png", "it is no PNG picture"},
        {"gone.png", "No such file or directory"},
    };
    for (const auto& broken : cases)
        expectError(7, "cannot read '" + std::string(broken.file) + "': " + broken.error,
                    run(folder.path(), {"convert", broken.file, "out.argb"}));
}

// What --play takes, convert takes.
TEST(ConvertProgram, Y4mOfOddSizesAndOtherLayoutsIsRead) {
    Folder folder;
    const QByteArray white(5 * 3, char(235));
    const struct {
        const char* colours;
        int chromaBytes;
    } cases[] = {{"C420", 2 * 3 * 2}, {"C422", 2 * 3 * 3}, {"C444", 2 * 5 * 3}, {"Cmono", 0}};
    for (const auto& test : cases) {
        write(folder, "a.y4m",
              "YUV4MPEG2 W5 H3 " + QByteArray(test.colours) + "\nFRAME\n" + white +
                  QByteArray(test.chromaBytes, char(128)));
        EXPECT_EQ(run(folder.path(), {"convert", "a.y4m", "a.png"}).code, 0) << test.colours;
        const QImage image(folder.file("a.png"));
        EXPECT_EQ(image.size(), QSize(5, 3));
        EXPECT_EQ(image.pixel(4, 2), qRgb(255, 255, 255)) << test.colours;
        EXPECT_EQ(run(folder.path(), {"convert", "-q", "a.y4m", "b.y4m"}).code, 0);
        EXPECT_TRUE(folder.read("b.y4m").endsWith(white + QByteArray(12, char(128)))) << test.colours;
    }
}

TEST(ConvertProgram, FramesBeforeTheBrokenOneAreKept) {
    Folder folder;
    write(folder, "cut.y4m", y4m(4, 2, {greyI420(4, 2, 16), greyI420(4, 2, 16)}).chopped(1));
    EXPECT_EQ(run(folder.path(), {"convert", "cut.y4m", "out.i420"}).code, 7);
    EXPECT_EQ(folder.read("out.i420"), toByteArray(greyI420(4, 2, 16)));
}

TEST(ConvertProgram, ArgumentsThatDoNotGoTogetherAreExplained) {
    Folder folder;
    write(folder, "a.y4m", y4m(4, 2, {greyI420(4, 2, 16)}));
    QImage(5, 3, QImage::Format_RGB32).save(folder.file("odd.png"));
    const QString path = folder.path();
    expectError(2, "'a.y4m' is the input: write to another file", run(path, {"convert", "./a.y4m", "a.y4m"}));
    expectError(2, "--size is for raw input: 'a.y4m' states its own size",
                run(path, {"convert", "--size", "sd", "a.y4m", "b.i420"}));
    expectError(2, "raw frames do not state their size: give it with --size",
                run(path, {"convert", "a.i420", "b.y4m"}));
    for (const QStringList& odd : {QStringList{"--size", "5x3", "a.yuy2", "b.argb"}, {"odd.png", "b.yuy2"}})
        expectError(2, "yuy2 frames have even sides, 5x3 does not: choose another format or size",
                    run(path, QStringList("convert") + odd));
    expectError(2, "--bottom-up is for rgb24 input; i420 frames start with the top row",
                run(path, {"convert", "--bottom-up", "a.y4m", "b.argb"}));
    expectError(2,
                "the name 'b' does not say what the file is: give --to with one of png, y4m, i420, yuy2, "
                "rgb24, argb (also argb32, bgra)",
                run(path, {"convert", "a.y4m", "b"}));
    expectError(2, "--camera has no meaning here: convert and scale work on files, not on a camera",
                run(path, {"convert", "--camera", "x", "a.y4m", "b.argb"}));
    EXPECT_EQ(folder.entries(), (QStringList{"a.y4m", "odd.png"}));
}

TEST(ScaleProgram, ScalesAsTheLibraryDoes) {
    Folder folder;
    Bytes i420 = greyI420(640, 480, 100);
    for (std::size_t at = 0; at < 640 * 480; ++at)
        i420[at] = static_cast<uint8_t>(16 + (at * 7 + at / 640 * 3) % 220);
    write(folder, "a.i420", toByteArray(i420));
    const struct {
        const char* name;
        ostrel::ScaleMethod method;
    } filters[] = {{"none", ostrel::SCALE_METHOD_NONE},
                   {"bilinear", ostrel::SCALE_METHOD_BILINEAR},
                   {"box", ostrel::SCALE_METHOD_BOX}};
    for (const auto& filter : filters) {
        const Outcome outcome = run(folder.path(), {"scale", "--scale", "ld", "--size", "sd", "--filter",
                                                    filter.name, "--to", "i420", "a.i420", "-"});
        Bytes expected;
        ostrel::OVideoScaler::scaleI420Frame(ostrel::VIDEO_QUALITY_SD, i420, ostrel::VIDEO_QUALITY_LD,
                                             expected, filter.method);
        EXPECT_EQ(outcome.output, toByteArray(expected)) << filter.name << outcome.errors;
    }
}

TEST(ScaleProgram, Yuy2StaysYuy2) {
    Folder folder;
    Bytes yuy2(320 * 240 * 2);
    for (std::size_t at = 0; at < yuy2.size(); ++at)
        yuy2[at] = static_cast<uint8_t>(40 + at % 150);
    write(folder, "a.yuy2", toByteArray(yuy2));
    EXPECT_EQ(run(folder.path(), {"scale", "--scale", "hd", "--size", "ld", "a.yuy2", "b.yuy2"}).code, 0);
    Bytes expected;
    ostrel::OVideoScaler::scaleYUY2Frame(ostrel::VIDEO_QUALITY_LD, yuy2, ostrel::VIDEO_QUALITY_HD, expected,
                                         ostrel::SCALE_METHOD_BOX);
    EXPECT_EQ(folder.read("b.yuy2"), toByteArray(expected));
}

TEST(ScaleProgram, OnlyLevelsAreScaled) {
    Folder folder;
    write(folder, "a.y4m", y4m(4, 2, {greyI420(4, 2, 16)}));
    expectError(2, "frames of 4x2 cannot be scaled: only 320x240, 640x480 and 1280x720 can",
                run(folder.path(), {"scale", "--scale", "ld", "a.y4m", "b.y4m"}));
    EXPECT_EQ(folder.entries(), QStringList("a.y4m"));
}

} // namespace
