// The classes of ostrel/virtual_camera.h: thin, as what they stand for may outlive them.
#include <ostrel/virtual_camera.h>

#include "base/shared_object.h"
#include "platform/cameras/virtual/backend.h"
#include "platform/cameras/virtual/file_camera.h"
#include "platform/cameras/virtual/pattern_code.h"
#include "platform/cameras/virtual/push_camera.h"
#include "platform/cameras/virtual/test_pattern_camera.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cmath>
#include <memory>

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

// Looks at the file once, when it is constructed: a camera that is opened looks again.
class FileBackend : public VirtualCameraBackend {
public:
    FileBackend(const QString& uniqueID, const QString& name, const QString& path, bool loop)
        : VirtualCameraBackend(utf8(uniqueID), utf8(name)), path_(QFile::encodeName(path).toStdString()),
          loop_(loop) {
        std::shared_ptr<cameras::Y4mClip> clip; // no descriptor stays open for a camera that nobody uses
        error_ = cameras::Y4mClip::open(path_, clip);
        if (clip)
            format_ = clip->format();
    }

    const std::string& error() const { return error_; }
    const cameras::Y4mFormat& format() const { return format_; }

protected:
    std::shared_ptr<cameras::VirtualCamera>
    makeCamera(const std::shared_ptr<cameras::VirtualControls>& controls) override {
        return std::make_shared<cameras::FileCamera>(controls, path_, loop_, error_);
    }

private:
    const std::string path_;
    const bool loop_;
    std::string error_;
    cameras::Y4mFormat format_;
};

template <typename Backend, typename... Arguments>
QSharedPointer<VirtualCameraBackend> makeBackend(const Arguments&... arguments) {
    return sharedObject<VirtualCameraBackend>(std::make_unique<Backend>(arguments...));
}

class PushBackend : public VirtualCameraBackend {
public:
    PushBackend(const QString& uniqueID, const QString& name)
        : VirtualCameraBackend(utf8(uniqueID), utf8(name)) {}

    std::shared_ptr<cameras::PushCamera> pushCamera() const {
        return std::static_pointer_cast<cameras::PushCamera>(camera());
    }

protected:
    std::shared_ptr<cameras::VirtualCamera>
    makeCamera(const std::shared_ptr<cameras::VirtualControls>& controls) override {
        return std::make_shared<cameras::PushCamera>(controls);
    }
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
    : OVideoVirtualCamera(makeBackend<TestPatternBackend>(uniqueID, name, width, height, framesPerSecond)) {}

bool OVideoTestPatternCamera::decode(const uint8_t* bgra, int width, int height, int stride,
                                     uint32_t& counter, uint32_t& clock) {
    cameras::pattern::Stamp stamp;
    if (!cameras::pattern::readCode(bgra, width, height, stride, stamp))
        return false;
    counter = stamp.counter;
    clock = stamp.clock;
    return true;
}

OVideoFileCamera::OVideoFileCamera(const QString& uniqueID, const QString& name, const QString& path,
                                   bool loop)
    : OVideoVirtualCamera(makeBackend<FileBackend>(uniqueID, name, path, loop)) {}

QString OVideoFileCamera::error() {
    return QString::fromStdString(static_cast<FileBackend&>(*backend()).error());
}

int OVideoFileCamera::width() {
    return static_cast<FileBackend&>(*backend()).format().layout.width;
}

int OVideoFileCamera::height() {
    return static_cast<FileBackend&>(*backend()).format().layout.height;
}

double OVideoFileCamera::framesPerSecond() {
    return static_cast<FileBackend&>(*backend()).format().framesPerSecond;
}

OVideoPushCamera::OVideoPushCamera(const QString& uniqueID, const QString& name)
    : OVideoVirtualCamera(makeBackend<PushBackend>(uniqueID, name)) {}

bool OVideoPushCamera::push(const uint8_t* bgra, int width, int height, int stride) {
    const std::shared_ptr<cameras::PushCamera> camera = static_cast<PushBackend&>(*backend()).pushCamera();
    return camera && camera->push(bgra, width, height, stride);
}

bool OVideoPushCamera::pushI420(const uint8_t* i420, int width, int height) {
    const std::shared_ptr<cameras::PushCamera> camera = static_cast<PushBackend&>(*backend()).pushCamera();
    return camera && camera->pushI420(i420, width, height);
}

} // namespace ostrel
