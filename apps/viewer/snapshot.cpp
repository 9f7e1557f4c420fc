#include "apps/viewer/snapshot.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStandardPaths>

namespace ostrel::apps::viewer {

QString saveSnapshot(const QImage& picture, const QString& folder) {
    const QString time = QDateTime::currentDateTime().toString("yyyyMMdd-HHmmss-zzz");
    const QString path = QDir(folder).absoluteFilePath("camera-" + time + ".png");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return QString("Cannot save %1: %2").arg(path, file.errorString());
    const bool written = picture.save(&file, "PNG") && file.flush();
    if (!written) {
        const QString reason = file.errorString();
        file.remove(); // half a picture is of no use
        return QString("Cannot save %1: %2").arg(path, reason);
    }
    return "Saved " + path;
}

QString picturesFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QDir(pictures).exists() ? pictures : QDir::currentPath();
}

} // namespace ostrel::apps::viewer
