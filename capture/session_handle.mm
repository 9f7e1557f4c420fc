#include "capture/session_handle.h"

#import <ostrel/capture_session.h>

#if !defined(OSTREL_SYSTEM_QTKIT)
#include "platform/QTKit/frame_slot.h"
#include "platform/QTKit/owner_scope.h"
#endif

namespace ostrel {
namespace session {

namespace {

VideoCaptureThreadObj* objectOf(SessionObject* handle) {
    return reinterpret_cast<VideoCaptureThreadObj*>(handle);
}

#if defined(OSTREL_SYSTEM_QTKIT)
struct OwnerScope {
    explicit OwnerScope(const void*) {}
};
struct FrameSlot {
    static void expect(const void*) {}
    static void startIsOver(const void*) {}
    static void refuse(const void*, const char*) {}
    static void close(const void*) {}
    static void shut(const void*) {}
    static void forget(const void*) {}
};
#endif

// However the start ends.
class Starting {
public:
    explicit Starting(SessionObject* object) : m_object(object) {}
    ~Starting() { FrameSlot::startIsOver(m_object); }

private:
    Starting(const Starting&);
    Starting& operator=(const Starting&);
    SessionObject* const m_object;
};

} // namespace

SessionObject* create() {
    return reinterpret_cast<SessionObject*>([[VideoCaptureThreadObj alloc] init]);
}

void release(SessionObject* object) {
    const OwnerScope owner(object); // for the closing of the camera
    FrameSlot::forget(object);
    [objectOf(object) release];
}

void setCamera(SessionObject* object, const char* cameraId, int64_t width, int64_t height) {
    FrameSlot::expect(object);
    [objectOf(object) setCamera:cameraId withWidth:width withHeigth:height];
}

void start(SessionObject* object) {
    const OwnerScope owner(object); // for the opening of the camera
    const Starting starting(object);
    [objectOf(object) startObjCapture];
}

void stop(SessionObject* object) {
    FrameSlot::close(object); // who waits need not wait for the camera
    [objectOf(object) stopObjCapture];
}

void abandon(SessionObject* object) {
    FrameSlot::forget(object);
}

void refuse(SessionObject* object, const char* why) {
    FrameSlot::expect(object);
    FrameSlot::refuse(object, why);
}

void shut(SessionObject* object) {
    FrameSlot::shut(object);
}

int64_t copyFrame(SessionObject* object, unsigned char* buffer, int64_t capacity) {
    int64_t size = capacity;
    [objectOf(object) videoFrame:reinterpret_cast<char*>(buffer) withSize:&size];
    return size;
}

uint32_t frameCounter(SessionObject* object) {
    return __atomic_load_n(&objectOf(object)->m_capturedFrameCounter, __ATOMIC_RELAXED);
}

} // namespace session
} // namespace ostrel
