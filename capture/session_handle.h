// The capture session as plain C++: Qt's object headers and Objective-C do not go together in one file with
// every compiler.
#ifndef OSTREL_CAPTURE_SESSION_HANDLE_H
#define OSTREL_CAPTURE_SESSION_HANDLE_H

#include <stdint.h>

namespace ostrel {

// A VideoCaptureThreadObj. Each function sends the message of the same meaning; the rules of that class hold.
struct SessionObject;

namespace session {

SessionObject* create(); // owned by the caller: one release
void release(SessionObject* object);
void setCamera(SessionObject* object, const char* cameraId, int64_t width, int64_t height);
void start(SessionObject* object);
void stop(SessionObject* object);
// Instead of release(), for an object that was never started: it is not given back, but no frame will come.
void abandon(SessionObject* object);
// A start was refused before it began; who waits is told why (UTF-8).
void refuse(SessionObject* object, const char* why);
// For a start() that another thread is in the middle of: no frame reaches the object once this has returned,
// and the start need not be waited for. Where the framework is the system's own it cannot be reached, and
// this does nothing.
void shut(SessionObject* object);
// Copies the newest frame if it has exactly capacity bytes. Returns the bytes copied, else 0.
int64_t copyFrame(SessionObject* object, unsigned char* buffer, int64_t capacity);
uint32_t frameCounter(SessionObject* object);

} // namespace session
} // namespace ostrel

#endif
