// Listing cameras and nodes, and finding the one that is meant.
#include "bindings/c/camera_items.h"
#include "bindings/c/lists.h"

#include "base/qt_text.h"

#include <ostrel/device_details.h>
#include <ostrel/device_id.h>
#include <ostrel/devices.h>

namespace ostrel {
namespace c {

namespace {

using Cameras = QMap<QString, QString>; // identifier -> name

void describe(const CameraItem& camera, ostrel_camera_info& info) {
    copyText(camera.id, info.id);
    copyText(camera.name, info.name);
}

// The identifier of the only camera with the text in its name; empty when none or several have it.
QString byPartOfName(const Cameras& cameras, const QString& text) {
    QString found;
    for (Cameras::const_iterator camera = cameras.begin(); camera != cameras.end(); ++camera) {
        if (!camera.value().contains(text, Qt::CaseInsensitive))
            continue;
        if (!found.isEmpty())
            return QString();
        found = camera.key();
    }
    return found;
}

std::string namesOf(const Cameras& cameras) {
    if (cameras.isEmpty())
        return "; none is attached";
    std::string names;
    for (Cameras::const_iterator camera = cameras.begin(); camera != cameras.end(); ++camera)
        names += (names.empty() ? "; attached: " : ", ") + utf8Of(camera.value()) + " (" +
                 utf8Of(camera.key()) + ')';
    return names;
}

CameraItem find(const QString& text) {
    if (text.isEmpty())
        throw Failure(OSTREL_BAD_ARGUMENT, "The text that is to name a camera is empty");
    QString why;
    QString id = videoDeviceID(text, &why);
    const Cameras cameras = videoDevices();
    if (id.isEmpty())
        id = byPartOfName(cameras, text);
    const Cameras::const_iterator found = cameras.find(id);
    if (found == cameras.end())
        throw Failure(OSTREL_NO_CAMERA, utf8Of(why) + namesOf(cameras));
    return {found.key(), found.value()};
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_cameras(ostrel_handle* list, size_t* count, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        return answer.give(itemsOf(videoDevices()));
    });
}

extern "C" int ostrel_camera_at(ostrel_handle list, size_t index, ostrel_camera_info* camera, char* why,
                                size_t why_bytes) {
    return call(why, why_bytes,
                [&] { return giveItem<CameraItem>(list, index, camera, "a list of cameras", describe); });
}

extern "C" int ostrel_nodes(ostrel_handle* list, size_t* count, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        const QList<OVideoNode> nodes = videoNodes();
        return answer.give(std::vector<OVideoNode>(nodes.begin(), nodes.end()));
    });
}

extern "C" int ostrel_node_at(ostrel_handle list, size_t index, ostrel_node_info* node, char* why,
                              size_t why_bytes) {
    return call(why, why_bytes, [&] {
        return giveItem<OVideoNode>(list, index, node, "a list of nodes",
                                    [](const OVideoNode& from, ostrel_node_info& info) {
                                        copyText(from.path(), info.path);
                                        copyText(from.name(), info.name);
                                        copyText(from.uniqueID(), info.id);
                                        copyText(from.reason(), info.reason);
                                    });
    });
}

extern "C" int ostrel_find(const char* text, ostrel_camera_info* camera, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const Answer<ostrel_camera_info> answer(camera);
        ostrel_camera_info info = {};
        describe(find(requiredText(text, "The text that is to name a camera")), info);
        answer.give(info);
        return OSTREL_OK;
    });
}
