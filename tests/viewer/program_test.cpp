// The program itself, started as a user would, and looked at on the screen.
#include "viewer/colours.h"
#include "viewer/virtual_screen.h"

#include <ostrel/processing.h>
#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <vector>

namespace ostrel::tests {

namespace {

const int HANG = 30000;

class Program : public testing::Test {
protected:
    void start(const QStringList& arguments, const QByteArray& display) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("DISPLAY");
        if (!display.isEmpty())
            environment.insert("DISPLAY", display);
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("HOME", home.path());
        process.setProcessEnvironment(environment);
        process.start(OSTREL_VIEWER_PROGRAM, arguments);
    }
    int run(const QStringList& arguments) {
        start(arguments, QByteArray());
        return process.waitForFinished(HANG) ? process.exitCode() : -1;
    }
    void TearDown() override {
        process.terminate();
        process.waitForFinished(HANG);
    }

    QTemporaryDir home;
    QProcess process;
};

struct Stamp {
    uint32_t counter = 0;
    uint32_t clock = 0;
};

bool decode(const QImage& screen, Stamp& stamp) {
    return OVideoTestPatternCamera::decode(screen.constBits(), screen.width(), screen.height(),
                                           static_cast<int>(screen.bytesPerLine()), stamp.counter,
                                           stamp.clock);
}

// Where in this row each of the bars from yellow to blue begins; empty when they do not stand there in order.
std::vector<int> barStarts(const QImage& screen, int y) {
    const std::string wanted = "YCGMRB";
    std::vector<int> starts;
    char last = 0;
    for (int x = 0; x + 10 < screen.width() && starts.size() < wanted.size(); ++x) {
        const char letter = letterOf(screen.pixel(x, y));
        if (letter != last && letter == wanted[starts.size()] && letterOf(screen.pixel(x + 10, y)) == letter)
            starts.push_back(x);
        last = letter;
    }
    return starts.size() == wanted.size() ? starts : std::vector<int>();
}

} // namespace

// The pattern's cells are read off the screen: every step from the camera to the glass is right to the pixel.
TEST_F(Program, TestPatternIsOnTheScreenAndMoves) {
    VirtualScreen screen(1280, 720);
    ASSERT_TRUE(screen.runs()) << "Xvfb (Debian: xvfb) cannot be started";
    start({"--test-camera", "--size", "1280x720", "--full-screen"}, screen.display());
    Stamp first, later;
    ASSERT_TRUE(QTest::qWaitFor([&] { return decode(screen.picture(), first); }, HANG))
        << process.readAllStandardError().toStdString();
    EXPECT_EQ(barsIn(screen.picture()), BARS);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return decode(screen.picture(), later) && later.counter > first.counter; }, HANG));
    const uint32_t age = OVideoCommon::get_time() - later.clock;
    EXPECT_LT(age, uint32_t(HANG));
    RecordProperty("glass_to_glass_ms", static_cast<int>(age));
}

TEST_F(Program, WindowHasThePictureBesideItsControls) {
    VirtualScreen screen(1280, 900);
    ASSERT_TRUE(screen.runs()) << "Xvfb (Debian: xvfb) cannot be started";
    start({"--test-camera"}, screen.display());
    std::vector<int> starts;
    const auto findBars = [&] {
        const QImage picture = screen.picture();
        for (int y = 0; y < picture.height() && starts.empty(); ++y)
            starts = barStarts(picture, y);
        return !starts.empty();
    };
    ASSERT_TRUE(QTest::qWaitFor(findBars, HANG)) << process.readAllStandardError().toStdString();
    const int width = starts[1] - starts[0];
    for (std::size_t bar = 2; bar < starts.size(); ++bar)
        EXPECT_NEAR(starts[bar] - starts[bar - 1], width, 2);
    EXPECT_GE(starts[0] - width, 228) << "the picture should begin behind the panel";
}

TEST_F(Program, HelpAndVersionNeedNoDisplay) {
    EXPECT_EQ(run({"--help"}), 0);
    const QByteArray help = process.readAllStandardOutput();
    for (const char* option : {"--test-camera", "--play <FILE>", "--camera <CAMERA>", "--size <SIZE>",
                               "--full-screen", "--help", "--version"})
        EXPECT_TRUE(help.contains(option)) << option << " in\n" << help.toStdString();
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_EQ(process.readAllStandardOutput().toStdString(), "ostrel-viewer " OSTREL_VERSION "\n");
}

TEST_F(Program, RefusalsNeedNoDisplay) {
    EXPECT_EQ(run({"--size", "7"}), 2);
    EXPECT_TRUE(process.readAllStandardError().contains("'7' is no size"));
    const QString missing = home.filePath("missing.y4m");
    EXPECT_EQ(run({missing}), 7);
    EXPECT_TRUE(process.readAllStandardError().contains("cannot play '" + missing.toUtf8() + "': "));
}

} // namespace ostrel::tests
