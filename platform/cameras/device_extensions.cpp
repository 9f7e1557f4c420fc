// The extensions that tell of devices, over the registry.
#include <ostrel/device_details.h>
#include <ostrel/device_id.h>

#include "base/qt_text.h"
#include "base/shared_object.h"
#include "platform/cameras/camera_search.h"
#include "platform/cameras/registry.h"

#include <memory>

namespace ostrel {

struct OVideoDeviceDetailsPrivate {
    bool attached = false;
    cameras::CameraDetails details;
};

OVideoDeviceDetails::OVideoDeviceDetails(const QSharedPointer<OVideoDeviceDetailsPrivate>& facts)
    : d(facts) {}

OVideoDeviceDetails::OVideoDeviceDetails(const OVideoDeviceDetails& other) = default;

OVideoDeviceDetails& OVideoDeviceDetails::operator=(const OVideoDeviceDetails& other) = default;

OVideoDeviceDetails::~OVideoDeviceDetails() = default;

bool OVideoDeviceDetails::isAttached() const {
    return d->attached;
}

QString OVideoDeviceDetails::kind() const {
    return textOf(d->details.kind);
}

QString OVideoDeviceDetails::node() const {
    return textOf(d->details.node);
}

QString OVideoDeviceDetails::driver() const {
    return textOf(d->details.driver);
}

QString OVideoDeviceDetails::bus() const {
    return textOf(d->details.bus);
}

int OVideoDeviceDetails::vendorID() const {
    return d->details.vendor;
}

int OVideoDeviceDetails::productID() const {
    return d->details.product;
}

QString OVideoDeviceDetails::serialNumber() const {
    return textOf(d->details.serialNumber);
}

OVideoDeviceDetails videoDeviceDetails(const QString& uniqueID) {
    auto facts = std::make_unique<OVideoDeviceDetailsPrivate>();
    if (const auto camera = cameras::attachedCamera(utf8Of(uniqueID))) {
        facts->attached = true;
        facts->details = camera->details();
    }
    return OVideoDeviceDetails(sharedObject(std::move(facts)));
}

struct OVideoNodePrivate {
    cameras::NodeReport report;
};

OVideoNode::OVideoNode(const QSharedPointer<OVideoNodePrivate>& facts) : d(facts) {}

OVideoNode::OVideoNode(const OVideoNode& other) = default;

OVideoNode& OVideoNode::operator=(const OVideoNode& other) = default;

OVideoNode::~OVideoNode() = default;

QString OVideoNode::path() const {
    return textOf(d->report.path);
}

QString OVideoNode::name() const {
    return textOf(d->report.name);
}

QString OVideoNode::uniqueID() const {
    return textOf(d->report.identifier);
}

QString OVideoNode::reason() const {
    return textOf(d->report.reason);
}

QList<OVideoNode> videoNodes() {
    QList<OVideoNode> result;
    for (const cameras::NodeReport& report : cameras::machineNodes()) {
        auto facts = std::make_unique<OVideoNodePrivate>();
        facts->report = report;
        result.append(OVideoNode(sharedObject(std::move(facts))));
    }
    return result;
}

QString videoDeviceID(const QString& text, QString* why) {
    std::vector<cameras::NamedCamera> named;
    for (const auto& camera : cameras::attachedCameras())
        named.push_back({camera->identifier(), camera->displayName()});
    const cameras::FoundCamera found = cameras::findCamera(utf8Of(text), named, cameras::machineNodes());
    if (why)
        *why = textOf(found.why);
    return textOf(found.identifier);
}

} // namespace ostrel
