// Which cameras a name on the command line stands for.
#ifndef OSTREL_APPS_COMMON_CAMERA_MATCH_H
#define OSTREL_APPS_COMMON_CAMERA_MATCH_H

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ostrel::apps {

// cameras: identifier -> name, as videoDevices() answers. The identifiers of those that are meant: by the
// whole identifier, else the whole name, else a part of the name; letter case counts only where it decides.
QStringList matchingCameras(const QMap<QString, QString>& cameras, const QString& wanted);

// Likewise, and where none fits, what videoDeviceID() makes of the text: identifiers of earlier releases or
// of another port, node paths, links to them. None, or several by one name: the reason is in why.
QStringList meantCameras(const QMap<QString, QString>& cameras, const QString& wanted, QString& why);

} // namespace ostrel::apps

#endif
