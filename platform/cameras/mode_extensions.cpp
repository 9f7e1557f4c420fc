// ostrel/modes.h, over the registry.
#include <ostrel/modes.h>
#include <ostrel/native_frame.h>

#include "base/qt_text.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/mode_access.h"
#include "platform/cameras/registry.h"
#include "platform/cameras/wishes.h"

#include <algorithm>
#include <memory>

namespace ostrel {

namespace {

using cameras::Camera;
using cameras::Error;
using cameras::ModeWish;
using cameras::NativeMode;
using cameras::NativeModes;

// Words in *why, where there is one.
void tell(QString* why, const Error& error) {
    if (why)
        *why = error && error.text.empty() ? textOf(cameras::reason(error.code)) : textOf(error.text);
}

ModeWish wishOf(const OVideoMode& mode) {
    const NativeMode& native = OVideoModePrivate::of(mode);
    ModeWish wish;
    wish.format = native.format;
    wish.size = native.sizes.most;
    wish.interval = native.intervals.shortest;
    return wish;
}

// No error when the camera has such a mode.
Error checkOffer(const std::string& identifier, const ModeWish& wish) {
    const std::shared_ptr<Camera> camera = cameras::attachedCamera(identifier);
    if (!camera)
        return cameras::notAttached(identifier);
    NativeModes modes;
    const Error unknown = camera->modes(modes);
    const auto hasPicture = [](const NativeMode& mode) { return mode.hasPicture; };
    const bool alsoWithout = !wish.format.empty() || std::none_of(modes.begin(), modes.end(), hasPicture);
    const auto fits = [&](const NativeMode& mode) {
        return (mode.hasPicture || alsoWithout) && offers(mode, wish);
    };
    if (std::any_of(modes.begin(), modes.end(), fits))
        return Error();
    return unknown ? unknown : cameras::modeNotOffered(camera->displayName(), wish);
}

} // namespace

OVideoMode::OVideoMode() : d(new OVideoModePrivate) {}

OVideoMode::OVideoMode(const OVideoMode& other) : d(new OVideoModePrivate(*other.d)) {}

OVideoMode& OVideoMode::operator=(const OVideoMode& other) {
    if (this != &other)
        *d = *other.d;
    return *this;
}

OVideoMode::~OVideoMode() {
    delete d;
}

OVideoMode OVideoModePrivate::make(const NativeMode& mode) {
    OVideoMode result;
    result.d->mode = mode;
    return result;
}

QString OVideoMode::format() const {
    return textOf(d->mode.format);
}

bool OVideoMode::hasPicture() const {
    return d->mode.hasPicture;
}

int OVideoMode::width() const {
    return d->mode.sizes.most.width;
}

int OVideoMode::height() const {
    return d->mode.sizes.most.height;
}

int OVideoMode::leastWidth() const {
    return d->mode.sizes.least.width;
}

int OVideoMode::leastHeight() const {
    return d->mode.sizes.least.height;
}

int OVideoMode::stepWidth() const {
    return leastWidth() == width() ? 0 : d->mode.sizes.step.width;
}

int OVideoMode::stepHeight() const {
    return leastHeight() == height() ? 0 : d->mode.sizes.step.height;
}

uint32_t OVideoMode::intervalNumerator() const {
    return d->mode.intervals.shortest.numerator;
}

uint32_t OVideoMode::intervalDenominator() const {
    return d->mode.intervals.shortest.denominator;
}

uint32_t OVideoMode::longestNumerator() const {
    return d->mode.intervals.longest.numerator;
}

uint32_t OVideoMode::longestDenominator() const {
    return d->mode.intervals.longest.denominator;
}

double OVideoMode::framesPerSecond() const {
    return d->mode.intervals.shortest.rate();
}

void OVideoMode::setFormat(const QString& format) {
    d->mode.format = utf8Of(format);
}

void OVideoMode::setSize(int width, int height) {
    d->mode.sizes.least = d->mode.sizes.most = cameras::Size(std::max(width, 0), std::max(height, 0));
}

void OVideoMode::setInterval(uint32_t numerator, uint32_t denominator) {
    cameras::Interval interval;
    interval.numerator = numerator;
    interval.denominator = denominator;
    d->mode.intervals = {interval, interval};
}

QList<OVideoMode> videoModes(const QString& uniqueID, QString* why) {
    const std::string identifier = utf8Of(uniqueID);
    const std::shared_ptr<Camera> camera = cameras::attachedCamera(identifier);
    NativeModes modes;
    tell(why, camera ? camera->modes(modes) : cameras::notAttached(identifier));
    QList<OVideoMode> result;
    for (const NativeMode& mode : modes)
        result.append(OVideoModePrivate::make(mode));
    return result;
}

bool requestVideoMode(const QString& uniqueID, const OVideoMode& mode, QString* why) {
    const std::string identifier = utf8Of(uniqueID);
    const ModeWish wish = wishOf(mode);
    if (!wish.any()) {
        const Error refused = checkOffer(identifier, wish);
        if (refused) {
            tell(why, refused);
            return false;
        }
    }
    cameras::setModeWish(identifier, wish);
    return true;
}

OVideoMode requestedVideoMode(const QString& uniqueID) {
    const ModeWish wish = cameras::modeWish(utf8Of(uniqueID));
    NativeMode mode;
    mode.format = wish.format;
    mode.sizes.least = mode.sizes.most = wish.size;
    mode.intervals = {wish.interval, wish.interval};
    return OVideoModePrivate::make(mode);
}

void listNativeOnlyCameras(bool list) {
    cameras::listNativeOnly(list);
}

} // namespace ostrel
