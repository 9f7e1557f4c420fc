#include "apps/common/camera_match.h"

#include <ostrel/device_id.h>

namespace ostrel::apps {

QStringList matchingCameras(const QMap<QString, QString>& cameras, const QString& wanted) {
    using Way = bool (*)(const QString& id, const QString& name, const QString& wanted);
    const Way ways[] = {
        [](const QString& id, const QString&, const QString& text) { return id == text; },
        [](const QString& id, const QString&, const QString& text) {
            return id.compare(text, Qt::CaseInsensitive) == 0;
        },
        [](const QString&, const QString& name, const QString& text) { return name == text; },
        [](const QString&, const QString& name, const QString& text) {
            return name.compare(text, Qt::CaseInsensitive) == 0;
        },
        [](const QString&, const QString& name, const QString& text) {
            return name.contains(text, Qt::CaseInsensitive);
        },
    };
    QStringList matches;
    for (const Way fits : ways) {
        for (auto camera = cameras.begin(); camera != cameras.end(); ++camera)
            if (fits(camera.key(), camera.value(), wanted))
                matches.append(camera.key());
        if (!matches.isEmpty())
            break;
    }
    return matches;
}

QStringList meantCameras(const QMap<QString, QString>& cameras, const QString& wanted, QString& why) {
    QStringList matches = matchingCameras(cameras, wanted);
    if (matches.size() > 1)
        why = QString("'%1' fits several cameras, give the identifier of one").arg(wanted);
    if (!matches.isEmpty())
        return matches;
    // Of those that the caller knows: a camera may have come since.
    const QString identifier = videoDeviceID(wanted, &why);
    if (cameras.contains(identifier))
        matches.append(identifier);
    else if (why.isEmpty())
        why = QString("no attached camera fits \"%1\"").arg(wanted);
    return matches;
}

} // namespace ostrel::apps
