// What the window says when there is no live picture, and that it finds back.
#include "viewer/window_fixture.h"

#include <ostrel/devices.h>

namespace ostrel::tests {

namespace {

class States : public WindowTest {
protected:
    OVideoTestPatternCamera camera{"viewer-test-a", "First"};
};

} // namespace

TEST_F(States, NoCameraIsSaid) {
    const int attached = static_cast<int>(videoDevices().size()); // to the machine
    open();
    EXPECT_EQ(title() == QString("No camera is attached"), attached == 0) << title().toStdString();
    EXPECT_EQ(panel().cameras->count(), attached);
    EXPECT_FALSE(panel().snapshot->isEnabled());
}

TEST_F(States, FirstCameraToBePluggedInIsShown) {
    open(videoDevices().isEmpty() ? "" : "First"); // else the machine's own would be shown
    camera.attach();
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
    EXPECT_TRUE(panel().snapshot->isEnabled());
}

TEST_F(States, ListFollowsPlugging) {
    OVideoTestPatternCamera second("viewer-test-b", "Second");
    camera.attach();
    open("First");
    ASSERT_TRUE(waitForPicture());
    EXPECT_TRUE(cameraNames().contains("First"));
    EXPECT_FALSE(cameraNames().contains("Second"));
    second.attach();
    EXPECT_TRUE(eventually([this] { return cameraNames().contains("Second"); }));
    EXPECT_EQ(selectedName(), QString("First"));
    second.detach();
    EXPECT_TRUE(eventually([this] { return !cameraNames().contains("Second"); }));
    EXPECT_TRUE(live());
}

// The other camera must not start by itself: nobody chose it.
TEST_F(States, CameraThatGoesIsSaidAndTakenUpAgain) {
    OVideoTestPatternCamera other("viewer-test-b", "Second");
    camera.attach();
    other.attach();
    open("First");
    ASSERT_TRUE(waitForPicture());
    camera.detach();
    EXPECT_TRUE(eventually([this] { return title() == QString("“First” is gone"); }))
        << title().toStdString();
    EXPECT_EQ(figures(), QString()) << "there is no rate any more";
    EXPECT_FALSE(cameraNames().contains("First"));
    EXPECT_TRUE(panel().cameras->selectedItems().isEmpty());
    panel().cameras->setFocus();
    EXPECT_EQ(other.framesDelivered(), 0U);
    EXPECT_NE(barsInWindow(), BARS) << "the last picture should be darkened";

    camera.attach();
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
    EXPECT_EQ(selectedName(), QString("First"));
}

// Nothing in the list has changed then, but the capture is over.
TEST_F(States, CameraThatWasPulledOutUnseenIsTakenUpAgain) {
    camera.attach();
    open("First");
    ASSERT_TRUE(waitForPicture());
    camera.detach();
    const uint32_t before = camera.framesTaken();
    camera.attach();
    EXPECT_TRUE(eventually([&] { return camera.framesTaken() > before; }));
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, CameraThatFailedIsTriedAgainWhenItIsPluggedInAnew) {
    camera.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    camera.attach();
    open("First");
    ASSERT_TRUE(eventually([this] { return title() == QString("“First” cannot be used"); }))
        << title().toStdString();
    camera.detach();
    camera.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    camera.attach();
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

// The library refuses such a camera without a word.
TEST_F(States, CameraThatWentBeforeItWasChosenIsSaid) {
    OVideoTestPatternCamera other("viewer-test-b", "Second");
    camera.attach();
    other.attach();
    open("First");
    ASSERT_TRUE(waitForPicture());
    other.detach();
    window->chooseCamera("viewer-test-b");
    EXPECT_EQ(title(), QString("“Second” is gone"));
    clickCamera("First");
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, CameraThatCannotBeOpenedIsSaidWithTheReason) {
    camera.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    camera.attach();
    open("First");
    EXPECT_TRUE(eventually([this] { return title() == QString("“First” cannot be used"); }))
        << title().toStdString();
    EXPECT_TRUE(view().message().detail.startsWith("First was told not to open\n\nChoose it in the list"))
        << view().message().detail.toStdString();

    camera.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    clickCamera("First");
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, ChangesOfTheListStartNothingAgain) {
    OVideoTestPatternCamera other("viewer-test-b", "Second");
    camera.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    camera.attach();
    open("First");
    const QString failed = "“First” cannot be used";
    ASSERT_TRUE(eventually([&] { return title() == failed; })) << title().toStdString();
    other.attach();
    ASSERT_TRUE(eventually([this] { return cameraNames().contains("Second"); }));
    EXPECT_EQ(title(), failed);
}

TEST_F(States, RefusedInputIsSaid) {
    camera.setFault(VIRTUAL_CAMERA_FAULT_INPUT);
    camera.attach();
    open("First");
    EXPECT_TRUE(eventually([this] { return title() == QString("“First” cannot be used"); }))
        << title().toStdString();
}

TEST_F(States, SilentCameraIsSaidAndWaitedFor) {
    camera.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    camera.attach();
    open("First");
    EXPECT_EQ(title(), QString("Starting “First” …"));
    EXPECT_TRUE(eventually([this] { return title() == QString("No picture from “First” yet"); }))
        << title().toStdString();
    EXPECT_FALSE(view().hasPicture());
    camera.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, CameraThatStopsSendingIsSaidOverItsLastPicture) {
    camera.attach();
    open("First");
    ASSERT_TRUE(waitForPicture());
    camera.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    EXPECT_TRUE(eventually([this] { return title() == QString("“First” has stopped sending pictures"); }))
        << title().toStdString();
    EXPECT_TRUE(view().hasPicture());
    EXPECT_TRUE(eventually([this] { return figures().contains("   0.0 frames/s"); }))
        << figures().toStdString();
    camera.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, CamerasOfOneNameAreToldApart) {
    OVideoTestPatternCamera twin("viewer-test-twin", "First");
    camera.attach();
    open("viewer-test-a");
    EXPECT_EQ(selectedName(), QString("First"));
    twin.attach();
    EXPECT_TRUE(eventually([this] { return selectedName() == QString("First\nviewer-test-a"); }));
    EXPECT_TRUE(cameraNames().contains("First\nviewer-test-twin"));
    twin.detach();
    EXPECT_TRUE(eventually([this] { return selectedName() == QString("First"); }));
}

TEST_F(States, ANameThatFitsSeveralCamerasIsLeftToTheUser) {
    OVideoTestPatternCamera other("viewer-test-b", "First one");
    camera.attach();
    other.attach();
    open("FIRS");
    EXPECT_EQ(title(), QString("“FIRS” fits several cameras"));
    clickCamera("First one");
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
}

TEST_F(States, UnknownCameraIsSaidAndWaitedFor) {
    OVideoTestPatternCamera other("viewer-test-b", "Second");
    other.attach();
    open("viewer-TEST-a");
    EXPECT_EQ(title(), QString("No camera is called “viewer-TEST-a”"));
    EXPECT_TRUE(view().message().detail.startsWith("no attached camera fits \"viewer-TEST-a\""))
        << view().message().detail.toStdString();
    camera.attach();
    EXPECT_TRUE(waitForBars(BARS)) << title().toStdString();
    EXPECT_EQ(selectedName(), QString("First"));
}

} // namespace ostrel::tests
