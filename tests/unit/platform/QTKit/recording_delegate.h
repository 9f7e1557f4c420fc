// A session's client in the tests of the framework.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_QTKIT_RECORDING_DELEGATE_H
#define OSTREL_TESTS_UNIT_PLATFORM_QTKIT_RECORDING_DELEGATE_H

#import <QTKit/QTKit.h>

#include "support/camera_test.h"

#include <atomic>
#include <functional>

namespace ostrel::support {

class FrameListener {
public:
    virtual ~FrameListener() = default;
    virtual void frameArrived(CVImageBufferRef frame) = 0;
};

// What became of the frames of one session: counts them, keeps the newest, and does with each what the test
// says.
struct Recording : FrameListener {
    std::atomic<int> calls{0};
    std::atomic<int> inProgress{0};
    std::function<void(CVImageBufferRef)> onFrame; // set before the frames come
    CVImageBufferRef newest = nullptr;             // retained; belongs to the delivery thread

    ~Recording() override { CVBufferRelease(newest); }
    void frameArrived(CVImageBufferRef frame) override;
};

} // namespace ostrel::support

@interface RecordingDelegate : NSObject {
@public
    ostrel::support::FrameListener* listener;
}
@end

namespace ostrel::support {

// Tests of the framework's classes, with a pool of their own.
class FrameworkTest : public CameraTest {
protected:
    FrameworkTest() : pool_([[NSAutoreleasePool alloc] init]) {}
    ~FrameworkTest() override { [pool_ release]; }

    // The device with this identifier, nil when it is not listed.
    static QTCaptureDevice* device(const std::string& identifier);
    static std::string textOf(NSError* error) { return [[error localizedDescription] UTF8String]; }

private:
    NSAutoreleasePool* pool_;
};

// One camera, open from the start.
class OpenDeviceTest : public FrameworkTest {
protected:
    OpenDeviceTest() : camera(attach("camera")), opened(device("camera")) { EXPECT_TRUE([opened open:NULL]); }
    ~OpenDeviceTest() override { [opened close]; }

    const std::shared_ptr<ScriptedCamera> camera;
    QTCaptureDevice* const opened;
};

// One open camera with a session, an output of the given size and a delegate; closed at the end.
class Rig {
public:
    Rig(QTCaptureDevice* openedDevice, unsigned width, unsigned height);
    ~Rig();
    Rig(const Rig&) = delete;
    Rig& operator=(const Rig&) = delete;

    void run() { [session startRunning]; }
    // The number that the newest frame's pixels show, -1 when they cannot be had.
    int newestNumber() const;

    QTCaptureDevice* const device;
    QTCaptureSession* const session;
    QTCaptureDeviceInput* const input;
    QTCaptureDecompressedVideoOutput* const output;
    RecordingDelegate* const delegate;
    Recording seen;
    bool inputAdded = false, outputAdded = false;
    NSError* error = nil;
};

} // namespace ostrel::support

#endif
