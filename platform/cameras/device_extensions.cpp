// The extensions that tell of devices, over the registry.
#include <ostrel/device_details.h>
#include <ostrel/device_id.h>

#include "base/shared_object.h"
#include "platform/cameras/camera_search.h"
#include "platform/cameras/registry.h"

#include <memory>

namespace ostrel {

namespace {

QString text(const std::string& utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

} // namespace

struct OVideoNodePrivate {
    cameras::NodeReport report;
};

OVideoNode::OVideoNode(const QSharedPointer<OVideoNodePrivate>& facts) : d(facts) {}

OVideoNode::OVideoNode(const OVideoNode& other) = default;

OVideoNode& OVideoNode::operator=(const OVideoNode& other) = default;

OVideoNode::~OVideoNode() = default;

QString OVideoNode::path() const {
    return text(d->report.path);
}

QString OVideoNode::name() const {
    return text(d->report.name);
}

QString OVideoNode::uniqueID() const {
    return text(d->report.identifier);
}

QString OVideoNode::reason() const {
    return text(d->report.reason);
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
    const QByteArray utf8 = text.toUtf8();
    std::vector<cameras::NamedCamera> named;
    for (const auto& camera : cameras::attachedCameras())
        named.push_back({camera->identifier(), camera->displayName()});
    const cameras::FoundCamera found = cameras::findCamera(
        std::string(utf8.constData(), static_cast<size_t>(utf8.size())), named, cameras::machineNodes());
    if (why)
        *why = ostrel::text(found.why);
    return ostrel::text(found.identifier);
}

} // namespace ostrel
