// What the session object does with the framework, message by message.
#include "support/recorded_framework.h"

#import <ostrel/capture_session.h>

#include "support/leaks.h"

#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>

using namespace ostrel;
using recorded::Machine;
using recorded::take;
using recorded::Transcript;

namespace {

const size_t BYTES = 16 * 8 * 4;

class SessionTranscript : public testing::Test {
protected:
    SessionTranscript() { begin(Machine{{"other", "camera", "camera"}}); }
    ~SessionTranscript() override { release(); }

    void begin(const Machine& machine) {
        release();
        recorded::begin(machine);
        object = [[VideoCaptureThreadObj alloc] init];
        recorded::watch(object);
        take();
    }

    void release() {
        recorded::watchDestination(nullptr);
        [object release];
        object = nil;
        recorded::watch(nullptr);
    }

    Transcript start(const char* identifier = "camera") {
        const support::KeptByDesign framework; // neither the framework's objects nor the pool are given back
        [object setCamera:identifier withWidth:16 withHeigth:8];
        [object startObjCapture];
        return take();
    }

    void deliver(CVBufferRef frame) {
        [object captureOutput:nil didOutputVideoFrame:frame withSampleBuffer:nil fromConnection:nil];
    }

    // Asks for a frame of BYTES; the first byte of the destination is watched.
    Transcript copy() {
        std::vector<uint8_t> destination(BYTES, 1);
        recorded::watchDestination(destination.data());
        int64_t size = BYTES;
        [object videoFrame:reinterpret_cast<char*>(destination.data()) withSize:&size];
        const Transcript transcript = take();
        recorded::watchDestination(nullptr);
        copied = size;
        return transcript;
    }

    VideoCaptureThreadObj* object = nil;
    std::vector<uint8_t> pixels = std::vector<uint8_t>(BYTES, 90);
    int64_t copied = -1;
};

} // namespace

TEST_F(SessionTranscript, OfAStart) {
    object->m_capturedFrameCounter = 7;
    recorded::watch(object);
    EXPECT_EQ(start(),
              (Transcript{"pool = there",
                          "video devices",
                          "camera0 uniqueID",
                          "camera1 uniqueID",
                          "cam = camera1",
                          "camera1 open:",
                          "input1 initWithDevice: camera1",
                          "input = input1",
                          "session1 init",
                          "session = session1",
                          "session1 addInput: input1",
                          "output1 init",
                          "output = output1",
                          "output1 setPixelBufferAttributes: Width 16 Height 8 Format 1111970369, 3 in all",
                          "output1 setAutomaticallyDropsLateVideoFrames: 1",
                          "output1 setMinimumVideoFrameInterval: 0.000000",
                          "output1 setDelegate: self",
                          "session1 addOutput: output1",
                          "counter = 0",
                          "| >>> starting session",
                          "session1 startRunning",
                          "| >>> session stopped"}));
}

TEST_F(SessionTranscript, OfAStartWithoutItsCamera) {
    EXPECT_EQ(start("none"), (Transcript{"pool = there", "video devices", "camera0 uniqueID",
                                         "camera1 uniqueID", "camera2 uniqueID", "| >>> camera failed"}));
}

TEST_F(SessionTranscript, OfAStartThatDoesNotFindTheCameraOfTheOneBefore) {
    start();
    // Nil even before the platform is asked.
    EXPECT_EQ(start("none"), (Transcript{"cam = nil", "video devices", "camera0 uniqueID", "camera1 uniqueID",
                                         "camera2 uniqueID", "| >>> camera failed"}));
}

TEST_F(SessionTranscript, OfAStartWhoseCameraDoesNotOpen) {
    begin(Machine{{"camera"}, false, true, true});
    EXPECT_EQ(start(), (Transcript{"pool = there", "video devices", "camera0 uniqueID", "cam = camera0",
                                   "camera0 open:"}));
}

TEST_F(SessionTranscript, OfAStartWhoseInputIsRefused) {
    begin(Machine{{"camera"}, true, false, true});
    EXPECT_EQ(start(), (Transcript{"pool = there", "video devices", "camera0 uniqueID", "cam = camera0",
                                   "camera0 open:", "input1 initWithDevice: camera0", "input = input1",
                                   "session1 init", "session = session1", "session1 addInput: input1"}));
}

TEST_F(SessionTranscript, OfAStartWhoseOutputIsRefusedGoesOnAsIfItWereNot) {
    const Transcript accepted = start();
    begin(Machine{{"other", "camera", "camera"}, true, true, false});
    EXPECT_EQ(start(), accepted);
}

TEST_F(SessionTranscript, OfAStop) {
    [object stopObjCapture];
    EXPECT_EQ(take(), Transcript());
    start();
    [object stopObjCapture];
    EXPECT_EQ(take(), (Transcript{"session1 isRunning", "session1 stopRunning"}));
    [object stopObjCapture];
    EXPECT_EQ(take(), Transcript{"session1 isRunning"});
}

TEST_F(SessionTranscript, OfADelivery) {
    CVBufferRef first = recorded::makeFrame("first", pixels.data(), 64, 8);
    CVBufferRef second = recorded::makeFrame("second", pixels.data(), 64, 8);
    deliver(first);
    EXPECT_EQ(take(),
              (Transcript{"retain first", "lock", "counter = 1", "frame = first", "unlock", "release null"}));
    CVBufferRelease(first);
    take();
    deliver(second);
    EXPECT_EQ(take(), (Transcript{"retain second", "lock", "counter = 2", "frame = second", "unlock",
                                  "release first", "end of first"}));
    CVBufferRelease(second);
}

TEST_F(SessionTranscript, OfACopy) {
    CVBufferRef frame = recorded::makeFrame("frame1", pixels.data(), 64, 8);
    deliver(frame);
    CVBufferRelease(frame);
    take();
    EXPECT_EQ(copy(), (Transcript{"lock", "retain frame1", "lock base of frame1 with 0", "destination = 90",
                                  "unlock base of frame1 with 0", "unlock", "release frame1"}));
    EXPECT_EQ(copied, static_cast<int64_t>(BYTES));
}

TEST_F(SessionTranscript, OfACopyOfAFrameOfAnotherSizeOrWithoutPixels) {
    CVBufferRef larger = recorded::makeFrame("frame1", pixels.data(), 80, 8);
    CVBufferRef empty = recorded::makeFrame("frame1", nullptr, 64, 8);
    for (CVBufferRef frame : {larger, empty}) {
        deliver(frame);
        take();
        EXPECT_EQ(copy(), (Transcript{"lock", "retain frame1", "lock base of frame1 with 0",
                                      frame == larger ? "| 640" : "| 512", "unlock base of frame1 with 0",
                                      "unlock", "release frame1"}));
        EXPECT_EQ(copied, 0);
        CVBufferRelease(frame);
    }
}

TEST_F(SessionTranscript, OfACopyBeforeTheFirstFrameIsEmptyNotEvenTheLockIsTaken) {
    EXPECT_EQ(copy(), Transcript());
    EXPECT_EQ(copied, 0);
}

TEST_F(SessionTranscript, OfTheEnd) {
    start();
    CVBufferRef frame = recorded::makeFrame("frame1", pixels.data(), 64, 8);
    deliver(frame);
    CVBufferRelease(frame);
    take();
    [object release];
    recorded::watch(nullptr);
    object = nil;
    // The session, its input and output, the camera and the pool stay.
    EXPECT_EQ(take(),
              (Transcript{"| stopping session", "session1 stopRunning", "| closing camera", "camera1 close",
                          "| removing input-output", "release frame1", "end of frame1"}));
    EXPECT_EQ(recorded::watchedPoolEnds(), 0);
}

TEST_F(SessionTranscript, OfTheEndWithoutAStart) {
    [object release];
    recorded::watch(nullptr);
    object = nil;
    EXPECT_EQ(take(), (Transcript{"| stopping session", "| closing camera", "| removing input-output",
                                  "release null"}));
}

TEST_F(SessionTranscript, EveryLineIsWrittenInOnePieceAndFlushedOnce) {
    start();
    EXPECT_EQ(recorded::flushes(), 2); // the two lines of a start
    release();
    EXPECT_EQ(recorded::flushes(), 5); // and the three of the end
}

TEST_F(SessionTranscript, ANullIdentifierThrowsAsAMissingTextDoes) {
    EXPECT_THROW([object setCamera:nullptr withWidth:16 withHeigth:8], std::logic_error);
    EXPECT_EQ(take(), Transcript());
}

TEST_F(SessionTranscript, ACameraWithoutAnIdentifierThrowsInTheWalk) {
    begin(Machine{{nullptr, "camera"}});
    EXPECT_THROW(start(), std::logic_error);
}
