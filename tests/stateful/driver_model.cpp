#include "stateful/driver_model.h"

#include <ostrel/virtual_camera.h>

#include <new>

namespace stateful {

namespace {
// Marks a record that nobody filled.
constexpr int32_t UNTOUCHED = -77;
constexpr uint32_t BYTES_PER_PIXEL = 4;
} // namespace

void expect(bool good, const std::string& what) {
    if (!good)
        throw Disagreement(what);
}

ModelledDriver::ModelledDriver() : driver_(ostrel::OVideoCaptureUnix::ptr()) {
    check();
}

ModelledDriver::~ModelledDriver() {
    course_->over = true;
}

uint32_t ModelledDriver::frameBytes() const {
    return static_cast<uint32_t>(width_) * static_cast<uint32_t>(height_) * BYTES_PER_PIXEL;
}

void ModelledDriver::start(const char* cameraId, Size size, bool known) {
    const uint32_t product =
        static_cast<uint32_t>(size.width) * static_cast<uint32_t>(size.height) * BYTES_PER_PIXEL;
    const bool refusedMemory = static_cast<int32_t>(product) < 0;
    capturing_ = true;
    try {
        driver_->startCapture(cameraId, size.width, size.height);
        expect(!refusedMemory, "a negative buffer size was accepted");
    } catch (const std::bad_alloc&) {
        expect(refusedMemory, "no memory for " + std::to_string(product) + " bytes");
        check();
        return;
    }
    if (known) {
        width_ = size.width;
        height_ = size.height;
        cameraId_ = QString::fromLatin1(cameraId);
        // Also one that differs in letter case alone: the exact one may be attached before it is opened.
        course_->mayDeliver = course_->mayDeliver || !stoppedOnce_;
        course_->sizes.push_back(size);
        ++course_->starts;
    }
    check();
}

void ModelledDriver::stop() {
    driver_->stopVideoCapture();
    stoppedOnce_ = stoppedOnce_ || capturing_;
    course_->over = stoppedOnce_;
    capturing_ = false;
    check();
}

void ModelledDriver::checkFrame(const uint8_t* bytes, size_t size) const {
    expect(size == frameBytes(), "a frame of " + std::to_string(size) + " bytes");
    if (size == 0)
        return;
    expect(course_->mayDeliver, "a frame without a camera");
    expect(!stoppedOnce_, "a frame after the stop");
    if (width_ < 160 || height_ < 120)
        return; // the pattern's cells cannot be read from so small a picture
    uint32_t counter = 0, clock = 0;
    expect(ostrel::OVideoTestPatternCamera::decode(bytes, width_, height_, width_ * 4, counter, clock),
           "a torn frame");
}

void ModelledDriver::readRecord() {
    record_.formatId = UNTOUCHED;
    record_.frameNumber = 1234567;
    const size_t before = record_.data.size();
    driver_->selfVideoFrame(record_);
    if (record_.formatId == UNTOUCHED) {
        expect(record_.frameNumber == 1234567 && record_.data.size() == before, "a record half filled");
        expect(!capturing_ || frameBytes() != 0, "an empty frame not handed out");
        return;
    }
    expect(capturing_, "a record filled while nothing captures");
    expect(record_.formatId == 4, "format " + std::to_string(record_.formatId));
    expect(record_.width == width_ && record_.height == height_, "a record of another size");
    checkFrame(record_.data.data(), record_.data.size());
    // A second start sets the counter back at some later moment.
    expect(course_->starts > 1 || record_.frameNumber >= lastNumber_, "the frame number went back");
    lastNumber_ = record_.frameNumber;
}

void ModelledDriver::readBytes() {
    bytes_.assign(3, 9);
    // The driver's own member is not virtual.
    auto* const driver = qobject_cast<ostrel::OVideoCaptureMacX*>(driver_.data());
    expect(driver != nullptr, "the factory's product is no driver");
    driver->videoFrame(bytes_);
    if (bytes_.empty())
        return;
    expect(capturing_, "bytes while nothing captures");
    checkFrame(bytes_.data(), bytes_.size());
}

void ModelledDriver::callTheRest() {
    expect(driver_->frame().isNull(), "frame() is not null");
    static_cast<ostrel::OVideoCaptureMacX*>(driver_.data())->startThreadVideoCapture();
}

void ModelledDriver::check() {
    expect(driver_->width() == width_, "width " + std::to_string(driver_->width()));
    expect(driver_->height() == height_, "height " + std::to_string(driver_->height()));
    expect(driver_->cameraUniqueId() == cameraId_,
           "identifier \"" + driver_->cameraUniqueId().toStdString() + "\"");
}

} // namespace stateful
