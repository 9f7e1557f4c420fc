// The classes of ostrel/virtual_camera.h: thin, as what they stand for may outlive them.
#include <ostrel/virtual_camera.h>

#include "platform/cameras/virtual/backend.h"
#include "platform/cameras/virtual/pattern_code.h"
#include "platform/cameras/virtual/test_pattern_camera.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

const int LEAST_SIDE = 16;
const int GREATEST_SIDE = 8192;
const double LEAST_RATE = 0.001;
const double GREATEST_RATE = 1000;

std::string utf8(const QString& text) {
    return text.toUtf8().toStdString();
}

int clampSide(int pixels) {
    return std::max(LEAST_SIDE, std::min(pixels, GREATEST_SIDE)) / 2 * 2;
}

double clampRate(double framesPerSecond) {
    if (std::isnan(framesPerSecond))
        return LEAST_RATE;
    return std::max(LEAST_RATE, std::min(framesPerSecond, GREATEST_RATE));
}

class TestPatternBackend : public VirtualCameraBackend {
public:
    TestPatternBackend(const QString& uniqueID, const QString& name, int width, int height,
                       double framesPerSecond)
        : VirtualCameraBackend(utf8(uniqueID), utf8(name)), width_(clampSide(width)),
          height_(clampSide(height)), framesPerSecond_(clampRate(framesPerSecond)) {}

protected:
    std::shared_ptr<cameras::VirtualCamera>
    makeCamera(const std::shared_ptr<cameras::VirtualControls>& controls) override {
        return std::make_shared<cameras::TestPatternCamera>(controls, width_, height_, framesPerSecond_);
    }

private:
    const int width_;
    const int height_;
    const double framesPerSecond_;
};

} // namespace

OVideoVirtualCamera::OVideoVirtualCamera(const QSharedPointer<VirtualCameraBackend>& backend) : d(backend) {}

OVideoVirtualCamera::~OVideoVirtualCamera() {
    d->detach();
}

QString OVideoVirtualCamera::uniqueID() {
    return QString::fromStdString(d->controls().identifier);
}

QString OVideoVirtualCamera::name() {
    return QString::fromStdString(d->controls().displayName);
}

bool OVideoVirtualCamera::attach() {
    return d->attach();
}

void OVideoVirtualCamera::detach() {
    d->detach();
}

bool OVideoVirtualCamera::isAttached() {
    return d->camera() != nullptr;
}

void OVideoVirtualCamera::setFault(VIRTUAL_CAMERA_FAULT fault) {
    d->controls().fault.store(fault);
}

uint32_t OVideoVirtualCamera::framesDelivered() {
    return d->controls().delivered.load();
}

uint32_t OVideoVirtualCamera::framesTaken() {
    return d->controls().taken.load();
}

OVideoTestPatternCamera::OVideoTestPatternCamera(const QString& uniqueID, const QString& name, int width,
                                                 int height, double framesPerSecond)
    : OVideoVirtualCamera(QSharedPointer<VirtualCameraBackend>(
          new TestPatternBackend(uniqueID, name, width, height, framesPerSecond))) {}

bool OVideoTestPatternCamera::decode(const uint8_t* bgra, int width, int height, int stride,
                                     uint32_t& counter, uint32_t& clock) {
    cameras::pattern::Stamp stamp;
    if (!cameras::pattern::readCode(bgra, width, height, stride, stamp))
        return false;
    counter = stamp.counter;
    clock = stamp.clock;
    return true;
}

} // namespace ostrel
