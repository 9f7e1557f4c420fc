// The classes of ostrel/virtual_camera.h: thin, as what they stand for may outlive them.
#include <ostrel/virtual_camera.h>

#include "base/qt_text.h"
#include "base/shared_object.h"
#include "platform/cameras/virtual/file_backend.h"
#include "platform/cameras/virtual/pattern_backend.h"
#include "platform/cameras/virtual/pattern_code.h"
#include "platform/cameras/virtual/plug.h"
#include "platform/cameras/virtual/push_backend.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>

namespace ostrel {

namespace {

const int LEAST_SIDE = 16;
const int GREATEST_SIDE = 8192;
const double LEAST_RATE = 0.001;
const double GREATEST_RATE = 1000;

int clampSide(int pixels) {
    return std::max(LEAST_SIDE, std::min(pixels, GREATEST_SIDE)) / 2 * 2;
}

double clampRate(double framesPerSecond) {
    if (std::isnan(framesPerSecond))
        return LEAST_RATE;
    return std::max(LEAST_RATE, std::min(framesPerSecond, GREATEST_RATE));
}

class PatternPlug : public VirtualCameraBackend {
public:
    PatternPlug(const QString& uniqueID, const QString& name, int width, int height, double framesPerSecond)
        : VirtualCameraBackend(utf8Of(uniqueID), utf8Of(name)), width_(clampSide(width)),
          height_(clampSide(height)), framesPerSecond_(clampRate(framesPerSecond)) {}

protected:
    std::shared_ptr<cameras::Backend> makeBackend() override {
        return std::make_shared<cameras::PatternBackend>(displayName(), cameras::Size(width_, height_),
                                                         framesPerSecond_);
    }

private:
    const int width_;
    const int height_;
    const double framesPerSecond_;
};

// Looks at the file once, when it is constructed: a camera that is opened looks again.
class FilePlug : public VirtualCameraBackend {
public:
    FilePlug(const QString& uniqueID, const QString& name, const QString& path, bool loop)
        : VirtualCameraBackend(utf8Of(uniqueID), utf8Of(name)), path_(bytesOf(QFile::encodeName(path))),
          loop_(loop) {
        std::shared_ptr<cameras::Y4mClip> clip; // no descriptor stays open for a camera that nobody uses
        error_ = cameras::Y4mClip::open(path_, clip);
        if (clip)
            format_ = clip->format();
    }

    const std::string& error() const { return error_; }
    const cameras::Y4mFormat& format() const { return format_; }

protected:
    std::shared_ptr<cameras::Backend> makeBackend() override {
        return std::make_shared<cameras::FileBackend>(displayName(), path_, loop_, error_);
    }

private:
    const std::string path_;
    const bool loop_;
    std::string error_;
    cameras::Y4mFormat format_;
};

template <typename Plug, typename... Arguments>
QSharedPointer<VirtualCameraBackend> makePlug(const Arguments&... arguments) {
    return sharedObject<VirtualCameraBackend>(std::make_unique<Plug>(arguments...));
}

class PushPlug : public VirtualCameraBackend {
public:
    PushPlug(const QString& uniqueID, const QString& name)
        : VirtualCameraBackend(utf8Of(uniqueID), utf8Of(name)) {}

    // Of the camera that was plugged in last; null before the first.
    std::shared_ptr<cameras::PushBackend> newest() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return newest_;
    }

protected:
    std::shared_ptr<cameras::Backend> makeBackend() override {
        const auto fresh = std::make_shared<cameras::PushBackend>();
        std::lock_guard<std::mutex> lock(mutex_);
        newest_ = fresh;
        return fresh;
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<cameras::PushBackend> newest_;
};

} // namespace

OVideoVirtualCamera::OVideoVirtualCamera(const QSharedPointer<VirtualCameraBackend>& backend) : d(backend) {}

OVideoVirtualCamera::~OVideoVirtualCamera() {
    d->detach();
}

QString OVideoVirtualCamera::uniqueID() {
    return textOf(d->identifier());
}

QString OVideoVirtualCamera::name() {
    return textOf(d->displayName());
}

bool OVideoVirtualCamera::attach() {
    return d->attach();
}

void OVideoVirtualCamera::detach() {
    d->detach();
}

bool OVideoVirtualCamera::isAttached() {
    return d->isAttached();
}

void OVideoVirtualCamera::setFault(VIRTUAL_CAMERA_FAULT fault) {
    d->fault().store(fault);
}

uint32_t OVideoVirtualCamera::framesDelivered() {
    return d->totals().delivered.load();
}

uint32_t OVideoVirtualCamera::framesTaken() {
    return d->totals().taken.load();
}

OVideoTestPatternCamera::OVideoTestPatternCamera(const QString& uniqueID, const QString& name, int width,
                                                 int height, double framesPerSecond)
    : OVideoVirtualCamera(makePlug<PatternPlug>(uniqueID, name, width, height, framesPerSecond)) {}

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
    : OVideoVirtualCamera(makePlug<FilePlug>(uniqueID, name, path, loop)) {}

QString OVideoFileCamera::error() {
    return textOf(static_cast<FilePlug&>(*backend()).error());
}

int OVideoFileCamera::width() {
    return static_cast<FilePlug&>(*backend()).format().layout.width;
}

int OVideoFileCamera::height() {
    return static_cast<FilePlug&>(*backend()).format().layout.height;
}

double OVideoFileCamera::framesPerSecond() {
    return static_cast<FilePlug&>(*backend()).format().framesPerSecond;
}

OVideoPushCamera::OVideoPushCamera(const QString& uniqueID, const QString& name)
    : OVideoVirtualCamera(makePlug<PushPlug>(uniqueID, name)) {}

bool OVideoPushCamera::push(const uint8_t* bgra, int width, int height, int stride) {
    const std::shared_ptr<cameras::PushBackend> camera = static_cast<PushPlug&>(*backend()).newest();
    return camera && camera->push(bgra, width, height, stride);
}

bool OVideoPushCamera::pushI420(const uint8_t* i420, int width, int height) {
    const std::shared_ptr<cameras::PushBackend> camera = static_cast<PushPlug&>(*backend()).newest();
    return camera && camera->pushI420(i420, width, height);
}

} // namespace ostrel
