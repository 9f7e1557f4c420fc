// Starting and stopping captures, and polling.
#include "bindings/c/capture.h"
#include "bindings/c/pixels.h"

#include "base/qt_text.h"

#include <ostrel/capture.h>

#include <cstring>

namespace ostrel {
namespace c {

namespace {

std::shared_ptr<Capture> start(const char* id, int32_t width, int32_t height) {
    if (width < 1 || height < 1 || width > LARGEST_SIDE || height > LARGEST_SIDE)
        throw Failure(OSTREL_BAD_ARGUMENT, "Pictures of " + std::to_string(width) + " x " +
                                               std::to_string(height) + " pixels cannot be captured");
    const QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
    capture->startCapture(id, width, height);
    if (capture->cameraUniqueId().isEmpty())
        throw Failure(OSTREL_NO_CAMERA, std::string("No camera has the identifier ") + id);
    return std::make_shared<Capture>(capture);
}

} // namespace

void Capture::stop() {
    const std::lock_guard<std::mutex> lock(calls_);
    capture_->stopVideoCapture();
}

std::shared_ptr<Place> Capture::another() {
    const std::lock_guard<std::mutex> lock(calls_);
    return std::make_shared<Place>(capture_);
}

bool Capture::poll(uint8_t* pixels, size_t bytes, uint32_t* number) {
    const size_t needed = static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
    if (bytes < needed)
        throw Failure(OSTREL_TOO_SMALL, "The picture has " + std::to_string(needed) + " bytes");
    const std::lock_guard<std::mutex> lock(calls_);
    polled_.frameNumber = 0;
    capture_->selfVideoFrame(polled_);
    if (polled_.frameNumber == 0)
        return false;
    std::memcpy(pixels, polled_.data.data(), needed);
    if (number)
        *number = polled_.frameNumber;
    return true;
}

} // namespace c
} // namespace ostrel

using namespace ostrel::c;

extern "C" int ostrel_start(const char* id, int32_t width, int32_t height, ostrel_handle* capture, char* why,
                            size_t why_bytes) {
    return call(why, why_bytes, [&] {
        ostrel_handle& to = required(capture, "The place for the handle");
        to = addHandle(start(&required(id, "The identifier"), width, height));
        return OSTREL_OK;
    });
}

extern "C" int ostrel_stop(ostrel_handle capture, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        objectOf<Capture>(capture, "a capture")->stop();
        return OSTREL_OK;
    });
}

extern "C" int ostrel_reader(ostrel_handle capture, ostrel_handle* reader, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        ostrel_handle& to = required(reader, "The place for the handle");
        to = addHandle(objectOf<Capture>(capture, "a capture")->another());
        return OSTREL_OK;
    });
}

extern "C" int ostrel_poll(ostrel_handle capture, uint8_t* pixels, size_t bytes, uint32_t* number, char* why,
                           size_t why_bytes) {
    return call(why, why_bytes, [&] {
        uint8_t* const to = &required(pixels, "The memory for the picture");
        return objectOf<Capture>(capture, "a capture")->poll(to, bytes, number) ? OSTREL_OK : OSTREL_NOTHING;
    });
}
