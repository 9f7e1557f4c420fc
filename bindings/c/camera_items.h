// Cameras in lists.
#ifndef OSTREL_BINDINGS_C_CAMERA_ITEMS_H
#define OSTREL_BINDINGS_C_CAMERA_ITEMS_H

#include <QtCore/QMap>
#include <QtCore/QString>

#include <vector>

namespace ostrel {
namespace c {

struct CameraItem {
    QString id, name;
};

// cameras: identifier -> name
inline std::vector<CameraItem> itemsOf(const QMap<QString, QString>& cameras) {
    std::vector<CameraItem> items;
    for (QMap<QString, QString>::const_iterator camera = cameras.begin(); camera != cameras.end(); ++camera)
        items.push_back({camera.key(), camera.value()});
    return items;
}

} // namespace c
} // namespace ostrel

#endif
