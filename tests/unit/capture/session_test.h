// The fixture of tests that use the session object itself.
#ifndef OSTREL_TESTS_UNIT_CAPTURE_SESSION_TEST_H
#define OSTREL_TESTS_UNIT_CAPTURE_SESSION_TEST_H

#import <ostrel/capture_session.h>

#include "support/camera_test.h"
#include "support/leaks.h"

namespace ostrel::support {

// Each test has one session object, on the test's own thread and in a pool of the test's.
class SessionTest : public CameraTest {
protected:
    SessionTest() : object([[VideoCaptureThreadObj alloc] init]) {}
    ~SessionTest() override { release(); }

    void release() {
        [object release];
        object = nil;
    }

    void start(const char* identifier, int64_t width, int64_t height) {
        // The object gives back neither its session, input and output nor the pool.
        const KeptByDesign framework;
        [object setCamera:identifier withWidth:width withHeigth:height];
        [object startObjCapture];
    }

    // Asks for a frame of so many bytes. What comes back shows the number of the frame, and -1 when nothing
    // was written.
    int64_t copy(int64_t capacity) {
        buffer.assign(static_cast<std::size_t>(capacity) + 4, 0xEE);
        int64_t size = capacity;
        [object videoFrame:reinterpret_cast<char*>(buffer.data()) withSize:&size];
        return size;
    }
    int numberCopied(int64_t bytes) const { return numberIn(buffer.data(), static_cast<std::size_t>(bytes)); }
    bool bufferUntouched() const { return buffer == std::vector<uint8_t>(buffer.size(), 0xEE); }

    uint32_t counter() const { return __atomic_load_n(&object->m_capturedFrameCounter, __ATOMIC_RELAXED); }

    static Lines tearDown() { return {"stopping session", "closing camera", "removing input-output"}; }

    VideoCaptureThreadObj* object;
    std::vector<uint8_t> buffer;
};

} // namespace ostrel::support

#endif
