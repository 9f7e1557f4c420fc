#include "capture/session_handle.h"

#import <ostrel/capture_session.h>

namespace ostrel {
namespace session {

namespace {

VideoCaptureThreadObj* objectOf(SessionObject* handle) {
    return reinterpret_cast<VideoCaptureThreadObj*>(handle);
}

} // namespace

SessionObject* create() {
    return reinterpret_cast<SessionObject*>([[VideoCaptureThreadObj alloc] init]);
}

void release(SessionObject* object) {
    [objectOf(object) release];
}

void setCamera(SessionObject* object, const char* cameraId, int64_t width, int64_t height) {
    [objectOf(object) setCamera:cameraId withWidth:width withHeigth:height];
}

void start(SessionObject* object) {
    [objectOf(object) startObjCapture];
}

void stop(SessionObject* object) {
    [objectOf(object) stopObjCapture];
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
