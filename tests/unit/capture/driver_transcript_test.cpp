// What the driver does with its session object and the clock, step by step.
#include "support/recorded_framework.h"

#include <ostrel/capture.h>

#include "support/leaks.h"
#include "support/stderr_capture.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <new>
#include <sys/time.h>
#include <unistd.h>

using namespace ostrel;
using recorded::Machine;
using recorded::take;
using recorded::Transcript;
using support::withAddress;

namespace {

int clockReadings = 0; // each one a second later than the one before
std::function<void()> onClockReading;

std::size_t virtualPages() {
    std::ifstream figures("/proc/self/statm");
    std::size_t pages = 0;
    figures >> pages;
    return pages;
}

class ObservedDriver : public OVideoCaptureMacX {
public:
    ~ObservedDriver() override { wait(); } // run() is this class's
    Priority priorityInRun = LowestPriority;

protected:
    void run() override {
        priorityInRun = priority();
        OVideoCaptureMacX::run();
    }
};

class DriverTranscript : public testing::Test {
protected:
    DriverTranscript() {
        recorded::begin(Machine{{"camera"}});
        clockReadings = 0;
        onClockReading = nullptr;
    }

    void start(OVideoCaptureMacX& driver, const char* identifier, int width = 16, int height = 8) {
        driver.startCapture(identifier, width, height);
        driver.wait();
    }

    // The frames of a driver that was refused are empty ones: they are handed out without a camera.
    static VideoFrame handedOut(OVideoCaptureMacX& driver) {
        VideoFrame frame;
        driver.selfVideoFrame(frame);
        return frame;
    }
};

} // namespace

extern "C" int gettimeofday(timeval* time, void*) noexcept {
    if (onClockReading)
        onClockReading();
    time->tv_sec = ++clockReadings;
    time->tv_usec = 0;
    return 0;
}

TEST_F(DriverTranscript, OfAConstructionBeginsWithItsLineBeforeTheSessionObject) {
    const support::KeptByDesign neverStarted; // its session object is never given back
    OVideoCaptureMacX driver;
    EXPECT_EQ(take(), (Transcript{withAddress("| OVideoCaptureMacX::OVideoCaptureMacX() ", &driver),
                                  "session object alloc"}));
    EXPECT_EQ(recorded::flushes(), 1);
}

TEST_F(DriverTranscript, OfADriverNeverStartedEndsWithoutItsSessionObjectBeingGivenBack) {
    const support::KeptByDesign neverStarted;
    Transcript expected;
    {
        OVideoCaptureMacX driver;
        take();
        expected = {withAddress("| OVideoCaptureMacX::~OVideoCaptureMacX() ", &driver),
                    withAddress("| stopping for OVideoCaptureMacX ", &driver)};
    }
    EXPECT_EQ(take(), expected);
}

TEST_F(DriverTranscript, OfAStopPutsEachLineBeforeItsAct) {
    const support::KeptByDesign framework;
    OVideoCaptureMacX driver;
    start(driver, "camera");
    take();
    driver.stopVideoCapture();
    EXPECT_EQ(take(), (Transcript{withAddress("| stopping for OVideoCaptureMacX ", &driver),
                                  withAddress("| stopping for OVideoCaptureMacX1 ", &driver),
                                  "session1 isRunning", "session1 stopRunning", "| after stop",
                                  "| stopping session", "session1 stopRunning", "| closing camera",
                                  "camera0 close", "| removing input-output", "release null"}));
}

TEST_F(DriverTranscript, OfAStartAsksForTheCameraBeforeItsThreadBegins) {
    const support::KeptByDesign framework;
    OVideoCaptureMacX driver;
    take();
    start(driver, "CAMERA");
    Transcript transcript = take();
    transcript.resize(6);
    // The session compares exactly, and does not find what the look-up found.
    EXPECT_EQ(transcript, (Transcript{"video devices", "camera0 uniqueID", "camera0 localizedDisplayName",
                                      withAddress("| >>> OVideoCaptureMacX::run() ", &driver),
                                      "video devices", "camera0 uniqueID"}));
}

TEST_F(DriverTranscript, TheThreadInheritsItsPriority) {
    const support::KeptByDesign framework;
    ObservedDriver driver;
    start(driver, "camera");
    EXPECT_EQ(driver.priorityInRun, QThread::InheritPriority);
}

TEST_F(DriverTranscript, ADriverHasNoParent) {
    OVideoCaptureMacX driver;
    EXPECT_EQ(driver.parent(), nullptr);
    start(driver, "none"); // so that it has a session object to give back
}

TEST_F(DriverTranscript, EachHandOutIsStampedByAClockReadingOfItsOwn) {
    OVideoCaptureMacX driver;
    start(driver, "none");
    EXPECT_EQ(handedOut(driver).timestamp, 1000u);
    EXPECT_EQ(handedOut(driver).timestamp, 2000u);
    std::vector<unsigned char> bytes;
    driver.videoFrame(bytes);
    EXPECT_EQ(clockReadings, 2); // bytes alone carry none
}

TEST_F(DriverTranscript, TheStampIsTakenBetweenTheSizeAndTheRest) {
    OVideoCaptureMacX driver;
    start(driver, "none");
    VideoFrame frame;
    frame.formatId = 77;
    frame.frameNumber = 78;
    frame.width = 79;
    frame.height = 80;
    frame.data = {1, 2, 3};
    onClockReading = [&frame] {
        EXPECT_EQ(frame.width, 0);
        EXPECT_EQ(frame.height, 0);
        EXPECT_EQ(frame.data.size(), 3u);
        EXPECT_EQ(frame.frameNumber, 78u);
        EXPECT_EQ(frame.formatId, 77);
    };
    driver.selfVideoFrame(frame);
    EXPECT_TRUE(frame.data.empty());
    EXPECT_EQ(frame.frameNumber, 0u);
    EXPECT_EQ(frame.formatId, 4);
    EXPECT_EQ(clockReadings, 1);
}

TEST_F(DriverTranscript, ItCountsAsCapturingEvenBeforeItHasABuffer) {
    OVideoCaptureMacX driver;
    EXPECT_THROW(driver.startCapture("camera", -1, 1), std::bad_alloc);
    EXPECT_EQ(handedOut(driver).formatId, 4);
    take();
    driver.stopVideoCapture();
    EXPECT_EQ(take().size(), 7u); // all of the lines of a stop, and the frame that was none
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // these keep freed memory for a while
TEST_F(DriverTranscript, AStopFreesTheFrameBuffer) {
    OVideoCaptureMacX driver;
    start(driver, "none", 8192, 8192); // 256 MiB
    const std::size_t before = virtualPages();
    driver.stopVideoCapture();
    const std::size_t freed = (before - virtualPages()) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    EXPECT_GE(freed, std::size_t(8192) * 8192 * 4);
    EXPECT_LT(freed, std::size_t(8192) * 8192 * 5);
}
#endif
