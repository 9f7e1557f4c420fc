#include <ostrel/camera_state.h>
#include <ostrel/statistics.h>

#include "base/qt_text.h"
#include "base/shared_object.h"
#include "platform/cameras/mode_access.h"
#include "platform/QTKit/open_camera.h"

namespace ostrel {

namespace {

OVideoStatistics figuresOf(const cameras::StreamStatistics& figures) {
    OVideoStatistics result;
    result.delivered = figures.delivered;
    result.taken = figures.taken;
    result.skipped = figures.skipped;
    result.lost = figures.lost;
    for (const auto& reason : figures.dropped)
        result.dropped.insert(textOf(reason.first), reason.second);
    result.grantedFormat = textOf(figures.granted.format);
    result.grantedWidth = figures.granted.size.width;
    result.grantedHeight = figures.granted.size.height;
    result.grantedRate = figures.granted.rate();
    result.ended = textOf(figures.ended);
    return result;
}

OVideoCameraState::RefusedAt stageOf(Refused refused) {
    switch (refused) {
    case Refused::Opening:
        return OVideoCameraState::REFUSED_AT_OPENING;
    case Refused::Input:
        return OVideoCameraState::REFUSED_AT_INPUT;
    case Refused::Output:
        return OVideoCameraState::REFUSED_AT_OUTPUT;
    case Refused::Nowhere:
        break;
    }
    return OVideoCameraState::NOT_REFUSED;
}

} // namespace

bool videoStatistics(const QString& uniqueID, OVideoStatistics& statistics) {
    QTCaptureDeviceState* device = deviceStateOf(utf8Of(uniqueID));
    if (!device)
        return false;
    const DeviceReport report = device->report();
    if (report.open)
        statistics = figuresOf(report.statistics);
    return report.open;
}

struct OVideoCameraStatePrivate {
    bool known = false;
    DeviceReport report;
};

OVideoCameraState::OVideoCameraState(const QString& uniqueID)
    : d(sharedObject(std::unique_ptr<OVideoCameraStatePrivate>(new OVideoCameraStatePrivate))) {
    if (QTCaptureDeviceState* device = deviceStateOf(utf8Of(uniqueID))) {
        d->known = true;
        d->report = device->report();
    }
}

OVideoCameraState::OVideoCameraState(const OVideoCameraState& other) : d(other.d) {}

OVideoCameraState& OVideoCameraState::operator=(const OVideoCameraState& other) {
    d = other.d;
    return *this;
}

OVideoCameraState::~OVideoCameraState() {}

bool OVideoCameraState::isKnown() const {
    return d->known;
}

bool OVideoCameraState::isOpen() const {
    return d->report.open;
}

OVideoCameraState::RefusedAt OVideoCameraState::refusedAt() const {
    return stageOf(d->report.refusedAt);
}

QString OVideoCameraState::refused() const {
    return textOf(d->report.refusal.text);
}

QString OVideoCameraState::ended() const {
    return textOf(d->report.statistics.ended);
}

QString OVideoCameraState::stalled() const {
    return textOf(d->report.statistics.stalled);
}

uint64_t OVideoCameraState::restarts() const {
    return d->report.statistics.restarts;
}

QString OVideoCameraState::shared() const {
    return textOf(d->report.statistics.shared);
}

QString OVideoCameraState::capturedBy() const {
    return textOf(d->report.statistics.by);
}

OVideoMode OVideoCameraState::grantedMode() const {
    const cameras::Mode& granted = d->report.statistics.granted;
    cameras::NativeMode mode;
    mode.format = granted.format;
    mode.hasPicture = granted.hasPicture;
    mode.sizes.least = mode.sizes.most = granted.size;
    mode.intervals = {granted.interval, granted.interval};
    return OVideoModePrivate::make(mode);
}

OVideoStatistics OVideoCameraState::statistics() const {
    return figuresOf(d->report.statistics);
}

QString OVideoCameraState::whyNoFrames() const {
    const QString words[] = {refused(), ended(), stalled()};
    for (const QString& why : words)
        if (!why.isEmpty())
            return why;
    return QString();
}

} // namespace ostrel
