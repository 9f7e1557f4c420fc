// ostrel/controls.h, over the registry.
#include <ostrel/controls.h>

#include "base/monotonic_clock.h"
#include "base/qt_text.h"
#include "base/shared_object.h"
#include "base/wake_descriptor.h"
#include "platform/cameras/control_rules.h"
#include "platform/cameras/descriptor_set.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/registry.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <poll.h>

namespace ostrel {

struct OVideoControlPrivate {
    cameras::Control control;

    static OVideoControl wrapped(const cameras::Control& control) {
        OVideoControl result(control.id);
        result.d->control = control;
        return result;
    }
    // What is about to be changed is nobody else's.
    static cameras::Control& own(OVideoControl& control) {
        auto copy = std::make_unique<OVideoControlPrivate>();
        copy->control = control.d->control;
        control.d = sharedObject(std::move(copy));
        return control.d->control;
    }
};

namespace {

QList<OVideoControl> wrapped(const std::vector<cameras::Control>& controls) {
    QList<OVideoControl> result;
    for (const cameras::Control& control : controls)
        result.append(OVideoControlPrivate::wrapped(control));
    return result;
}

// Of the camera with this identifier. Null: there is none; why says so.
std::shared_ptr<cameras::Controls> controlsOf(const QString& uniqueID, cameras::Error& why) {
    const std::string identifier = utf8Of(uniqueID);
    const std::shared_ptr<cameras::Camera> camera = cameras::attachedCamera(identifier);
    if (!camera) {
        why = cameras::notAttached(identifier);
        return nullptr;
    }
    std::shared_ptr<cameras::Controls> controls = camera->controls();
    if (!controls)
        why = cameras::noControls(camera->displayName());
    return controls;
}

bool told(const cameras::Error& error, QString* why) {
    if (error && why)
        *why = textOf(error.text);
    return !error;
}

} // namespace

OVideoControl::OVideoControl(uint32_t id)
    : d(sharedObject(std::unique_ptr<OVideoControlPrivate>(new OVideoControlPrivate))) {
    d->control.id = id;
}

OVideoControl::OVideoControl(const OVideoControl& other) = default;

OVideoControl& OVideoControl::operator=(const OVideoControl& other) = default;

OVideoControl::~OVideoControl() = default;

uint32_t OVideoControl::id() const {
    return d->control.id;
}

QString OVideoControl::name() const {
    return textOf(d->control.name);
}

OVideoControl::Type OVideoControl::type() const {
    return static_cast<Type>(d->control.type);
}

int64_t OVideoControl::minimum() const {
    return d->control.minimum;
}

int64_t OVideoControl::maximum() const {
    return d->control.maximum;
}

int64_t OVideoControl::step() const {
    return d->control.step;
}

int64_t OVideoControl::defaultValue() const {
    return d->control.defaultValue;
}

QMap<int, QString> OVideoControl::items() const {
    QMap<int, QString> result;
    for (const auto& item : d->control.items)
        result.insert(item.first, textOf(item.second));
    return result;
}

bool OVideoControl::hasValue() const {
    return d->control.hasValue;
}

int64_t OVideoControl::value() const {
    return d->control.value;
}

QString OVideoControl::text() const {
    return textOf(d->control.text);
}

bool OVideoControl::isInactive() const {
    return d->control.inactive;
}

uint32_t OVideoControl::automaticControl() const {
    return d->control.automatic;
}

bool OVideoControl::isReadOnly() const {
    return d->control.readOnly;
}

bool OVideoControl::isVolatile() const {
    return d->control.isVolatile;
}

bool OVideoControl::isGrabbed() const {
    return d->control.grabbed;
}

void OVideoControl::setValue(int64_t value) {
    OVideoControlPrivate::own(*this).value = value;
}

void OVideoControl::setText(const QString& text) {
    OVideoControlPrivate::own(*this).text = utf8Of(text);
}

QList<OVideoControl> videoControls(const QString& uniqueID, QString* why) {
    cameras::Error error;
    std::vector<cameras::Control> list;
    if (const auto controls = controlsOf(uniqueID, error))
        error = controls->list(list);
    return told(error, why) ? wrapped(list) : QList<OVideoControl>();
}

bool setVideoControls(const QString& uniqueID, const QList<OVideoControl>& values, QString* why) {
    std::vector<cameras::Setting> asked;
    for (const OVideoControl& one : values)
        asked.push_back({one.id(), one.value(), utf8Of(one.text())});
    cameras::Error error;
    if (const auto controls = controlsOf(uniqueID, error))
        error = cameras::setControls(*controls, asked);
    return told(error, why);
}

struct OVideoControlWatchPrivate {
    std::unique_ptr<cameras::ControlWatch> watch; // null when there never was one
    std::vector<cameras::Control> pending;        // that a wait has found
    cameras::Error error;
    WakeDescriptor owed;         // readable while something is pending
    cameras::DescriptorSet told; // that, and the watch's

    bool follow() { return told.add(owed.descriptor()) && told.add(watch->descriptor()); }

    // Whether there is something to give.
    bool look() {
        if (watch && !error)
            error = watch->take(pending);
        if (!pending.empty())
            owed.set();
        return !pending.empty();
    }
};

OVideoControlWatch::OVideoControlWatch(const QString& uniqueID) : d(nullptr) {
    auto fresh = std::make_unique<OVideoControlWatchPrivate>();
    if (const auto controls = controlsOf(uniqueID, fresh->error)) {
        fresh->error = controls->watch(fresh->watch);
        if (fresh->watch && !fresh->follow()) {
            fresh->watch.reset();
            fresh->error = cameras::controlsRefused(controls->where(), EMFILE);
        }
    }
    d = fresh.release();
}

OVideoControlWatch::~OVideoControlWatch() {
    delete d;
}

QString OVideoControlWatch::error() const {
    return textOf(d->error.text);
}

int OVideoControlWatch::descriptor() const {
    return d->watch ? d->told.descriptor() : -1;
}

int OVideoControlWatch::wait(int timeoutMs) {
    const int64_t end = monotonicNanoseconds() + int64_t(timeoutMs) * 1000000;
    while (!d->look()) {
        if (d->error)
            return -1;
        const int64_t left = timeoutMs < 0 ? -1 : (end - monotonicNanoseconds() + 999999) / 1000000;
        if (timeoutMs >= 0 && left <= 0)
            return 0;
        pollfd told = {d->told.descriptor(), POLLIN, 0};
        ::poll(&told, 1, static_cast<int>(std::min<int64_t>(left, INT_MAX))); // broken off, it is begun again
    }
    return 1;
}

QList<OVideoControl> OVideoControlWatch::take() {
    d->look();
    // Of one that changed again meanwhile, the newest.
    std::vector<cameras::Control> latest;
    for (auto control = d->pending.rbegin(); control != d->pending.rend(); ++control)
        if (std::none_of(latest.begin(), latest.end(),
                         [&](const cameras::Control& one) { return one.id == control->id; }))
            latest.push_back(*control);
    d->pending.clear();
    d->owed.clear();
    std::reverse(latest.begin(), latest.end());
    return wrapped(latest);
}

} // namespace ostrel
