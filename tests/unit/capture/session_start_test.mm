#import "session_test.h"

#include <cerrno>

using namespace ostrel;
using support::Lines;

namespace {
using SessionStart = support::SessionTest;
const int64_t BYTES = 16 * 8 * 4;
} // namespace

TEST_F(SessionStart, WritesBothLinesAndRuns) {
    const auto camera = attach("camera");
    start("camera", 16, 8);
    EXPECT_EQ(err.takeLines(), (Lines{">>> starting session", ">>> session stopped"}));
    EXPECT_TRUE(camera->isRunning());
    EXPECT_EQ(camera->sizesStarted(), (std::vector<std::pair<int, int>>{{16, 8}}));
}

TEST_F(SessionStart, UnknownCameraFails) {
    attach("camera");
    start("none", 16, 8);
    EXPECT_EQ(err.takeLines(), Lines{">>> camera failed"});
    EXPECT_EQ(copy(BYTES), 0);
    release();
    EXPECT_EQ(err.takeLines(), tearDown());
}

TEST_F(SessionStart, LetterCaseOfTheIdentifierCounts) {
    const auto camera = attach("Camera");
    for (const char* identifier : {"camera", "CAMERA", "Camera ", "Camer", ""})
        start(identifier, 16, 8);
    EXPECT_EQ(err.takeLines(), Lines(5, ">>> camera failed"));
    start("Camera", 16, 8);
    EXPECT_TRUE(camera->isRunning());
}

TEST_F(SessionStart, IdentifierIsComparedAsUtf8) {
    const auto camera = attach("K\xc3\xbc\x63he");
    start("K\xc3\xbc\x63he", 16, 8);
    EXPECT_TRUE(camera->isRunning());
}

TEST_F(SessionStart, IdentifierIsCopied) {
    const auto camera = attach("camera");
    char identifier[] = "camera";
    [object setCamera:identifier withWidth:16 withHeigth:8];
    identifier[0] = 'X';
    const support::KeptByDesign framework;
    [object startObjCapture];
    EXPECT_TRUE(camera->isRunning());
}

TEST_F(SessionStart, CameraThatDoesNotOpenIsReportedWithItsError) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("Add yourself to the group video.", EACCES));
    start("camera", 16, 8);
    EXPECT_EQ(err.takeLines(), Lines{"NSLog: Error opening camera: Add yourself to the group video."});
    EXPECT_EQ(copy(BYTES), 0);
    EXPECT_EQ(camera->opens(), 0);
    release();
    EXPECT_EQ(err.takeLines(), tearDown());
    EXPECT_EQ(camera->closes(), 0);
}

TEST_F(SessionStart, RefusedInputLeavesTheCameraOpenUntilTheEnd) {
    const auto camera = attach("camera");
    camera->refuseInput(cameras::Error("wrong kind"));
    start("camera", 16, 8);
    EXPECT_EQ(err.takeLines(), Lines{"NSLog: Error adding input to capture session: wrong kind"});
    EXPECT_TRUE(camera->isOpen());
    EXPECT_FALSE(camera->isRunning());
    camera->deliver(1);
    EXPECT_EQ(copy(BYTES), 0);
    release();
    EXPECT_EQ(err.takeLines(), tearDown());
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(SessionStart, RefusedOutputStartsTheSessionAnyway) {
    const auto camera = attach("camera");
    camera->refuseStart(cameras::Error("no bandwidth"));
    start("camera", 16, 8);
    EXPECT_EQ(err.takeLines(), (Lines{"NSLog: Error adding output to capture session: no bandwidth",
                                      ">>> starting session", ">>> session stopped"}));
    camera->deliver(1);
    EXPECT_EQ(copy(BYTES), 0);
    EXPECT_EQ(counter(), 0u);
    release();
    EXPECT_EQ(err.takeLines(), tearDown());
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(SessionStart, SizeIsCutToUnsigned32Bits) {
    const auto camera = attach("camera");
    start("camera", 0x500000010, 8 - 0x300000000);
    EXPECT_EQ(camera->sizesStarted(), (std::vector<std::pair<int, int>>{{16, 8}}));
}

TEST_F(SessionStart, CounterRestartsWithTheSession) {
    const auto camera = attach("camera");
    start("camera", 16, 8);
    camera->deliver(1);
    camera->deliver(2);
    EXPECT_EQ(counter(), 2u);
    [object stopObjCapture];
    EXPECT_EQ(counter(), 2u);
    start("camera", 16, 8);
    EXPECT_EQ(counter(), 0u);
    camera->deliver(3);
    EXPECT_EQ(counter(), 1u);
    EXPECT_EQ(copy(BYTES), BYTES);
    EXPECT_EQ(numberCopied(BYTES), 3);
}

TEST_F(SessionStart, FailedStartAfterARunningOneLeavesTheCounter) {
    const auto camera = attach("camera");
    start("camera", 16, 8);
    camera->deliver(1);
    start("none", 16, 8);
    EXPECT_EQ(counter(), 1u);
}

TEST_F(SessionStart, NeverStartedObjectEndsWithItsThreeLines) {
    EXPECT_EQ(err.takeLines(), Lines());
    [object stopObjCapture];
    EXPECT_EQ(err.takeLines(), Lines());
    release();
    EXPECT_EQ(err.takeLines(), tearDown());
}

TEST_F(SessionStart, SecondStartBuildsASecondSessionAndTheEndStopsBoth) {
    const auto camera = attach("camera");
    const auto other = attach("other");
    start("camera", 16, 8);
    start("other", 16, 8);
    EXPECT_TRUE(camera->isRunning());
    EXPECT_TRUE(other->isRunning());
    camera->deliver(1);
    other->deliver(2);
    EXPECT_EQ(counter(), 2u);
    release();
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(other->isOpen());
    camera->deliver(3); // to nobody
}
