// The small pieces of ostrel-camera: sizes, layouts, Y4M, text, progress, the library's lines, cameras,
// nodes.
#include "apps/camera/camera_choice.h"
#include "apps/camera/camera_list.h"
#include "apps/camera/frame_stream.h"
#include "apps/camera/frame_writer.h"
#include "apps/camera/mode_choice.h"
#include "apps/camera/mode_list.h"
#include "apps/camera/progress.h"
#include "apps/camera/stream_report.h"
#include "apps/camera/video_nodes.h"
#include "apps/camera/y4m.h"
#include "apps/common/failure.h"
#include "apps/common/library_log.h"
#include "apps/common/text.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <clocale>
#include <functional>
#include <unistd.h>

namespace {

using namespace ostrel;
using namespace ostrel::apps;
using namespace ostrel::apps::cli;

TEST(Size, IsReadFromNumbersAndFromNamesOfLevels) {
    EXPECT_EQ("640x480", toString(parseSize("640x480").value()));
    EXPECT_EQ("16384x1", toString(parseSize("16384X1").value()));
    EXPECT_EQ("320x240", toString(parseSize("ld").value()));
    EXPECT_EQ("1280x720", toString(parseSize("Hd").value()));
    EXPECT_EQ("1920x1080", toString(parseSize("1080p").value()));
    for (const char* text : {"", "x", "640", "640x", "x480", "0x480", "640x-2", "640x480x2", "16385x2",
                             " 640x480", "640 x 480", "99999999999x2", "uhd", "72p"})
        EXPECT_FALSE(parseSize(text)) << text;
}

TEST(Layout, FramesHaveTheLengthOfTheirPixels) {
    EXPECT_EQ(4U * 34 * 18, frameBytes(Layout::Argb, {34, 18}));
    EXPECT_EQ(3U * 34 * 18, frameBytes(Layout::Rgb24, {34, 18}));
    EXPECT_EQ(2U * 34 * 18, frameBytes(Layout::Yuy2, {34, 18}));
    EXPECT_EQ(34U * 18 + 2 * 17 * 9, frameBytes(Layout::I420, {34, 18}));
    EXPECT_EQ(33U * 17 + 2 * 17 * 9, frameBytes(Layout::I420, {33, 17}));
}

TEST(Layout, FileNamesTellTheirKind) {
    EXPECT_EQ(Container::Y4m, fileKindOfPath("a/b.Y4M")->container);
    EXPECT_EQ(Container::Png, fileKindOfPath("b.c.png")->container);
    EXPECT_EQ(Layout::I420, fileKindOfPath("x.yuv")->layout);
    EXPECT_EQ(Layout::Argb, fileKindOfPath("x.bgra")->layout);
    for (const char* path : {"-", "y4m", "a.y4m/b", "a.", "a.mp4"})
        EXPECT_FALSE(fileKindOfPath(path)) << path;
}

TEST(Y4m, HeaderHasOneLengthForAllRatesAndComesBack) {
    const std::string plain = y4mHeaderLine({640, 480}, {30, 1});
    const std::string exact = y4mHeaderLine({640, 480}, {4294967295U, 4294967295U});
    EXPECT_EQ(plain.size(), exact.size());
    EXPECT_EQ(0U, plain.find("YUV4MPEG2 W640 H480 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XPAD="));
    Y4mHeader header;
    EXPECT_EQ("", parseY4mHeader(plain.substr(0, plain.size() - 1), header));
    EXPECT_EQ(640, header.width);
    EXPECT_EQ(480, header.height);
    EXPECT_EQ(30U, header.rateNumerator);
}

// One red pixel right of a grey one, in the planes of every layout. Red: Y 81, U 90, V 240.
TEST(Y4m, PlanesOfEveryLayoutBecomeTheirColours) {
    const struct {
        Y4mColours colours;
        bool fullRange;
        std::vector<uint8_t> planes;
        std::vector<int> bgr; // of both pixels
    } cases[] = {
        {Y4M_444, false, {126, 81, 128, 90, 128, 240}, {128, 128, 128, 0, 0, 255}},
        {Y4M_422, false, {81, 81, 90, 240}, {0, 0, 255, 0, 0, 255}},
        {Y4M_420, true, {76, 76, 85, 255}, {0, 0, 254, 0, 0, 254}},
        {Y4M_MONO, false, {16, 235}, {0, 0, 0, 255, 255, 255}},
    };
    for (const auto& test : cases) {
        const Y4mHeader header = {2, 1, 25, 1, test.colours, test.fullRange};
        ASSERT_EQ(test.planes.size(), y4mFrameBytes(header));
        std::vector<uint8_t> argb;
        y4mToArgb(header, test.planes, argb);
        ASSERT_EQ(8U, argb.size());
        for (std::size_t at = 0; at < 6; ++at)
            EXPECT_NEAR(test.bgr[at], argb[at + at / 3], 1) << test.colours << " " << at;
    }
    // Of three rows the first two share a colour, red; the last is grey.
    std::vector<uint8_t> argb;
    y4mToArgb({2, 3, 25, 1, Y4M_420, false}, {81, 81, 81, 81, 81, 81, 90, 128, 240, 128}, argb);
    EXPECT_NEAR(255, argb[4 * 3 + 2], 1);
    EXPECT_EQ(argb[4 * 5], argb[4 * 5 + 2]);
}

TEST(Y4m, MeasuredRatesAreRoundedToUsualOnes) {
    EXPECT_EQ(30U, nearestRate(30.07).numerator);
    EXPECT_EQ(25U, nearestRate(24.9).numerator);
    EXPECT_EQ(1001U, nearestRate(29.97).denominator);
    EXPECT_EQ(2U, nearestRate(7.5).denominator);
    EXPECT_EQ(18342U, nearestRate(18.342).numerator);
    EXPECT_EQ(1000U, nearestRate(18.342).denominator);
    EXPECT_EQ(17U, nearestRate(17).numerator);
}

TEST(Y4m, RatesAreReadInThreeWritings) {
    EXPECT_EQ(30, parseRate("30")->value());
    EXPECT_EQ(12.5, parseRate("25/2")->value());
    EXPECT_EQ(12.5, parseRate("25:2")->value());
    EXPECT_EQ(18.5, parseRate("18.5")->value());
    for (const char* text : {"", "0", "-1", "nan", "inf", "1/0", "0/1", "30fps", "1/", "1001", "5000"})
        EXPECT_FALSE(parseRate(text)) << text;
}

TEST(Text, ControlCharactersOfACameraDoNotReachTheTerminal) {
    EXPECT_EQ("a?[2Jb?", printable("a\x1b[2Jb\n"));
    EXPECT_EQ("K\xc3\xa4mera", printable("K\xc3\xa4mera"));
}

TEST(Text, WordsAreWrappedAndLongOnesStayWhole) {
    EXPECT_EQ((std::vector<std::string>{"one two", "three", "verylongword", "x"}),
              wrapped("one two three verylongword x", 7));
}

TEST(CameraList, ColumnsFollowTheWidthOfLettersNotOfBytes) {
    ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8"));
    const std::string table = cameraTable({{"id-1", "K\xc3\xa4mera", {{320, 240}}}, {"i2", "Cam", {}}});
    EXPECT_EQ("NAME    IDENTIFIER  SIZES\n"
              "K\xc3\xa4mera  id-1        320x240\n"
              "Cam     i2\n",
              table);
}

TEST(Progress, BarFillsWithTheFraction) {
    EXPECT_EQ("[" + std::string(30, ' ') + "]   0%  x", progressLine(0, "x", 80));
    EXPECT_EQ("[" + std::string(15, '#') + std::string(15, ' ') + "]  50%  x", progressLine(0.5, "x", 80));
    EXPECT_EQ("[" + std::string(30, '#') + "] 100%  x", progressLine(1.7, "x", 80));
    EXPECT_EQ("only text", progressLine(-1, "only text", 80));
    EXPECT_EQ(9U, progressLine(0.5, "x", 10).size());
}

TEST(HiddenLibraryLog, TakesStandardErrorAwayAndGivesItBack) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    const int before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    {
        const HiddenLibraryLog hidden(ends[1]);
        dprintf(STDERR_FILENO, "the library's\n");
    }
    dprintf(STDERR_FILENO, "mine\n");
    dup2(before, STDERR_FILENO);
    close(before);
    close(ends[1]);
    char text[100] = {};
    EXPECT_LT(0, read(ends[0], text, sizeof text - 1));
    EXPECT_STREQ("mine\n", text);
    close(ends[0]);
}

class VideoNodes : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"video0", "video10", "video2", "videox", "v4l-subdev0"}) {
            QFile file(folder_.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
    }
    std::string path(const char* name) const { return folder_.filePath(name).toStdString(); }

    QTemporaryDir folder_;
};

TEST_F(VideoNodes, ThoseThatMayNotBeOpenedAreFoundInTheOrderOfTheirNumbers) {
    const std::vector<ClosedNode> nodes = closedVideoNodes(
        folder_.path().toStdString(), [this](const std::string& node) { return node == path("video0"); });
    ASSERT_EQ(2U, nodes.size());
    EXPECT_EQ(path("video2"), nodes[0].path);
    EXPECT_EQ(path("video10"), nodes[1].path);
    EXPECT_EQ("", nodes[0].group); // its group may not write
}

TEST_F(VideoNodes, AdviceNamesTheNodesAndTheGroupToJoin) {
    EXPECT_EQ("no permission to use /dev/video0, /dev/video1: join the group video (sudo usermod -aG video "
              "\"$USER\") "
              "and log in again",
              permissionAdvice({{"/dev/video0", "video"}, {"/dev/video1", "video"}}));
    EXPECT_EQ("no permission to use /dev/video0: ask the administrator of this machine for access",
              permissionAdvice({{"/dev/video0", ""}}));
}

// The failure of a choice as "code: line", or the identifier of the camera chosen.
std::string choose(const std::vector<Camera>& cameras, const std::string& wanted,
                   const QStringList& added = {}, const std::vector<ClosedNode>& closed = {}) {
    try {
        return chooseCamera(cameras, wanted, added, closed).identifier;
    } catch (const Failure& failure) {
        return std::to_string(failure.code()) + ": " + failure.what();
    }
}

const std::vector<Camera> CAMERAS = {
    {"usb-1", "Webcam Left", {}}, {"usb-10", "Webcam Right", {}}, {"USB-1", "Built-in", {}},
    {"pci-7", "Cam", {}},         {"pci-8", "Cam Pro", {}},
};

TEST(CameraChoice, WithoutAWishTheAddedCameraElseTheFirst) {
    EXPECT_EQ("usb-1", choose(CAMERAS, ""));
    EXPECT_EQ("pci-8", choose(CAMERAS, "", {"pci-8"}));
    EXPECT_EQ("2: several cameras are added: say with --camera which of a, b is meant",
              choose(CAMERAS, "", {"a", "b"}));
}

TEST(CameraChoice, AWholeIdentifierIsNeverTakenForItsPrefix) {
    EXPECT_EQ("usb-1", choose(CAMERAS, "usb-1"));
    EXPECT_EQ("usb-10", choose(CAMERAS, "USB-10"));
    EXPECT_EQ("USB-1", choose(CAMERAS, "USB-1"));
}

TEST(CameraChoice, APartOfANameIsEnoughWhenItIsUnique) {
    EXPECT_EQ("usb-10", choose(CAMERAS, "right"));
    EXPECT_EQ("USB-1", choose(CAMERAS, "BUILT"));
    EXPECT_EQ("pci-7", choose(CAMERAS, "cam")); // a whole name before a part of another
    EXPECT_EQ("4: 'webcam' fits several cameras, give the identifier of one: Webcam Left (usb-1), "
              "Webcam Right "
              "(usb-10)",
              choose(CAMERAS, "webcam"));
}

TEST(CameraChoice, WhatFitsNothingIsAnsweredWithTheList) {
    EXPECT_EQ("4: no attached camera fits \"x\"; attached: Cam (pci-7)", choose({CAMERAS[3]}, "x"));
    EXPECT_EQ("3: no camera is attached: plug one in, or use --test-camera for the built-in test picture",
              choose({}, "x"));
    EXPECT_EQ("5: no permission to use /dev/video0: join the group video (sudo usermod -aG video \"$USER\") "
              "and log in "
              "again",
              choose({}, "", {}, {{"/dev/video0", "video"}}));
}

TEST(CameraChoice, AVideoNodeThatIsNoneIsSaid) {
    EXPECT_EQ("4: there is no /dev/video987; attached: Cam (pci-7)", choose({CAMERAS[3]}, "/dev/video987"));
    EXPECT_EQ("4: /dev/null is no video device; attached: Cam (pci-7)", choose({CAMERAS[3]}, "/dev/null"));
}

TEST(CameraList, NodesThatAreNoCamerasStandWithTheirReasons) {
    const std::vector<OtherNode> nodes = {{"/dev/video1", "Webcam", "delivers data about pictures"},
                                          {"/dev/video10", "Card", "is a touch pad"}};
    EXPECT_EQ("NODE          NAME    WHY IT IS NO CAMERA, OR CANNOT BE USED\n"
              "/dev/video1   Webcam  delivers data about pictures\n"
              "/dev/video10  Card    is a touch pad\n",
              nodeTable(nodes));
    EXPECT_EQ("", nodeTable({}));
    const QJsonObject json =
        QJsonDocument::fromJson(QByteArray::fromStdString(allJson({CAMERAS[3]}, nodes))).object();
    EXPECT_EQ("pci-7", json["cameras"].toArray()[0].toObject()["id"].toString().toStdString());
    EXPECT_EQ("is a touch pad", json["others"].toArray()[1].toObject()["reason"].toString().toStdString());
}

namespace {

std::string reread(const std::string& text) {
    const std::optional<WantedMode> wanted = parseMode(text);
    if (!wanted)
        return "none";
    return wanted->format + ' ' + toString(wanted->size) + ' ' +
           (wanted->rate
                ? std::to_string(wanted->rate->numerator) + '/' + std::to_string(wanted->rate->denominator)
                : "any");
}

OVideoMode mode(const char* format, int width, int height, uint32_t rate) {
    OVideoMode result;
    result.setFormat(format);
    result.setSize(width, height);
    result.setInterval(rate ? 1 : 0, rate);
    return result;
}

} // namespace

TEST(ModeChoice, AnyPartOfAModeMayBeLeftOut) {
    EXPECT_EQ("MJPG 1280x720 60/1", reread("MJPG:1280x720@60"));
    EXPECT_EQ("MJPG 1280x720 any", reread("MJPG:hd"));
    EXPECT_EQ("MJPG 0x0 30000/1001", reread("MJPG@30000/1001"));
    EXPECT_EQ(" 640x480 15/1", reread("640x480@15"));
    EXPECT_EQ(" 1280x720 any", reread("720p"));
    EXPECT_EQ("YUYV 0x0 any", reread("YUYV"));
    EXPECT_EQ("Y16-BE 0x0 any", reread("Y16-BE"));
    EXPECT_EQ(" 0x0 60/1", reread("@60"));
    for (const char* wrong :
         {"", "@", ":", "MJPG:", ":hd", "MJPG:wide", "MJPG@fast", "MJPG:hd@", "@0", "@60@30"})
        EXPECT_EQ("none", reread(wrong)) << wrong;
}

TEST(ModeChoice, AFormatIsTakenInTheLetterCaseThatTheCameraHas) {
    const QList<OVideoMode> offered = {mode("pBAA", 64, 48, 30), mode("MJPG", 64, 48, 30)};
    const auto wished = [&offered](const char* text) {
        return wishOf(parseMode(text).value(), offered).format().toStdString();
    };
    EXPECT_EQ("MJPG", wished("mjpg@30"));
    EXPECT_EQ("pBAA", wished("PBAA"));
    EXPECT_EQ("pbaa", wishOf(parseMode("pbaa").value(), {mode("pBAA", 1, 1, 1), mode("pbaa", 1, 1, 1)})
                          .format()
                          .toStdString());
    EXPECT_EQ("h264", wished("h264"));
    EXPECT_EQ("", wished("hd"));
    const OVideoMode slow = wishOf(parseMode("@29.97").value(), offered);
    EXPECT_EQ(1001U, slow.intervalNumerator());
    EXPECT_EQ(30000U, slow.intervalDenominator());
}

TEST(ModeList, HasALineForEachFormatAndSize) {
    EXPECT_EQ("  MJPG  1280x720  60/s 30/s\n"
              "  MJPG  640x480   30/s\n"
              "  YU\xC3\xA4V  64x48\n"
              "  PWC1  any size\n",
              modeTable({mode("MJPG", 1280, 720, 60), mode("MJPG", 1280, 720, 30), mode("MJPG", 640, 480, 30),
                         mode("YU\xC3\xA4V", 64, 48, 0), mode("PWC1", 0, 0, 0)}));
    EXPECT_EQ("", modeTable({}));
    const QJsonArray json = modeJson({mode("MJPG", 1280, 720, 60), mode("PWC1", 0, 0, 0)});
    EXPECT_EQ(QJsonObject({{"format", "MJPG"},
                           {"picture", true},
                           {"width", 1280},
                           {"height", 720},
                           {"interval", QJsonArray{1, 60}},
                           {"rate", 60}}),
              json[0].toObject());
    EXPECT_EQ(QJsonObject({{"format", "PWC1"}, {"picture", true}}), json[1].toObject());
}

TEST(StreamReport, HoldsEveryFigureWithReasonsAndWhatWasGranted) {
    StreamFigures figures;
    figures.taken = 301;
    figures.missed = 1;
    figures.seconds = 10;
    OVideoStatistics statistics;
    statistics.skipped = 2;
    statistics.lost = 3;
    statistics.dropped["short frame"] = 4;
    statistics.dropped["broken picture"] = 1;
    statistics.grantedFormat = "MJPG";
    statistics.grantedWidth = 1280;
    statistics.grantedHeight = 720;
    statistics.grantedRate = 30;
    EXPECT_EQ(
        "10.0 s  30.0/s  taken 301  skipped 3  dropped 5 (broken picture 1, short frame 4)  lost 3  asked "
        "640x480, granted MJPG 1280x720 at 30/s",
        streamReport(figures, statistics, {640, 480}));
    EXPECT_EQ("0.0 s  0.0/s  taken 0  skipped 0  dropped 0  lost 0  asked 640x480, granted unknown",
              streamReport(StreamFigures(), OVideoStatistics(), {640, 480}));
}

TEST(FrameWriter, NumbersReplaceTheirField) {
    EXPECT_EQ("a-0007.png", numberedPath("a-%04d.png", 7));
    EXPECT_EQ("a12345.png", numberedPath("a%03d.png", 12345));
    EXPECT_EQ("7%.png", numberedPath("%d%.png", 7));
    EXPECT_FALSE(isNumberedPath("100%.png"));
    EXPECT_FALSE(isNumberedPath("%s.png"));
    EXPECT_FALSE(isNumberedPath("%00d.png"));
    EXPECT_FALSE(isNumberedPath("%0"));
}

TEST(FrameWriter, AMeasuredRateReplacesTheStatedOne) {
    QTemporaryDir folder;
    const QString path = folder.filePath("a.y4m");
    const auto writer = makeFrameWriter(path.toStdString(), {Container::Y4m, Layout::I420}, {4, 2}, Rate());
    writer->write(Bytes(12, 100));
    writer->write(Bytes(12, 101));
    writer->finish(Rate{25, 2});
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string text = file.readAll().toStdString();
    EXPECT_EQ(0U, text.find("YUV4MPEG2 W4 H2 F25:2 Ip"));
    EXPECT_EQ(y4mHeaderLine({4, 2}, Rate()).size() + 2 * (6 + 12), text.size());
    EXPECT_EQ("FRAME\n" + std::string(12, 101), text.substr(text.size() - 18));
}

} // namespace
