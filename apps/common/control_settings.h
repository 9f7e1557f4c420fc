// The settings of cameras as a whole: restored, put back to their defaults, kept in a file.
#ifndef OSTREL_APPS_COMMON_CONTROL_SETTINGS_H
#define OSTREL_APPS_COMMON_CONTROL_SETTINGS_H

#include <ostrel/controls.h>

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QStringList>

namespace ostrel::apps {

// One setting of a file. The number alone counts; the key is for people.
struct SavedControl {
    uint32_t id = 0;
    int64_t value = 0;
    QString text;
    QString key;
};

struct SavedCamera {
    QString name;
    QList<SavedControl> controls;
};

using SavedCameras = QMap<QString, SavedCamera>; // by identifier

// What is worth keeping: everything that can be set and has the say.
QList<SavedControl> savedControls(const QList<OVideoControl>& controls);

// {"<identifier>": {"name": ..., "controls": [{"id": ..., "name": ..., "value": ... or "text": ...}]}}
QByteArray toJson(const SavedCameras& cameras);
// False when it is no such text.
bool fromJson(const QByteArray& json, SavedCameras& cameras);

// Sets automatic modes first, then what they release; each that could not be set has a line in the answer,
// the rest is set. A camera that is as it should be is left alone.
QStringList applyControls(const QString& uniqueID, const QList<SavedControl>& wanted);

// The same with each control's default; what an automatic one has the say over then is left to it.
QStringList applyDefaults(const QString& uniqueID);

} // namespace ostrel::apps

#endif
